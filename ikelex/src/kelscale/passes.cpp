// The two passes, one row at a time. This file defines every byte the scaler writes.
#include "passes.h"

namespace kel {

namespace {

int Accumulate(int nSum, unsigned char byValue, int nWeight) {
    return WrapAdd(nSum, WrapMultiply(byValue, nWeight));
}

}  // namespace

void ScaleRowPlain(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                   const LineContribType& table) {
    for (std::size_t x = 0; x < nOutWidth; ++x) {
        const PixelContribType& record = table.pPixels[x];
        int nSum0 = 0;
        int nSum1 = 0;
        int nSum2 = 0;
        for (int i = record.nLeft; i <= record.nRight; ++i) {
            const int nWeight = record.pWeights[i - record.nLeft];
            const unsigned char* pPixel = pIn + std::ptrdiff_t{3} * i;
            nSum0 = Accumulate(nSum0, pPixel[0], nWeight);
            nSum1 = Accumulate(nSum1, pPixel[1], nWeight);
            nSum2 = Accumulate(nSum2, pPixel[2], nWeight);
        }
        pOut[0] = ByteOfSum(nSum0);
        pOut[1] = ByteOfSum(nSum1);
        pOut[2] = ByteOfSum(nSum2);
        pOut += 3;
    }
}

void ScaleColumnsPlain(const unsigned char* const* ppIn, unsigned char* pOut, std::size_t nBytes,
                       const PixelContribType& record) {
    for (std::size_t x = 0; x < nBytes; ++x) {
        int nSum = 0;
        for (int i = record.nLeft; i <= record.nRight; ++i) {
            nSum = Accumulate(nSum, ppIn[i][x], record.pWeights[i - record.nLeft]);
        }
        pOut[x] = ByteOfSum(nSum);
    }
}

}  // namespace kel
