// The horizontal pass over bands of rows.
//
// A band is turned so that the bytes of one column lie side by side, one lane a row; every lane
// then takes the same steps of the plan, and the sums are turned back. Sums are exact (16 bits
// unsigned where a plan allows it, else 32 bits), so that neither order nor grouping can change a
// byte: ScaleRowPlain of passes.h defines all of them.
//
// Where a source is much wider than its target and each output pixel reads few neighbours, turning
// costs more than the sums: such rows are scaled one by one (horizontalnarrow_*.cpp).
#ifndef KELSCALE_HORIZONTAL_H
#define KELSCALE_HORIZONTAL_H

#include <cstddef>

#include "../kelcpu/kelcpu.h"
#include "plan.h"

namespace kel {

// The rows that the next band will read, fetched into the second level cache while this one is
// summed: the processor does not foresee as many streams as a band has rows.
class RowsAhead {
  public:
    RowsAhead(const unsigned char* const* ppRows, std::size_t nRows, std::size_t nRowBytes,
              std::size_t nShares);

    // Asks for the next one of nShares shares.
    void FetchShare();

  private:
    static constexpr std::size_t kLine = 64;

    const unsigned char* const* m_ppRow;
    const unsigned char* const* m_ppEnd;
    std::size_t m_nRowBytes;
    std::size_t m_nAt = 0;     // the place within the row
    std::size_t m_nLines = 0;  // of a share
};

// One band: so many rows as the variant has lanes. A caller with fewer rows repeats its last one.
struct HorizontalBand {
    const unsigned int* pStart;  // the plan
    const PlanStep* pSteps;
    bool bUnsigned16;
    const NarrowWindow* pWindows;  // instead of a plan, for ScaleNarrow
    const unsigned char* const* ppIn;
    unsigned char* const* ppOut;
    std::size_t nInWidth;
    std::size_t nOutWidth;
    unsigned char* pScratch;  // the width rounded up to 16 pixels, times the band's rows
    RowsAhead* pAhead;        // a share with every four output pixels of a ScaleBand
};

inline constexpr unsigned int kBandRowsPortable = 32;
inline constexpr unsigned int kBandRowsAvx2 = 8;
inline constexpr unsigned int kBandRowsAvx512 = 16;
inline constexpr unsigned int kMostBandRows = 32;

// Plans: PlanTaps for the portable form, PlanGroups with kPairLimit for AVX2, with kNoPairLimit for
// AVX-512.
void ScaleBand_Portable(const HorizontalBand& band);
#if defined(__x86_64__)
void ScaleBand_Avx2(const HorizontalBand& band);
void ScaleBand_Avx512(const HorizontalBand& band);

// One row at a time, from windows instead of a plan and without scratch.
void ScaleNarrow_Avx2(const HorizontalBand& band);
void ScaleNarrow_Avx512(const HorizontalBand& band);
#endif

// The pass at one level: plan, scratch and loop.
class HorizontalPass {
  public:
    // Plans from a table that must outlive this object. False when plan or scratch cannot be had:
    // a band is then one row, scaled by the plain loop.
    bool Prepare(const LineContribType& table, unsigned int nInWidth, CpuLevel eLevel);

    unsigned int BandRows() const { return m_nBandRows; }

    // Writes nRows rows, 1 to BandRows(). No output row may overlap an input row. Of the nAhead
    // input rows behind them, which later calls will pass, those of the next call are fetched.
    void Run(const unsigned char* const* ppIn, unsigned char* const* ppOut, unsigned int nRows,
             unsigned int nAhead) const;

  private:
    const LineContribType* m_pTable = nullptr;
    PassPlan m_Plan;
    std::unique_ptr<NarrowWindow[]> m_pWindows;
    std::unique_ptr<unsigned char[]> m_pScratch;
    std::size_t m_nInWidth = 0;
    unsigned int m_nOutWidth = 0;
    unsigned int m_nBandRows = 0;
    void (*m_pfnBand)(const HorizontalBand&) = nullptr;
};

}  // namespace kel

#endif  // KELSCALE_HORIZONTAL_H
