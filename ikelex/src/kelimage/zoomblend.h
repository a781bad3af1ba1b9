// The fast form of ZoomRowPlain.
//
// Each source row that is needed is first laid out in destination columns, one 32-bit word a pixel,
// once for the first and once for the second columns. Destination rows are then blended from such
// rows of words with pixels as lanes. ZoomRowPlain defines the result: each lane does its
// operations in its order, so every byte is the same.
#ifndef KELIMAGE_ZOOMBLEND_H
#define KELIMAGE_ZOOMBLEND_H

#include <cstdint>
#include <memory>

#include "../kelcpu/kelcpu.h"
#include "zoomrows.h"

namespace kel {

// One source row in destination columns. The low bytes of a word are the pixel's bytes; those above
// them are anything.
struct ZoomWords {
    const std::uint32_t* pFirst;
    const std::uint32_t* pSecond;
};

// One destination row to blend: nCount pixels.
struct ZoomBlend {
    ZoomWords first;   // of the first source row
    ZoomWords second;  // of the second source row; may be the same words
    const float* pFraction;
    float fFraction;
    unsigned char* pOut;
    int nCount;
};

// What to lay out: nCount columns of pixels of nBytes (2, 3 or 4) bytes in a row of nRowBytes,
// which is shorter than 2^31. Every second column equals the first or follows it, columns do not
// decrease, and 8 bytes from each first pixel on lie in the row.
struct ZoomExpansion {
    int nBytes;
    const unsigned char* pRow;
    int nRowBytes;
    const int* pFirst;
    const int* pSecond;
    int nCount;
    std::uint32_t* pFirstWords;
    std::uint32_t* pSecondWords;
};

// The variants of one processor level.
struct ZoomKernel {
    void (*pfnExpand)(const ZoomExpansion& expansion);
    // Blends pixels of nBytes (2, 3 or 4) bytes. Writes nCount * nBytes bytes and not one more.
    void (*pfnBlend)(int nBytes, const ZoomBlend& blend);
};

// AVX-512 where the machine has all of kAvx512, else AVX2, else the portable form. AVX2 expands
// with the portable loop: its gathers are no faster.
ZoomKernel ChooseZoomKernel(CpuLevel eLevel);

void ZoomExpandPortable(const ZoomExpansion& expansion);
void ZoomBlendPortable(int nBytes, const ZoomBlend& blend);

#if defined(__x86_64__)
void ZoomBlendAvx2(int nBytes, const ZoomBlend& blend);
void ZoomExpandAvx512(const ZoomExpansion& expansion);
void ZoomBlendAvx512(int nBytes, const ZoomBlend& blend);
#endif

// Samples destination rows of one call, top to bottom. Holds the words of the last two source rows:
// when enlarging, most rows need no new ones.
class ZoomSampler {
  public:
    // The source rows start at pSrc, nSrcStride bytes apart. Without memory for the words (16 bytes
    // a column), or for other depths, rows are sampled the plain way.
    ZoomSampler(CpuLevel eLevel, int nBytes, const ZoomColumns& columns, const unsigned char* pSrc,
                std::int64_t nSrcStride);

    // Writes the destination row that looks at the given source rows.
    void SampleRow(const ZoomSample& rows, unsigned char* pOut);

  private:
    ZoomWords WordsOf(int nSrcRow, int nOtherRow);

    ZoomKernel m_Kernel;
    int m_nBytes;
    ZoomColumns m_Columns;
    const unsigned char* m_pSrc;
    std::int64_t m_nSrcStride;
    int m_nFast;  // leading columns with 8 bytes of row from their first pixel on; 0 without words
    std::unique_ptr<std::uint32_t[]> m_pWords;
    int m_nHeld[2];  // the source row each half of the words holds, or -1
};

}  // namespace kel

#endif  // KELIMAGE_ZOOMBLEND_H
