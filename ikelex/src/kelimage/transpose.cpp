#include "transpose.h"

#include <cstring>

namespace kel {

void TransposePixelsPlain(int nBytes, const Transposition& work) {
    for (int nX = 0; nX < work.nWidth; ++nX) {
        const unsigned char* pFrom = work.pSrc + std::int64_t{nX} * nBytes;
        unsigned char* pTo = work.pDst + nX * work.nDstStride;
        for (int nY = 0; nY < work.nHeight; ++nY) {
            std::memcpy(pTo, pFrom, static_cast<std::size_t>(nBytes));
            pFrom += work.nSrcStride;
            pTo += nBytes;
        }
    }
}

void TransposeBits(int nBits, const Transposition& work) {
    const int nPerByte = 8 / nBits;
    const int nMask = (1 << nBits) - 1;
    for (int nX = 0; nX < work.nWidth; ++nX) {
        const unsigned char* pFrom = work.pSrc + nX / nPerByte;
        const int nFromShift = 8 - nBits * (nX % nPerByte + 1);
        unsigned char* pTo = work.pDst + nX * work.nDstStride;
        for (int nY = 0; nY < work.nHeight; ++nY) {
            const int nPixel = *pFrom >> nFromShift & nMask;
            const int nToShift = 8 - nBits * (nY % nPerByte + 1);
            pTo[nY / nPerByte] =
                static_cast<unsigned char>(pTo[nY / nPerByte] | nPixel << nToShift);
            pFrom += work.nSrcStride;
        }
    }
}

}  // namespace kel
