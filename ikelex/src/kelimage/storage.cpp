// The pixel buffer and its rows.
//
// Invariant: the row array, where there is one, has one entry per row and every row lies inside the
// pixel buffer. An image that loses its pixel buffer loses its row array with it.
#include <platform/vamplatform.h>

#include <algorithm>
#include <new>

#include "../kelbitmap/strides.h"
#include "../kelmemory/kelmemory.h"
#include "../keltrace/keltrace.h"
#include "headerblock.h"
#include "kelimage.h"

bool CKelImage::IsValidPixelDepth(int nBitCount) const {
    return nBitCount == 1 || nBitCount == 4 || nBitCount == 8 || nBitCount == 16 ||
           nBitCount == 24 || nBitCount == 32;
}

bool CKelImage::IsValidWINCompression(unsigned int dwCompression) const {
    return dwCompression <= BI_BITFIELDS;
}

unsigned int CKelImage::GetBmpDataSize() {
    return static_cast<unsigned int>(
        kel::PictureSize(m_bmih.biBitCount, m_bmih.biWidth, m_bmih.biHeight));
}

unsigned char* CKelImage::Create(int nWidth, int nHeight, int nBitCount) {
    kel::CheckSecure(kel::kSourceImage, memset_s(&m_bmih, sizeof m_bmih, 0, sizeof m_bmih));
    m_bmih.biSize = sizeof m_bmih;
    m_bmih.biWidth = nWidth;
    m_bmih.biHeight = nHeight;
    m_bmih.biPlanes = 1;
    m_bmih.biBitCount = static_cast<unsigned short>(nBitCount);
    DestroyPaletteTable();
    if (m_bOwnBuffers == 0) {
        m_pBits = nullptr;
        m_pBMI = nullptr;
        m_bOwnBuffers = 1;
    }
    DeleteBMI();
    return AllocateBits1();
}

unsigned char* CKelImage::AllocateBits1() {
    const std::int64_t nSize = kel::PictureSize(m_bmih.biBitCount, m_bmih.biWidth, m_bmih.biHeight);
    const bool bRefused = m_bmih.biWidth < 0 || m_bmih.biHeight < 0 || nSize > kel::kMaxSize;
    return InstallBits(bRefused ? -1 : nSize);
}

unsigned char* CKelImage::AllocateBits(unsigned int dwSize) {
    if (dwSize == 0 || dwSize > kel::kTracedSizeLimit) {
        kel::TraceInvalid("dwSize", dwSize);
    }
    // The rows the header describes must lie inside the buffer, however small a size was asked for.
    const std::int64_t nRows =
        m_bmih.biWidth < 0 || m_bmih.biHeight < 0
            ? 0
            : kel::PictureSize(m_bmih.biBitCount, m_bmih.biWidth, m_bmih.biHeight);
    if (nRows > dwSize && nRows > kel::kMaxSize) {
        return InstallBits(-1);
    }
    return InstallBits(std::max<std::int64_t>(dwSize, nRows));
}

unsigned char* CKelImage::InstallBits(std::int64_t nSize) {
    // The old buffer goes first, so that old and new are not held at once.
    if (m_bOwnBuffers != 0) {
        delete[] m_pBits;
        m_pBits = nullptr;
    }
    unsigned char* pNewBits =
        nSize < 0 ? nullptr : kel::TryNewPixels(static_cast<std::size_t>(nSize));
    if (pNewBits == nullptr || !ReplaceBits(pNewBits)) {
        delete[] pNewBits;
        if (m_pBits == nullptr) {
            DeleteLineArray();
        }
        return nullptr;
    }
    const auto nBytes = static_cast<std::size_t>(nSize);
    kel::CheckSecure(kel::kSourceImage, memset_s(m_pBits, nBytes, 0, nBytes));
    CreateLineArray();
    return m_pBits;
}

bool CKelImage::ReplaceBits(unsigned char* pNewBits) {
    if (m_bOwnBuffers != 0) {
        delete[] m_pBits;
    } else {
        BITMAPINFO* pCopy = nullptr;
        if (!kel::CopyHeaderBlock(m_pBMI, &pCopy)) {
            return false;
        }
        m_pBMI = pCopy;
        m_bOwnBuffers = 1;
    }
    m_pBits = pNewBits;
    return true;
}

void CKelImage::DeleteBits() {
    delete[] m_pBits;
    m_pBits = nullptr;
    DeleteLineArray();
}

void CKelImage::DeleteBMI() {
    delete[] reinterpret_cast<unsigned char*>(m_pBMI);
    m_pBMI = nullptr;
}

void CKelImage::DeleteLineArray() {
    delete[] m_ppLineArray;
    m_ppLineArray = nullptr;
}

unsigned char** CKelImage::CreateLineArray() {
    DeleteLineArray();
    const std::int64_t nRows = m_bmih.biHeight;
    if (m_pBits == nullptr && nRows > 0) {
        return nullptr;
    }
    const std::int64_t nBytes = nRows * static_cast<std::int64_t>(sizeof(unsigned char*));
    if (nRows >= 0 && m_bmih.biWidth >= 0 && nBytes <= kel::kMaxSize) {
        m_ppLineArray = new (std::nothrow) unsigned char*[static_cast<std::size_t>(nRows)];
    }
    if (m_ppLineArray == nullptr) {
        kel::TraceNull("m_ppLineArray");
        return nullptr;
    }
    const std::int64_t nStride = kel::RowStride(m_bmih.biBitCount, m_bmih.biWidth);
    for (std::int64_t i = 0; i < nRows; ++i) {
        m_ppLineArray[i] = m_pBits + i * nStride;
    }
    return m_ppLineArray;
}
