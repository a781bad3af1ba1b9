// Row and picture sizes in bytes, computed in 64 bits.
#ifndef KELBITMAP_STRIDES_H
#define KELBITMAP_STRIDES_H

#include <cstdint>
#include <limits>

namespace kel {

// Bytes of a row of nWidth pixels at nBits bits per pixel, padded to a multiple of 4. Headers hold
// 16-bit depths and 32-bit widths, so that |nBits * nWidth| < 2^48.
constexpr std::int64_t RowStride(int nBits, std::int64_t nWidth) {
    return (nBits * nWidth + 31) / 32 * 4;
}

// Bytes of nHeight such rows. A depth beyond 32 with a full width and height can exceed 64 bits.
// The result is then the largest value, which every caller refuses.
constexpr std::int64_t PictureSize(int nBits, std::int64_t nWidth, std::int64_t nHeight) {
    std::int64_t nSize = 0;
    if (__builtin_mul_overflow(RowStride(nBits, nWidth), nHeight, &nSize)) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return nSize;
}

// The largest picture, row array or scratch buffer in bytes, where nothing else is said.
inline constexpr std::int64_t kMaxSize = std::numeric_limits<std::int32_t>::max();

}  // namespace kel

#endif  // KELBITMAP_STRIDES_H
