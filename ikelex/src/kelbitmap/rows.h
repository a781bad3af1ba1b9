// Functions that convert one row of pixels from one layout to another.
//
// A function takes plain pointers of any alignment and a count. It reads and writes the bytes of
// its pixels and no others. It never allocates, traces or fails. Source and destination do not
// overlap except where said. The portable functions (rows_portable.cpp) define the results. Every
// variant is byte-equal to them.
#ifndef KELBITMAP_ROWS_H
#define KELBITMAP_ROWS_H

#include <ikelex/bitmap.h>

#include <cstddef>
#include <cstdint>

#include "kelcpu/kelcpu.h"

namespace kel {

// One colour channel of a pixel word p. It is the low 8 bits of ((p & nMask) >> nRight) << nLeft.
struct ChannelField {
    std::uint32_t nMask;
    int nRight;  // 0 to 31
    int nLeft;   // 0 to 7
};

// The three channels in the order of the output bytes.
struct PixelFields {
    ChannelField aChannels[3];
};

// The field of a colour mask. The run of one bits that starts at the mask's lowest set bit is moved
// so that its top bit is bit 7. Of a run longer than 8 bits the top 8 are kept.
ChannelField FieldOfMask(std::uint32_t nMask);

// Colours are looked up as words. Bytes 0, 1 and 2 of a word are the output bytes, byte 3 is 0.
// Fills nEntries words from the first nCount palette entries (at least 1), in the order blue,
// green, red, or red, green, blue with bReverse. Words after the palette's end repeat its last
// colour.
void FillColorWords(const tagKelRGBQUAD* pPalette, int nCount, bool bReverse, std::uint32_t* pWords,
                    int nEntries);

using RowMove = void(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels);
using RowLookup = void(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
                       std::size_t nPixels);
using RowFields = void(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
                       std::size_t nPixels);

// The row functions of one level. "Reverse" exchanges bytes 0 and 2 of a pixel, so that blue,
// green, red becomes red, green, blue. "Pack" drops the fourth byte of a 32-bit pixel.
struct RowFunctions {
    RowMove* pfnReverse24;  // 24 to 24 bits. pDst may be pSrc.
    RowMove* pfnPack32;     // 32 to 24 bits
    RowMove* pfnPackReverse32;
    RowMove* pfnExpand24;  // 24 to 32 bits, fourth byte 0
    // 8, 4 and 1 bits to 24 through 256, 16 and 2 colour words. The leftmost pixel lies in the
    // highest bits of a byte.
    RowLookup* pfnPalette8;
    RowLookup* pfnPalette4;
    RowLookup* pfnPalette1;
    // Little-endian 16- and 32-bit pixel words to 24 bits, channel by channel.
    RowFields* pfnFields16;
    RowFields* pfnFields32;
};

// The portable functions. The variants leave the last pixels of a row to them, and a level without
// a faster form of a function has the portable one in its table.
namespace portable {
RowMove Reverse24, Pack32, PackReverse32, Expand24;
RowLookup Palette8, Palette4, Palette1;
RowFields Fields16, Fields32;
}  // namespace portable

// The table of each level.
extern const RowFunctions kRowsPortable;
#if defined(__x86_64__)
extern const RowFunctions kRowsAvx2;
extern const RowFunctions kRowsAvx512;
#elif defined(__aarch64__)
extern const RowFunctions kRowsNeon;
#endif

// The functions of a level, chosen once per operation. The machine must be able to run the level.
inline const RowFunctions& RowFunctionsFor(CpuLevel eLevel) {
    switch (eLevel) {
#if defined(__x86_64__)
        case CpuLevel::kAvx512:
            return kRowsAvx512;
        case CpuLevel::kAvx2:
            return kRowsAvx2;
#elif defined(__aarch64__)
        case CpuLevel::kNeon:
            return kRowsNeon;
#endif
        default:
            return kRowsPortable;
    }
}

}  // namespace kel

#endif  // KELBITMAP_ROWS_H
