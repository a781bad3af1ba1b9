// Header blocks: one BITMAPINFOHEADER with its colour table behind it, in memory from array new of
// bytes.
#ifndef KELIMAGE_HEADERBLOCK_H
#define KELIMAGE_HEADERBLOCK_H

#include <ikelex/bitmap.h>

#include <cstdint>

namespace kel {

// The bytes of a block with a header of 40 bytes, exact in 64 bits.
std::int64_t HeaderBlockSize(const BITMAPINFOHEADER& header);

// Copies pBlock, null included, to *ppCopy. A block whose header is not of 40 bytes cannot be
// measured and gives null, as no block does. False, *ppCopy untouched, when memory runs out.
bool CopyHeaderBlock(const BITMAPINFO* pBlock, BITMAPINFO** ppCopy);

}  // namespace kel

#endif  // KELIMAGE_HEADERBLOCK_H
