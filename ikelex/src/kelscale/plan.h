// The weights of one pass in the form its loops read. Only those that are not 0, in one array.
//
// A plan holds the table's weights, cut into pieces where they do not fit, and changes no byte.
#ifndef KELSCALE_PLAN_H
#define KELSCALE_PLAN_H

#include <memory>

#include "kelscale.h"

namespace kel {

// One multiplication of a record. What it multiplies is said where the plan is made.
struct PlanStep {
    int nIndex;
    int nWeights;
};

// The steps of record i are pSteps[pStart[i]] up to pSteps[pStart[i + 1]]. Padded with empty
// records to a multiple of 16, because the loops compute 16 pixels.
struct PassPlan {
    std::unique_ptr<unsigned int[]> pStart;
    std::unique_ptr<PlanStep[]> pSteps;
    unsigned int nMostSteps = 0;  // of any record
    bool bUnsigned16 = false;     // of the table
};

// True when no weight is below 0 and no record's sum above 256. Rounded sums then fit into 16 bits
// unsigned.
//
//     255 x 256 + 128 = 65,408 < 65,536
bool IsUnsigned16(const LineContribType& table);

// True for weights too large to be cut into bytes, or for a sum of 32 bits. No kernel of this
// library has such weights.
bool HasLargeWeights(const LineContribType& table);

// How much weight a pair of bytes may carry. Where pairs are summed in 16 bits signed with
// saturation, kPairLimit is exact. Where four bytes are summed in 32 bits, the signed byte is the
// limit.
//
//     255 x 128 = 32,640 < 32,768
inline constexpr int kPairLimit = 128;
inline constexpr int kNoPairLimit = 254;

// Each makes a plan of a table. False when memory is short, or when weights are so large that the
// plain loop must run.

// A step is a source position and its whole weight.
bool PlanTaps(const LineContribType& table, PassPlan& plan);

// A step is a group of four neighbouring source positions, 4 x nIndex to 4 x nIndex + 3, and four
// signed bytes, the first in the lowest bits. A group whose weights do not fit is repeated.
bool PlanGroups(const LineContribType& table, int nPairLimit, PassPlan& plan);

// A step is a source position and one byte of weight. Positions whose weight does not fit are
// repeated, and each record is padded with weights of 0. Where the plan is bUnsigned16 the bytes
// are unsigned and come in pairs, otherwise they are signed and come in fours.
bool PlanColumns(const LineContribType& table, int nPairLimit, PassPlan& plan);

// True when every record consists of its own position with the weight 256. The pass is a copy then.
bool IsCopy(const LineContribType& table, unsigned int nInLength);

}  // namespace kel

#endif  // KELSCALE_PLAN_H
