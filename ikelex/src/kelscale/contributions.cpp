// Makes contribution tables. The arithmetic of this file decides every pixel. It is done in double,
// in the order written, and cut to integers where it says so. Conversions are guarded, because
// infinite ratios (an empty source), tiny ones (a huge window) and kernels of other makers reach
// them.
#include "contributions.h"
#include "kelbitmap/integers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <new>

namespace kel {

namespace {

// dValue cut towards zero, as an int within [nLow, nHigh]. A NaN gives nLow.
int ClampToInt(double dValue, int nLow, int nHigh) {
    if (!(dValue > nLow)) {
        return nLow;
    }
    return dValue < nHigh ? static_cast<int>(dValue) : nHigh;
}

// The weights of a kernel at one scale. A weight is the kernel's value times the scale, in 256ths,
// cut towards zero. Keeps those of the arguments seen last. At a ratio of small whole numbers the
// records repeat each other's arguments to the bit, and sines and exponentials are most of a
// table's time.
class Weights {
  public:
    // For a table of nWeights weights. A small one needs few entries.
    Weights(const PLContribDef& kernel, double dScale, std::size_t nWeights)
        : m_Kernel(kernel), m_dScale(dScale) {
        while (m_nIndexBits < kMostIndexBits && (std::size_t{1} << m_nIndexBits) < nWeights) {
            ++m_nIndexBits;
        }
        std::fill_n(m_Seen.begin(), std::size_t{1} << m_nIndexBits, Entry{kNoArgument, 0});
    }

    int At(double dDistance) {
        const double dArgument = dDistance * m_dScale;
        const auto nBits = std::bit_cast<std::uint64_t>(dArgument);
        Entry& entry = m_Seen[AsSize(nBits * kGolden >> (64 - m_nIndexBits))];
        if (entry.nBits != nBits) {
            entry.nBits = nBits;
            entry.nWeight =
                ClampToInt(m_Kernel.Filter(dArgument) * m_dScale * 256.0, INT_MIN, INT_MAX);
        }
        return entry.nWeight;
    }

  private:
    static constexpr int kMostIndexBits = 10;
    static constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15;     // 2^64 over the golden ratio
    static constexpr std::uint64_t kNoArgument = ~std::uint64_t{0};  // not a number
    struct Entry {
        std::uint64_t nBits;
        int nWeight;
    };

    const PLContribDef& m_Kernel;
    double m_dScale;
    int m_nIndexBits = 4;
    std::array<Entry, std::size_t{1} << kMostIndexBits> m_Seen;
};

// Scales nCount weights of positive sum nTotal to the sum 256. Every quotient is cut. The last
// weight takes what is missing, even if it was 0 before.
void Normalise(int* pWeights, int nCount, int nTotal) {
    int nSum = 0;
    for (int j = 0; j < nCount - 1; ++j) {
        pWeights[j] = WrapMultiply(pWeights[j], 256) / nTotal;
        nSum = WrapAdd(nSum, pWeights[j]);
    }
    pWeights[nCount - 1] = WrapAdd(256, WrapMultiply(nSum, -1));
}

// Fills record nPosition. dSupport is the window's half-width in source positions.
void FillRecord(Weights& weights, const LineContribType& table, unsigned int nPosition,
                int nInLength, double dRatio, double dSupport) {
    const double dCentre = (nPosition + 0.5) / dRatio - 0.5;
    int nLeft = ClampToInt(std::floor(dCentre - dSupport), 0, INT_MAX - 1);
    int nRight = ClampToInt(std::ceil(dCentre + dSupport), -1, nInLength - 1);
    // Rounding both ends outwards can need one entry more than nWindowSize.
    if (nRight - nLeft >= table.nWindowSize) {
        if (nLeft < nInLength) {
            ++nLeft;
        } else {
            --nRight;
        }
        // Only rounding errors of extreme ratios and widths get here.
        if (nRight - nLeft >= table.nWindowSize) {
            nRight = nLeft + table.nWindowSize - 1;
        }
    }

    PixelContribType& record = table.pPixels[nPosition];
    record.nLeft = nLeft;
    record.nRight = nRight;
    int nTotal = 0;
    for (int i = nLeft; i <= nRight; ++i) {
        const int nWeight = weights.At(dCentre - i);
        record.pWeights[i - nLeft] = nWeight;
        nTotal = WrapAdd(nTotal, nWeight);
    }
    if (nTotal > 0) {
        Normalise(record.pWeights, nRight - nLeft + 1, nTotal);
    }
}

}  // namespace

LineContribType* AllocContributions(unsigned int nRecords, unsigned int nWeights) {
    // In ints, neither all records nor all weights may be more than an array can hold.
    constexpr std::size_t kMostInts = PTRDIFF_MAX / sizeof(int);
    constexpr std::size_t kRecordInts = sizeof(PixelContribType) / sizeof(int);
    if (nRecords > INT_MAX || nWeights > INT_MAX ||
        nRecords > kMostInts / std::max<std::size_t>(nWeights, kRecordInts)) {
        return nullptr;
    }
    LineContribType* pTable = new (std::nothrow) LineContribType;
    if (pTable == nullptr) {
        return nullptr;
    }
    pTable->nWindowSize = static_cast<int>(nWeights);
    pTable->nLineLength = static_cast<int>(nRecords);
    pTable->pPixels = new (std::nothrow) PixelContribType[nRecords]();
    if (pTable->pPixels == nullptr) {
        delete pTable;
        return nullptr;
    }
    // One block holds the weights of all records.
    const std::size_t nStep = nWeights;
    // Without records there is no place to keep it.
    if (nRecords == 0) {
        return pTable;
    }
    int* pWeights = new (std::nothrow) int[nRecords * nStep];
    if (pWeights == nullptr) {
        delete[] pTable->pPixels;
        delete pTable;
        return nullptr;
    }
    for (std::size_t i = 0; i < nRecords; ++i) {
        pTable->pPixels[i].pWeights = pWeights + i * nStep;
    }
    return pTable;  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the first record keeps the
                    // block
}

void FreeContributions(LineContribType* pTable) {
    if (pTable == nullptr) {
        return;
    }
    if (pTable->nLineLength > 0) {
        delete[] pTable->pPixels[0].pWeights;
    }
    delete[] pTable->pPixels;
    delete pTable;
}

Contributions CalcContributions(const PLContribDef& kernel, unsigned int nOutLength,
                                unsigned int nInLength, double dRatio) {
    const bool bShrinking = dRatio < 1.0;
    const double dSupport = bShrinking ? kernel.m_dWidth / dRatio : kernel.m_dWidth;
    const double dScale = bShrinking ? dRatio : 1.0;
    const double dWindow = 2.0 * std::ceil(dSupport) + 1.0;
    const bool bFits = dWindow >= 1.0 && dWindow <= INT_MAX && nInLength <= INT_MAX;
    if (!bFits && nOutLength != 0) {
        return nullptr;
    }
    // A table without records can do without a window that fits.
    const unsigned int nWindow = bFits ? static_cast<unsigned int>(dWindow) : 1;
    Contributions table(AllocContributions(nOutLength, nWindow));
    Weights weights(kernel, dScale, std::size_t{nOutLength} * nWindow);
    for (unsigned int nPosition = 0; table != nullptr && nPosition < nOutLength; ++nPosition) {
        FillRecord(weights, *table, nPosition, static_cast<int>(nInLength), dRatio, dSupport);
    }
    return table;
}

bool TablePair::Calc(const PLContribDef& kernel, unsigned int nOutWidth, unsigned int nInWidth,
                     unsigned int nOutHeight, unsigned int nInHeight) {
    m_Horizontal = CalcContributions(kernel, nOutWidth, nInWidth);
    m_pVertical = m_Horizontal.get();
    if (m_Horizontal != nullptr && (nOutWidth != nOutHeight || nInWidth != nInHeight)) {
        m_Vertical = CalcContributions(kernel, nOutHeight, nInHeight);
        m_pVertical = m_Vertical.get();
    }
    return m_pVertical != nullptr;
}

}  // namespace kel
