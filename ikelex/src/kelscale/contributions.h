// Contribution tables: which source positions make up each output position, and with what weight.
#ifndef KELSCALE_CONTRIBUTIONS_H
#define KELSCALE_CONTRIBUTIONS_H

#include <memory>

#include "kelscale.h"

namespace kel {

// A table of nRecords records of nWeights uninitialised weights each, or null when it cannot be
// had.
LineContribType* AllocContributions(unsigned int nRecords, unsigned int nWeights);

// Releases a table; null is accepted.
void FreeContributions(LineContribType* pTable);

struct ContributionsDeleter {
    void operator()(LineContribType* pTable) const { FreeContributions(pTable); }
};
using Contributions = std::unique_ptr<LineContribType, ContributionsDeleter>;

// The table of one pass with the given kernel; dRatio is output size / source size. Null when it
// cannot be had: no memory, or positions and window sizes that do not fit into an int. What a
// host's kernel throws passes through.
Contributions CalcContributions(const PLContribDef& kernel, unsigned int nOutLength,
                                unsigned int nInLength, double dRatio);

}  // namespace kel

#endif  // KELSCALE_CONTRIBUTIONS_H
