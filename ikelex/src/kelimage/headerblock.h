// What a header describes. Whether an image can hold it, and how long its block and its pixels are.
//
// A header block is a BITMAPINFOHEADER with its colour table after it, in memory from array new of
// bytes.
#ifndef KELIMAGE_HEADERBLOCK_H
#define KELIMAGE_HEADERBLOCK_H

#include <ikelex/bitmap.h>

#include <cstddef>
#include <cstdint>

namespace kel {

// Whether an image can hold the depth, which is 1, 4, 8, 16, 24 or 32 bits.
bool IsSupportedDepth(int nBitCount);

// Whether Open() accepts the header. It needs biSize 40, a supported depth, biCompression up to
// BI_BITFIELDS and no negative size.
bool IsSupportedHeader(const BITMAPINFOHEADER& header);

// Pixels of a row, none for a negative width.
std::size_t PixelsOfRow(const BITMAPINFOHEADER& header);

// Bytes of a block with a header of 40 bytes, exact in 64 bits.
std::int64_t HeaderBlockSize(const BITMAPINFOHEADER& header);

// Whether the pixel data are run-length codes, which only biSizeImage measures.
bool IsRunLength(const BITMAPINFOHEADER& header);

// Bytes of all rows of a supported header, or the largest 64-bit value when they are more.
std::int64_t RowBytes(const BITMAPINFOHEADER& header);

// Bytes of pixel data. That is biSizeImage, or all rows where it is 0 and the rows are
// uncompressed.
std::int64_t DataBytes(const BITMAPINFOHEADER& header);

// Copies a caller's block, null included, to *ppCopy. A block that IsSupportedHeader refuses cannot
// be measured and gives null. False, *ppCopy untouched, when memory runs out.
bool CopyHeaderBlock(const BITMAPINFO* pBlock, BITMAPINFO** ppCopy);

}  // namespace kel

#endif  // KELIMAGE_HEADERBLOCK_H
