// Transposition of pixel rows. The pixel at column x, row y moves to column y, row x. Pixels are
// only moved, so every form is exact.
#ifndef KELGEOMETRY_TRANSPOSE_H
#define KELGEOMETRY_TRANSPOSE_H

#include <cstdint>

#include "kelcpu/kelcpu.h"

namespace kel {

// The source rows and the buffer for their transposition, with strides in bytes. The destination
// has nWidth rows of nHeight pixels. It does not overlap the source.
struct Transposition {
    const unsigned char* pSrc;
    std::int64_t nSrcStride;
    int nWidth;
    int nHeight;
    unsigned char* pDst;
    std::int64_t nDstStride;
};

// Whether the destination is too large to stay in the last-level cache. Its lines are then better
// written past the caches, which need not fetch them first.
bool LeavesCaches(const Transposition& work);

// Pixels of nBytes bytes (1 or more). Padding is neither read nor written. With bStream the pixels
// are written past the caches, where the processor and the memory for a small buffer allow it.
void TransposePixels(CpuLevel eLevel, int nBytes, const Transposition& work, bool bStream);

// Pixels of nBits (1, 2 or 4) bits, the leftmost in the highest bits. Rows are padded to multiples
// of 4 bytes. The unused bits of a destination row's last byte become 0, and so may its padding.
void TransposeBits(int nBits, const Transposition& work);

// Transposes blocks of 16 x 16 pixels. Width and height are multiples of 16. Only pixels are read
// and written.
using TransposeBlocks = void(const Transposition& work);

// The functions of one level.
struct TransposeFunctions {
    TransposeBlocks* apfnBlocks[4];  // pixels of 1 to 4 bytes
};

// Small vectors make the portable forms at 2 and 4 bytes as fast as memory, so every level has
// them.
namespace portable {
TransposeBlocks TransposeBlocks1, TransposeBlocks2, TransposeBlocks3, TransposeBlocks4;
}

// The table of each level.
extern const TransposeFunctions kTransposePortable;
#if defined(__x86_64__)
extern const TransposeFunctions kTransposeAvx2;
extern const TransposeFunctions kTransposeAvx512;
TransposeBlocks TransposeBlocks1Avx2;  // the best with AVX-512, too
#endif

// The functions of a level, chosen once per picture. The machine must be able to run the level.
inline const TransposeFunctions& TransposeFunctionsFor(CpuLevel eLevel) {
    switch (eLevel) {
#if defined(__x86_64__)
        case CpuLevel::kAvx512:
            return kTransposeAvx512;
        case CpuLevel::kAvx2:
            return kTransposeAvx2;
#endif
        default:
            return kTransposePortable;
    }
}

}  // namespace kel

#endif  // KELGEOMETRY_TRANSPOSE_H
