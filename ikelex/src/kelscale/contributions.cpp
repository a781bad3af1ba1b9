// The arithmetic of this file decides every pixel: doubles in the order written, each cut to an
// integer where it says so. Conversions are guarded, because infinite ratios (an empty source),
// tiny ones (a huge window) and kernels of other makers reach them.
#include "contributions.h"

#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <new>

namespace kel {

namespace {

// dValue cut towards zero, as an int within [nLow, nHigh]; nLow for no number at all.
int ClampToInt(double dValue, int nLow, int nHigh) {
    if (!(dValue > nLow)) {
        return nLow;
    }
    return dValue < nHigh ? static_cast<int>(dValue) : nHigh;
}

// The weights of a kernel at one scale: its value times the scale, in 256ths, cut towards zero.
// Remembers those of the arguments seen last. At a ratio of small whole numbers the records repeat
// each other's arguments to the bit, and sines and exponentials are most of a table's time.
class Weights {
  public:
    Weights(const PLContribDef& kernel, double dScale) : m_Kernel(kernel), m_dScale(dScale) {}

    int At(double dDistance) {
        const double dArgument = dDistance * m_dScale;
        const auto nBits = std::bit_cast<std::uint64_t>(dArgument);
        Entry& entry = m_Seen[nBits * kGolden >> (64 - kIndexBits)];
        if (entry.nBits != nBits) {
            entry.nBits = nBits;
            entry.nWeight =
                ClampToInt(m_Kernel.Filter(dArgument) * m_dScale * 256.0, INT_MIN, INT_MAX);
        }
        return entry.nWeight;
    }

  private:
    static constexpr int kIndexBits = 10;
    static constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15;  // 2^64 over the golden ratio
    struct Entry {
        std::uint64_t nBits = ~std::uint64_t{0};  // no argument: not a number
        int nWeight = 0;
    };

    const PLContribDef& m_Kernel;
    double m_dScale;
    std::array<Entry, std::size_t{1} << kIndexBits> m_Seen;
};

// Addition and multiplication that wrap: only kernels of other makers ever leave 32 bits.
int WrapAdd(int a, int b) {
    return static_cast<int>(static_cast<unsigned int>(a) + static_cast<unsigned int>(b));
}
int WrapMultiply(int a, int b) {
    return static_cast<int>(static_cast<unsigned int>(a) * static_cast<unsigned int>(b));
}

// Scales nCount weights of positive sum nTotal to the sum 256. Every quotient is cut; the last
// weight takes what is missing, even if it was 0 before.
void Normalise(int* pWeights, int nCount, int nTotal) {
    int nSum = 0;
    for (int j = 0; j < nCount - 1; ++j) {
        pWeights[j] = WrapMultiply(pWeights[j], 256) / nTotal;
        nSum = WrapAdd(nSum, pWeights[j]);
    }
    pWeights[nCount - 1] = static_cast<int>(256u - static_cast<unsigned int>(nSum));
}

// Fills record nPosition. dSupport is the window's half-width in source positions.
void FillRecord(Weights& weights, const LineContribType& table, unsigned int nPosition,
                int nInLength, double dRatio, double dSupport) {
    const double dCentre = (nPosition + 0.5) / dRatio - 0.5;
    int nLeft = ClampToInt(std::floor(dCentre - dSupport), 0, INT_MAX - 1);
    int nRight = ClampToInt(std::ceil(dCentre + dSupport), -1, nInLength - 1);
    // The window is one short of what rounding both ends outwards can ask for.
    if (nRight - nLeft >= table.nWindowSize) {
        if (nLeft < nInLength) {
            ++nLeft;
        } else {
            --nRight;
        }
        // Holds already for every ratio and width this side of rounding errors.
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
    if (nRecords > INT_MAX || nWeights > INT_MAX) {
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
    for (unsigned int i = 0; i < nRecords; ++i) {
        pTable->pPixels[i].pWeights = new (std::nothrow) int[nWeights];
        if (pTable->pPixels[i].pWeights == nullptr) {
            FreeContributions(pTable);
            return nullptr;
        }
    }
    return pTable;
}

void FreeContributions(LineContribType* pTable) {
    if (pTable == nullptr) {
        return;
    }
    for (int i = 0; i < pTable->nLineLength; ++i) {
        delete[] pTable->pPixels[i].pWeights;
        pTable->pPixels[i].pWeights = nullptr;
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
    Weights weights(kernel, dScale);
    for (unsigned int nPosition = 0; table != nullptr && nPosition < nOutLength; ++nPosition) {
        FillRecord(weights, *table, nPosition, static_cast<int>(nInLength), dRatio, dSupport);
    }
    return table;
}

}  // namespace kel
