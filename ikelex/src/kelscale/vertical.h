// The vertical pass, one output row at a time.
//
// Every byte of a row is the weighted sum of the bytes of its column, without regard to pixels.
// ScaleColumnsPlain of passes.h defines the bytes.
#ifndef KELSCALE_VERTICAL_H
#define KELSCALE_VERTICAL_H

#include <cstddef>
#include <memory>

#include "plan.h"
#include "variants.h"

namespace kel {

class VerticalPass {
  public:
    // Plans from a table that must outlive this object. Without memory for a plan the plain loop
    // runs.
    void Prepare(const LineContribType& table, std::size_t nRowBytes,
                 const ScaleFunctions& functions);

    // The source rows nFirst to nEnd - 1. Both are 0 for none.
    struct Needs {
        unsigned int nFirst;
        unsigned int nEnd;
    };
    Needs RowsFor(unsigned int y) const;

    // Writes output row y. Only the rows that it needs have to exist. None may overlap pOut.
    void Run(unsigned int y, const unsigned char* const* ppIn, unsigned char* pOut) const;

  private:
    const LineContribType* m_pTable = nullptr;
    PassPlan m_Plan;
    std::unique_ptr<const unsigned char*[]> m_ppSources;  // null for the plain loop
    std::size_t m_nRowBytes = 0;
    const VerticalFunctions* m_pFunctions = nullptr;
};

}  // namespace kel

#endif  // KELSCALE_VERTICAL_H
