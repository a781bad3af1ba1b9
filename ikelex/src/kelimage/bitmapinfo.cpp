// The header block, and images made from a header block and pixels.
//
// The block's header is taken over as it is. headerblock.cpp decides which headers are supported.
#include <algorithm>
#include <limits>
#include <new>

#include "headerblock.h"
#include "kelbitmap/colortable.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "keltrace/keltrace.h"

KelResult CKelImage::Open() {
    DestroyPaletteTable();
    DeleteLineArray();
    kel::SecureZero(kel::kSourceImage, &m_bmih, sizeof m_bmih);
    if (m_pBMI == nullptr || m_pBits == nullptr || !kel::IsSupportedHeader(m_pBMI->bmiHeader)) {
        return KEL_ERR_PARAM;
    }
    kel::SecureCopy(kel::kSourceImage, &m_bmih, m_pBMI, sizeof m_bmih);
    CreatePalette(m_pBMI);
    CreateLineArray();
    return KEL_OK;
}

KelResult CKelImage::Open(BITMAPINFO* pBMI, unsigned char* pBits) {
    // Emptying the image would release what the caller asks to have copied.
    if (Owns(pBMI, sizeof(BITMAPINFOHEADER)) || Owns(pBits, 0)) {
        return KEL_ERR_PARAM;
    }
    if (pBMI == nullptr || pBits == nullptr || !kel::IsSupportedHeader(pBMI->bmiHeader) ||
        kel::ColorTableEntries(pBMI->bmiHeader) > kel::kMaxColorTableEntries) {
        Clean();
        return KEL_ERR_PARAM;
    }
    const std::int64_t nBlock = kel::HeaderBlockSize(pBMI->bmiHeader);
    const std::int64_t nRows = kel::RowBytes(pBMI->bmiHeader);
    const std::int64_t nData = kel::DataBytes(pBMI->bmiHeader);
    const bool bHeld = nRows <= std::numeric_limits<unsigned int>::max() &&
                       (nData >= nRows || kel::IsRunLength(pBMI->bmiHeader));
    if (bHeld && (Owns(pBMI, nBlock) || Owns(pBits, nData))) {
        return KEL_ERR_PARAM;
    }
    Clean();
    if (!bHeld) {
        return KEL_ERR_PARAM;
    }
    if (BITMAPINFO* pBlock = AllocateBMI(IMG_GetBitmapInfoSize(&pBMI->bmiHeader))) {
        kel::SecureCopy(kel::kSourceImage, pBlock, pBMI, nBlock);
    }
    const unsigned int nSize = kel::Low32(std::max(nData, nRows));
    if (unsigned char* pCopy = AllocateBits(nSize)) {
        kel::SecureCopy(kel::kSourceImage, pCopy, pBits, nData);
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
    if (pBlock == nullptr || !CopyLentBits()) {
        delete[] pBlock;
        kel::TraceNull("p");
        return nullptr;
    }
    kel::SecureZero(kel::kSourceImage, pBlock, nSize);
    m_pBMI = reinterpret_cast<BITMAPINFO*>(pBlock);
    return m_pBMI;
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
        header.biClrUsed = kel::Low32(m_nPaletteNum);
    }
    // The block has room for the palette, and for the colour table that the header describes if
    // that is longer, because its users measure it by its header.
    const std::int64_t nTableEnd = std::int64_t{sizeof header} + std::int64_t{m_nPaletteNum} * 4;
    const std::int64_t nSize = std::max(nTableEnd, kel::HeaderBlockSize(header));
    BITMAPINFO* pBlock = nSize <= kel::kMaxSize ? AllocateBMI(kel::Low32(nSize)) : nullptr;
    if (pBlock == nullptr) {
        return nullptr;
    }
    m_bmih.biClrUsed = header.biClrUsed;
    kel::SecureCopy(kel::kSourceImage, pBlock, &m_bmih, m_bmih.biSize);
    std::copy(m_pPalette, m_pPalette + m_nPaletteNum,
              reinterpret_cast<tagKelRGBQUAD*>(pBlock->bmiColors));
    return pBlock;
}
