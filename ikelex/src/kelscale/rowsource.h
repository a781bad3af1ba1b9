// Input rows that are made while a scale asks for them.
#ifndef KELSCALE_ROWSOURCE_H
#define KELSCALE_ROWSOURCE_H

#include <cstddef>

namespace kel {

// Rows that will be read next, as they lie in memory.
struct NextRows {
    const unsigned char* const* ppRows;
    unsigned int nRows;
    std::size_t nRowBytes;
};

class RowSource {
  public:
    virtual ~RowSource() = default;

    // Rows nFirst to nFirst + nRows - 1, nRows no more than Prepare was given. They stay valid
    // until the next call. A scale asks for every row once, in order.
    virtual const unsigned char* const* Rows(unsigned int nFirst, unsigned int nRows) = 0;

    // What the rows from nFirst on are made from.
    virtual NextRows MadeFrom(unsigned int nFirst) const = 0;

    // Takes memory for nMostRows rows. False when it cannot be allocated.
    virtual bool Prepare(unsigned int nMostRows) = 0;
};

}  // namespace kel

#endif  // KELSCALE_ROWSOURCE_H
