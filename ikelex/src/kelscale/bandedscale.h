// Both passes together, band by band: a few rows are scaled horizontally, and as soon as the rows
// of an output row are there it is scaled vertically, while they still lie in the cache. Between
// the passes only as many rows are held as some output row still needs.
//
// The bytes are those of the two passes one after the other. Only for scales that no callback
// watches and whose output rows do not overlap the input rows.
#ifndef KELSCALE_BANDEDSCALE_H
#define KELSCALE_BANDEDSCALE_H

#include "horizontal.h"
#include "rowblock.h"
#include "vertical.h"

namespace kel {

class BandedScale {
  public:
    // Plans both passes from their tables, which must outlive this object. False when the vertical
    // plan cannot be had: the plain loops must run then.
    bool Prepare(const LineContribType& horizontal, unsigned int nInWidth,
                 const LineContribType& vertical, unsigned int nInHeight, CpuLevel eLevel);

    // Takes the rows between the passes; false when they cannot be had.
    bool AllocateRows();

    void Run(const unsigned char* const* ppIn, unsigned char* const* ppOut);

  private:
    unsigned int HeldRows() const;

    HorizontalPass m_Horizontal;
    VerticalPass m_Vertical;
    RowBlock m_Temp;
    std::size_t m_nOutBytes = 0;  // of one row
    unsigned int m_nInHeight = 0;
    unsigned int m_nOutHeight = 0;
    bool m_bCopyRows = false;     // the horizontal pass changes nothing
    bool m_bCopyColumns = false;  // the vertical pass changes nothing
};

}  // namespace kel

#endif  // KELSCALE_BANDEDSCALE_H
