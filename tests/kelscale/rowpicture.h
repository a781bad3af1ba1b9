// Rows of 3-byte pixels with guard bytes behind each, for the scaler's tests.
#ifndef KELSCALE_ROWPICTURE_H
#define KELSCALE_ROWPICTURE_H

#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string_view>
#include <vector>

#include "kelscale/kelscale.h"

class RowPicture {
  public:
    using Pixel = CDataRGB_UBYTE::PixelClass;
    static constexpr unsigned char kGuard = 0xA5;
    static constexpr std::size_t kGuards = 64;

    // Every byte starts as kGuard. Guard bytes lie between the rows, nSkew of them to move the rows
    // off alignment; behind the last row lies a page that ends whoever touches it.
    RowPicture(unsigned int nWidth, unsigned int nHeight, std::size_t nSkew = 0)
        : m_nRowBytes(std::size_t{3} * nWidth),
          m_nSize(nHeight * (m_nRowBytes + kGuards + nSkew)),
          m_nMapped((m_nSize + kPage - 1) / kPage * kPage + kPage),
          m_pMapped(static_cast<unsigned char*>(mmap(nullptr, m_nMapped, PROT_READ | PROT_WRITE,
                                                     MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))),
          m_pEnd(m_pMapped + m_nMapped - kPage) {
        std::fill(m_pMapped, m_pEnd, kGuard);
        mprotect(m_pEnd, kPage, PROT_NONE);
        for (std::size_t y = 0; y < nHeight; ++y) {
            const std::size_t nBehind = nHeight - 1 - y;
            m_Rows.push_back(m_pEnd - m_nRowBytes - nBehind * (m_nRowBytes + kGuards + nSkew));
        }
    }
    ~RowPicture() { munmap(m_pMapped, m_nMapped); }
    RowPicture(const RowPicture&) = delete;
    RowPicture& operator=(const RowPicture&) = delete;

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
    // All bytes, guards included.
    std::string_view Bytes() const {
        return {reinterpret_cast<const char*>(m_pEnd - m_nSize), m_nSize};
    }

  private:
    static constexpr std::size_t kPage = 65536;  // of any system

    std::size_t m_nRowBytes;
    std::size_t m_nSize;
    std::size_t m_nMapped;
    unsigned char* m_pMapped;
    unsigned char* m_pEnd;
    std::vector<unsigned char*> m_Rows;
};

#endif  // KELSCALE_ROWPICTURE_H
