// The two passes, one row at a time, straight from a contribution table. These portable functions
// define every byte the scaler writes, and the faster forms must agree with them.
#ifndef KELSCALE_PASSES_H
#define KELSCALE_PASSES_H

#include <cstddef>

#include "kelbitmap/integers.h"
#include "kelscale.h"

namespace kel {

// The byte of a weighted sum. The sum plus 128 is divided by 256, cut towards zero, and its low 8
// bits are kept. Nothing is clamped, so a kernel with negative lobes may store 256 as 0 and -1 as
// 255.
inline unsigned char ByteOfSum(int nSum) {
    return LowByte(WrapAdd(nSum, 128) / 256);
}

// The horizontal pass writes nOutWidth pixels of pOut from the row pIn, whose width the table was
// made for.
void ScaleRowPlain(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                   const LineContribType& table);

// The vertical pass writes nBytes bytes of pOut, each from the bytes of its column in the rows
// ppIn, weighted by one record of the table.
void ScaleColumnsPlain(const unsigned char* const* ppIn, unsigned char* pOut, std::size_t nBytes,
                       const PixelContribType& record);

}  // namespace kel

#endif  // KELSCALE_PASSES_H
