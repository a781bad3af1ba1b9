// The sampling of a zoom: positions, and one destination row at a time.
//
// Float results are fixed to the bit: every product and sum below is one single-precision
// operation, in the order written, never fused.
#ifndef KELIMAGE_ZOOMROWS_H
#define KELIMAGE_ZOOMROWS_H

#include <cstdint>

namespace kel {

// Where one destination column (or row) looks in the source.
struct ZoomSample {
    int nFirst;       // the column at or before the position
    int nSecond;      // the column nearest to it
    float fFraction;  // how far the position lies behind the first, in [0, 1)
};

// Source pixels per destination pixel: (nSrc - 1) / (nDst - 1), or 0 when there is one only.
float ZoomStep(int nSrc, int nDst);

// The sample of destination pixel nIndex. Both columns lie in 0 ... nSrc - 1, whatever the
// rounding: from 2^23 on adding one half rounds to a whole number, which may lie past the last
// column.
ZoomSample ZoomSampleAt(int nIndex, float fStep, int nSrc);

// The columns of one call, nCount of each, in non-decreasing order.
struct ZoomColumns {
    const int* pFirst;
    const int* pSecond;
    const float* pFraction;
    int nCount;
};

// One destination row and the two source rows it is blended from.
struct ZoomRow {
    const unsigned char* pFirst;
    const unsigned char* pSecond;
    float fFraction;  // of the second source row
    unsigned char* pOut;
};

// Blends columns nBegin ... nCount - 1 of pixels of nBytes (2, 3 or 4) bytes. With wx, wy the
// fractions, a byte is the sum, from left to right, of first row first column x (1 - wy)(1 - wx),
// first row second column x (1 - wy)wx, second row first column x wy(1 - wx), second row second
// column x wy wx, truncated. The plain definition.
void ZoomRowPlain(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nBegin);

// Copies the nearest pixel of pSrc (the second source row) to each column, at 1, 4 or 8 bits, so
// that palette indices stay what they are. The output row is zero before.
void ZoomRowNearest(int nBits, const ZoomColumns& columns, const unsigned char* pSrc,
                    unsigned char* pOut);

}  // namespace kel

#endif  // KELIMAGE_ZOOMROWS_H
