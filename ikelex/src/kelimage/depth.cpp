// The one change of depth, from 24 to 32 bits.
#include "headerblock.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/rows.h"
#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"

void CKelImage::ChangeBitCount(int nBitCount) {
    if (m_bmih.biBitCount != 24 || nBitCount != 32 || m_pBits == nullptr ||
        m_ppLineArray == nullptr) {
        return;
    }
    const std::int64_t nSize = kel::PictureSize(32, m_bmih.biWidth, m_bmih.biHeight);
    unsigned char* lpNewBit = nSize > kel::kMaxSize ? nullptr : kel::NewPixelsNothrow(nSize);
    if (lpNewBit != nullptr) {
        const std::int64_t nStride = kel::RowStride(32, m_bmih.biWidth);
        const std::size_t nPixels = kel::PixelsOfRow(m_bmih);
        kel::RowMove* const pfnExpand = kel::RowFunctionsFor(kel::BestLevel()).pfnExpand24;
        for (std::int64_t y = 0; y < m_bmih.biHeight; ++y) {
            pfnExpand(m_ppLineArray[y], lpNewBit + y * nStride, nPixels);
        }
    }
    if (lpNewBit == nullptr || !AdoptBits(lpNewBit)) {
        delete[] lpNewBit;
        kel::TraceNull("lpNewBit");
        return;
    }
    const std::int64_t nOldBlock = kel::HeaderBlockSize(m_bmih);
    m_bmih.biBitCount = 32;
    m_bmih.biSizeImage = kel::Low32(nSize);
    if (m_pBMI != nullptr) {
        m_pBMI->bmiHeader.biBitCount = 32;
        m_pBMI->bmiHeader.biSizeImage = m_bmih.biSizeImage;
        // With bit fields the deeper header describes three masks, for which the block may have no
        // room. GetBitmapInfo builds it anew.
        if (kel::HeaderBlockSize(m_bmih) > nOldBlock) {
            DeleteBMI();
        }
    }
    CreateLineArray();
}

void CKelImage::Convert24BitTo32Bit(int, unsigned char* pSrc, unsigned char* pDst) {
    kel::RowFunctionsFor(kel::BestLevel()).pfnExpand24(pSrc, pDst, kel::PixelsOfRow(m_bmih));
}
