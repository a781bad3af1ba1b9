// The functions of the two passes that exist once per processor level, and the choice among them.
//
// All forms write the same bytes, those of passes.h. Sums are exact, with 16 bits unsigned where a
// plan allows it, otherwise with 32 bits. Neither order nor grouping of the products can change a
// byte.
#ifndef KELSCALE_VARIANTS_H
#define KELSCALE_VARIANTS_H

#include <cstddef>

#include "kelcpu/kelcpu.h"
#include "plan.h"
#include "rowsource.h"
#include "rowwindows.h"
#include "shuffles.h"

namespace kel {

// Output pixels that one call of a row function or of pfnSum computes.
inline constexpr std::size_t kBlockPixels = 16;

// Prefetches rows that are read next into the second level cache, a share at a time. The processor
// does not foresee as many streams as a band has rows, nor rows that are converted meanwhile.
class RowsAhead {
  public:
    RowsAhead(const NextRows& rows, std::size_t nShares);

    bool IsEmpty() const { return m_ppRow == m_ppEnd; }

    // In the header, because a call would spill the registers of a row function.
    void FetchShare() {
        for (std::size_t n = 0; n < m_nLines && m_ppRow != m_ppEnd; ++n) {
            __builtin_prefetch(*m_ppRow + m_nAt, 0, 2);
            m_nAt += kLine;
            if (m_nAt >= m_nRowBytes) {
                m_nAt = 0;
                ++m_ppRow;
            }
        }
    }

  private:
    static constexpr std::size_t kLine = 64;

    const unsigned char* const* m_ppRow;
    const unsigned char* const* m_ppEnd;
    std::size_t m_nRowBytes;
    std::size_t m_nLines;   // of a share
    std::size_t m_nAt = 0;  // the place within the row
};

// A transposed band of rows and the plan of its sums.
struct Band {
    const unsigned int* pStart;
    const PlanStep* pSteps;
    bool bUnsigned16;
    unsigned char* pScratch;
    RowsAhead* pAhead;  // a share with every four output pixels
};

// The horizontal pass over nRows rows together. The band is transposed into scratch, so that a
// vector holds the same pixels of all rows, and every row takes the same steps of the plan.
struct BandFunctions {
    unsigned int nRows;
    // The plan is that of PlanGroups with this limit, or of PlanTaps for 0.
    int nPairLimit;
    // Transposes nPixels pixels of each row. Reads no byte after them. The scratch holds
    // 3 x nRows bytes for each pixel, and nPixels is rounded up to whole blocks there.
    void (*pfnTranspose)(const unsigned char* const* ppIn, std::size_t nPixels,
                         unsigned char* pScratch);
    // Writes a block of output pixels, from pixel x of the plan on, to each row. Pixels after the
    // end of the plan's records are written too, and mean nothing.
    void (*pfnSum)(const Band& band, std::size_t x, unsigned char* const* ppOut);
};

// Output pixels for which windows and shuffles prefetch a share of the next rows.
inline constexpr std::size_t kSharePixels = 8;

// One row of the horizontal pass, from windows. Writes no byte after nOutWidth pixels.
struct WindowFunctions {
    int nLaneLimit;  // of the plan
    void (*pfnRow)(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                   const WindowPlan& plan, RowsAhead& ahead);
};

// The horizontal pass over nRows rows, by shuffles. Every step of the plan is loaded once for all
// rows. Writes no byte after nOutWidth pixels.
struct ShuffleFunctions {
    // Of the plan. With more steps than nMostSteps for a block, on average, bands are faster.
    ShuffleShape shape;
    std::size_t nMostSteps;
    unsigned int nRows;
    void (*pfnRows)(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                    std::size_t nOutWidth, const ShufflePlan& plan, RowsAhead& ahead);
};

// One output row of the vertical pass, from nSteps source rows, each with the weight of its step.
struct VerticalRow {
    const unsigned char* const* ppIn;
    const PlanStep* pSteps;
    unsigned int nSteps;
    int nWeights;  // the sum of the steps' weights
    bool bUnsigned16;
    unsigned char* pOut;
    std::size_t nBytes;
};

struct VerticalFunctions {
    // The plan is that of PlanColumns with this limit, or of PlanTaps for 0.
    int nPairLimit;
    void (*pfnColumns)(const VerticalRow& row);
};

// The functions of one level.
struct ScaleFunctions {
    const BandFunctions& band;
    const WindowFunctions* pWindows;    // null where the level has none
    const ShuffleFunctions* pShuffles;  // likewise
    const VerticalFunctions& vertical;
};

// The machine must be able to run the level.
const ScaleFunctions& ScaleFunctionsFor(CpuLevel eLevel);

// The choice of every scale.
inline const ScaleFunctions& BestScaleFunctions() {
    return ScaleFunctionsFor(BestLevel());
}

extern const BandFunctions kBandPortable;
extern const VerticalFunctions kVerticalPortable;
#if defined(__x86_64__)
extern const BandFunctions kBandAvx2;
extern const WindowFunctions kWindowsAvx2;
extern const ShuffleFunctions kShufflesAvx2;
extern const VerticalFunctions kVerticalAvx2;
extern const BandFunctions kBandAvx512;
extern const WindowFunctions kWindowsAvx512;
extern const ShuffleFunctions kShufflesAvx512;
extern const VerticalFunctions kVerticalAvx512;
#endif

}  // namespace kel

#endif  // KELSCALE_VARIANTS_H
