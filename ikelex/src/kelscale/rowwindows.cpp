// Makes the windows of a table. They hold the table's weights and change no byte.
#include "rowwindows.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>

#include "kelbitmap/integers.h"

namespace kel {

namespace {

// The positions of a record from the first to the last weight that is not 0.
struct Range {
    int nBegin;
    int nEnd;
};

Range UsedRange(const PixelContribType& record) {
    Range range = {record.nLeft, record.nRight + 1};
    while (range.nBegin < range.nEnd && record.pWeights[range.nBegin - record.nLeft] == 0) {
        ++range.nBegin;
    }
    while (range.nBegin < range.nEnd && record.pWeights[range.nEnd - 1 - record.nLeft] == 0) {
        --range.nEnd;
    }
    return range;
}

// Finds the range of every record. Gives how many pixels the longest one needs.
int FindRanges(const LineContribType& table, Range* pRanges) {
    int nLongest = 1;
    for (int i = 0; i < table.nLineLength; ++i) {
        pRanges[i] = UsedRange(table.pPixels[i]);
        nLongest = std::max(nLongest, pRanges[i].nEnd - pRanges[i].nBegin);
    }
    return nLongest;
}

// Fills the window that begins at nFirst. False when the weights are too large. Clears bUnsigned16
// when a weight is negative or their sum is over 256.
bool FillWindow(const PixelContribType& record, Range range, int nFirst, int nLaneLimit,
                signed char* pWeights, bool& bUnsigned16) {
    int sums[kMostChunks][4] = {};
    int nRecord = 0;
    for (int i = range.nBegin; i < range.nEnd; ++i) {
        const int nWeight = record.pWeights[i - record.nLeft];
        const int nAt = i - nFirst;
        if (nWeight < -SCHAR_MAX || nWeight > SCHAR_MAX) {
            return false;
        }
        int& nSum = sums[nAt / kChunkPixels][nAt % 8 / 2];
        nSum += std::abs(nWeight);
        if (nSum > nLaneLimit) {
            return false;
        }
        pWeights[nAt] = static_cast<signed char>(nWeight);
        nRecord += nWeight;
        bUnsigned16 = bUnsigned16 && nWeight >= 0;
    }
    bUnsigned16 = bUnsigned16 && nRecord <= 256;
    return true;
}

}  // namespace

bool PlanWindows(const LineContribType& table, std::size_t nInLength, int nMostChunks,
                 int nLaneLimit, WindowPlan& plan) {
    const std::size_t nRecords = AsSize(table.nLineLength);
    const std::unique_ptr<Range[]> pRanges(new (std::nothrow) Range[nRecords]);
    if (pRanges == nullptr) {
        return false;
    }
    const int nChunks = (FindRanges(table, pRanges.get()) + kChunkPixels - 1) / kChunkPixels;
    const int nPixels = nChunks * kChunkPixels;
    if (nChunks > std::min(nMostChunks, kMostChunks) || nInLength > INT_MAX ||
        nInLength < Low32(nPixels)) {
        return false;
    }
    const int nLastFirst = static_cast<int>(nInLength) - nPixels;
    const std::size_t nPadded = (nRecords + 15) / 16 * 16;
    const std::size_t nStep = AsSize(nPixels);
    plan.nChunks = AsSize(nChunks);
    plan.bUnsigned16 = true;
    plan.pFirst.reset(new (std::nothrow) int[nPadded]());
    plan.pWeights.reset(new (std::nothrow) signed char[nPadded * nStep]());
    if (plan.pFirst == nullptr || plan.pWeights == nullptr) {
        return false;
    }
    for (std::size_t i = 0; i < nRecords; ++i) {
        plan.pFirst[i] = std::min(pRanges[i].nBegin, nLastFirst);
        if (!FillWindow(table.pPixels[i], pRanges[i], plan.pFirst[i], nLaneLimit,
                        &plan.pWeights[i * nStep], plan.bUnsigned16)) {
            return false;
        }
    }
    return true;
}

}  // namespace kel
