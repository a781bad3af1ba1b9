// The padding of a row consists of the unused bits of its last byte, and of the bytes up to the
// stride.
#ifndef KELBITMAP_PADDING_H
#define KELBITMAP_PADDING_H

#include <algorithm>
#include <cstdint>

#include "strides.h"

namespace kel {

// Zeroes the padding of nRows rows of nWidth pixels, from the byte that holds the first unused bit.
// The pixels that share that byte are zeroed as well. All others stay as they are.
inline void ClearPadding(unsigned char* pRows, int nBits, int nWidth, int nRows) {
    const std::int64_t nStride = RowStride(nBits, nWidth);
    const std::int64_t nUsed = std::int64_t{nBits} * nWidth / 8;
    if (nUsed == nStride) {
        return;
    }
    for (int i = 0; i < nRows; ++i) {
        std::fill_n(pRows + i * nStride + nUsed, nStride - nUsed, std::uint8_t{0});
    }
}

}  // namespace kel

#endif  // KELBITMAP_PADDING_H
