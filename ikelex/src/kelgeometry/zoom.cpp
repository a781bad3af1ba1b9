// The zoom's samples, its rows of palette indices, and the loop over a picture's rows.
#include "zoom.h"

#include <algorithm>
#include <cstddef>

#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "zoomrows.h"

namespace kel {

namespace {

// nCount pixels of nBits bits in the high bits of a byte. At 8 bits it is one pixel.
template <int nBits>
unsigned char NearestPixels(const int* pColumns, int nCount, const unsigned char* pSrc) {
    constexpr int kPerByte = 8 / nBits;
    constexpr unsigned int kMask = (1u << nBits) - 1;
    unsigned int nPixels = 0;
    for (int k = 0; k < nCount; ++k) {
        const std::uint32_t nColumn = Low32(pColumns[k]);
        const unsigned int nShift = (kPerByte - 1 - nColumn % kPerByte) * nBits;
        nPixels = nPixels << nBits | (pSrc[nColumn / kPerByte] >> nShift & kMask);
    }
    return LowByte(nPixels << (kPerByte - nCount) * nBits);
}

template <int nBits>
void NearestRow(const ZoomColumns& columns, const unsigned char* pSrc, unsigned char* pOut) {
    constexpr int kPerByte = 8 / nBits;
    const int* pColumns = columns.pSecond;
    int nLeft = columns.nCount;
    for (; nLeft >= kPerByte; nLeft -= kPerByte, pColumns += kPerByte) {
        *pOut++ = NearestPixels<nBits>(pColumns, kPerByte, pSrc);
    }
    if (nLeft > 0) {
        *pOut = NearestPixels<nBits>(pColumns, nLeft, pSrc);
    }
}

}  // namespace

ZoomTables::ZoomTables(int nSrcWidth, int nDstWidth)
    : m_nCount(nDstWidth),
      m_nBlocks((AsSize(nDstWidth) + kZoomBlock - 1) / kZoomBlock),
      m_pFirst(new int[m_nBlocks * kZoomBlock]),
      m_pSecond(new int[m_nBlocks * (kZoomBlock + kZoomLookup)]),
      m_pFraction(new float[m_nBlocks * kZoomBlock]) {
    const float fStep = ZoomStep(nSrcWidth, nDstWidth);
    ZoomSample sample = {};
    for (std::size_t i = 0; i < m_nBlocks * kZoomBlock; ++i) {
        if (i < AsSize(nDstWidth)) {
            sample = ZoomSampleAt(static_cast<int>(i), fStep, nSrcWidth);
        }
        m_pFirst[i] = sample.nFirst;
        m_pSecond[i] = sample.nSecond;
        m_pFraction[i] = sample.fFraction;
    }
}

float ZoomStep(int nSrc, int nDst) {
    return nDst == 1 ? 0.0f : static_cast<float>(nSrc - 1) / static_cast<float>(nDst - 1);
}

ZoomSample ZoomSampleAt(int nIndex, float fStep, int nSrc) {
    // A position is below 2^32, so it fits 64 bits.
    const float fPosition = static_cast<float>(nIndex) * fStep;
    const auto nFirst = static_cast<std::int64_t>(fPosition);
    const auto nSecond = static_cast<std::int64_t>(fPosition + 0.5f);
    const std::int64_t nLast = nSrc - 1;
    return {static_cast<int>(std::min(nFirst, nLast)), static_cast<int>(std::min(nSecond, nLast)),
            fPosition - static_cast<float>(nFirst)};
}

void ZoomPicture(CpuLevel eLevel, int nBits, const Zoom& zoom) {
    const ZoomTables tables(zoom.nSrcWidth, zoom.nDstWidth);
    const ZoomColumns columns = tables.Columns();
    const std::int64_t nSrcStride = RowStride(nBits, zoom.nSrcWidth);
    const std::int64_t nDstStride = RowStride(nBits, zoom.nDstWidth);
    const std::int64_t nDstBytes = (std::int64_t{nBits} * zoom.nDstWidth + 7) / 8;
    const int nBytes = nBits / 8;
    ZoomBlend* pfnBlend = nullptr;
    if (nBytes >= 2 && nBytes <= 4) {
        const ZoomFunctions& level = ZoomFunctionsFor(eLevel);
        const ZoomFunctions& functions = nSrcStride <= level.nMaxRowBytes ? level : kZoomPortable;
        functions.pfnPrepare(nBytes, columns);
        pfnBlend = functions.apfnBlend[nBytes - 2];
    }
    const auto pfnNearest = nBits == 1   ? NearestRow<1>
                            : nBits == 4 ? NearestRow<4>
                            : nBits == 8 ? NearestRow<8>
                                         : nullptr;
    const float fStep = ZoomStep(zoom.nSrcHeight, zoom.nDstHeight);
    int nBefore = -1;
    for (int nRow = 0; nRow < zoom.nDstHeight; ++nRow) {
        const ZoomSample rows = ZoomSampleAt(nRow, fStep, zoom.nSrcHeight);
        const unsigned char* const pSecond = zoom.pSrc + rows.nSecond * nSrcStride;
        unsigned char* const pOut = zoom.pDst + nRow * nDstStride;
        if (pfnBlend != nullptr) {
            pfnBlend(columns, {zoom.pSrc + rows.nFirst * nSrcStride, pSecond, nSrcStride,
                               rows.fFraction, pOut});
        } else if (pfnNearest != nullptr && rows.nSecond == nBefore) {
            std::copy_n(pOut - nDstStride, nDstBytes, pOut);
        } else if (pfnNearest != nullptr) {
            pfnNearest(columns, pSecond, pOut);
        }
        nBefore = rows.nSecond;
    }
}

}  // namespace kel
