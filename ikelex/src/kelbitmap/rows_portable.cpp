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

// Four colour words (byte 3 is 0) become three words of packed pixels.
void StoreFourColors(std::uint32_t n0, std::uint32_t n1, std::uint32_t n2, std::uint32_t n3,
                     unsigned char* pDst) {
    const std::uint32_t aPacked[3] = {n0 | n1 << 24, n1 >> 8 | n2 << 16, n2 >> 16 | n3 << 8};
    std::memcpy(pDst, aPacked, sizeof aPacked);
}

void Reverse24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (std::size_t i = 0; i < nPixels; ++i, pSrc += 3, pDst += 3) {
        const unsigned char byFirst = pSrc[0];
        pDst[0] = pSrc[2];
        pDst[1] = pSrc[1];
        pDst[2] = byFirst;
    }
}

void Pack32(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (std::size_t i = 0; i < nPixels; ++i, pSrc += 4, pDst += 3) {
        pDst[0] = pSrc[0];
        pDst[1] = pSrc[1];
        pDst[2] = pSrc[2];
    }
}

void Reverse32(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (std::size_t i = 0; i < nPixels; ++i, pSrc += 4, pDst += 3) {
        pDst[0] = pSrc[2];
        pDst[1] = pSrc[1];
        pDst[2] = pSrc[0];
    }
}

void Expand24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (std::size_t i = 0; i < nPixels; ++i, pSrc += 3, pDst += 4) {
        pDst[0] = pSrc[0];
        pDst[1] = pSrc[1];
        pDst[2] = pSrc[2];
        pDst[3] = 0;
    }
}

void Palette8(const unsigned char* pSrc, const std::uint32_t* pWords, unsigned char* pDst,
              std::size_t nPixels) {
    for (; nPixels >= 4; nPixels -= 4, pSrc += 4, pDst += 12) {
        StoreFourColors(pWords[pSrc[0]], pWords[pSrc[1]], pWords[pSrc[2]], pWords[pSrc[3]], pDst);
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

template <typename Word>
void Fields(const unsigned char* pSrc, const PixelFields& fields, unsigned char* pDst,
            std::size_t nPixels) {
    const ChannelField c0 = fields.aChannels[0];
    const ChannelField c1 = fields.aChannels[1];
    const ChannelField c2 = fields.aChannels[2];
    for (std::size_t i = 0; i < nPixels; ++i, pSrc += sizeof(Word), pDst += 3) {
        Word nPixel;
        std::memcpy(&nPixel, pSrc, sizeof nPixel);
        pDst[0] = static_cast<unsigned char>((nPixel & c0.nMask) >> c0.nRight << c0.nLeft);
        pDst[1] = static_cast<unsigned char>((nPixel & c1.nMask) >> c1.nRight << c1.nLeft);
        pDst[2] = static_cast<unsigned char>((nPixel & c2.nMask) >> c2.nRight << c2.nLeft);
    }
}

}  // namespace

const RowFunctions kRowsPortable = {Reverse24,
                                    Pack32,
                                    Reverse32,
                                    Expand24,
                                    Palette8,
                                    Palette4,
                                    Palette1,
                                    Fields<std::uint16_t>,
                                    Fields<std::uint32_t>};

}  // namespace kel
