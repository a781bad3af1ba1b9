// The zoom's rows with AVX-512, 16 pixels at a time straight from the source rows. ZoomRowPlain
// defines the result; see zoomblend.h for why every byte is the same. Products and sums stay apart
// because contraction is off.
#if defined(__x86_64__)

// g++ 12 takes the undefined operands inside its own intrinsics for uninitialised variables.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <immintrin.h>

#include "zoomblend.h"

#define KEL_INLINE_AVX512                                                              \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vnni"), \
                   always_inline)) inline
#define KEL_TARGET_AVX512 \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vnni")))

namespace kel {

namespace {

// 16 columns: the byte their first pixels start at, and how far behind it each one's pixels lie.
struct Lookup {
    __m512i first;
    __m512i second;
    std::int64_t nBase;
    bool bNear;  // 128 bytes from the base on hold all of them
};

template <int nBytes>
KEL_INLINE_AVX512 Lookup LookUp(const ZoomColumns& columns, int nBegin) {
    const int nFirst = columns.pFirst[nBegin];
    const __m512i size = _mm512_set1_epi32(nBytes);
    const __m512i firsts = _mm512_loadu_si512(columns.pFirst + nBegin);
    const __m512i seconds = _mm512_loadu_si512(columns.pSecond + nBegin);
    const __m512i first =
        _mm512_mullo_epi32(_mm512_sub_epi32(firsts, _mm512_set1_epi32(nFirst)), size);
    const __m512i second =
        _mm512_mask_add_epi32(first, _mm512_cmpneq_epi32_mask(firsts, seconds), first, size);
    // The last word ends at most 8 bytes behind the last first pixel's start.
    const std::int64_t nSpan = std::int64_t{columns.pFirst[nBegin + 15] - nFirst} * nBytes + 8;
    return {first, second, std::int64_t{nFirst} * nBytes, nSpan <= 128};
}

// The words that start at the given offsets, from 128 bytes.
KEL_INLINE_AVX512 __m512i PickWords(__m512i low, __m512i offsets, __m512i high) {
    // Each offset in all bytes of its lane, plus 0, 1, 2, 3.
    const __m512i bytes = _mm512_add_epi32(
        _mm512_mullo_epi32(offsets, _mm512_set1_epi32(0x01010101)), _mm512_set1_epi32(0x03020100));
    return _mm512_permutex2var_epi8(low, bytes, high);
}

// The bytes nFrom ... nFrom + 63 of a row of nBytes bytes; those past its end are 0, unread.
KEL_INLINE_AVX512 __m512i LoadPart(const unsigned char* pRow, std::int64_t nFrom, int nBytes) {
    const std::int64_t nLeft = nBytes - nFrom;
    if (nLeft >= 64) {
        return _mm512_loadu_si512(pRow + nFrom);
    }
    return nLeft <= 0 ? _mm512_setzero_si512()
                      : _mm512_maskz_loadu_epi8((__mmask64{1} << nLeft) - 1, pRow + nFrom);
}

// The first and the second words of 16 columns of a source row.
KEL_INLINE_AVX512 void LoadWords(const Lookup& lookup, const unsigned char* pRow, int nRowBytes,
                                 __m512i* pWords) {
    if (lookup.bNear) {
        const __m512i low = LoadPart(pRow, lookup.nBase, nRowBytes);
        const __m512i high = LoadPart(pRow, lookup.nBase + 64, nRowBytes);
        pWords[0] = PickWords(low, lookup.first, high);
        pWords[1] = PickWords(low, lookup.second, high);
    } else {
        pWords[0] = _mm512_i32gather_epi32(lookup.first, pRow + lookup.nBase, 1);
        pWords[1] = _mm512_i32gather_epi32(lookup.second, pRow + lookup.nBase, 1);
    }
}

// Byte nByte of 16 blended pixels, at its place in the word; below it are bits without meaning.
template <int nByte>
KEL_INLINE_AVX512 __m512i BlendChannel(const __m512i* pWords, const __m512* pWeights) {
    __m512 values[4];
    for (int i = 0; i < 4; ++i) {
        // The topmost byte one place lower: as a signed word it would be negative.
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
KEL_INLINE_AVX512 __m512i Select(__m512i a, __m512i b, unsigned int nMask) {
    return _mm512_ternarylogic_epi32(a, b, _mm512_set1_epi32(static_cast<int>(nMask)), 0xD8);
}

template <int nBytes>
KEL_INLINE_AVX512 void StorePixels(unsigned char* pOut, __m512i words) {
    // The low three bytes of each word, one after another.
    alignas(64) static constexpr unsigned char kPack[64] = {
        0,  1,  2,  4,  5,  6,  8,  9,  10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28,
        29, 30, 32, 33, 34, 36, 37, 38, 40, 41, 42, 44, 45, 46, 48, 49, 50, 52, 53, 54, 56, 57,
        58, 60, 61, 62, 0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0};
    if (nBytes == 2) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pOut), _mm512_cvtepi32_epi16(words));
    } else if (nBytes == 3) {
        const __m512i packed = _mm512_permutexvar_epi8(_mm512_load_si512(kPack), words);
        _mm512_mask_storeu_epi8(pOut, (__mmask64{1} << 48) - 1, packed);
    } else {
        _mm512_storeu_si512(pOut, words);
    }
}

// kOneRow: both source rows are the same.
template <int nBytes, bool kOneRow>
KEL_TARGET_AVX512 int Blend(const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
    const __m512 one = _mm512_set1_ps(1.0f);
    const __m512 y1 = _mm512_set1_ps(row.fFraction);
    const __m512 y0 = _mm512_sub_ps(one, y1);
    // A gather reads 8 bytes from each first pixel on.
    const std::int64_t nLastWhole = (nRowBytes - 8) / nBytes;
    int i = 0;
    for (; i + 16 <= columns.nCount; i += 16) {
        const Lookup lookup = LookUp<nBytes>(columns, i);
        if (!lookup.bNear && columns.pFirst[i + 15] > nLastWhole) {
            break;
        }
        __m512i words[4];
        LoadWords(lookup, row.pFirst, nRowBytes, words);
        if (kOneRow) {
            words[2] = words[0];
            words[3] = words[1];
        } else {
            LoadWords(lookup, row.pSecond, nRowBytes, words + 2);
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
        StorePixels<nBytes>(row.pOut + std::int64_t{i} * nBytes, result);
    }
    return i;
}

template <int nBytes>
int BlendRow(const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
    return row.pFirst == row.pSecond ? Blend<nBytes, true>(columns, row, nRowBytes)
                                     : Blend<nBytes, false>(columns, row, nRowBytes);
}

}  // namespace

int ZoomRowAvx512(int nBytes, const ZoomColumns& columns, const ZoomRow& row, int nRowBytes) {
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
