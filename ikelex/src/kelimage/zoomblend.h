// The fast forms of ZoomRowPlain: many pixels at a time, each in a 32-bit lane.
//
// ZoomRowPlain defines the result. Every lane does its operations in its order, so that every byte
// is the same. A lane's bytes stay at their places in the word: a channel that holds the byte times
// 256 or 65,536 runs through the same products and sums with every value scaled by that power of
// two, which rounds alike (the smallest weight is far above where it would underflow), and the bits
// of its truncated sum above the scale are the byte, in its place.
#ifndef KELIMAGE_ZOOMBLEND_H
#define KELIMAGE_ZOOMBLEND_H

#include <cstdint>

#include "../kelcpu/kelcpu.h"
#include "zoomrows.h"

namespace kel {

// Blends leading columns of pixels of nBytes (2, 3 or 4) bytes and returns how many: all but a few
// at the end of the source rows, which are nRowBytes (8 to 2^31 - 1) long. Reads and writes no byte
// outside the rows. Every second column equals the first or follows it, and columns do not
// decrease.
using ZoomRowVariant = int (*)(int nBytes, const ZoomColumns& columns, const ZoomRow& row,
                               int nRowBytes);

// AVX-512 where the machine has all of kAvx512, else AVX2, else the portable form.
ZoomRowVariant ChooseZoomRow(CpuLevel eLevel);

int ZoomRowPortable(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nRowBytes);
#if defined(__x86_64__)
int ZoomRowAvx2(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nRowBytes);
int ZoomRowAvx512(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nRowBytes);
#endif

// Blends all columns: the variant's, the rest and other depths the plain way.
void ZoomRowBlend(CpuLevel eLevel, int nBytes, const ZoomColumns& columns, const ZoomRow& row,
                  std::int64_t nRowBytes);

}  // namespace kel

#endif  // KELIMAGE_ZOOMBLEND_H
