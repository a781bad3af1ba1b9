// Rows of 3-byte pixels between protected pages, for the scaler's tests.
#ifndef KELSCALE_ROWPICTURE_H
#define KELSCALE_ROWPICTURE_H

#include <algorithm>
#include <vector>

#include "kelscale/kelscale.h"
#include "support/guardedrows.h"
#include "support/rows.h"

class RowPicture : public support::GuardedRows {
  public:
    using Pixel = CDataRGB_UBYTE::PixelClass;

    // The rows end where a protected page begins, or begin where one ends.
    template <typename Width>
    RowPicture(Width nWidth, std::size_t nHeight, bool bAtEnd = true)
        : GuardedRows(nHeight, 3 * static_cast<std::size_t>(nWidth)),
          m_nRowBytes(3 * static_cast<std::size_t>(nWidth)) {
        for (std::size_t y = 0; y < nHeight; ++y) {
            m_Rows.push_back(Row(y, m_nRowBytes, bAtEnd));
        }
    }

    // White rows, and rows of white and black edges with random bytes among them: sums that
    // overshoot, and the largest ones.
    void Fill(unsigned int nSeed) {
        support::Random random(nSeed);
        for (unsigned char* pRow : m_Rows) {
            const bool bWhite = random.Below(4) == 0;
            for (std::size_t i = 0; i < m_nRowBytes; ++i) {
                const unsigned char byEdge = bWhite || i / 9 % 2 == 1 ? 255 : 0;
                pRow[i] = !bWhite && random.Below(4) == 0 ? random.Byte() : byEdge;
            }
        }
    }

    unsigned char** Rows() { return m_Rows.data(); }
    Pixel** Pixels() { return reinterpret_cast<Pixel**>(m_Rows.data()); }
    std::size_t RowBytes() const { return m_nRowBytes; }

  private:
    std::size_t m_nRowBytes;
    std::vector<unsigned char*> m_Rows;
};

#endif  // KELSCALE_ROWPICTURE_H
