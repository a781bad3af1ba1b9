// Transposition of raw pixel rows: the pixel at column x, row y moves to column y, row x.
#ifndef KELIMAGE_TRANSPOSE_H
#define KELIMAGE_TRANSPOSE_H

#include <cstdint>

namespace kel {

// The source rows and the buffer that receives their transposition; strides in bytes. The
// destination holds nWidth rows of nHeight pixels and does not overlap the source.
struct Transposition {
    const unsigned char* pSrc;
    std::int64_t nSrcStride;
    int nWidth;
    int nHeight;
    unsigned char* pDst;
    std::int64_t nDstStride;
};

// Whole pixels of nBytes bytes (1 or more). Padding is not written. The plain definition.
void TransposePixelsPlain(int nBytes, const Transposition& work);

// Pixels of nBits (1, 2 or 4) bits, leftmost in the highest bits. The destination is zero before.
void TransposeBits(int nBits, const Transposition& work);

}  // namespace kel

#endif  // KELIMAGE_TRANSPOSE_H
