// The layout of a BMP file, and the sizes and offsets of its headers.
//
//   - file header of 14 bytes, with "BM", file size, two reserved words, position of the pixel rows
//   - info header of 40 bytes (laid out as BITMAPINFOHEADER), or of 12 bytes in OS/2 files
//   - colour table of three 32-bit masks, or of entries of 4 bytes (3 after a 12-byte header)
//   - pixel rows, the last row of the picture first unless the height is negative
//
// All numbers are little-endian and packed.
#ifndef KELBITMAP_BMPLAYOUT_H
#define KELBITMAP_BMPLAYOUT_H

#include <ikelex/bitmap.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kel {

static_assert(sizeof(BITMAPINFOHEADER) == 40, "the header in memory is the header in the file");
static_assert(std::endian::native == std::endian::little, "headers are copied byte for byte");

inline constexpr unsigned int kBmpFileHeaderSize = 14;
inline constexpr unsigned int kBmpFileTypeAt = 0;      // 16 bits
inline constexpr unsigned int kBmpFileSizeAt = 2;      // 32 bits
inline constexpr unsigned int kBmpFileOffBitsAt = 10;  // 32 bits
inline constexpr std::uint16_t kBmpFileType = 0x4D42;  // "BM"

inline constexpr unsigned int kBmpInfoHeaderSize = 40;

inline constexpr unsigned int kBmpCoreHeaderSize = 12;
inline constexpr unsigned int kBmpCoreWidthAt = 4;  // the rest 16 bits each
inline constexpr unsigned int kBmpCoreHeightAt = 6;
inline constexpr unsigned int kBmpCorePlanesAt = 8;
inline constexpr unsigned int kBmpCoreBitCountAt = 10;

inline constexpr unsigned int kBmpQuadSize = 4;    // a colour-table entry after the 40-byte header
inline constexpr unsigned int kBmpTripleSize = 3;  // and after the 12-byte one: blue, green, red

inline std::uint16_t Load16(const unsigned char* p) {
    std::uint16_t nValue;
    std::memcpy(&nValue, p, sizeof nValue);
    return nValue;
}

inline std::uint32_t Load32(const unsigned char* p) {
    std::uint32_t nValue;
    std::memcpy(&nValue, p, sizeof nValue);
    return nValue;
}

inline void Store16(unsigned char* p, std::uint16_t nValue) {
    std::memcpy(p, &nValue, sizeof nValue);
}

inline void Store32(unsigned char* p, std::uint32_t nValue) {
    std::memcpy(p, &nValue, sizeof nValue);
}

}  // namespace kel

#endif  // KELBITMAP_BMPLAYOUT_H
