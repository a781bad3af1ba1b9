// Deterministic random pictures of every depth an image holds.
#ifndef SUPPORT_PICTURES_H
#define SUPPORT_PICTURES_H

#include <cstdint>
#include <string>
#include <vector>

#include "kelimage/kelimage.h"
#include "support/rows.h"

namespace support {

// A depth, a compression and, for palettes, a number of colours (0: the default of the depth).
struct Kind {
    int nBits;
    unsigned int nCompression;
    unsigned int nColors;
};

// All depths: full and short palettes, 5-5-5, bit fields at 16 and 32 bits, 24, 32.
const std::vector<Kind>& AllKinds();

// For test names and failure messages: "8bit_c0_n20".
std::string Name(const Kind& kind);

// A caller's bitmap: header block with colour table or masks, and stride x height random pixel
// bytes (padding too).
struct Picture {
    Bytes block;
    Bytes bits;

    BITMAPINFO* Info() { return reinterpret_cast<BITMAPINFO*>(block.data()); }
    const unsigned char* Row(int nRow) {
        const BITMAPINFOHEADER& header = Info()->bmiHeader;
        return bits.data() + nRow * kel::RowStride(header.biBitCount, header.biWidth);
    }
};

Picture MakePicture(const Kind& kind, int nWidth, int nHeight, std::uint32_t nSeed);

// Opens such a picture in an image, which then owns copies.
KelResult OpenRandom(CKelImage* pImage, const Kind& kind, int nWidth, int nHeight,
                     std::uint32_t nSeed);

}  // namespace support

#endif  // SUPPORT_PICTURES_H
