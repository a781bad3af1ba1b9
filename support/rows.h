/// Pictures as plain rows, and random bytes: what tests, fuzz targets and benchmarks share without
/// an image object.
#ifndef SUPPORT_ROWS_H
#define SUPPORT_ROWS_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "kelbitmap/strides.h"

namespace support {

using Bytes = std::vector<unsigned char>;

inline constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};

/// A small generator whose sequence is the same everywhere.
class Random {
  public:
    explicit Random(std::uint32_t nSeed) : m_nState(nSeed * 2654435761u + 1) {}
    std::uint32_t Next();
    /// 0 to nLimit - 1.
    int Below(int nLimit) { return static_cast<int>(Next() % static_cast<std::uint32_t>(nLimit)); }
    unsigned char Byte() { return static_cast<unsigned char>(Next() >> 24); }
    void Fill(unsigned char* p, std::size_t nBytes);

  private:
    std::uint32_t m_nState;
};

/// A picture as padded rows, one after the other.
struct Rows {
    int nBits = 0, nWidth = 0, nHeight = 0;
    Bytes bytes;

    std::size_t Stride() const { return static_cast<std::size_t>(kel::RowStride(nBits, nWidth)); }
    unsigned char* Row(int nY) { return bytes.data() + static_cast<std::size_t>(nY) * Stride(); }
    const unsigned char* Row(int nY) const { return const_cast<Rows*>(this)->Row(nY); }
    std::vector<unsigned char*> Pointers();

    bool operator==(const Rows&) const = default;
};
/// For failure messages: depth and size.
std::ostream& operator<<(std::ostream& out, const Rows& rows);

Rows BlackRows(int nBits, int nWidth, int nHeight);
/// Random bytes, padding included.
Rows RandomRows(int nBits, int nWidth, int nHeight, unsigned int nSeed);

/// Pixel nX of a row, any depth. Multi-byte pixels have their first byte lowest.
std::uint32_t PixelAt(int nBits, const unsigned char* pRow, int nX);
void SetPixelAt(int nBits, unsigned char* pRow, int nX, std::uint32_t nPixel);

}  // namespace support

#endif  // SUPPORT_ROWS_H
