// The end of a block of 8 output pixels, for the row functions of AVX2.
#ifndef X86_STOREEIGHT_AVX2_H
#define X86_STOREEIGHT_AVX2_H

#include <cstddef>
#include <cstring>

#include "kelcpu/x86.h"

#if defined(__x86_64__)

namespace kel {

// Stores up to 8 pixels, 12 bytes of each half, as pixels x to x + 7 of a row of nOutWidth. Writes
// no byte after the row.
KEL_AVX2 KEL_INLINE void StoreEight(__m256i bytes, unsigned char* pOut, std::size_t x,
                                    std::size_t nOutWidth) {
    unsigned char copy[12 + 16];
    const std::size_t nLeft = 3 * (nOutWidth - x);
    // A store of 16 bytes overwrites 4 bytes of what follows, which is stored later.
    unsigned char* p = nLeft >= sizeof copy ? pOut + 3 * x : copy;
    Store128(p, _mm256_castsi256_si128(bytes));
    Store128(p + 12, _mm256_extracti128_si256(bytes, 1));
    if (p == copy) {
        std::memcpy(pOut + 3 * x, copy, nLeft < 24 ? nLeft : 24);
    }
}

}  // namespace kel

#endif  // __x86_64__

#endif  // X86_STOREEIGHT_AVX2_H
