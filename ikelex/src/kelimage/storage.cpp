// The pixel buffer and its rows.
//
// The row array, where there is one, has one entry per row, and every row lies inside the pixel
// buffer. An image that loses its pixel buffer loses its row array with it.
#include <algorithm>
#include <new>

#include "headerblock.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/padding.h"
#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"

bool CKelImage::IsValidPixelDepth(int nBitCount) const {
    return kel::IsSupportedDepth(nBitCount);
}

bool CKelImage::IsValidWINCompression(unsigned int dwCompression) const {
    return dwCompression <= BI_BITFIELDS;
}

unsigned int CKelImage::GetBmpDataSize() {
    // Negative widths round down here, unlike in RowStride. The product keeps its low 32 bits.
    const std::int64_t nBits = std::int64_t{m_bmih.biBitCount} * m_bmih.biWidth;
    return kel::Low32((nBits + 31) >> 3 & -4) * kel::Low32(m_bmih.biHeight);
}

void CKelImage::Describe(int nWidth, int nHeight, int nBitCount) {
    kel::SecureZero(kel::kSourceImage, &m_bmih, sizeof m_bmih);
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
}

unsigned char* CKelImage::Create(int nWidth, int nHeight, int nBitCount) {
    Describe(nWidth, nHeight, nBitCount);
    return AllocateBits1();
}

unsigned char* CKelImage::CreateUncleared(int nWidth, int nHeight, int nBitCount) {
    Describe(nWidth, nHeight, nBitCount);
    const std::int64_t nStride = kel::RowStride(m_bmih.biBitCount, nWidth);
    // The last row is zeroed whole, so that the bounded memory function is asked, and traced, once
    // for each buffer, as in Create.
    unsigned char* pBits = NewBits(SizeOfRows(), nHeight > 0 ? nStride : 0);
    if (pBits != nullptr) {
        kel::ClearPadding(pBits, m_bmih.biBitCount, nWidth, nHeight);
    }
    if (pBits != nullptr && m_ppLineArray == nullptr) {
        ClearRowsFrom(0);  // without row pointers nobody writes the rows
    }
    return pBits;
}

void CKelImage::ClearRowsFrom(int nFirst) {
    const std::int64_t nStride = kel::RowStride(m_bmih.biBitCount, m_bmih.biWidth);
    if (nFirst < m_bmih.biHeight) {
        std::fill(m_pBits + nFirst * nStride, m_pBits + m_bmih.biHeight * nStride, std::uint8_t{0});
    }
}

std::int64_t CKelImage::SizeOfRows() const {
    const std::int64_t nSize = kel::RowBytes(m_bmih);
    return m_bmih.biWidth < 0 || m_bmih.biHeight < 0 || nSize > kel::kMaxSize ? -1 : nSize;
}

unsigned char* CKelImage::AllocateBits1() {
    const std::int64_t nSize = SizeOfRows();
    return NewBits(nSize, nSize);
}

unsigned char* CKelImage::AllocateBits(unsigned int dwSize) {
    DropOwnBits();
    if (dwSize == 0 || dwSize > kel::kTracedSizeLimit) {
        kel::TraceInvalid("dwSize", dwSize);
    }
    // The rows the header describes must lie inside the buffer, however small a size was asked for.
    const bool bRows = m_bmih.biWidth >= 0 && m_bmih.biHeight >= 0;
    const std::int64_t nRows = bRows ? kel::RowBytes(m_bmih) : 0;
    if (nRows > dwSize && nRows > kel::kMaxSize) {
        return nullptr;
    }
    const std::int64_t nSize = std::max<std::int64_t>(dwSize, nRows);
    return NewBits(nSize, nSize);
}

void CKelImage::DropOwnBits() {
    if (m_bOwnBuffers != 0) {
        DeleteBits();
    }
}

unsigned char* CKelImage::NewBits(std::int64_t nSize, std::int64_t nCleared) {
    // The old buffer goes first, so that old and new are not held together.
    DropOwnBits();
    unsigned char* const pNewBits = kel::TryNewPixels(nSize);
    if (pNewBits == nullptr || !AdoptBits(pNewBits)) {
        delete[] pNewBits;
        return nullptr;
    }
    kel::SecureZero(kel::kSourceImage, m_pBits + (nSize - nCleared), nCleared);
    CreateLineArray();
    return m_pBits;
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
    const std::int64_t nBytes = nRows * std::int64_t{sizeof(unsigned char*)};
    if (nRows >= 0 && m_bmih.biWidth >= 0 && nBytes <= kel::kMaxSize) {
        m_ppLineArray = new (std::nothrow) unsigned char*[kel::AsSize(nRows)];
    }
    if (m_ppLineArray == nullptr) {
        kel::TraceNull("m_ppLineArray");
        return nullptr;
    }
    PointRowsInto(m_pBits);
    return m_ppLineArray;
}

void CKelImage::PointRowsInto(unsigned char* pBits) {
    const std::int64_t nStride = kel::RowStride(m_bmih.biBitCount, m_bmih.biWidth);
    for (std::int64_t i = 0; m_ppLineArray != nullptr && i < m_bmih.biHeight; ++i) {
        m_ppLineArray[i] = pBits + i * nStride;
    }
}
