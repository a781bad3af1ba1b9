// The weights of one pass as byte shuffles, for single rows, without transposing.
//
// A vector of the row holds the source pixels of a few output pixels side by side. A shuffle puts
// four of them, one channel, into the 32-bit lane of each output pixel, where one instruction
// multiplies and adds them. Made for enlarging and for ratios near 1.
//
//     vector of the row      b g r b g r b g r b g r ...
//     order, channel blue    0 3 6 9   3 6 9 12   3 6 9 12   ...    4 bytes an output pixel
//     weights                w w w w   w w w w    w w w w    ...
#ifndef KELSCALE_SHUFFLES_H
#define KELSCALE_SHUFFLES_H

#include <cstddef>
#include <memory>

#include "kelscale.h"

namespace kel {

// A vector of a level holds nGroups groups of nGroupPixels output pixels. A group shuffles
// 4 x nGroupPixels bytes of the row, loaded by themselves. The pairs of bytes in its lanes carry
// weights up to nPairLimit together.
struct ShuffleShape {
    std::size_t nGroups;
    std::size_t nGroupPixels;
    int nPairLimit;

    constexpr std::size_t GroupBytes() const { return 4 * nGroupPixels; }
    constexpr std::size_t BlockPixels() const { return nGroups * nGroupPixels; }
    constexpr std::size_t StepBytes() const { return nGroups * GroupBytes(); }
};

// The steps of block i, BlockPixels() output pixels, are pStart[i] up to pStart[i + 1] - 1. Records
// after the last one have no weights.
struct ShufflePlan {
    bool bUnsigned16 = false;  // of the table
    std::unique_ptr<unsigned int[]> pStart;
    // The place of a load in the row, for each step and group.
    std::unique_ptr<unsigned int[]> pLoads;
    // The places of channel 0 in the loads, StepBytes() a step. The other channels lie 1 and 2
    // after them.
    std::unique_ptr<unsigned char[]> pOrders;
    // As many weights.
    std::unique_ptr<signed char[]> pWeights;
};

// Makes a plan of a table. False when
// - memory is short,
// - the row is shorter than a load,
// - the blocks need more than nMostSteps steps on average, so that other forms are faster.
bool PlanShuffles(const LineContribType& table, std::size_t nInLength, const ShuffleShape& shape,
                  std::size_t nMostSteps, ShufflePlan& plan);

}  // namespace kel

#endif  // KELSCALE_SHUFFLES_H
