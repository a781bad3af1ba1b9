// The row functions for every machine. They define the bytes of every variant.
#include <bit>
#include <cstring>

#include "integers.h"
#include "kelcpu/shuffle.h"
#include "rows.h"

namespace kel {

namespace {

static_assert(std::endian::native == std::endian::little, "pixel words are little-endian");

void StoreColor(std::uint32_t nColor, unsigned char* pDst) {
    pDst[0] = LowByte(nColor);
    pDst[1] = LowByte(nColor >> 8);
    pDst[2] = LowByte(nColor >> 16);
}

std::uint32_t LoadWord(const unsigned char* p) {
    std::uint32_t nWord;
    std::memcpy(&nWord, p, sizeof nWord);
    return nWord;
}

// Packs four colour words (byte 3 is 0) into twelve bytes, with two stores instead of twelve.
void StoreFourColors(std::uint32_t n0, std::uint32_t n1, std::uint32_t n2, std::uint32_t n3,
                     unsigned char* pDst) {
    const std::uint64_t nFirst = n0 | std::uint64_t{n1} << 24 | std::uint64_t{n2} << 48;
    const std::uint32_t nLast = n2 >> 16 | n3 << 8;
    std::memcpy(pDst, &nFirst, sizeof nFirst);
    std::memcpy(pDst + sizeof nFirst, &nLast, sizeof nLast);
}

// The first three bytes of a word, reversed, as a colour word.
std::uint32_t ReverseFirst(std::uint32_t nWord) {
    return __builtin_bswap32(nWord) >> 8;
}
// The last three.
std::uint32_t ReverseLast(std::uint32_t nWord) {
    return __builtin_bswap32(nWord) & 0xFFFFFF;
}

}  // namespace

void portable::Reverse24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (; nPixels >= 4; nPixels -= 4, pSrc += 12, pDst += 12) {
        // All four are read before any is written, so pDst may be pSrc.
        StoreFourColors(ReverseFirst(LoadWord(pSrc)), ReverseFirst(LoadWord(pSrc + 3)),
                        ReverseFirst(LoadWord(pSrc + 6)), ReverseLast(LoadWord(pSrc + 8)), pDst);
    }
    for (; nPixels > 0; --nPixels, pSrc += 3, pDst += 3) {
        const unsigned char byFirst = pSrc[0];
        pDst[0] = pSrc[2];
        pDst[1] = pSrc[1];
        pDst[2] = byFirst;
    }
}

namespace {

template <bool kReversed>
void Pack(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    const auto color = [](const unsigned char* p) {
        return kReversed ? ReverseFirst(LoadWord(p)) : LoadWord(p) & 0xFFFFFF;
    };
    for (; nPixels >= 4; nPixels -= 4, pSrc += 16, pDst += 12) {
        StoreFourColors(color(pSrc), color(pSrc + 4), color(pSrc + 8), color(pSrc + 12), pDst);
    }
    for (; nPixels > 0; --nPixels, pSrc += 4, pDst += 3) {
        StoreColor(color(pSrc), pDst);
    }
}

}  // namespace

void portable::Pack32(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    Pack<false>(pSrc, pDst, nPixels);
}

void portable::PackReverse32(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    Pack<true>(pSrc, pDst, nPixels);
}

void portable::Expand24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
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

void portable::Palette8(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
                        std::size_t nPixels) {
    // A word is stored whole and the next one overwrites its last byte. The last word of a step
    // therefore needs one more pixel after it.
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

void portable::Palette4(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
                        std::size_t nPixels) {
    for (; nPixels >= 4; nPixels -= 4, pSrc += 2, pDst += 12) {
        StoreFourColors(pWords[pSrc[0] >> 4], pWords[pSrc[0] & 15], pWords[pSrc[1] >> 4],
                        pWords[pSrc[1] & 15], pDst);
    }
    for (std::size_t i = 0; i < nPixels; ++i, pDst += 3) {
        StoreColor(pWords[i % 2 == 0 ? pSrc[i / 2] >> 4 : pSrc[i / 2] & 15], pDst);
    }
}

void portable::Palette1(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
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

namespace {

// A channel at its place in a colour word.
std::uint32_t Channel(std::uint32_t nPixel, const ChannelField& field, int nByte) {
    return ((nPixel & field.nMask) >> field.nRight << field.nLeft & 0xFF) << (8 * nByte);
}

template <typename Lane>
using Lanes __attribute__((vector_size(16))) = Lane;
using Halves = Lanes<std::uint16_t>;
using Words = Lanes<std::uint32_t>;
using Pairs = Lanes<std::uint64_t>;

// A channel of several pixels, one in each lane, at byte nByte of the lane. The mask already
// removes the bits that nLeft would shift out of the channel's byte, so mask and shifts are all
// there is.
template <typename Lane>
struct LaneField {
    Lane nMask, nRight, nLeft;

    LaneField(const ChannelField& field, int nByte) : nMask(0), nRight(0), nLeft(0) {
        constexpr int kLaneBits = 8 * sizeof(Lane);
        if (field.nRight < kLaneBits) {  // else nothing of the pixel remains
            nMask = static_cast<Lane>(field.nMask & 0xFFU >> field.nLeft << field.nRight);
            nRight = static_cast<Lane>(field.nRight);
            nLeft = static_cast<Lane>(field.nLeft + 8 * nByte);
        }
    }
    Lanes<Lane> Of(Lanes<Lane> pixels) const { return (pixels & nMask) >> nRight << nLeft; }
};

// Packs four colour words into twelve bytes and writes two zeros after them.
void StoreColors(Words colors, unsigned char* pDst) {
    const Pairs wide = reinterpret_cast<Pairs>(colors);
    const Pairs packed = (wide & 0xFFFFFF) | (wide & 0xFFFFFF00000000) >> 8;
    const std::uint64_t nFirst = packed[0], nLast = packed[1];
    std::memcpy(pDst, &nFirst, sizeof nFirst);
    std::memcpy(pDst + 6, &nLast, sizeof nLast);
}

// The channels of one vector of pixels. In lanes of 32 bits they join to colour words. In lanes of
// 16 bits the first two channels are the low half of a colour word and the third is the high half.
void StoreChannels(Words c0, Words c1, Words c2, unsigned char* pDst) {
    StoreColors(c0 | c1 | c2, pDst);
}
void StoreChannels(Halves c0, Halves c1, Halves c2, unsigned char* pDst) {
    const Halves c01 = c0 | c1;
    StoreColors(reinterpret_cast<Words>(KEL_SHUFFLE(c01, c2, 0, 8, 1, 9, 2, 10, 3, 11)), pDst);
    StoreColors(reinterpret_cast<Words>(KEL_SHUFFLE(c01, c2, 4, 12, 5, 13, 6, 14, 7, 15)),
                pDst + 12);
}

template <typename Word>
void Fields(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
            std::size_t nPixels) {
    const LaneField<Word> first(fields.aChannels[0], 0);
    const LaneField<Word> second(fields.aChannels[1], 1);
    const LaneField<Word> third(fields.aChannels[2], sizeof(Word) == 2 ? 0 : 2);
    constexpr std::size_t kStep = 16 / sizeof(Word);
    // The two zeros after a step need one more pixel there.
    for (; nPixels > kStep; nPixels -= kStep, pSrc += 16, pDst += 3 * kStep) {
        Lanes<Word> pixels;
        std::memcpy(&pixels, pSrc, sizeof pixels);
        StoreChannels(first.Of(pixels), second.Of(pixels), third.Of(pixels), pDst);
    }
    for (; nPixels > 0; --nPixels, pSrc += sizeof(Word), pDst += 3) {
        Word nPixel;
        std::memcpy(&nPixel, pSrc, sizeof nPixel);
        StoreColor(Channel(nPixel, fields.aChannels[0], 0) |
                       Channel(nPixel, fields.aChannels[1], 1) |
                       Channel(nPixel, fields.aChannels[2], 2),
                   pDst);
    }
}

}  // namespace

void portable::Fields16(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
                        std::size_t nPixels) {
    Fields<std::uint16_t>(pSrc, fields, pDst, nPixels);
}

void portable::Fields32(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
                        std::size_t nPixels) {
    Fields<std::uint32_t>(pSrc, fields, pDst, nPixels);
}

const RowFunctions kRowsPortable = {
    portable::Reverse24, portable::Pack32,   portable::PackReverse32,
    portable::Expand24,  portable::Palette8, portable::Palette4,
    portable::Palette1,  portable::Fields16, portable::Fields32};

}  // namespace kel
