// The row functions for NEON, which every 64-bit ARM processor has. rows_portable.cpp defines each
// of them and does the last pixels.
//
// The structure loads separate the bytes of 16 pixels by channel, the structure stores join them
// again. Bytes are only moved, so the results are exact.
#if defined(__aarch64__)

#include <arm_neon.h>

#include "kelbitmap/rows.h"

namespace kel {

namespace {

void Reverse24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (; nPixels >= 16; nPixels -= 16, pSrc += 48, pDst += 48) {
        // All of a block is read before any of it is written, so pDst may be pSrc.
        const uint8x16x3_t pixels = vld3q_u8(pSrc);
        vst3q_u8(pDst, {pixels.val[2], pixels.val[1], pixels.val[0]});
    }
    portable::Reverse24(pSrc, pDst, nPixels);
}

void Pack32(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (; nPixels >= 16; nPixels -= 16, pSrc += 64, pDst += 48) {
        const uint8x16x4_t pixels = vld4q_u8(pSrc);
        vst3q_u8(pDst, {pixels.val[0], pixels.val[1], pixels.val[2]});
    }
    portable::Pack32(pSrc, pDst, nPixels);
}

void PackReverse32(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (; nPixels >= 16; nPixels -= 16, pSrc += 64, pDst += 48) {
        const uint8x16x4_t pixels = vld4q_u8(pSrc);
        vst3q_u8(pDst, {pixels.val[2], pixels.val[1], pixels.val[0]});
    }
    portable::PackReverse32(pSrc, pDst, nPixels);
}

void Expand24(const unsigned char* pSrc, unsigned char* pDst, std::size_t nPixels) {
    for (; nPixels >= 16; nPixels -= 16, pSrc += 48, pDst += 64) {
        const uint8x16x3_t pixels = vld3q_u8(pSrc);
        vst4q_u8(pDst, {pixels.val[0], pixels.val[1], pixels.val[2], vdupq_n_u8(0)});
    }
    portable::Expand24(pSrc, pDst, nPixels);
}

}  // namespace

const RowFunctions kRowsNeon = {Reverse24,          Pack32,
                                PackReverse32,      Expand24,
                                portable::Palette8, portable::Palette4,
                                portable::Palette1, portable::Fields16,
                                portable::Fields32};

}  // namespace kel

#endif  // __aarch64__
