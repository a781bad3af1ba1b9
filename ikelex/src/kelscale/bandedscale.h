// Both passes of one scale, in the order that its caller can bear.
//
// Banded, a few rows are scaled horizontally. As soon as the rows of an output row exist, it is
// scaled vertically, while they lie in the cache. Between the passes only as many rows are held as
// some output row still needs. Pass by pass, the horizontal pass ends before the first output row
// is written. The bytes are the same.
#ifndef KELSCALE_BANDEDSCALE_H
#define KELSCALE_BANDEDSCALE_H

#include "horizontal.h"
#include "kelbitmap/integers.h"
#include "rowblock.h"
#include "rowsource.h"
#include "vertical.h"

namespace kel {

class BandedScale {
  public:
    // Plans both passes from their tables, which must outlive this object.
    void Prepare(const LineContribType& horizontal, unsigned int nInWidth,
                 const LineContribType& vertical, unsigned int nInHeight,
                 const ScaleFunctions& functions);

    // Banded. No output row may overlap an input row. False when memory is short. Nothing is
    // written then.
    bool Run(const unsigned char* const* ppIn, unsigned char* const* ppOut);
    bool Run(RowSource& source, unsigned char* const* ppOut);

    // Pass by pass, asking pfnProgress, if any, before each row of either pass. The callback may
    // change pfnProgress.
    enum class Outcome { kDone, kCancelled, kNoMemory };
    Outcome RunPasses(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                      const ScaleProgressFunc& pfnProgress);

  private:
    // Input rows in memory, or a source of them.
    struct Input {
        const unsigned char* const* ppRows;
        RowSource* pSource;
    };

    bool AllocateRows(unsigned int nHeld);
    unsigned int HeldRows() const;
    unsigned int BandRows() const { return m_bCopyRows ? 1 : m_Horizontal.BandRows(); }
    bool RunBands(const Input& input, unsigned char* const* ppOut);
    void ScaleBand(const Input& input, unsigned int nFirst, unsigned int nRows,
                   unsigned char* const* ppTemp) const;

    HorizontalPass m_Horizontal;
    VerticalPass m_Vertical;
    RowBlock m_Temp;
    std::size_t m_nInBytes = 0;   // of one row
    std::size_t m_nOutBytes = 0;  // likewise
    unsigned int m_nInHeight = 0;
    unsigned int m_nOutHeight = 0;
    bool m_bCopyRows = false;     // the horizontal pass changes nothing
    bool m_bCopyColumns = false;  // the vertical pass changes nothing
};

// Resamples all rows of a source with the best functions of this machine. Same terms as
// C2PassScale::Scale. No output row may overlap what the source reads. False when memory is short.
bool ScaleRows(const PLContribDef& kernel, RowSource& source, unsigned int nInWidth,
               unsigned int nInHeight, unsigned char* const* ppOut, unsigned int nOutWidth,
               unsigned int nOutHeight);

// How far the rows of a pass have come, 0 to 49.
inline int Percent(unsigned int nRow, unsigned int nRows) {
    const double dRow = nRow;
    return static_cast<int>(dRow / nRows * 50.0);
}

// Asks the callback, if any, whether to go on.
inline bool Report(ScaleProgressFunc pfnProgress, int nPercent) {
    return pfnProgress == nullptr || pfnProgress(LowByte(nPercent));
}

}  // namespace kel

#endif  // KELSCALE_BANDEDSCALE_H
