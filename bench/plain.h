// The yardsticks: every operation as the obvious loop, compiled at -O2 without flags of ours.
//
// Rows are read in place and three channels are done per step; nothing is blocked, cached or
// vectorised by hand. Each function says which operation of the library it stands for.
#ifndef BENCH_PLAIN_H
#define BENCH_PLAIN_H

#include <cstddef>
#include <vector>

namespace plain {

using Bytes = std::vector<unsigned char>;

// The rows of a picture of nStride bytes each.
std::vector<unsigned char*> Rows(unsigned char* pBits, int nStride, int nHeight);

// The scale filter on 24-bit rows: nKernel as KelScaleType, fixed-point weights that sum to 256,
// the horizontal pass first into a picture of the new width and the old height.
void Scale(int nKernel, unsigned char** ppIn, int nInWidth, int nInHeight, unsigned char** ppOut,
           int nOutWidth, int nOutHeight);

// ZoomBytes at 24 bits.
void Zoom(const unsigned char* pSrc, int nSrcWidth, int nSrcHeight, unsigned char* pDst,
          int nDstWidth, int nDstHeight);

// Rotate: pixel (x, y) goes to (y, x), column by column over the source.
void Transpose(int nBytes, const unsigned char* pSrc, int nWidth, int nHeight, unsigned char* pDst);

// One row of GetLine24At in red-green-blue order, by depth.
void Row24(const unsigned char* pRow, int nWidth, unsigned char* pOut);
void Row32(const unsigned char* pRow, int nWidth, unsigned char* pOut);
void Row16(const unsigned char* pRow, int nWidth, unsigned char* pOut);
// The palette has 4-byte entries blue, green, red; indices are clamped to nCount - 1 at 8 bits.
void Row8(const unsigned char* pRow, int nWidth, const unsigned char* pPalette, int nCount,
          unsigned char* pOut);
void Row1(const unsigned char* pRow, int nWidth, const unsigned char* pPalette,
          unsigned char* pOut);

}  // namespace plain

#endif  // BENCH_PLAIN_H
