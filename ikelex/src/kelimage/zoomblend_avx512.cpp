// The zoom's expansion and blend with AVX-512. Exact: lane for lane the operations of ZoomRowPlain
// in its order; products and sums stay apart because contraction is off.
#if defined(__x86_64__)

// g++ 12 takes the undefined operands inside its own intrinsics for uninitialised variables.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <immintrin.h>

#include "zoomblend.h"

#define KEL_TARGET_AVX512 \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vnni")))

namespace kel {

namespace {

// The lanes of a vector in use when nLeft pixels are left.
KEL_TARGET_AVX512 __mmask16 LanesLeft(int nLeft) {
    return static_cast<__mmask16>(nLeft >= 16 ? 0xFFFF : (1 << nLeft) - 1);
}

template <int nShift>
KEL_TARGET_AVX512 __m512 ByteOf(__m512i words) {
    const __m512i shifted = nShift == 0 ? words : _mm512_srli_epi32(words, nShift);
    return _mm512_cvtepi32_ps(nShift == 24 ? shifted
                                           : _mm512_and_si512(shifted, _mm512_set1_epi32(255)));
}

// Channel nShift / 8 of 16 blended pixels, at its place in the word.
template <int nShift>
KEL_TARGET_AVX512 __m512i BlendChannel(const __m512i* pWords, const __m512* pWeights) {
    __m512 sum = _mm512_mul_ps(ByteOf<nShift>(pWords[0]), pWeights[0]);
    sum = _mm512_add_ps(sum, _mm512_mul_ps(ByteOf<nShift>(pWords[1]), pWeights[1]));
    sum = _mm512_add_ps(sum, _mm512_mul_ps(ByteOf<nShift>(pWords[2]), pWeights[2]));
    sum = _mm512_add_ps(sum, _mm512_mul_ps(ByteOf<nShift>(pWords[3]), pWeights[3]));
    return _mm512_slli_epi32(_mm512_cvttps_epi32(sum), nShift);
}

// The bytes nFrom ... nFrom + 63 of a block of nBytes bytes at p; those past its end are 0, unread.
KEL_TARGET_AVX512 __m512i LoadPart(const unsigned char* p, int nFrom, int nBytes) {
    const int nLeft = nBytes - nFrom;
    if (nLeft >= 64) {
        return _mm512_loadu_si512(p + nFrom);
    }
    return nLeft <= 0 ? _mm512_setzero_si512()
                      : _mm512_maskz_loadu_epi8((__mmask64{1} << nLeft) - 1, p + nFrom);
}

// 16 columns from 128 bytes of row, which hold them all: one byte permutation each.
template <int nBytes>
KEL_TARGET_AVX512 void ExpandNear(const ZoomExpansion& expansion, int nBegin) {
    const __m512i columns = _mm512_loadu_si512(expansion.pFirst + nBegin);
    const __m512i seconds = _mm512_loadu_si512(expansion.pSecond + nBegin);
    const int nBase = expansion.pFirst[nBegin] * nBytes;
    const __m512i low = LoadPart(expansion.pRow, nBase, expansion.nRowBytes);
    const __m512i high = LoadPart(expansion.pRow, nBase + 64, expansion.nRowBytes);
    // Every byte of a word: the pixel's byte offset, below 125, and behind it 0, 1, 2, 3.
    const __m512i scale = _mm512_set1_epi32(0x01010101 * nBytes);
    const __m512i bytes = _mm512_set1_epi32(0x03020100);
    const __m512i base = _mm512_set1_epi32(expansion.pFirst[nBegin]);
    const __m512i first =
        _mm512_add_epi32(_mm512_mullo_epi32(_mm512_sub_epi32(columns, base), scale), bytes);
    const __m512i second =
        _mm512_add_epi32(_mm512_mullo_epi32(_mm512_sub_epi32(seconds, base), scale), bytes);
    _mm512_storeu_si512(expansion.pFirstWords + nBegin, _mm512_permutex2var_epi8(low, first, high));
    _mm512_storeu_si512(expansion.pSecondWords + nBegin,
                        _mm512_permutex2var_epi8(low, second, high));
}

// The portable form on columns nBegin ... nBegin + nCount - 1.
void ExpandFar(const ZoomExpansion& expansion, int nBegin, int nCount) {
    ZoomExpansion part = expansion;
    part.pFirst += nBegin;
    part.pSecond += nBegin;
    part.pFirstWords += nBegin;
    part.pSecondWords += nBegin;
    part.nCount = nCount;
    ZoomExpandPortable(part);
}

template <int nBytes>
void Expand(const ZoomExpansion& expansion) {
    int i = 0;
    for (; i + 16 <= expansion.nCount; i += 16) {
        // Two words hold 8 bytes from each first pixel on; 120 + 8 is what one permutation reaches.
        if (std::int64_t{expansion.pFirst[i + 15] - expansion.pFirst[i]} * nBytes <= 120) {
            ExpandNear<nBytes>(expansion, i);
        } else {
            ExpandFar(expansion, i, 16);
        }
    }
    ExpandFar(expansion, i, expansion.nCount - i);
}

template <int nBytes>
KEL_TARGET_AVX512 void Blend(const ZoomBlend& blend) {
    // The low three bytes of each word, one after another.
    alignas(64) static constexpr unsigned char kPack[64] = {
        0,  1,  2,  4,  5,  6,  8,  9,  10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28,
        29, 30, 32, 33, 34, 36, 37, 38, 40, 41, 42, 44, 45, 46, 48, 49, 50, 52, 53, 54, 56, 57,
        58, 60, 61, 62, 0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0};
    const __m512 one = _mm512_set1_ps(1.0f);
    const __m512 y1 = _mm512_set1_ps(blend.fFraction);
    const __m512 y0 = _mm512_sub_ps(one, y1);
    for (int i = 0; i < blend.nCount; i += 16) {
        const __mmask16 lanes = LanesLeft(blend.nCount - i);
        const __m512 x1 = _mm512_maskz_loadu_ps(lanes, blend.pFraction + i);
        const __m512 x0 = _mm512_sub_ps(one, x1);
        const __m512 weights[4] = {_mm512_mul_ps(y0, x0), _mm512_mul_ps(y0, x1),
                                   _mm512_mul_ps(y1, x0), _mm512_mul_ps(y1, x1)};
        const __m512i words[4] = {_mm512_maskz_loadu_epi32(lanes, blend.first.pFirst + i),
                                  _mm512_maskz_loadu_epi32(lanes, blend.first.pSecond + i),
                                  _mm512_maskz_loadu_epi32(lanes, blend.second.pFirst + i),
                                  _mm512_maskz_loadu_epi32(lanes, blend.second.pSecond + i)};
        __m512i result =
            _mm512_or_si512(BlendChannel<0>(words, weights), BlendChannel<8>(words, weights));
        if (nBytes > 2) {
            result = _mm512_or_si512(result, BlendChannel<16>(words, weights));
        }
        if (nBytes > 3) {
            result = _mm512_or_si512(result, BlendChannel<24>(words, weights));
        }
        unsigned char* const pOut = blend.pOut + static_cast<std::int64_t>(i) * nBytes;
        if (nBytes == 2) {
            _mm512_mask_cvtepi32_storeu_epi16(pOut, lanes, result);
        } else if (nBytes == 3) {
            const int nPixels = blend.nCount - i < 16 ? blend.nCount - i : 16;
            const __mmask64 bytes = (__mmask64{1} << nPixels * 3) - 1;
            _mm512_mask_storeu_epi8(pOut, bytes,
                                    _mm512_permutexvar_epi8(_mm512_load_si512(kPack), result));
        } else {
            _mm512_mask_storeu_epi32(pOut, lanes, result);
        }
    }
}

}  // namespace

void ZoomExpandAvx512(const ZoomExpansion& expansion) {
    switch (expansion.nBytes) {
        case 2:
            return Expand<2>(expansion);
        case 3:
            return Expand<3>(expansion);
        default:
            return Expand<4>(expansion);
    }
}

void ZoomBlendAvx512(int nBytes, const ZoomBlend& blend) {
    switch (nBytes) {
        case 2:
            return Blend<2>(blend);
        case 3:
            return Blend<3>(blend);
        default:
            return Blend<4>(blend);
    }
}

}  // namespace kel

#endif  // __x86_64__
