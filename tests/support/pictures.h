// Deterministic random pictures of every depth an image holds.
#ifndef SUPPORT_PICTURES_H
#define SUPPORT_PICTURES_H

#include <cstdint>
#include <string>
#include <vector>

#include "kelimage/kelimage.h"

namespace support {

// A small generator whose sequence is the same everywhere.
class Random {
  public:
    explicit Random(std::uint32_t nSeed) : m_nState(nSeed * 2654435761u + 1) {}
    std::uint32_t Next();
    // 0 to nLimit - 1.
    int Below(int nLimit) { return static_cast<int>(Next() % static_cast<std::uint32_t>(nLimit)); }
    unsigned char Byte() { return static_cast<unsigned char>(Next() >> 24); }
    void Fill(unsigned char* p, std::size_t nBytes);

  private:
    std::uint32_t m_nState;
};

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
    std::vector<unsigned char> block;
    std::vector<unsigned char> bits;

    BITMAPINFO* Info() { return reinterpret_cast<BITMAPINFO*>(block.data()); }
};

Picture MakePicture(const Kind& kind, int nWidth, int nHeight, std::uint32_t nSeed);

// Opens such a picture in an image, which then owns copies.
KelResult OpenRandom(CKelImage* pImage, const Kind& kind, int nWidth, int nHeight,
                     std::uint32_t nSeed);

}  // namespace support

#endif  // SUPPORT_PICTURES_H
