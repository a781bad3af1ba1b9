// The plan, the scratch and the loop over rows of the horizontal pass.
//
// Four forms write the same bytes, those of ScaleRowPlain.
// - Single rows from windows, where the source is much wider than the target.
// - Single rows by shuffles, for enlarging and ratios near 1.
// - Bands of transposed rows.
// - The plain loop, where memory for the others is short.
#ifndef KELSCALE_HORIZONTAL_H
#define KELSCALE_HORIZONTAL_H

#include <cstddef>
#include <memory>

#include "plan.h"
#include "rowwindows.h"
#include "variants.h"

namespace kel {

class HorizontalPass {
  public:
    enum class Form { kPlain, kBands, kWindows, kShuffles };

    // Plans from a table that must outlive this object. Without memory for a plan the plain loop
    // runs.
    void Prepare(const LineContribType& table, unsigned int nInWidth,
                 const ScaleFunctions& functions);

    Form GetForm() const { return m_eForm; }

    // Rows that one call of Run takes at most.
    unsigned int BandRows() const { return m_nBandRows; }

    // Writes nRows rows, 1 to BandRows(). No output row may overlap an input row. Of the rows that
    // are read next, those of the next call are prefetched.
    void Run(const unsigned char* const* ppIn, unsigned char* const* ppOut, unsigned int nRows,
             NextRows next) const;

  private:
    // Output pixels that are summed from one transposition of the input pixels they need.
    struct Strip {
        std::size_t nOutBegin;
        std::size_t nOutEnd;
        std::size_t nInBegin;
        std::size_t nInEnd;

        // 0 when none is needed.
        std::size_t Width() const { return nInEnd > nInBegin ? nInEnd - nInBegin : 0; }
    };

    Form PrepareForm();
    bool PrepareWindows();
    bool PrepareShuffles();
    bool PrepareBands();
    Strip BlockStrip(std::size_t x, std::size_t nUnit) const;
    bool CutStrips();
    void RunShuffles(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                     unsigned int nRows, const NextRows& next) const;
    void RunBand(const unsigned char* const* ppIn, unsigned char* const* ppOut, unsigned int nRows,
                 const NextRows& next) const;

    const LineContribType* m_pTable = nullptr;
    std::size_t m_nInWidth = 0;
    std::size_t m_nOutWidth = 0;
    const ScaleFunctions* m_pFunctions = nullptr;
    Form m_eForm = Form::kPlain;
    unsigned int m_nBandRows = 1;

    WindowPlan m_Windows;
    ShufflePlan m_Shuffles;
    // Of bands.
    PassPlan m_Plan;
    std::unique_ptr<Strip[]> m_pStrips;
    std::size_t m_nStrips = 0;
    std::unique_ptr<unsigned char[]> m_pScratch;
};

}  // namespace kel

#endif  // KELSCALE_HORIZONTAL_H
