// The geometry operations as slow loops over pixels, written from their formulas.
#ifndef SUPPORT_REFGEOMETRY_H
#define SUPPORT_REFGEOMETRY_H

#include <cstdint>
#include <string>
#include <vector>

#include "kelimage/kelimage.h"

namespace support {

using Bytes = std::vector<unsigned char>;

inline constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};

// Pixel nX of a row, and its replacement; any depth. Multi-byte pixels have their first byte
// lowest.
std::uint32_t PixelAt(int nBits, const unsigned char* pRow, int nX);
void SetPixelAt(int nBits, unsigned char* pRow, int nX, std::uint32_t nPixel);

// Padded rows of random bytes, padding included.
Bytes RandomRows(int nBits, int nWidth, int nHeight, unsigned int nSeed);

// New rows; padding is zero.
Bytes RefZoom(int nBits, const Bytes& src, int nSrcWidth, int nSrcHeight, int nWidth, int nHeight);
Bytes RefTranspose(int nBits, const Bytes& src, int nWidth, int nHeight);
// All bytes of the source rows, padding included, in the opposite order of rows.
Bytes RefMirror(int nBits, const Bytes& src, int nWidth, int nHeight);
// The rectangle's rows; their padding shows the bits behind the rectangle, or 0 where the source
// ends.
Bytes RefCrop(int nBits, const Bytes& src, int nSrcWidth, int nX, int nY, int nWidth, int nHeight);

// Fills image with a new picture of these rows; with bBlock it also holds a header block.
void FillImage(CKelImage* pImage, int nBits, int nWidth, int nHeight, const Bytes& rows,
               bool bBlock = false);
// The image's picture: stride x height bytes of its buffer.
Bytes RowsOf(const CKelImage& image);

// What is wrong with how header, header block, buffer and rows agree; empty when nothing is.
// nSizeImage is what biSizeImage must say.
std::string Disagreement(const CKelImage& image, unsigned int nSizeImage);

}  // namespace support

#endif  // SUPPORT_REFGEOMETRY_H
