/// Every operation on pixels as a slow loop written from its formula: one pixel, one channel at a
/// time. Tests and fuzz targets judge the library by these loops, benchmarks show their time.
#ifndef REFERENCE_OPERATIONS_H
#define REFERENCE_OPERATIONS_H

#include <ikelex/bitmap.h>

#include "support/rows.h"

namespace reference {

using support::Rows;

/// Kernels have the numbers 1 to kKernelCount.
extern const int kKernelCount;

/// The scaler on 24-bit rows: the kernel as KelScaleType, fixed-point weights that sum to 256, the
/// horizontal pass first, into a picture of the new width and the old height.
void Scale(int nKernel, unsigned char* const* ppIn, std::int64_t nInWidth, std::int64_t nInHeight,
           unsigned char* const* ppOut, std::int64_t nOutWidth, std::int64_t nOutHeight);

/// New pictures; padding is zero. Zoom takes the nearest pixel up to 8 bits and blends bytes above.
Rows Zoom(const Rows& src, int nWidth, int nHeight);
Rows Transpose(const Rows& src);
/// All bytes of the source rows, padding included, in the opposite order of rows.
Rows Mirror(const Rows& src);
/// The rectangle; its padding shows the bits after the rectangle, or 0 where the source ends.
Rows Crop(const Rows& src, int nX, int nY, int nWidth, int nHeight);

/// One row of the bitmap that pInfo describes, at 24 bits: red, green, blue with bRgb, else blue,
/// green, red. Bytes after the last pixel stay; a stored 24-bit row without a change of order is
/// copied with its padding. Indices are clamped to the last colour.
void Line24(const BITMAPINFO* pInfo, const unsigned char* pRow, bool bRgb, unsigned char* pOut);

}  // namespace reference

#endif  // REFERENCE_OPERATIONS_H
