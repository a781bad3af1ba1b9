// The weights of records that read few pixels each, as windows of neighbouring source pixels.
//
// Where a source is much wider than its target, transposing costs more than the sums. Rows are then
// scaled one by one from windows.
#ifndef KELSCALE_ROWWINDOWS_H
#define KELSCALE_ROWWINDOWS_H

#include <cstddef>
#include <memory>

#include "kelscale.h"

namespace kel {

// A window consists of 1 to kMostChunks chunks of kChunkPixels pixels.
inline constexpr int kChunkPixels = 16;
inline constexpr int kMostChunks = 4;

// Up to a multiple of 16, records whose weights are all 0 follow. Every window lies in the row.
struct WindowPlan {
    std::size_t nChunks = 0;                  // of each window
    bool bUnsigned16 = false;                 // no weight below 0, no record's sum above 256
    std::unique_ptr<int[]> pFirst;            // the first pixel of each window
    std::unique_ptr<signed char[]> pWeights;  // nChunks x kChunkPixels of each
};

// Limits of nLaneLimit, the weight that the positions k, k + 1, k + 8 and k + 9 of a chunk may
// carry together. With kLaneLimit their products fit into 16 bits signed.
//
//     255 x 128 = 32,640 < 32,768
inline constexpr int kLaneLimit = 128;
inline constexpr int kNoLaneLimit = 4 * 127;

// Makes a plan with windows as short as the longest record allows. False when
// - memory is short,
// - a record needs more than nMostChunks, or the row is shorter than a window,
// - a weight does not fit into a signed byte, or four of them not into nLaneLimit.
bool PlanWindows(const LineContribType& table, std::size_t nInLength, int nMostChunks,
                 int nLaneLimit, WindowPlan& plan);

}  // namespace kel

#endif  // KELSCALE_ROWWINDOWS_H
