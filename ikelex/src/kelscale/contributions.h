// Contribution tables say which source positions make up each output position, and with what
// weight.
#ifndef KELSCALE_CONTRIBUTIONS_H
#define KELSCALE_CONTRIBUTIONS_H

#include <memory>

#include "kelscale.h"

namespace kel {

// A table of nRecords records of nWeights uninitialised weights each, all in one block, or null
// when it cannot be allocated.
LineContribType* AllocContributions(unsigned int nRecords, unsigned int nWeights);

// Releases a table. Null is accepted.
void FreeContributions(LineContribType* pTable);

struct ContributionsDeleter {
    void operator()(LineContribType* pTable) const { FreeContributions(pTable); }
};
using Contributions = std::unique_ptr<LineContribType, ContributionsDeleter>;

// The table of one pass with the given kernel. dRatio is output size / source size. Null when
// memory is short, or when positions or window sizes do not fit into an int. What a host's kernel
// throws passes through.
Contributions CalcContributions(const PLContribDef& kernel, unsigned int nOutLength,
                                unsigned int nInLength, double dRatio);

// The same with the ratio of the two lengths.
inline Contributions CalcContributions(const PLContribDef& kernel, unsigned int nOutLength,
                                       unsigned int nInLength) {
    const double dOutLength = nOutLength;
    return CalcContributions(kernel, nOutLength, nInLength, dOutLength / nInLength);
}

// The tables of both passes of a scale. Equal lengths share one.
class TablePair {
  public:
    // False when a table cannot be made.
    bool Calc(const PLContribDef& kernel, unsigned int nOutWidth, unsigned int nInWidth,
              unsigned int nOutHeight, unsigned int nInHeight);

    const LineContribType& Horizontal() const { return *m_Horizontal; }
    const LineContribType& Vertical() const { return *m_pVertical; }

  private:
    Contributions m_Horizontal;
    Contributions m_Vertical;
    const LineContribType* m_pVertical = nullptr;
};

}  // namespace kel

#endif  // KELSCALE_CONTRIBUTIONS_H
