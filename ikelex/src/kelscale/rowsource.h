// Input rows that are made while a scale asks for them.
#ifndef KELSCALE_ROWSOURCE_H
#define KELSCALE_ROWSOURCE_H

namespace kel {

class RowSource {
  public:
    virtual ~RowSource() = default;

    // Rows nFirst to nFirst + nRows - 1, nRows no more than Prepare was given. They stay valid
    // until the next call. A scale asks for every row once, in order.
    virtual const unsigned char* const* Rows(unsigned int nFirst, unsigned int nRows) = 0;

    // Takes memory for nMostRows rows. False when it cannot be allocated.
    virtual bool Prepare(unsigned int nMostRows) = 0;
};

}  // namespace kel

#endif  // KELSCALE_ROWSOURCE_H
