#include "zoomrows.h"

#include <algorithm>

namespace kel {

namespace {

template <int nBytes>
void BlendPlain(const ZoomColumns& columns, const ZoomRow& row, int nBegin) {
    const float fY1 = row.fFraction;
    const float fY0 = 1.0f - fY1;
    for (int i = nBegin; i < columns.nCount; ++i) {
        const float fX1 = columns.pFraction[i];
        const float fX0 = 1.0f - fX1;
        const float f00 = fY0 * fX0;
        const float f01 = fY0 * fX1;
        const float f10 = fY1 * fX0;
        const float f11 = fY1 * fX1;
        const std::int64_t nFirst = std::int64_t{columns.pFirst[i]} * nBytes;
        const std::int64_t nSecond = std::int64_t{columns.pSecond[i]} * nBytes;
        unsigned char* const pOut = row.pOut + std::int64_t{i} * nBytes;
        for (int k = 0; k < nBytes; ++k) {
            const float f = static_cast<float>(row.pFirst[nFirst + k]) * f00 +
                            static_cast<float>(row.pFirst[nSecond + k]) * f01 +
                            static_cast<float>(row.pSecond[nFirst + k]) * f10 +
                            static_cast<float>(row.pSecond[nSecond + k]) * f11;
            pOut[k] = static_cast<unsigned char>(static_cast<int>(f));
        }
    }
}

}  // namespace

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

void ZoomRowPlain(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nBegin) {
    switch (nBytes) {
        case 2:
            return BlendPlain<2>(columns, row, nBegin);
        case 3:
            return BlendPlain<3>(columns, row, nBegin);
        case 4:
            return BlendPlain<4>(columns, row, nBegin);
        default:
            return;
    }
}

void ZoomRowNearest(int nBits, const ZoomColumns& columns, const unsigned char* pSrc,
                    unsigned char* pOut) {
    const int nPerByte = 8 / nBits;
    const int nMask = (1 << nBits) - 1;
    for (int i = 0; i < columns.nCount; ++i) {
        const int nColumn = columns.pSecond[i];
        const int nFromShift = 8 - nBits * (nColumn % nPerByte + 1);
        const int nToShift = 8 - nBits * (i % nPerByte + 1);
        const int nPixel = pSrc[nColumn / nPerByte] >> nFromShift & nMask;
        pOut[i / nPerByte] = static_cast<unsigned char>(pOut[i / nPerByte] | nPixel << nToShift);
    }
}

}  // namespace kel
