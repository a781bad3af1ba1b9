// Row and picture sizes, overflow-safe.
#ifndef KELBITMAP_STRIDES_H
#define KELBITMAP_STRIDES_H

#include <cstdint>
#include <limits>

namespace kel {

// Bytes of a row of nWidth pixels at nBits bits per pixel, padded to a multiple of 4:
// ((nBits * nWidth + 31) / 32) * 4, exact in 64 bits (|nBits * nWidth| < 2^48).
constexpr std::int64_t RowStride(int nBits, std::int64_t nWidth) {
    return (nBits * nWidth + 31) / 32 * 4;
}

// Bytes of nHeight such rows, exact (a stride is below 2^46, so the product may exceed 64 bits only
// for depths no header can hold together with a full height; headers hold 16-bit depths and 31-bit
// sizes: 2^13 * 2^31 * 2^31 would, hence the saturation).
constexpr std::int64_t PictureSize(int nBits, std::int64_t nWidth, std::int64_t nHeight) {
    std::int64_t nSize = 0;
    if (__builtin_mul_overflow(RowStride(nBits, nWidth), nHeight, &nSize)) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return nSize;
}

// The largest picture, row array or scratch size the library takes: 31 bits.
inline constexpr std::int64_t kMaxSize = std::numeric_limits<std::int32_t>::max();

}  // namespace kel

#endif  // KELBITMAP_STRIDES_H
