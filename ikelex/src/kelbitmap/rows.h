// Row functions: one row of pixels from one layout to another.
//
// Plain pointers and counts. A function reads and writes the bytes of its pixels and none beside
// them, whatever the alignment; it never allocates, traces or fails. Source and destination do not
// overlap except where said. The portable functions (rows_portable.cpp) define the results; every
// variant is byte-equal to them.
#ifndef KELBITMAP_ROWS_H
#define KELBITMAP_ROWS_H

#include <ikelex/bitmap.h>

#include <cstddef>
#include <cstdint>

#include "../kelcpu/kelcpu.h"

namespace kel {

// One colour channel of a pixel word p: ((p & nMask) >> nRight) << nLeft, its low 8 bits.
struct ChannelField {
    std::uint32_t nMask;
    int nRight;  // 0 to 31
    int nLeft;   // 0 to 7
};

// The three channels in the order of the output bytes.
struct PixelFields {
    ChannelField aChannels[3];
};

// The field of a colour mask: the run of one bits that starts at its lowest set bit comes to lie
// with its top bit at bit 7. Of runs longer than 8 the top 8 bits are kept.
ChannelField FieldOfMask(std::uint32_t nMask);

// Colours are looked up as words whose bytes 0, 1, 2 are the output bytes in order; byte 3 is 0.
// Fills nEntries words from the first nCount palette entries (at least 1): blue, green, red, or
// red, green, blue with bReverse. Indices beyond the palette take its last colour.
void FillColorWords(const tagKelRGBQUAD* pPalette, int nCount, bool bReverse, std::uint32_t* pWords,
                    int nEntries);

struct RowFunctions {
    // 24 to 24 bits, bytes 0 and 2 of each pixel exchanged. pDst may be pSrc.
    void (*pfnReverse24)(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels);
    // 32 to 24 bits: the fourth byte is dropped; the order of the others is kept or reversed.
    void (*pfnPack32)(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels);
    void (*pfnReverse32)(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels);
    // 24 to 32 bits, fourth byte 0.
    void (*pfnExpand24)(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels);
    // 8, 4 and 1 bits to 24 through 256, 16 and 2 colour words. The leftmost pixel lies in the
    // highest bits of a byte.
    void (*pfnPalette8)(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
                        std::size_t nPixels);
    void (*pfnPalette4)(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
                        std::size_t nPixels);
    void (*pfnPalette1)(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
                        std::size_t nPixels);
    // Little-endian 16- and 32-bit pixel words to 24 bits, channel by channel.
    void (*pfnFields16)(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
                        std::size_t nPixels);
    void (*pfnFields32)(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
                        std::size_t nPixels);
};

// The fastest functions of a level. The machine must be able to run it.
const RowFunctions& RowFunctionsFor(CpuLevel eLevel);

// The table of each level.
extern const RowFunctions kRowsPortable;
#if defined(__x86_64__)
extern const RowFunctions kRowsAvx2;
extern const RowFunctions kRowsAvx512;
#endif

}  // namespace kel

#endif  // KELBITMAP_ROWS_H
