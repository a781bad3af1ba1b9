// The row functions for every machine, and the definition of the others.
#include <bit>
#include <cstring>

#include "rows.h"

namespace kel {

namespace {

static_assert(std::endian::native == std::endian::little, "pixel words are little-endian");

void StoreColor(std::uint32_t nColor, unsigned char* pDst) {
    pDst[0] = static_cast<unsigned char>(nColor);
    pDst[1] = static_cast<unsigned char>(nColor >> 8);
    pDst[2] = static_cast<unsigned char>(nColor >> 16);
}

std::uint32_t LoadWord(const unsigned char* p) {
    std::uint32_t nWord;
    std::memcpy(&nWord, p, sizeof nWord);
    return nWord;
}

// Four colour words (byte 3 is 0) become twelve bytes: two stores instead of twelve.
void StoreFourColors(std::uint32_t n0, std::uint32_t n1, std::uint32_t n2, std::uint32_t n3,
                     unsigned char* pDst) {
    const std::uint64_t nFirst = n0 | std::uint64_t{n1} << 24 | std::uint64_t{n2} << 48;
    const std::uint32_t nLast = n2 >> 16 | n3 << 8;
    std::memcpy(pDst, &nFirst, sizeof nFirst);
    std::memcpy(pDst + sizeof nFirst, &nLast, sizeof nLast);
}

// The first three bytes of a word, in turned order, as a colour word; and the last three.
std::uint32_t TurnFirst(std::uint32_t nWord) {
    return __builtin_bswap32(nWord) >> 8;
}
std::uint32_t TurnLast(std::uint32_t nWord) {
    return __builtin_bswap32(nWord) & 0xFFFFFF;
}

void Reverse24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (; nPixels >= 4; nPixels -= 4, pSrc += 12, pDst += 12) {
        // All four are read before any is written: in place is allowed.
        StoreFourColors(TurnFirst(LoadWord(pSrc)), TurnFirst(LoadWord(pSrc + 3)),
                        TurnFirst(LoadWord(pSrc + 6)), TurnLast(LoadWord(pSrc + 8)), pDst);
    }
    for (; nPixels > 0; --nPixels, pSrc += 3, pDst += 3) {
        const unsigned char byFirst = pSrc[0];
        pDst[0] = pSrc[2];
        pDst[1] = pSrc[1];
        pDst[2] = byFirst;
    }
}

template <bool kReversed>
void Narrow32(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    const auto color = [](const unsigned char* p) {
        return kReversed ? TurnFirst(LoadWord(p)) : LoadWord(p) & 0xFFFFFF;
    };
    for (; nPixels >= 4; nPixels -= 4, pSrc += 16, pDst += 12) {
        StoreFourColors(color(pSrc), color(pSrc + 4), color(pSrc + 8), color(pSrc + 12), pDst);
    }
    for (; nPixels > 0; --nPixels, pSrc += 4, pDst += 3) {
        StoreColor(color(pSrc), pDst);
    }
}

void Expand24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (; nPixels >= 4; nPixels -= 4, pSrc += 12, pDst += 16) {
        const std::uint32_t aColors[4] = {LoadWord(pSrc) & 0xFFFFFF, LoadWord(pSrc + 3) & 0xFFFFFF,
                                          LoadWord(pSrc + 6) & 0xFFFFFF, LoadWord(pSrc + 8) >> 8};
        std::memcpy(pDst, aColors, sizeof aColors);
    }
    for (; nPixels > 0; --nPixels, pSrc += 3, pDst += 4) {
        pDst[0] = pSrc[0];
        pDst[1] = pSrc[1];
        pDst[2] = pSrc[2];
        pDst[3] = 0;
    }
}

void Palette8(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
              std::size_t nPixels) {
    // A word is stored whole, and the next overwrites its last byte; that of a step's last word
    // needs one pixel more.
    for (; nPixels > 4; nPixels -= 4, pSrc += 4, pDst += 12) {
        const std::uint32_t nIndices = LoadWord(pSrc);
        for (int i = 0; i < 4; ++i) {
            std::memcpy(pDst + 3 * i, &pWords[nIndices >> 8 * i & 0xFF], 4);
        }
    }
    for (; nPixels > 0; --nPixels, ++pSrc, pDst += 3) {
        StoreColor(pWords[*pSrc], pDst);
    }
}

void Palette4(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
              std::size_t nPixels) {
    for (; nPixels >= 4; nPixels -= 4, pSrc += 2, pDst += 12) {
        StoreFourColors(pWords[pSrc[0] >> 4], pWords[pSrc[0] & 15], pWords[pSrc[1] >> 4],
                        pWords[pSrc[1] & 15], pDst);
    }
    for (std::size_t i = 0; i < nPixels; ++i, pDst += 3) {
        StoreColor(pWords[i % 2 == 0 ? pSrc[i / 2] >> 4 : pSrc[i / 2] & 15], pDst);
    }
}

void Palette1(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
              std::size_t nPixels) {
    // The twelve output bytes of each four pixels.
    unsigned char aFour[16][12];
    for (int i = 0; i < 16; ++i) {
        StoreFourColors(pWords[i >> 3], pWords[i >> 2 & 1], pWords[i >> 1 & 1], pWords[i & 1],
                        aFour[i]);
    }
    for (; nPixels >= 8; nPixels -= 8, ++pSrc, pDst += 24) {
        std::memcpy(pDst, aFour[*pSrc >> 4], 12);
        std::memcpy(pDst + 12, aFour[*pSrc & 15], 12);
    }
    for (std::size_t i = 0; i < nPixels; ++i, pDst += 3) {
        StoreColor(pWords[*pSrc >> (7 - i) & 1], pDst);
    }
}

// A channel at its place in a colour word.
std::uint32_t Channel(std::uint32_t nPixel, const ChannelField& field, int nByte) {
    return ((nPixel & field.nMask) >> field.nRight << field.nLeft & 0xFF) << (8 * nByte);
}

// In two steps, so that the first has no order between its pixels and compiles to vectors.
template <typename Word>
void Fields(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
            std::size_t nPixels) {
    constexpr std::size_t kBlock = 64;
    const PixelFields held = fields;  // nothing written below can change it
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < kBlock ? nPixels : kBlock;
        Word aPixels[kBlock];
        std::uint32_t aColors[kBlock];
        std::memcpy(aPixels, pSrc, nStep * sizeof(Word));
        for (std::size_t i = 0; i < nStep; ++i) {
            aColors[i] = Channel(aPixels[i], held.aChannels[0], 0) |
                         Channel(aPixels[i], held.aChannels[1], 1) |
                         Channel(aPixels[i], held.aChannels[2], 2);
        }
        std::size_t i = 0;
        for (; i + 4 <= nStep; i += 4, pDst += 12) {
            StoreFourColors(aColors[i], aColors[i + 1], aColors[i + 2], aColors[i + 3], pDst);
        }
        for (; i < nStep; ++i, pDst += 3) {
            StoreColor(aColors[i], pDst);
        }
        pSrc += nStep * sizeof(Word);
        nPixels -= nStep;
    }
}

}  // namespace

const RowFunctions kRowsPortable = {
    Reverse24, Narrow32<false>,       Narrow32<true>,       Expand24, Palette8, Palette4,
    Palette1,  Fields<std::uint16_t>, Fields<std::uint32_t>};

}  // namespace kel
