#include "horizontal.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "passes.h"

namespace kel {

namespace {

constexpr std::size_t kLanes = kBandRowsPortable;
constexpr std::size_t kPixelLanes = 3 * kLanes;  // the lanes of the three channels lie together

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using Halves = std::uint16_t __attribute__((vector_size(16)));
using Words = std::uint32_t __attribute__((vector_size(16)));

// Interleave the lower or the upper elements of two vectors.
inline Halves ZipLow(Bytes a, Bytes b) {
    return reinterpret_cast<Halves>(
        __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
inline Words ZipLow(Halves a, Halves b) {
    return reinterpret_cast<Words>(__builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11));
}
inline Words ZipHigh(Halves a, Halves b) {
    return reinterpret_cast<Words>(__builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15));
}
inline Words ZipLow(Words a, Words b) {
    return __builtin_shufflevector(a, b, 0, 4, 1, 5);
}
inline Words ZipHigh(Words a, Words b) {
    return __builtin_shufflevector(a, b, 2, 6, 3, 7);
}

inline Bytes LoadEight(const std::uint64_t& nWord) {
    using Pair = std::uint64_t __attribute__((vector_size(16)));
    return reinterpret_cast<Bytes>(Pair{nWord, 0});
}

// Transposes 8 x 8 bytes: byte j of word i becomes byte i of word j.
inline void Transpose(std::uint64_t (&words)[8]) {
    const Halves a = ZipLow(LoadEight(words[0]), LoadEight(words[1]));
    const Halves b = ZipLow(LoadEight(words[2]), LoadEight(words[3]));
    const Halves c = ZipLow(LoadEight(words[4]), LoadEight(words[5]));
    const Halves d = ZipLow(LoadEight(words[6]), LoadEight(words[7]));
    // Columns 0 to 3 and 4 to 7 of words 0 to 3, and of words 4 to 7.
    const Words abLow = ZipLow(a, b);
    const Words abHigh = ZipHigh(a, b);
    const Words cdLow = ZipLow(c, d);
    const Words cdHigh = ZipHigh(c, d);
    const Words columns[4] = {ZipLow(abLow, cdLow), ZipHigh(abLow, cdLow), ZipLow(abHigh, cdHigh),
                              ZipHigh(abHigh, cdHigh)};
    std::memcpy(words, columns, sizeof columns);
}

// Turns 8 columns of the rows, nPart of them there: byte b of row r goes to pLanes[b * kLanes + r].
inline void TurnColumns(const unsigned char* const* ppIn, std::size_t nOffset, std::size_t nPart,
                        unsigned char* pLanes) {
    for (std::size_t r = 0; r < kLanes; r += 8) {
        std::uint64_t words[8] = {};
        for (std::size_t i = 0; i < 8; ++i) {
            std::memcpy(&words[i], ppIn[r + i] + nOffset, nPart);
        }
        Transpose(words);
        for (std::size_t i = 0; i < 8; ++i) {
            std::memcpy(pLanes + i * kLanes + r, &words[i], 8);
        }
    }
}

// Turns nBytes bytes of each row and reads none behind them; writes whole blocks of 8 columns.
void TurnIn(const unsigned char* const* ppIn, std::size_t nBytes, unsigned char* pLanes) {
    std::size_t b = 0;
    for (; b + 8 <= nBytes; b += 8) {
        TurnColumns(ppIn, b, 8, pLanes + b * kLanes);
    }
    if (b < nBytes) {
        TurnColumns(ppIn, b, nBytes - b, pLanes + b * kLanes);
    }
}

// The other way, for at most 8 columns.
inline void TurnOut(const unsigned char* pLanes, std::size_t nBytes, unsigned char* const* ppOut,
                    std::size_t nOffset) {
    for (std::size_t r = 0; r < kLanes; r += 8) {
        std::uint64_t words[8];
        for (std::size_t i = 0; i < 8; ++i) {
            std::memcpy(&words[i], pLanes + i * kLanes + r, 8);
        }
        Transpose(words);
        for (std::size_t i = 0; i < 8; ++i) {
            std::memcpy(ppOut[r + i] + nOffset, &words[i], nBytes);
        }
    }
}

// The sums of one output pixel in 16 bits: they begin at 128 and end at 255 x 256 + 128 = 65,408 at
// most, since no weight is below 0 and the weights sum to 256 at most.
void SumPixel16(const HorizontalBand& band, std::size_t x, unsigned char* pOut) {
    std::uint16_t sums[kPixelLanes];
    std::fill_n(sums, kPixelLanes, std::uint16_t{128});
    for (unsigned int s = band.pStart[x]; s < band.pStart[x + 1]; ++s) {
        const auto nWeight = static_cast<std::uint16_t>(band.pSteps[s].nWeights);
        const unsigned char* pIn =
            band.pScratch + kPixelLanes * static_cast<unsigned int>(band.pSteps[s].nIndex);
        for (std::size_t l = 0; l < kPixelLanes; ++l) {
            sums[l] = static_cast<std::uint16_t>(sums[l] + pIn[l] * nWeight);
        }
    }
    for (std::size_t l = 0; l < kPixelLanes; ++l) {
        pOut[l] = static_cast<unsigned char>(sums[l] >> 8);
    }
}

// The same in 32 bits, for any weights a plan holds: they fit into 16 bits signed.
void SumPixel32(const HorizontalBand& band, std::size_t x, unsigned char* pOut) {
    std::int32_t sums[kPixelLanes] = {};
    for (unsigned int s = band.pStart[x]; s < band.pStart[x + 1]; ++s) {
        const auto nWeight = static_cast<std::int16_t>(band.pSteps[s].nWeights);
        const unsigned char* pIn =
            band.pScratch + kPixelLanes * static_cast<unsigned int>(band.pSteps[s].nIndex);
        for (std::size_t l = 0; l < kPixelLanes; ++l) {
            sums[l] += static_cast<std::int16_t>(pIn[l]) * nWeight;
        }
    }
    for (std::size_t l = 0; l < kPixelLanes; ++l) {
        pOut[l] = ByteOfSum(sums[l]);
    }
}

// A larger band stays in no cache, and of a low and wide picture it would be a multiple.
constexpr std::size_t kMostScratch = std::size_t{16} << 20;

std::size_t LaneBytes(std::size_t nInWidth, std::size_t nLanes) {
    // The variants turn blocks of 8 bytes, 4 pixels or 16 pixels; the last one is written whole.
    return (nInWidth + 15) / 16 * 16 * 3 * nLanes;
}

}  // namespace

RowsAhead::RowsAhead(const unsigned char* const* ppRows, std::size_t nRows, std::size_t nRowBytes,
                     std::size_t nShares)
    : m_ppRow(ppRows), m_ppEnd(ppRows + nRows), m_nRowBytes(nRowBytes) {
    if (nShares != 0) {
        m_nLines = ((nRowBytes + kLine - 1) / kLine * nRows + nShares - 1) / nShares;
    }
}

void RowsAhead::FetchShare() {
    for (std::size_t n = 0; n < m_nLines && m_ppRow != m_ppEnd; ++n) {
        __builtin_prefetch(*m_ppRow + m_nAt, 0, 2);
        m_nAt += kLine;
        if (m_nAt >= m_nRowBytes) {
            m_nAt = 0;
            ++m_ppRow;
        }
    }
}

void ScaleBand_Portable(const HorizontalBand& band) {
    const auto pfnSum = band.bUnsigned16 ? SumPixel16 : SumPixel32;
    TurnIn(band.ppIn, 3 * band.nInWidth, band.pScratch);
    unsigned char block[8 * kPixelLanes] = {};
    for (std::size_t x = 0; x < band.nOutWidth; x += 8) {
        const std::size_t nPixels = std::min<std::size_t>(8, band.nOutWidth - x);
        for (std::size_t i = 0; i < nPixels; ++i) {
            if (i % 4 == 0) {
                band.pAhead->FetchShare();
            }
            pfnSum(band, x + i, block + i * kPixelLanes);
        }
        std::size_t b = 0;
        for (; b + 8 <= 3 * nPixels; b += 8) {
            TurnOut(block + b * kLanes, 8, band.ppOut, 3 * x + b);
        }
        if (b < 3 * nPixels) {
            TurnOut(block + b * kLanes, 3 * nPixels - b, band.ppOut, 3 * x + b);
        }
    }
}

bool HorizontalPass::Prepare(const LineContribType& table, unsigned int nInWidth, CpuLevel eLevel) {
    m_pTable = &table;
    m_nInWidth = nInWidth;
    m_nOutWidth = static_cast<unsigned int>(table.nLineLength);
    int nPairLimit = 0;  // of groups
#if defined(__x86_64__)
    // Below this ratio what each output pixel costs by itself is more than turning.
    constexpr unsigned int kNarrowRatio = 8;
    if (eLevel >= CpuLevel::kAvx2 && nInWidth / kNarrowRatio >= m_nOutWidth) {
        m_pWindows = PlanNarrowWindows(table, nInWidth);
        if (m_pWindows != nullptr) {
            m_nBandRows = 1;
            m_pfnBand = eLevel >= CpuLevel::kAvx512 ? ScaleNarrow_Avx512 : ScaleNarrow_Avx2;
            return true;
        }
    }
#endif
    // One choice per pass, the best level first.
    switch (eLevel) {
#if defined(__x86_64__)
        case CpuLevel::kAvx512:
            m_nBandRows = kBandRowsAvx512;
            m_pfnBand = ScaleBand_Avx512;
            nPairLimit = kNoPairLimit;
            break;
        case CpuLevel::kAvx2:
            m_nBandRows = kBandRowsAvx2;
            m_pfnBand = ScaleBand_Avx2;
            nPairLimit = kPairLimit;
            break;
#endif
        default:
            m_nBandRows = kBandRowsPortable;
            m_pfnBand = ScaleBand_Portable;
    }
    const std::size_t nScratch = LaneBytes(nInWidth, m_nBandRows);
    if (nScratch <= kMostScratch &&
        (nPairLimit != 0 ? PlanGroups(table, nPairLimit, m_Plan) : PlanTaps(table, m_Plan))) {
        m_pScratch.reset(new (std::nothrow) unsigned char[nScratch]);
    }
    if (m_pScratch == nullptr) {
        m_pfnBand = nullptr;
        m_nBandRows = 1;
        return false;
    }
    return true;
}

void HorizontalPass::Run(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                         unsigned int nRows, unsigned int nAhead) const {
    if (m_pfnBand == nullptr) {
        ScaleRowPlain(*ppIn, *ppOut, m_nOutWidth, *m_pTable);
        return;
    }
    const unsigned char* in[kMostBandRows];
    unsigned char* out[kMostBandRows];
    for (unsigned int i = 0; i < m_nBandRows; ++i) {
        in[i] = ppIn[std::min(i, nRows - 1)];
        out[i] = ppOut[std::min(i, nRows - 1)];
    }
    RowsAhead ahead(ppIn + nRows, std::min(nAhead, m_nBandRows), 3 * m_nInWidth,
                    (m_nOutWidth + 3) / 4);
    m_pfnBand({m_Plan.pStart.get(), m_Plan.pSteps.get(), m_Plan.bUnsigned16, m_pWindows.get(), in,
               out, m_nInWidth, m_nOutWidth, m_pScratch.get(), &ahead});
}

}  // namespace kel
