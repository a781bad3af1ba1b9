// The zoom's blended rows for every machine, 64 pixels at a time, each in a 32-bit lane.
//
// Why every byte is the same as that of the formula in zoomrows.h, here and in the x86 variants.
// Each lane does the operations of the formula in their order. A channel is not shifted down to bit
// 0 before it is blended. It stays in its place, which is the byte times 2^8 or 2^16. All four
// samples are scaled by the same power of two. That scales every product and sum exactly, as the
// smallest weight is far above the underflow. The truncated sum therefore holds the byte in the
// channel's place, and a mask takes it out. Byte 3 is the exception. A signed word with it would be
// negative, so it is blended one place lower.
#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include "kelbitmap/integers.h"
#include "zoomrows.h"

namespace kel {

// Pixels are read as words with their first byte lowest.
static_assert(std::endian::native == std::endian::little);

namespace {

// Pixels blended at a time, so that the loops have a fixed count and become vector code.
constexpr int kBlock = 64;

// Columns of one source row, one word a pixel. The low bytes of a word are the pixel's bytes. Those
// above them may be anything.
struct Words {
    std::uint32_t first[kBlock];
    std::uint32_t second[kBlock];
};

template <int nBytes>
void Expand(const ZoomColumns& columns, int nBegin, int nCount, const unsigned char* pRow,
            std::int64_t nRowBytes, Words* pWords) {
    for (int i = 0; i < nCount; ++i) {
        // One load holds the first pixel and the one after it. The shift chooses the second.
        const std::int64_t nFirst = columns.pFirst[nBegin + i];
        const std::int64_t nFrom = nFirst * nBytes;
        const int nShift = columns.pSecond[nBegin + i] == nFirst ? 0 : 8 * nBytes;
        std::uint64_t nPixels = 0;
        if (nFrom + 8 <= nRowBytes) {
            std::memcpy(&nPixels, pRow + nFrom, sizeof(nPixels));
        } else {
            std::memcpy(&nPixels, pRow + nFrom, AsSize(nRowBytes - nFrom));
        }
        pWords->first[i] = Low32(nPixels);
        pWords->second[i] = Low32(nPixels >> nShift);
    }
}

// Adds byte nByte of every blended pixel to its word.
template <int nByte>
void BlendChannel(const Words& upper, const Words& lower, const float* pFraction, float fY1,
                  std::uint32_t* pResult) {
    constexpr int kDown = nByte == 3 ? 8 : 0;
    constexpr std::uint32_t kMask = 255u << (8 * nByte - kDown);
    const float fY0 = 1.0f - fY1;
    const auto byteOf = [](std::uint32_t nWord) {
        return static_cast<float>(static_cast<int>(nWord >> kDown & kMask));
    };
    for (int i = 0; i < kBlock; ++i) {
        const float fX1 = pFraction[i];
        const float fX0 = 1.0f - fX1;
        const float f =
            byteOf(upper.first[i]) * (fY0 * fX0) + byteOf(upper.second[i]) * (fY0 * fX1) +
            byteOf(lower.first[i]) * (fY1 * fX0) + byteOf(lower.second[i]) * (fY1 * fX1);
        pResult[i] |= (static_cast<std::uint32_t>(static_cast<int>(f)) & kMask) << kDown;
    }
}

template <int nBytes>
void Blend(const ZoomColumns& columns, const ZoomRow& row) {
    Words upper = {}, other = {};
    float fractions[kBlock] = {};
    for (int nBegin = 0; nBegin < columns.nCount; nBegin += kBlock) {
        const int nCount = std::min(kBlock, columns.nCount - nBegin);
        std::copy_n(columns.pFraction + nBegin, nCount, fractions);
        Expand<nBytes>(columns, nBegin, nCount, row.pFirst, row.nRowBytes, &upper);
        if (row.pSecond != row.pFirst) {
            Expand<nBytes>(columns, nBegin, nCount, row.pSecond, row.nRowBytes, &other);
        }
        const Words& lower = row.pSecond != row.pFirst ? other : upper;
        std::uint32_t result[kBlock] = {};
        BlendChannel<0>(upper, lower, fractions, row.fFraction, result);
        BlendChannel<1>(upper, lower, fractions, row.fFraction, result);
        if constexpr (nBytes > 2) {
            BlendChannel<2>(upper, lower, fractions, row.fFraction, result);
        }
        if constexpr (nBytes > 3) {
            BlendChannel<3>(upper, lower, fractions, row.fFraction, result);
        }
        unsigned char* pOut = row.pOut + std::int64_t{nBegin} * nBytes;
        for (int i = 0; i < nCount; ++i) {
            for (int k = 0; k < nBytes; ++k) {
                *pOut++ = LowByte(result[i] >> 8 * k);
            }
        }
    }
}

// The portable form looks nothing up.
void Prepare(int, const ZoomColumns&) {}

}  // namespace

const ZoomFunctions kZoomPortable = {
    Prepare, {Blend<2>, Blend<3>, Blend<4>}, std::numeric_limits<std::int64_t>::max()};

}  // namespace kel
