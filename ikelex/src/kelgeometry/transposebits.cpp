// Transposition of pixels below 8 bits, in blocks of 8 x 8.
#include <algorithm>

#include "kelbitmap/integers.h"
#include "transpose.h"

namespace kel {

namespace {

// A row of a block is a word of 8 pixels, nBits bytes, the leftmost in its highest bits.
template <int nBits>
std::uint32_t LoadPixels(const unsigned char* p) {
    std::uint32_t nPixels = 0;
    for (int i = 0; i < nBits; ++i) {
        nPixels = nPixels << 8 | p[i];
    }
    return nPixels;
}

template <int nBits>
void StorePixels(unsigned char* p, std::uint32_t nPixels) {
    for (int i = nBits - 1; i >= 0; --i) {
        p[i] = LowByte(nPixels);
        nPixels >>= 8;
    }
}

// Exchanges the upper right and the lower left quarter of each square of 2 * kHalf x 2 * kHalf
// pixels.
template <int nBits, int kHalf>
void ExchangeQuarters(std::uint32_t* pRows) {
    constexpr int kShift = kHalf * nBits;
    // The right half of each square in a word of 8 pixels. At 4 bits that is 0x0F0F0F0F, 0x00FF00FF
    // and 0x0000FFFF.
    constexpr std::uint32_t kRight = Low32(((1ull << 8 * nBits) - 1) / ((1u << kShift) + 1));
    for (int i = 0; i < 8; ++i) {
        if ((i & kHalf) == 0) {
            const std::uint32_t nBoth = (pRows[i] ^ pRows[i + kHalf] >> kShift) & kRight;
            pRows[i] ^= nBoth;
            pRows[i + kHalf] ^= nBoth << kShift;
        }
    }
}

// The block of up to 8 x 8 pixels at column nX, row nY, both multiples of 8. Missing rows are 0.
template <int nBits>
void TransposeBlock(const Transposition& work, int nX, int nY) {
    const int nRows = std::min(8, work.nHeight - nY);
    const int nColumns = std::min(8, work.nWidth - nX);
    const unsigned char* pFrom = work.pSrc + nY * work.nSrcStride + nX / 8 * nBits;
    unsigned char* pTo = work.pDst + nX * work.nDstStride + nY / 8 * nBits;
    std::uint32_t rows[8] = {};
    for (int i = 0; i < nRows; ++i, pFrom += work.nSrcStride) {
        rows[i] = LoadPixels<nBits>(pFrom);
    }
    ExchangeQuarters<nBits, 4>(rows);
    ExchangeQuarters<nBits, 2>(rows);
    ExchangeQuarters<nBits, 1>(rows);
    for (int i = 0; i < nColumns; ++i, pTo += work.nDstStride) {
        StorePixels<nBits>(pTo, rows[i]);
    }
}

// In strips of rows that fill a cache line of the destination.
template <int nBits>
void TransposeStrips(const Transposition& work) {
    constexpr int kStrip = 512 / nBits;
    for (int nStrip = 0; nStrip < work.nHeight; nStrip += kStrip) {
        const int nEnd = std::min(kStrip, work.nHeight - nStrip) + nStrip;
        for (int nX = 0; nX < work.nWidth; nX += 8) {
            for (int nY = nStrip; nY < nEnd; nY += 8) {
                TransposeBlock<nBits>(work, nX, nY);
            }
        }
    }
}

}  // namespace

void TransposeBits(int nBits, const Transposition& work) {
    const auto pfnTranspose = nBits == 1   ? TransposeStrips<1>
                              : nBits == 2 ? TransposeStrips<2>
                                           : TransposeStrips<4>;
    pfnTranspose(work);
}

}  // namespace kel
