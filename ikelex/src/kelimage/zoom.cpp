// ZoomImage: the picture resized in place, each pixel sampled from up to four of the source.
#include <cstddef>

#include "../kelbitmap/strides.h"
#include "../keltrace/keltrace.h"
#include "geometry.h"
#include "kelimage.h"
#include "zoomblend.h"

namespace {

// The widest destination row that passes the check; wider ones are traced and still sampled.
constexpr int kTracedWidthLimit = 80 * 1024;

// The three sampling tables of one call, one entry per destination column.
struct ColumnTables {
    ColumnTables(int nSrcWidth, int nDstWidth)
        : pFirst(new int[static_cast<std::size_t>(nDstWidth)]),
          pSecond(new int[static_cast<std::size_t>(nDstWidth)]),
          pFraction(new float[static_cast<std::size_t>(nDstWidth)]) {
        const float fStep = kel::ZoomStep(nSrcWidth, nDstWidth);
        for (int i = 0; i < nDstWidth; ++i) {
            const kel::ZoomSample sample = kel::ZoomSampleAt(i, fStep, nSrcWidth);
            pFirst.get()[i] = sample.nFirst;
            pSecond.get()[i] = sample.nSecond;
            pFraction.get()[i] = sample.fFraction;
        }
    }

    std::unique_ptr<int[]> pFirst;
    std::unique_ptr<int[]> pSecond;
    std::unique_ptr<float[]> pFraction;
};

}  // namespace

void CKelImage::ZoomImage(int nWidth, int nHeight) {
    if (nWidth <= 0 || nHeight <= 0 || m_pBits == nullptr || m_bmih.biWidth <= 0 ||
        m_bmih.biHeight <= 0) {
        return;
    }
    std::unique_ptr<unsigned char[]> pNew =
        kel::NewPicture(kel::PictureSize(m_bmih.biBitCount, nWidth, nHeight));
    if (pNew == nullptr) {
        return;
    }
    ZoomBytes(m_bmih.biBitCount, m_pBits, m_bmih.biWidth, m_bmih.biHeight, pNew.get(), nWidth,
              nHeight);
    if (!ReplaceBits(pNew.get())) {
        return;
    }
    static_cast<void>(pNew.release());  // the image owns it now
    kel::SetPictureSize(this, nWidth, nHeight);
}

void CKelImage::ZoomBytes(int nBits, unsigned char* pSrc, int nSrcWidth, int nSrcHeight,
                          unsigned char* pDst, int nDstWidth, int nDstHeight) const {
    if (nDstWidth == 0 || nDstWidth > kTracedWidthLimit) {
        kel::TraceInvalid("nDstWidth", nDstWidth);
    }
    if (nDstWidth <= 0 || nDstHeight <= 0 || nSrcWidth <= 0 || nSrcHeight <= 0) {
        return;
    }
    try {
        const ColumnTables tables(nSrcWidth, nDstWidth);
        const kel::ZoomColumns columns = {tables.pFirst.get(), tables.pSecond.get(),
                                          tables.pFraction.get(), nDstWidth};
        const std::int64_t nSrcStride = kel::RowStride(nBits, nSrcWidth);
        const std::int64_t nDstStride = kel::RowStride(nBits, nDstWidth);
        const float fStep = kel::ZoomStep(nSrcHeight, nDstHeight);
        const bool bNearest = nBits == 1 || nBits == 4 || nBits == 8;
        const kel::CpuLevel eLevel = kel::BestCpuLevel();
        for (int nRow = 0; nRow < nDstHeight; ++nRow) {
            const kel::ZoomSample rows = kel::ZoomSampleAt(nRow, fStep, nSrcHeight);
            unsigned char* const pOut = pDst + nRow * nDstStride;
            if (bNearest) {
                kel::ZoomRowNearest(nBits, columns, pSrc + rows.nSecond * nSrcStride, pOut);
            } else {
                kel::ZoomRowBlend(eLevel, nBits / 8, columns,
                                  {pSrc + rows.nFirst * nSrcStride,
                                   pSrc + rows.nSecond * nSrcStride, rows.fFraction, pOut},
                                  nSrcStride);
            }
        }
    } catch (...) {
        // Without its tables the zoom leaves the destination as it was: zero.
    }
}
