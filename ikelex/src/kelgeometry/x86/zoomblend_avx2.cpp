// The zoom's blended rows with AVX2, 8 pixels at a time straight from the source rows. The formula
// in zoomrows.h defines the bytes. zoomblend.cpp says why they are the same. Products and sums stay
// apart because contraction is off.
#if defined(__x86_64__)

#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelcpu/x86.h"
#include "kelgeometry/zoomrows.h"

namespace kel {

namespace {

// 8 columns are read as four pairs, each from the 16 bytes of the row that begin with its first
// pixel. A shuffle picks four words from a pair's bytes.
//
//            low half                              high half
//   outer    pair 0: first words, second words     pair 2: first words, second words
//   inner    pair 1: first words, second words     pair 3: first words, second words
//
// The lookup of 8 columns is the shuffle of outer, that of inner, the positions of the four pairs
// in the row, and whether 16 bytes hold the words of every pair.
constexpr int kInner = 8, kPairs = 16, kNear = 20, kLookup = 24;
static_assert(2 * kLookup == kZoomLookup);

void Prepare(int nBytes, const ZoomColumns& columns) {
    int* pLookup = columns.pLookup;
    for (int i = 0; i < columns.nCount; i += 8, pLookup += kLookup) {
        pLookup[kNear] = 1;
        for (int k = 0; k < 8; k += 2) {
            const int* const pFirst = columns.pFirst + i + k;
            const int* const pSecond = columns.pSecond + i + k;
            int* const pShuffle = pLookup + (k % 4 == 0 ? 0 : kInner) + (k < 4 ? 0 : 4);
            const int aColumns[4] = {pFirst[0], pFirst[1], pSecond[0], pSecond[1]};
            for (int j = 0; j < 4; ++j) {
                const std::uint32_t nFrom = Low32((aColumns[j] - pFirst[0]) * nBytes);
                pShuffle[j] = static_cast<int>(nFrom * 0x01010101u + 0x03020100u);
            }
            pLookup[kPairs + k / 2] = pFirst[0] * nBytes;
            // The second word ends at most 8 bytes after the start of the first pixel.
            if ((pFirst[1] - pFirst[0]) * nBytes > 8) {
                pLookup[kNear] = 0;
            }
        }
    }
}

// The words at the given positions of a row. A word that would end after the row is read from the
// row's last four bytes and shifted down.
KEL_AVX2 KEL_INLINE __m256i Gather(const ZoomRow& row, const unsigned char* pRow,
                                   __m256i positions) {
    const __m256i last = Repeat32(row.nRowBytes - 4);
    const __m256i inside = _mm256_min_epi32(positions, last);
    const __m256i excess = _mm256_slli_epi32(_mm256_sub_epi32(positions, inside), 3);
    const int* const pBase = reinterpret_cast<const int*>(pRow);
    return _mm256_srlv_epi32(_mm256_i32gather_epi32(pBase, inside, 1), excess);
}

// The first and the second words of the 8 columns from nBegin on.
template <int nBytes>
KEL_AVX2 KEL_INLINE void LoadWords(const ZoomColumns& columns, int nBegin, const int* pLookup,
                                   bool bNear, const ZoomRow& row, const unsigned char* pRow,
                                   __m256i* pWords) {
    if (!bNear) {
        const __m256i size = _mm256_set1_epi32(nBytes);
        pWords[0] = Gather(row, pRow, _mm256_mullo_epi32(Load256(columns.pFirst + nBegin), size));
        pWords[1] = Gather(row, pRow, _mm256_mullo_epi32(Load256(columns.pSecond + nBegin), size));
        return;
    }
    const int* const pPairs = pLookup + kPairs;
    const __m256i outer =
        _mm256_shuffle_epi8(LoadHalves(pRow + pPairs[0], pRow + pPairs[2]), Load256(pLookup));
    const __m256i inner = _mm256_shuffle_epi8(LoadHalves(pRow + pPairs[1], pRow + pPairs[3]),
                                              Load256(pLookup + kInner));
    pWords[0] = _mm256_unpacklo_epi64(outer, inner);
    pWords[1] = _mm256_unpackhi_epi64(outer, inner);
}

// Byte nByte of 8 blended pixels, in its place. The other bytes are 0.
template <int nByte>
KEL_AVX2 KEL_INLINE __m256i BlendChannel(const __m256i* pWords, const __m256* pWeights) {
    const __m256i mask = _mm256_set1_epi32(255 << 8 * (nByte - (nByte == 3 ? 1 : 0)));
    __m256 values[4];
    for (int i = 0; i < 4; ++i) {
        const __m256i word = nByte == 3 ? _mm256_srli_epi32(pWords[i], 8) : pWords[i];
        values[i] = _mm256_cvtepi32_ps(_mm256_and_si256(word, mask));
    }
    __m256 sum = _mm256_mul_ps(values[0], pWeights[0]);
    sum = _mm256_add_ps(sum, _mm256_mul_ps(values[1], pWeights[1]));
    sum = _mm256_add_ps(sum, _mm256_mul_ps(values[2], pWeights[2]));
    sum = _mm256_add_ps(sum, _mm256_mul_ps(values[3], pWeights[3]));
    const __m256i result = _mm256_and_si256(_mm256_cvttps_epi32(sum), mask);
    return nByte == 3 ? _mm256_slli_epi32(result, 8) : result;
}

// Stores 8 pixels. At 3 bytes a pixel the two halves of 12 bytes are stored as 16, so that 4 bytes
// after the last pixel are overwritten.
template <int nBytes>
KEL_AVX2 KEL_INLINE void StorePixels(unsigned char* pOut, __m256i words) {
    if (nBytes == 4) {
        Store256(pOut, words);
        return;
    }
    const __m256i pack =
        nBytes == 3 ? _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1, 0, 1,
                                       2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1)
                    : _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1, 0,
                                       1, 4, 5, 8, 9, 12, 13, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m256i packed = _mm256_shuffle_epi8(words, pack);
    const __m128i low = _mm256_castsi256_si128(packed);
    const __m128i high = _mm256_extracti128_si256(packed, 1);
    if (nBytes == 3) {
        Store128(pOut, low);
        Store128(pOut + 12, high);
    } else {
        Store128(pOut, _mm_unpacklo_epi64(low, high));
    }
}

// With kOneRow both source rows are the same.
template <int nBytes, bool kOneRow>
KEL_AVX2 void BlendRows(const ZoomColumns& columns, const ZoomRow& row) {
    // Pixels that must follow a vector, for the bytes stored after it.
    constexpr int kAfter = nBytes == 3 ? 2 : 0;
    const __m256 one = _mm256_set1_ps(1.0f);
    const __m256 y1 = _mm256_set1_ps(row.fFraction);
    const __m256 y0 = _mm256_sub_ps(one, y1);
    const int* pLookup = columns.pLookup;
    for (int i = 0; i < columns.nCount; i += 8, pLookup += kLookup) {
        const bool bNear = pLookup[kNear] != 0 && pLookup[kPairs + 3] + 16 <= row.nRowBytes;
        __m256i words[4];
        LoadWords<nBytes>(columns, i, pLookup, bNear, row, row.pFirst, words);
        if (kOneRow) {
            words[2] = words[0];
            words[3] = words[1];
        } else {
            LoadWords<nBytes>(columns, i, pLookup, bNear, row, row.pSecond, words + 2);
        }
        const __m256 x1 = _mm256_loadu_ps(columns.pFraction + i);
        const __m256 x0 = _mm256_sub_ps(one, x1);
        const __m256 weights[4] = {_mm256_mul_ps(y0, x0), _mm256_mul_ps(y0, x1),
                                   _mm256_mul_ps(y1, x0), _mm256_mul_ps(y1, x1)};
        __m256i result =
            _mm256_or_si256(BlendChannel<0>(words, weights), BlendChannel<1>(words, weights));
        if (nBytes > 2) {
            result = _mm256_or_si256(result, BlendChannel<2>(words, weights));
        }
        if (nBytes > 3) {
            result = _mm256_or_si256(result, BlendChannel<3>(words, weights));
        }
        unsigned char* const pOut = row.pOut + std::int64_t{i} * nBytes;
        if (i + 8 + kAfter <= columns.nCount) {
            StorePixels<nBytes>(pOut, result);
        } else {
            unsigned char aLast[32];
            StorePixels<nBytes>(aLast, result);
            const int nCount = columns.nCount - i < 8 ? columns.nCount - i : 8;
            __builtin_memcpy(pOut, aLast, AsSize(nCount) * nBytes);
        }
    }
}

template <int nBytes>
void Blend(const ZoomColumns& columns, const ZoomRow& row) {
    row.pFirst == row.pSecond ? BlendRows<nBytes, true>(columns, row)
                              : BlendRows<nBytes, false>(columns, row);
}

}  // namespace

const ZoomFunctions kZoomAvx2 = {Prepare, {Blend<2>, Blend<3>, Blend<4>}, kMaxSize};

}  // namespace kel

#endif  // __x86_64__
