// Rows of equal size in one block, with the array of pointers to them.
#ifndef KELSCALE_ROWBLOCK_H
#define KELSCALE_ROWBLOCK_H

#include <cstddef>
#include <memory>

namespace kel {

class RowBlock {
  public:
    // nRows rows of nRowBytes bytes, of which nHeld lie in memory. Row i shares its place with row
    // i + nHeld. False when they cannot be allocated.
    bool Allocate(std::size_t nRows, std::size_t nHeld, std::size_t nRowBytes);

    unsigned char** Rows() const { return m_ppRows.get(); }

  private:
    std::unique_ptr<unsigned char[]> m_pBytes;
    std::unique_ptr<unsigned char*[]> m_ppRows;
};

}  // namespace kel

#endif  // KELSCALE_ROWBLOCK_H
