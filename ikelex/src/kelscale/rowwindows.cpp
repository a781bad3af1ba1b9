// Makes the windows of a table. They hold the table's weights and change no byte.
#include "rowwindows.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>

#include "kelbitmap/integers.h"
#include "plan.h"

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

// How many pixels the longest record needs.
int LongestRange(const LineContribType& table) {
    int nLongest = 1;
    for (int i = 0; i < table.nLineLength; ++i) {
        const Range range = UsedRange(table.pPixels[i]);
        nLongest = std::max(nLongest, range.nEnd - range.nBegin);
    }
    return nLongest;
}

// Fills the window that begins at nFirst. False when the weights are too large.
bool FillWindow(const PixelContribType& record, Range range, int nFirst, int nLaneLimit,
                signed char* pWeights) {
    int sums[kMostChunks][4] = {};
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
    }
    return true;
}

}  // namespace

bool PlanWindows(const LineContribType& table, std::size_t nInLength, int nMostChunks,
                 int nLaneLimit, WindowPlan& plan) {
    const int nChunks = (LongestRange(table) + kChunkPixels - 1) / kChunkPixels;
    const int nPixels = nChunks * kChunkPixels;
    if (nChunks > std::min(nMostChunks, kMostChunks) || nInLength > INT_MAX ||
        nInLength < Low32(nPixels)) {
        return false;
    }
    const int nLastFirst = static_cast<int>(nInLength) - nPixels;
    const std::size_t nRecords = AsSize(table.nLineLength);
    const std::size_t nPadded = (nRecords + 15) / 16 * 16;
    const std::size_t nStep = AsSize(nPixels);
    plan.nChunks = AsSize(nChunks);
    plan.bUnsigned16 = IsUnsigned16(table);
    plan.pFirst.reset(new (std::nothrow) int[nPadded]());
    plan.pWeights.reset(new (std::nothrow) signed char[nPadded * nStep]());
    if (plan.pFirst == nullptr || plan.pWeights == nullptr) {
        return false;
    }
    for (std::size_t i = 0; i < nRecords; ++i) {
        const PixelContribType& record = table.pPixels[i];
        const Range range = UsedRange(record);
        plan.pFirst[i] = std::min(range.nBegin, nLastFirst);
        if (!FillWindow(record, range, plan.pFirst[i], nLaneLimit, &plan.pWeights[i * nStep])) {
            return false;
        }
    }
    return true;
}

}  // namespace kel
