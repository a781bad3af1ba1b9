// The zoom's blended rows with AVX-512, 16 pixels at a time straight from the source rows. The
// formula in zoomrows.h defines the bytes. zoomblend.cpp says why they are the same. Products and
// sums stay apart because contraction is off.
#if defined(__x86_64__)

#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelcpu/x86.h"
#include "kelgeometry/zoomrows.h"

namespace kel {

namespace {

// How the words of a block of 16 columns are read, by the bytes from its first pixel to its last
// word.
enum Reach { k64Bytes, k128Bytes, kFar };

// The lookup of a block. Bit 31 of an index says that the second column is not the first one. The
// other bits are the four byte indices of the first column's word in the next 64 or 128 bytes.
// Where the columns lie further apart, they are the word's distance from the block's first pixel.
constexpr int kReachAt = 16;  // 16 indices, then the reach

void Prepare(int nBytes, const ZoomColumns& columns) {
    int* pLookup = columns.pLookup;
    for (int i = 0; i < columns.nCount; i += kZoomBlock, pLookup += kZoomLookup) {
        const int* const pFirst = columns.pFirst + i;
        // The second word ends at most 8 bytes after the start of the first pixel.
        const std::int64_t nSpan = std::int64_t{pFirst[15] - pFirst[0]} * nBytes + 8;
        pLookup[kReachAt] = nSpan <= 64 ? k64Bytes : nSpan <= 128 ? k128Bytes : kFar;
        for (int k = 0; k < kZoomBlock; ++k) {
            const std::uint32_t nOffset = Low32((pFirst[k] - pFirst[0]) * nBytes);
            const unsigned int nIndex =
                nSpan <= 128 ? nOffset * 0x01010101u + 0x03020100u : nOffset;
            const unsigned int nOther = columns.pSecond[i + k] != pFirst[k] ? 1u << 31 : 0;
            pLookup[k] = static_cast<int>(nIndex | nOther);
        }
    }
}

// The bytes nFrom ... nFrom + 63 of a row of nBytes bytes. Those past its end are 0, unread.
KEL_AVX512 KEL_INLINE __m512i LoadPart(const unsigned char* pRow, std::int64_t nFrom,
                                       std::int64_t nBytes) {
    const std::int64_t nLeft = nBytes - nFrom;
    if (nLeft >= 64) {
        return _mm512_loadu_si512(pRow + nFrom);
    }
    return nLeft <= 0 ? _mm512_setzero_si512()
                      : _mm512_maskz_loadu_epi8((__mmask64{1} << nLeft) - 1, pRow + nFrom);
}

// The words at the given distances from pBase, of which nLeft bytes belong to the row. A word that
// would end after the row is read from the row's last four bytes and shifted down.
KEL_AVX512 KEL_INLINE __m512i Gather(const unsigned char* pBase, std::int64_t nLeft,
                                     __m512i distances) {
    const __m512i last = Repeat32Wide(nLeft - 4);
    const __m512i inside = _mm512_min_epi32(distances, last);
    const __m512i excess = _mm512_slli_epi32(_mm512_sub_epi32(distances, inside), 3);
    return _mm512_srlv_epi32(_mm512_i32gather_epi32(inside, pBase, 1), excess);
}

// The first and the second words of a block of a source row, whose first pixel starts at nBase.
template <int nBytes>
KEL_AVX512 KEL_INLINE void LoadWords(const int* pLookup, const unsigned char* pRow,
                                     std::int64_t nBase, std::int64_t nRowBytes, __m512i* pWords) {
    const __m512i first = _mm512_loadu_si512(pLookup);
    const __mmask16 other = _mm512_movepi32_mask(first);
    if (pLookup[kReachAt] == kFar) {
        const __m512i distances = _mm512_and_si512(first, _mm512_set1_epi32(0x7FFFFFFF));
        pWords[0] = Gather(pRow + nBase, nRowBytes - nBase, distances);
        pWords[1] =
            Gather(pRow + nBase, nRowBytes - nBase,
                   _mm512_mask_add_epi32(distances, other, distances, _mm512_set1_epi32(nBytes)));
        return;
    }
    // The permutations ignore bit 7 of a byte index, so that the flag does no harm.
    const __m512i second =
        _mm512_mask_add_epi32(first, other, first, _mm512_set1_epi32(0x01010101 * nBytes));
    const __m512i low = LoadPart(pRow, nBase, nRowBytes);
    if (pLookup[kReachAt] == k64Bytes) {
        pWords[0] = _mm512_permutexvar_epi8(first, low);
        pWords[1] = _mm512_permutexvar_epi8(second, low);
    } else {
        const __m512i high = LoadPart(pRow, nBase + 64, nRowBytes);
        pWords[0] = _mm512_permutex2var_epi8(low, first, high);
        pWords[1] = _mm512_permutex2var_epi8(low, second, high);
    }
}

// Byte nByte of 16 blended pixels, in its place. The bits below it mean nothing.
template <int nByte>
KEL_AVX512 KEL_INLINE __m512i BlendChannel(const __m512i* pWords, const __m512* pWeights) {
    __m512 values[4];
    for (int i = 0; i < 4; ++i) {
        const __m512i word = nByte == 3 ? _mm512_srli_epi32(pWords[i], 8) : pWords[i];
        const int nMask = 255 << 8 * (nByte - (nByte == 3 ? 1 : 0));
        values[i] = _mm512_cvtepi32_ps(_mm512_and_si512(word, _mm512_set1_epi32(nMask)));
    }
    __m512 sum = _mm512_mul_ps(values[0], pWeights[0]);
    sum = _mm512_add_ps(sum, _mm512_mul_ps(values[1], pWeights[1]));
    sum = _mm512_add_ps(sum, _mm512_mul_ps(values[2], pWeights[2]));
    sum = _mm512_add_ps(sum, _mm512_mul_ps(values[3], pWeights[3]));
    const __m512i result = _mm512_cvttps_epi32(sum);
    return nByte == 3 ? _mm512_slli_epi32(result, 8) : result;
}

// The bits of b where the mask has them, else those of a.
KEL_AVX512 KEL_INLINE __m512i Select(__m512i a, __m512i b, unsigned int nMask) {
    return _mm512_ternarylogic_epi32(a, b, Repeat32Wide(nMask), 0xD8);
}

// Stores the first nCount of 16 pixels.
template <int nBytes>
KEL_AVX512 KEL_INLINE void StorePixels(unsigned char* pOut, __m512i words, int nCount) {
    // The low three bytes of each word, one after another.
    alignas(64) static constexpr unsigned char kPack[64] = {
        0,  1,  2,  4,  5,  6,  8,  9,  10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28,
        29, 30, 32, 33, 34, 36, 37, 38, 40, 41, 42, 44, 45, 46, 48, 49, 50, 52, 53, 54, 56, 57,
        58, 60, 61, 62, 0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0};
    const __mmask64 bytes = ~__mmask64{0} >> (64 - nCount * nBytes);
    if (nBytes == 2) {
        words = _mm512_castsi256_si512(_mm512_cvtepi32_epi16(words));
    } else if (nBytes == 3) {
        words = _mm512_permutexvar_epi8(_mm512_load_si512(kPack), words);
    }
    _mm512_mask_storeu_epi8(pOut, bytes, words);
}

// With kOneRow both source rows are the same.
template <int nBytes, bool kOneRow>
KEL_AVX512 void BlendRows(const ZoomColumns& columns, const ZoomRow& row) {
    const __m512 one = _mm512_set1_ps(1.0f);
    const __m512 y1 = _mm512_set1_ps(row.fFraction);
    const __m512 y0 = _mm512_sub_ps(one, y1);
    const int* pLookup = columns.pLookup;
    for (int i = 0; i < columns.nCount; i += kZoomBlock, pLookup += kZoomLookup) {
        const std::int64_t nBase = std::int64_t{columns.pFirst[i]} * nBytes;
        __m512i words[4];
        LoadWords<nBytes>(pLookup, row.pFirst, nBase, row.nRowBytes, words);
        if (kOneRow) {
            words[2] = words[0];
            words[3] = words[1];
        } else {
            LoadWords<nBytes>(pLookup, row.pSecond, nBase, row.nRowBytes, words + 2);
        }
        const __m512 x1 = _mm512_loadu_ps(columns.pFraction + i);
        const __m512 x0 = _mm512_sub_ps(one, x1);
        const __m512 weights[4] = {_mm512_mul_ps(y0, x0), _mm512_mul_ps(y0, x1),
                                   _mm512_mul_ps(y1, x0), _mm512_mul_ps(y1, x1)};
        __m512i result =
            Select(BlendChannel<0>(words, weights), BlendChannel<1>(words, weights), 0xFF00u);
        if (nBytes > 2) {
            result = Select(result, BlendChannel<2>(words, weights), 0xFF0000u);
        }
        if (nBytes > 3) {
            result = Select(result, BlendChannel<3>(words, weights), 0xFF000000u);
        }
        StorePixels<nBytes>(row.pOut + std::int64_t{i} * nBytes, result,
                            columns.nCount - i < kZoomBlock ? columns.nCount - i : kZoomBlock);
    }
}

template <int nBytes>
void Blend(const ZoomColumns& columns, const ZoomRow& row) {
    row.pFirst == row.pSecond ? BlendRows<nBytes, true>(columns, row)
                              : BlendRows<nBytes, false>(columns, row);
}

}  // namespace

const ZoomFunctions kZoomAvx512 = {Prepare, {Blend<2>, Blend<3>, Blend<4>}, kMaxSize};

}  // namespace kel

#endif  // __x86_64__
