// The sampling of a zoom. Where each destination column and row looks in the source, and the row
// functions that read there.
//
// Float results are fixed to the bit. Every product and sum is one single-precision operation, in
// the order written below, and is never fused with another.
#ifndef KELGEOMETRY_ZOOMROWS_H
#define KELGEOMETRY_ZOOMROWS_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "kelcpu/kelcpu.h"

namespace kel {

// Where one destination column (or row) looks in the source.
struct ZoomSample {
    int nFirst;       // the column at or before the position
    int nSecond;      // the column nearest to it: the first one or the one after it
    float fFraction;  // of the position, in [0, 1)
};

// Source pixels per destination pixel, which is (nSrc - 1) / (nDst - 1), or 0 when nDst is 1.
float ZoomStep(int nSrc, int nDst);

// The sample of destination pixel nIndex. Both columns lie in 0 ... nSrc - 1, whatever the
// rounding. From 2^23 on adding one half rounds to a whole number, which may lie past the last
// column.
ZoomSample ZoomSampleAt(int nIndex, float fStep, int nSrc);

// Columns are prepared in blocks of this many. The tables are padded with copies of the last column
// to whole blocks.
constexpr int kZoomBlock = 16;
constexpr int kZoomLookup = 48;  // integers that a level may prepare for each block

// The samples of the nCount columns of a picture, in non-decreasing order.
struct ZoomColumns {
    const int* pFirst;
    const int* pSecond;
    const float* pFraction;
    int* pLookup;
    int nCount;
};

// The three tables of a picture.
class ZoomTables {
  public:
    // Throws std::bad_alloc.
    ZoomTables(int nSrcWidth, int nDstWidth);

    ZoomColumns Columns() const {
        return {m_pFirst.get(), m_pSecond.get(), m_pFraction.get(),
                m_pSecond.get() + m_nBlocks * kZoomBlock, m_nCount};
    }

  private:
    int m_nCount;
    std::size_t m_nBlocks;
    std::unique_ptr<int[]> m_pFirst;
    std::unique_ptr<int[]> m_pSecond;  // and the lookups after it
    std::unique_ptr<float[]> m_pFraction;
};

// One destination row and the two source rows, of nRowBytes bytes, it is blended from.
struct ZoomRow {
    const unsigned char* pFirst;
    const unsigned char* pSecond;
    std::int64_t nRowBytes;  // at least 4
    float fFraction;         // of the second source row
    unsigned char* pOut;
};

// Blends all columns of a row. With wx and wy the fractions, each byte of a pixel is the sum, from
// left to right, of
//   first row, first column    x ((1 - wy) x (1 - wx))
//   first row, second column   x ((1 - wy) x wx)
//   second row, first column   x (wy x (1 - wx))
//   second row, second column  x (wy x wx)
// truncated. No byte outside the rows is read or written.
using ZoomBlend = void(const ZoomColumns& columns, const ZoomRow& row);

// Fills the lookups of a picture's columns for pixels of nBytes bytes.
using ZoomPrepare = void(int nBytes, const ZoomColumns& columns);

// The functions of one level.
struct ZoomFunctions {
    ZoomPrepare* pfnPrepare;
    ZoomBlend* apfnBlend[3];    // pixels of 2, 3 and 4 bytes
    std::int64_t nMaxRowBytes;  // of a source row
};

// The table of each level.
extern const ZoomFunctions kZoomPortable;
#if defined(__x86_64__)
extern const ZoomFunctions kZoomAvx2;
extern const ZoomFunctions kZoomAvx512;
#endif

// The functions of a level, chosen once per picture. The machine must be able to run the level.
inline const ZoomFunctions& ZoomFunctionsFor(CpuLevel eLevel) {
    switch (eLevel) {
#if defined(__x86_64__)
        case CpuLevel::kAvx512:
            return kZoomAvx512;
        case CpuLevel::kAvx2:
            return kZoomAvx2;
#endif
        default:
            return kZoomPortable;
    }
}

}  // namespace kel

#endif  // KELGEOMETRY_ZOOMROWS_H
