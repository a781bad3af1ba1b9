// The two passes, one row at a time, straight from a contribution table. These portable functions
// define every byte the scaler writes; the faster forms are measured against them.
#ifndef KELSCALE_PASSES_H
#define KELSCALE_PASSES_H

#include <cstddef>

#include "kelscale.h"

namespace kel {

// The byte of a weighted sum: its rounded 256th, the quotient cut towards zero, the low 8 bits of
// what comes out. Never clamped: a kernel with negative lobes may turn 256 into 0 and -1 into 255.
inline unsigned char ByteOfSum(int nSum) {
    return static_cast<unsigned char>(static_cast<int>(static_cast<unsigned int>(nSum) + 128u) /
                                      256);
}

// Horizontal pass: nOutWidth pixels of pOut from the row pIn, whose width the table was made for.
void ScaleRowPlain(const unsigned char* pIn, unsigned char* pOut, unsigned int nOutWidth,
                   const LineContribType& table);

// Vertical pass: nBytes bytes of pOut, each from the bytes of its column in the rows ppIn, weighted
// by one record of the table.
void ScaleColumnsPlain(const unsigned char* const* ppIn, unsigned char* pOut, std::size_t nBytes,
                       const PixelContribType& record);

}  // namespace kel

#endif  // KELSCALE_PASSES_H
