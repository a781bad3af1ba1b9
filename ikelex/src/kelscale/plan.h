// The weights of one pass in the form its loops read: the non-zero ones only, in one array.
#ifndef KELSCALE_PLAN_H
#define KELSCALE_PLAN_H

#include <memory>

#include "kelscale.h"

namespace kel {

// One multiplication of a record; what it multiplies is told where the plan is made.
struct PlanStep {
    int nIndex;
    int nWeights;
};

// The steps of record i are pSteps[pStart[i]] up to pSteps[pStart[i + 1]]. Up to a multiple of 16,
// records without steps follow.
struct PassPlan {
    std::unique_ptr<unsigned int[]> pStart;
    std::unique_ptr<PlanStep[]> pSteps;
    unsigned int nMostSteps = 0;  // of any record
    bool bUnsigned16 = false;     // no weight below 0, no record's sum above 256
};

// How much weight a pair of bytes may carry where pairs are summed in 16 bits with saturation:
// 255 x 128 = 32,640 fits. Where four bytes are summed in 32 bits at once, the signed byte is the
// limit.
inline constexpr int kPairLimit = 128;
inline constexpr int kNoPairLimit = 254;

// Each makes a plan of a table and returns false when the plan cannot be had: no memory, or weights
// so large (no kernel of this library has them) that the plain loop must run.

// A step is a source position and its whole weight.
bool PlanTaps(const LineContribType& table, PassPlan& plan);

// A step is a group of four neighbouring source positions, 4 x nIndex to 4 x nIndex + 3, and four
// signed bytes, the first in the lowest bits. A group whose weights do not fit is repeated.
bool PlanGroups(const LineContribType& table, int nPairLimit, PassPlan& plan);

// A step is a source position and one byte of weight. Positions whose weight does not fit are
// repeated; each record is padded with weights of 0. Where the plan is bUnsigned16 the bytes are
// unsigned and come in pairs; else they are signed and come in fours.
bool PlanColumns(const LineContribType& table, int nPairLimit, PassPlan& plan);

// The weights of a record that reads few pixels: those of 16 neighbouring source positions.
struct NarrowWindow {
    int nFirst;
    signed char weights[16];
};

// Makes a window of each record, and empty ones up to a multiple of 16. Null without memory, or
// when a record does not fit into its window or 16 pixels into the row, when a weight is below 0, a
// record's sum above 256, or that of the positions k, k + 1, k + 8 and k + 9 above kPairLimit - 1,
// which a signed byte holds.
std::unique_ptr<NarrowWindow[]> PlanNarrowWindows(const LineContribType& table,
                                                  unsigned int nInLength);

// True when every record consists of its own position with the weight 256: the pass is a copy.
bool IsCopy(const LineContribType& table, unsigned int nInLength);

}  // namespace kel

#endif  // KELSCALE_PLAN_H
