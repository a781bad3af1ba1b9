#include "zoomblend.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "../kelbitmap/strides.h"

namespace kel {

// Pixels are read as words with their first byte lowest.
static_assert(std::endian::native == std::endian::little);

namespace {

// Pixels blended at a time, so that the loops have a fixed count and become vector code.
constexpr int kBlock = 64;

// Columns of one source row, one word a pixel. The low bytes of a word are the pixel's bytes; those
// above them are anything.
struct Words {
    std::uint32_t first[kBlock];
    std::uint32_t second[kBlock];
};

template <int nBytes>
void Expand(const ZoomColumns& columns, int nBegin, int nCount, const unsigned char* pRow,
            Words* pWords) {
    for (int i = 0; i < nCount; ++i) {
        // One load holds the first pixel and the one behind it; the shift chooses the second.
        const std::int64_t nFirst = columns.pFirst[nBegin + i];
        const int nShift = columns.pSecond[nBegin + i] == nFirst ? 0 : 8 * nBytes;
        std::uint64_t nPixels = 0;
        std::memcpy(&nPixels, pRow + nFirst * nBytes, sizeof(nPixels));
        pWords->first[i] = static_cast<std::uint32_t>(nPixels);
        pWords->second[i] = static_cast<std::uint32_t>(nPixels >> nShift);
    }
}

// Byte nByte of every blended pixel, in its place of the word. The topmost is taken down and up
// again: as a signed word it would be negative.
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
int BlendPortable(const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
    const int nWhole = (nRowBytes - 8) / nBytes + 1;
    const auto nFast = static_cast<int>(
        std::lower_bound(columns.pFirst, columns.pFirst + columns.nCount, nWhole) - columns.pFirst);
    Words upper = {}, other = {};
    float fractions[kBlock] = {};
    for (int nBegin = 0; nBegin < nFast; nBegin += kBlock) {
        const int nCount = std::min(kBlock, nFast - nBegin);
        std::copy_n(columns.pFraction + nBegin, nCount, fractions);
        Expand<nBytes>(columns, nBegin, nCount, row.pFirst, &upper);
        if (row.pSecond != row.pFirst) {
            Expand<nBytes>(columns, nBegin, nCount, row.pSecond, &other);
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
                *pOut++ = static_cast<unsigned char>(result[i] >> 8 * k);
            }
        }
    }
    return nFast;
}

}  // namespace

int ZoomRowPortable(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
    switch (nBytes) {
        case 2:
            return BlendPortable<2>(columns, row, nRowBytes);
        case 3:
            return BlendPortable<3>(columns, row, nRowBytes);
        default:
            return BlendPortable<4>(columns, row, nRowBytes);
    }
}

ZoomRowVariant ChooseZoomRow([[maybe_unused]] CpuLevel eLevel) {
#if defined(__x86_64__)
    if (eLevel >= CpuLevel::kAvx512) {
        return ZoomRowAvx512;
    }
    if (eLevel >= CpuLevel::kAvx2) {
        return ZoomRowAvx2;
    }
#endif
    return ZoomRowPortable;
}

void ZoomRowBlend(CpuLevel eLevel, int nBytes, const ZoomColumns& columns, const ZoomRow& row,
                  std::int64_t nRowBytes) {
    int nDone = 0;
    if (nBytes >= 2 && nBytes <= 4 && nRowBytes >= 8 && nRowBytes <= kMaxSize) {
        nDone = ChooseZoomRow(eLevel)(nBytes, columns, row, static_cast<int>(nRowBytes));
    }
    ZoomRowPlain(nBytes, columns, row, nDone);
}

}  // namespace kel
