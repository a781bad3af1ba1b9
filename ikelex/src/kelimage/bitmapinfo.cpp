// The header block, and images made from a header block and pixels.
#include <platform/vamplatform.h>

#include <algorithm>
#include <limits>
#include <new>

#include "../kelbitmap/colortable.h"
#include "../kelbitmap/strides.h"
#include "../kelmemory/kelmemory.h"
#include "../keltrace/keltrace.h"
#include "headerblock.h"
#include "kelimage.h"

namespace {

bool IsRunLength(const BITMAPINFOHEADER& header) {
    return header.biCompression == BI_RLE8 || header.biCompression == BI_RLE4;
}

// How many bytes of pixel data a supported header speaks of, and the size of a buffer that holds
// them and every row.
struct PixelExtent {
    std::int64_t nData;
    std::int64_t nBuffer;
};

PixelExtent ExtentOf(const BITMAPINFOHEADER& header) {
    const std::int64_t nRows = kel::PictureSize(header.biBitCount, header.biWidth, header.biHeight);
    const std::int64_t nData = header.biSizeImage != 0 ? header.biSizeImage : nRows;
    return {nData, std::max(nData, nRows)};
}

}  // namespace

bool CKelImage::IsSupportedHeader(const BITMAPINFOHEADER& header) const {
    return IsValidPixelDepth(header.biBitCount) && IsValidWINCompression(header.biCompression) &&
           header.biSize == sizeof header && header.biWidth >= 0 && header.biHeight >= 0;
}

KelResult CKelImage::Open() {
    DestroyPaletteTable();
    DeleteLineArray();
    kel::CheckSecure(kel::kSourceImage, memset_s(&m_bmih, sizeof m_bmih, 0, sizeof m_bmih));
    if (m_pBMI == nullptr || m_pBits == nullptr || !IsSupportedHeader(m_pBMI->bmiHeader)) {
        return KEL_ERR_PARAM;
    }
    kel::CheckSecure(kel::kSourceImage, memcpy_s(&m_bmih, sizeof m_bmih, m_pBMI, sizeof m_bmih));
    CreatePalette(m_pBMI);
    CreateLineArray();
    return KEL_OK;
}

KelResult CKelImage::Open(BITMAPINFO* pBMI, unsigned char* pBits) {
    // Buffers of the image's own do not outlive its emptying.
    const bool bOwn = m_bOwnBuffers != 0 && (pBMI == m_pBMI || pBits == m_pBits);
    Clean();
    if (bOwn || pBMI == nullptr || pBits == nullptr || !IsSupportedHeader(pBMI->bmiHeader) ||
        kel::ColorTableEntries(pBMI->bmiHeader) > kel::kMaxColorTableEntries) {
        return KEL_ERR_PARAM;
    }
    const PixelExtent extent = ExtentOf(pBMI->bmiHeader);
    if (extent.nBuffer > std::numeric_limits<unsigned int>::max() ||
        (extent.nData < extent.nBuffer && !IsRunLength(pBMI->bmiHeader))) {
        return KEL_ERR_PARAM;
    }

    const unsigned int nBlock = IMG_GetBitmapInfoSize(&pBMI->bmiHeader);
    if (BITMAPINFO* pBlock = AllocateBMI(nBlock)) {
        kel::CheckSecure(kel::kSourceImage, memcpy_s(pBlock, nBlock, pBMI, nBlock));
    }
    const auto nData = static_cast<std::size_t>(extent.nData);
    if (unsigned char* pCopy = AllocateBits(static_cast<unsigned int>(extent.nBuffer))) {
        kel::CheckSecure(kel::kSourceImage, memcpy_s(pCopy, nData, pBits, nData));
    }
    return Open();
}

KelResult CKelImage::OpenAs(BITMAPINFO* pBMI, unsigned char* pBits, int bOwn) {
    m_pBMI = pBMI;
    m_pBits = pBits;
    m_bOwnBuffers = bOwn;
    return Open();
}

BITMAPINFO* CKelImage::AllocateBMI(unsigned int nSize) {
    if (nSize < sizeof(BITMAPINFOHEADER)) {
        return nullptr;
    }
    if (m_bOwnBuffers != 0) {
        DeleteBMI();
    }
    unsigned char* pBlock = new (std::nothrow) unsigned char[nSize];
    if (pBlock == nullptr || !OwnBits()) {
        delete[] pBlock;
        kel::TraceNull("p");
        return nullptr;
    }
    kel::CheckSecure(kel::kSourceImage, memset_s(pBlock, nSize, 0, nSize));
    m_pBMI = reinterpret_cast<BITMAPINFO*>(pBlock);
    return m_pBMI;
}

// The borrowed pixels stay in use, so they are copied; the borrowed header block is the caller's to
// replace. Pixels that no header describes have no known size and are let go.
bool CKelImage::OwnBits() {
    if (m_bOwnBuffers != 0) {
        return true;
    }
    unsigned char* pCopy = nullptr;
    if (m_pBits != nullptr && m_bmih.biSize != 0) {
        BITMAPINFOHEADER header = m_bmih;
        if (!IsRunLength(header)) {
            header.biSizeImage = 0;  // the rows are all that is in use
        }
        const PixelExtent extent = ExtentOf(header);
        const auto nData = static_cast<std::size_t>(extent.nData);
        pCopy = kel::TryNewPixels(static_cast<std::size_t>(extent.nBuffer));
        if (pCopy == nullptr) {
            return false;
        }
        kel::CheckSecure(kel::kSourceImage, memcpy_s(pCopy, nData, m_pBits, nData));
        std::fill(pCopy + nData, pCopy + extent.nBuffer, static_cast<unsigned char>(0));
        // The rows move along in the array that is there, so that nothing can fail any more.
        const std::int64_t nStride = kel::RowStride(header.biBitCount, header.biWidth);
        for (std::int64_t i = 0; m_ppLineArray != nullptr && i < header.biHeight; ++i) {
            m_ppLineArray[i] = pCopy + i * nStride;
        }
    } else {
        DeleteLineArray();
    }
    m_pBits = pCopy;
    m_bOwnBuffers = 1;
    return true;
}

BITMAPINFO* CKelImage::GetBitmapInfo() {
    if (m_pBMI != nullptr) {
        return m_pBMI;
    }
    if (m_bmih.biSize != sizeof m_bmih) {
        return nullptr;
    }
    BITMAPINFOHEADER header = m_bmih;
    if (header.biBitCount <= 8 && m_nPaletteNum != 1 << header.biBitCount) {
        header.biClrUsed = static_cast<unsigned int>(m_nPaletteNum);
    }
    // Room for the palette, and for the colour table the header speaks of where that is longer: who
    // gets the block measures it by its header.
    const std::int64_t nTableEnd = std::int64_t{sizeof header} + std::int64_t{m_nPaletteNum} * 4;
    const std::int64_t nSize = std::max(nTableEnd, kel::HeaderBlockSize(header));
    BITMAPINFO* pBlock =
        nSize <= kel::kMaxSize ? AllocateBMI(static_cast<unsigned int>(nSize)) : nullptr;
    if (pBlock == nullptr) {
        return nullptr;
    }
    m_bmih.biClrUsed = header.biClrUsed;
    kel::CheckSecure(kel::kSourceImage, memcpy_s(pBlock, m_bmih.biSize, &m_bmih, m_bmih.biSize));
    std::copy(m_pPalette, m_pPalette + m_nPaletteNum,
              reinterpret_cast<tagKelRGBQUAD*>(pBlock->bmiColors));
    return pBlock;
}
