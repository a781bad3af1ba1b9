#include "zoomblend.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

#include "../kelbitmap/strides.h"

namespace kel {

// Pixels are read as words with their first byte lowest.
static_assert(std::endian::native == std::endian::little);

namespace {

// Pixels blended at a time, so that the loops have a fixed count and become vector code.
constexpr int kBlock = 64;

// Byte nShift / 8 of every blended pixel, moved to that place of its word.
template <int nShift>
void BlendChannel(const ZoomBlend& blend, int nBegin, int nCount, std::uint32_t* pResult) {
    const float fY1 = blend.fFraction;
    const float fY0 = 1.0f - fY1;
    const std::uint32_t* const p00 = blend.first.pFirst + nBegin;
    const std::uint32_t* const p01 = blend.first.pSecond + nBegin;
    const std::uint32_t* const p10 = blend.second.pFirst + nBegin;
    const std::uint32_t* const p11 = blend.second.pSecond + nBegin;
    const float* const pFraction = blend.pFraction + nBegin;
    const auto byteOf = [](std::uint32_t nWord) {
        return static_cast<float>(static_cast<int>(nWord >> nShift & 255u));
    };
    for (int i = 0; i < nCount; ++i) {
        const float fX1 = pFraction[i];
        const float fX0 = 1.0f - fX1;
        const float f = byteOf(p00[i]) * (fY0 * fX0) + byteOf(p01[i]) * (fY0 * fX1) +
                        byteOf(p10[i]) * (fY1 * fX0) + byteOf(p11[i]) * (fY1 * fX1);
        pResult[i] |= static_cast<std::uint32_t>(static_cast<int>(f)) << nShift;
    }
}

template <int nBytes>
void BlendPortable(const ZoomBlend& blend) {
    for (int nBegin = 0; nBegin < blend.nCount; nBegin += kBlock) {
        const int nCount = std::min(kBlock, blend.nCount - nBegin);
        std::uint32_t result[kBlock] = {};
        BlendChannel<0>(blend, nBegin, nCount, result);
        BlendChannel<8>(blend, nBegin, nCount, result);
        if constexpr (nBytes > 2) {
            BlendChannel<16>(blend, nBegin, nCount, result);
        }
        if constexpr (nBytes > 3) {
            BlendChannel<24>(blend, nBegin, nCount, result);
        }
        unsigned char* pOut = blend.pOut + std::int64_t{nBegin} * nBytes;
        for (int i = 0; i < nCount; ++i) {
            for (int k = 0; k < nBytes; ++k) {
                *pOut++ = static_cast<unsigned char>(result[i] >> 8 * k);
            }
        }
    }
}

}  // namespace

void ZoomExpandPortable(const ZoomExpansion& expansion) {
    for (int i = 0; i < expansion.nCount; ++i) {
        // One load holds the first pixel and the one behind it; the shift chooses the second.
        const std::int64_t nFirst = expansion.pFirst[i];
        const int nShift = 8 * expansion.nBytes * (expansion.pSecond[i] - expansion.pFirst[i]);
        std::uint64_t nPixels = 0;
        std::memcpy(&nPixels, expansion.pRow + nFirst * expansion.nBytes, sizeof(nPixels));
        expansion.pFirstWords[i] = static_cast<std::uint32_t>(nPixels);
        expansion.pSecondWords[i] = static_cast<std::uint32_t>(nPixels >> nShift);
    }
}

void ZoomBlendPortable(int nBytes, const ZoomBlend& blend) {
    switch (nBytes) {
        case 2:
            return BlendPortable<2>(blend);
        case 3:
            return BlendPortable<3>(blend);
        default:
            return BlendPortable<4>(blend);
    }
}

ZoomKernel ChooseZoomKernel([[maybe_unused]] CpuLevel eLevel) {
#if defined(__x86_64__)
    if (eLevel >= CpuLevel::kAvx512) {
        return {ZoomExpandAvx512, ZoomBlendAvx512};
    }
    if (eLevel >= CpuLevel::kAvx2) {
        return {ZoomExpandPortable, ZoomBlendAvx2};
    }
#endif
    return {ZoomExpandPortable, ZoomBlendPortable};
}

ZoomSampler::ZoomSampler(CpuLevel eLevel, int nBytes, const ZoomColumns& columns,
                         const unsigned char* pSrc, std::int64_t nSrcStride)
    : m_Kernel(ChooseZoomKernel(eLevel)),
      m_nBytes(nBytes),
      m_Columns(columns),
      m_pSrc(pSrc),
      m_nSrcStride(nSrcStride),
      m_nFast(0),
      m_nHeld{-1, -1} {
    if (nBytes < 2 || nBytes > 4 || nSrcStride < 8 || nSrcStride > kMaxSize) {
        return;
    }
    m_pWords.reset(new (std::nothrow)
                       std::uint32_t[std::size_t{4} * static_cast<std::size_t>(columns.nCount)]);
    if (m_pWords == nullptr) {
        return;
    }
    const auto nWhole = static_cast<int>((nSrcStride - 8) / nBytes + 1);
    m_nFast = static_cast<int>(
        std::lower_bound(columns.pFirst, columns.pFirst + columns.nCount, nWhole) - columns.pFirst);
}

void ZoomSampler::SampleRow(const ZoomSample& rows, unsigned char* pOut) {
    if (m_nFast > 0) {
        const ZoomWords first = WordsOf(rows.nFirst, rows.nSecond);
        const ZoomWords second = WordsOf(rows.nSecond, rows.nFirst);
        m_Kernel.pfnBlend(m_nBytes,
                          {first, second, m_Columns.pFraction, rows.fFraction, pOut, m_nFast});
    }
    ZoomRowPlain(m_nBytes, m_Columns,
                 {m_pSrc + rows.nFirst * m_nSrcStride, m_pSrc + rows.nSecond * m_nSrcStride,
                  rows.fFraction, pOut},
                 m_nFast);
}

// The words of source row nSrcRow, made unless held; those of nOtherRow stay.
ZoomWords ZoomSampler::WordsOf(int nSrcRow, int nOtherRow) {
    int nSlot = m_nHeld[0] == nSrcRow ? 0 : 1;
    const bool bHeld = m_nHeld[nSlot] == nSrcRow;
    if (!bHeld) {
        nSlot = m_nHeld[0] == nOtherRow ? 1 : 0;
    }
    const auto nCount = static_cast<std::size_t>(m_Columns.nCount);
    std::uint32_t* const pFirst = m_pWords.get() + static_cast<std::size_t>(nSlot) * 2 * nCount;
    std::uint32_t* const pSecond = pFirst + nCount;
    if (!bHeld) {
        m_Kernel.pfnExpand({m_nBytes, m_pSrc + nSrcRow * m_nSrcStride,
                            static_cast<int>(m_nSrcStride), m_Columns.pFirst, m_Columns.pSecond,
                            m_nFast, pFirst, pSecond});
        m_nHeld[nSlot] = nSrcRow;
    }
    return {pFirst, pSecond};
}

}  // namespace kel
