// The vertical pass, one output row at a time.
//
// Every byte of a row is the weighted sum of the bytes above and below it: a sweep over the rows of
// the plan's steps, without regard to pixels. Sums are exact; ScaleColumnsPlain of passes.h defines
// the bytes.
#ifndef KELSCALE_VERTICAL_H
#define KELSCALE_VERTICAL_H

#include <cstddef>

#include "../kelcpu/kelcpu.h"
#include "plan.h"

namespace kel {

// One output row: nSteps source rows, each with the weight of its step.
struct VerticalRow {
    const unsigned char* const* ppIn;
    const PlanStep* pSteps;
    unsigned int nSteps;
    int nWeights;  // the sum of the steps' weights
    bool bUnsigned16;
    unsigned char* pOut;
    std::size_t nBytes;
};

// Plans: PlanTaps for the portable form, PlanColumns with kPairLimit for AVX2, with kNoPairLimit
// for AVX-512.
void ScaleColumns_Portable(const VerticalRow& row);
#if defined(__x86_64__)
void ScaleColumns_Avx2(const VerticalRow& row);
void ScaleColumns_Avx512(const VerticalRow& row);
#endif

// The pass at one level: plan, scratch and loop.
class VerticalPass {
  public:
    // False when plan or scratch cannot be had: the plain loop must run then.
    bool Prepare(const LineContribType& table, std::size_t nRowBytes, CpuLevel eLevel);

    // The source rows that output row y needs: FirstRow to EndRow - 1; none when they are equal.
    unsigned int FirstRow(unsigned int y) const;
    unsigned int EndRow(unsigned int y) const;

    // Writes output row y. Only the rows that it needs have to be there; none may overlap pOut.
    void Run(unsigned int y, const unsigned char* const* ppIn, unsigned char* pOut) const;

  private:
    PassPlan m_Plan;
    std::unique_ptr<const unsigned char*[]> m_ppSources;
    std::size_t m_nRowBytes = 0;
    void (*m_pfnColumns)(const VerticalRow&) = nullptr;
};

}  // namespace kel

#endif  // KELSCALE_VERTICAL_H
