// The geometry operations as slow loops over pixels, written from their formulas.
#ifndef SUPPORT_REFGEOMETRY_H
#define SUPPORT_REFGEOMETRY_H

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "kelbitmap/strides.h"
#include "kelimage/kelimage.h"

namespace support {

using Bytes = std::vector<unsigned char>;

inline constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};

// A picture as padded rows, one behind the other.
struct Rows {
    int nBits = 0, nWidth = 0, nHeight = 0;
    Bytes bytes;

    std::size_t Stride() const { return static_cast<std::size_t>(kel::RowStride(nBits, nWidth)); }
    unsigned char* Row(int nY) { return bytes.data() + static_cast<std::size_t>(nY) * Stride(); }
    const unsigned char* Row(int nY) const { return const_cast<Rows*>(this)->Row(nY); }

    bool operator==(const Rows&) const = default;
};
// For failure messages: depth and size.
std::ostream& operator<<(std::ostream& out, const Rows& rows);

Rows BlackRows(int nBits, int nWidth, int nHeight);
// Random bytes, padding included.
Rows RandomRows(int nBits, int nWidth, int nHeight, unsigned int nSeed);

// Pixel nX of a row, any depth. Multi-byte pixels have their first byte lowest.
std::uint32_t PixelAt(int nBits, const unsigned char* pRow, int nX);

// New pictures; padding is zero.
Rows RefZoom(const Rows& src, int nWidth, int nHeight);
Rows RefTranspose(const Rows& src);
// All bytes of the source rows, padding included, in the opposite order of rows.
Rows RefMirror(const Rows& src);
// The rectangle; its padding shows the bits behind the rectangle, or 0 where the source ends.
Rows RefCrop(const Rows& src, int nX, int nY, int nWidth, int nHeight);

// Fills image with a new picture of these rows and a header block.
void FillImage(CKelImage* pImage, const Rows& rows);
// The image's picture.
Rows RowsOf(const CKelImage& image);
// Whether the image is consistent and shows exactly these rows.
testing::AssertionResult Shows(const CKelImage& image, const Rows& rows);

}  // namespace support

#endif  // SUPPORT_REFGEOMETRY_H
