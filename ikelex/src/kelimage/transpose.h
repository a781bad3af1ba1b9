// Transposition of raw pixel rows: the pixel at column x, row y moves to column y, row x.
#ifndef KELIMAGE_TRANSPOSE_H
#define KELIMAGE_TRANSPOSE_H

#include <cstdint>

#include "../kelcpu/kelcpu.h"

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

// The same, faster at 1 to 4 bytes: a tile of the source at a time is transposed in a small buffer,
// whose rows then go out as whole cache lines. Without memory for it the plain loop does the work.
void TransposePixels(CpuLevel eLevel, int nBytes, const Transposition& work);

// Pixels of nBits (1, 2 or 4) bits, leftmost in the highest bits. The destination is zero before.
void TransposeBits(int nBits, const Transposition& work);

// Transposes blocks of 16 x 16 pixels; width and height are multiples of 16. Only the source's
// pixels are read. At 3 bytes a pixel up to kBehindRow bytes behind each destination row are
// overwritten.
using TransposeBlocks = void (*)(const Transposition& work);
constexpr int kBehindRow = 16;

// The variant for pixels of nBytes (1 to 4) bytes: for 3 bytes AVX-512 where the machine has all of
// kAvx512; for 1 and 3 bytes AVX2; else the portable form, which small vectors make as fast as the
// memory behind it.
TransposeBlocks ChooseTransposeBlocks(CpuLevel eLevel, int nBytes);

TransposeBlocks PortableTransposeBlocks(int nBytes);
#if defined(__x86_64__)
void TransposeBlocks1Avx2(const Transposition& work);
void TransposeBlocks3Avx2(const Transposition& work);
void TransposeBlocks3Avx512(const Transposition& work);
#endif

}  // namespace kel

#endif  // KELIMAGE_TRANSPOSE_H
