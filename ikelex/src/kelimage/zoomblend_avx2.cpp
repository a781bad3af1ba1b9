// The zoom's rows with AVX2, 8 pixels at a time straight from the source rows. ZoomRowPlain defines
// the result; see zoomblend.h for why every byte is the same. Products and sums stay apart because
// contraction is off.
#if defined(__x86_64__)

#include <immintrin.h>

#include "zoomblend.h"

#define KEL_INLINE_AVX2 __attribute__((target("avx2"), always_inline)) inline
#define KEL_TARGET_AVX2 __attribute__((target("avx2")))

namespace kel {

namespace {

// 8 columns in pairs 0, 1; 4, 5 and 2, 3; 6, 7, one pair a half: the columns' byte offsets from the
// pair's first one, in the order first, first, second, second, as shuffles that pick their words.
struct Lookup {
    const int* pFirst;
    __m256i outer;
    __m256i inner;
};

template <int nBytes>
KEL_INLINE_AVX2 __m256i ShuffleOf(__m256i columns) {
    const __m256i offsets = _mm256_sub_epi32(columns, _mm256_shuffle_epi32(columns, 0));
    return _mm256_add_epi32(_mm256_mullo_epi32(offsets, _mm256_set1_epi32(0x01010101 * nBytes)),
                            _mm256_set1_epi32(0x03020100));
}

KEL_INLINE_AVX2 __m256i Load8(const int* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

template <int nBytes>
KEL_INLINE_AVX2 Lookup LookUp(const ZoomColumns& columns, int nBegin) {
    const __m256i firsts = Load8(columns.pFirst + nBegin);
    const __m256i seconds = Load8(columns.pSecond + nBegin);
    return {columns.pFirst + nBegin, ShuffleOf<nBytes>(_mm256_unpacklo_epi64(firsts, seconds)),
            ShuffleOf<nBytes>(_mm256_unpackhi_epi64(firsts, seconds))};
}

// 16 bytes of row from one column on, and behind them 16 bytes from another column on.
template <int nBytes>
KEL_INLINE_AVX2 __m256i Load16And16(const unsigned char* pRow, std::int64_t nColumn,
                                    std::int64_t nOther) {
    const auto* const pLow = reinterpret_cast<const __m128i*>(pRow + nColumn * nBytes);
    const auto* const pHigh = reinterpret_cast<const __m128i*>(pRow + nOther * nBytes);
    return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(pLow)),
                                   _mm_loadu_si128(pHigh), 1);
}

// The first and the second words of 8 columns of a source row.
template <int nBytes>
KEL_INLINE_AVX2 void LoadWords(const Lookup& lookup, const unsigned char* pRow, __m256i* pWords) {
    const int* const pFirst = lookup.pFirst;
    const __m256i outer =
        _mm256_shuffle_epi8(Load16And16<nBytes>(pRow, pFirst[0], pFirst[4]), lookup.outer);
    const __m256i inner =
        _mm256_shuffle_epi8(Load16And16<nBytes>(pRow, pFirst[2], pFirst[6]), lookup.inner);
    pWords[0] = _mm256_unpacklo_epi64(outer, inner);
    pWords[1] = _mm256_unpackhi_epi64(outer, inner);
}

// The same for columns that lie further apart: one by one.
template <int nBytes>
KEL_INLINE_AVX2 void GatherWords(const ZoomColumns& columns, int nBegin, const unsigned char* pRow,
                                 __m256i* pWords) {
    const __m256i size = _mm256_set1_epi32(nBytes);
    const int* const pBase = reinterpret_cast<const int*>(pRow);
    pWords[0] =
        _mm256_i32gather_epi32(pBase, _mm256_mullo_epi32(Load8(columns.pFirst + nBegin), size), 1);
    pWords[1] =
        _mm256_i32gather_epi32(pBase, _mm256_mullo_epi32(Load8(columns.pSecond + nBegin), size), 1);
}

// Byte nByte of 8 blended pixels, in its place of otherwise empty words.
template <int nByte>
KEL_INLINE_AVX2 __m256i BlendChannel(const __m256i* pWords, const __m256* pWeights) {
    // The topmost byte one place lower: as a signed word it would be negative.
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

// Writes 8 pixels from words. At 3 bytes a pixel the two halves of 12 bytes are stored as 16, so
// that 4 bytes behind the last pixel are overwritten.
template <int nBytes>
KEL_INLINE_AVX2 void StorePixels(unsigned char* pOut, __m256i words) {
    if (nBytes == 4) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pOut), words);
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
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut), low);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut + 12), high);
    } else {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pOut), _mm_unpacklo_epi64(low, high));
    }
}

// Whether 16 bytes from the first of two columns on hold the 8 from each one on.
template <int nBytes>
bool IsNear(const int* pPair) {
    return (pPair[1] - pPair[0]) * nBytes <= 8;
}

// kOneRow: both source rows are the same.
template <int nBytes, bool kOneRow>
KEL_TARGET_AVX2 int Blend(const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
    // Pixels that must follow a vector, for the bytes stored behind it.
    constexpr int kBehind = nBytes == 3 ? 2 : 0;
    // From columns up to this one 16 bytes lie in the row.
    const int nLastWhole = nRowBytes < 16 ? -1 : (nRowBytes - 16) / nBytes;
    const __m256 one = _mm256_set1_ps(1.0f);
    const __m256 y1 = _mm256_set1_ps(row.fFraction);
    const __m256 y0 = _mm256_sub_ps(one, y1);
    int i = 0;
    for (; i + 8 + kBehind <= columns.nCount && columns.pFirst[i + 7] <= nLastWhole; i += 8) {
        const int* const pFirst = columns.pFirst + i;
        __m256i words[4];
        if (IsNear<nBytes>(pFirst) && IsNear<nBytes>(pFirst + 2) && IsNear<nBytes>(pFirst + 4) &&
            IsNear<nBytes>(pFirst + 6)) {
            const Lookup lookup = LookUp<nBytes>(columns, i);
            LoadWords<nBytes>(lookup, row.pFirst, words);
            if (!kOneRow) {
                LoadWords<nBytes>(lookup, row.pSecond, words + 2);
            }
        } else {
            GatherWords<nBytes>(columns, i, row.pFirst, words);
            if (!kOneRow) {
                GatherWords<nBytes>(columns, i, row.pSecond, words + 2);
            }
        }
        if (kOneRow) {
            words[2] = words[0];
            words[3] = words[1];
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
        StorePixels<nBytes>(row.pOut + static_cast<std::int64_t>(i) * nBytes, result);
    }
    return i;
}

template <int nBytes>
int BlendRow(const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
    return row.pFirst == row.pSecond ? Blend<nBytes, true>(columns, row, nRowBytes)
                                     : Blend<nBytes, false>(columns, row, nRowBytes);
}

}  // namespace

int ZoomRowAvx2(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
    switch (nBytes) {
        case 2:
            return BlendRow<2>(columns, row, nRowBytes);
        case 3:
            return BlendRow<3>(columns, row, nRowBytes);
        default:
            return BlendRow<4>(columns, row, nRowBytes);
    }
}

}  // namespace kel

#endif  // __x86_64__
