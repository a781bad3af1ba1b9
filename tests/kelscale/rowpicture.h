// Rows of 3-byte pixels with guard bytes behind each, for the scaler's tests.
#ifndef KELSCALE_ROWPICTURE_H
#define KELSCALE_ROWPICTURE_H

#include <cstddef>
#include <random>
#include <vector>

#include "kelscale/kelscale.h"

class RowPicture {
  public:
    using Pixel = CDataRGB_UBYTE::PixelClass;
    static constexpr unsigned char kGuard = 0xA5;
    static constexpr std::size_t kGuards = 64;

    // Every byte, the guards too, starts as kGuard; nSkew moves the first pixel off alignment.
    RowPicture(unsigned int nWidth, unsigned int nHeight, std::size_t nSkew = 0)
        : m_nRowBytes(std::size_t{3} * nWidth),
          m_Bytes(nSkew + nHeight * (m_nRowBytes + kGuards), kGuard) {
        for (std::size_t y = 0; y < nHeight; ++y) {
            m_Rows.push_back(m_Bytes.data() + nSkew + y * (m_nRowBytes + kGuards));
        }
    }

    // Random pixels, runs of black and white among them: edges that overshoot.
    void Fill(unsigned int nSeed) {
        std::mt19937 random(nSeed);
        for (unsigned char* pRow : m_Rows) {
            for (std::size_t i = 0; i < m_nRowBytes; ++i) {
                const bool bEdge = (random() & 3u) != 0;
                pRow[i] = static_cast<unsigned char>(bEdge ? (i / 9 % 2) * 255 : random() & 255u);
            }
        }
    }

    unsigned char** Rows() { return m_Rows.data(); }
    Pixel** Pixels() { return reinterpret_cast<Pixel**>(m_Rows.data()); }
    const std::vector<unsigned char>& Bytes() const { return m_Bytes; }

  private:
    std::size_t m_nRowBytes;
    std::vector<unsigned char> m_Bytes;
    std::vector<unsigned char*> m_Rows;
};

#endif  // KELSCALE_ROWPICTURE_H
