// The zoom's blend with AVX2. Exact: lane for lane the operations of ZoomRowPlain in
// its order; products and sums stay apart because contraction is off. The pixels that do not fill a
// vector go through the portable form.
#if defined(__x86_64__)

#include <immintrin.h>

#include "zoomblend.h"

#define KEL_TARGET_AVX2 __attribute__((target("avx2")))

namespace kel {

namespace {

template <int nShift>
KEL_TARGET_AVX2 __m256 ByteOf(__m256i words) {
    const __m256i shifted = nShift == 0 ? words : _mm256_srli_epi32(words, nShift);
    return _mm256_cvtepi32_ps(nShift == 24 ? shifted
                                           : _mm256_and_si256(shifted, _mm256_set1_epi32(255)));
}

// Channel nShift / 8 of 8 blended pixels, at its place in the word.
template <int nShift>
KEL_TARGET_AVX2 __m256i BlendChannel(const __m256i* pWords, const __m256* pWeights) {
    __m256 sum = _mm256_mul_ps(ByteOf<nShift>(pWords[0]), pWeights[0]);
    sum = _mm256_add_ps(sum, _mm256_mul_ps(ByteOf<nShift>(pWords[1]), pWeights[1]));
    sum = _mm256_add_ps(sum, _mm256_mul_ps(ByteOf<nShift>(pWords[2]), pWeights[2]));
    sum = _mm256_add_ps(sum, _mm256_mul_ps(ByteOf<nShift>(pWords[3]), pWeights[3]));
    return _mm256_slli_epi32(_mm256_cvttps_epi32(sum), nShift);
}

KEL_TARGET_AVX2 __m256i LoadWords(const std::uint32_t* pWords) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pWords));
}

// Writes 8 pixels from words. At 3 bytes a pixel the two halves of 12 bytes are stored as 16, so
// that 4 bytes behind the last pixel are overwritten.
template <int nBytes>
KEL_TARGET_AVX2 void StorePixels(unsigned char* pOut, __m256i words) {
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

template <int nBytes>
KEL_TARGET_AVX2 int Blend(const ZoomBlend& blend) {
    // Pixels that must follow a vector, for the bytes stored behind it.
    constexpr int kBehind = nBytes == 3 ? 2 : 0;
    const __m256 one = _mm256_set1_ps(1.0f);
    const __m256 y1 = _mm256_set1_ps(blend.fFraction);
    const __m256 y0 = _mm256_sub_ps(one, y1);
    int i = 0;
    for (; i + 8 + kBehind <= blend.nCount; i += 8) {
        const __m256 x1 = _mm256_loadu_ps(blend.pFraction + i);
        const __m256 x0 = _mm256_sub_ps(one, x1);
        const __m256 weights[4] = {_mm256_mul_ps(y0, x0), _mm256_mul_ps(y0, x1),
                                   _mm256_mul_ps(y1, x0), _mm256_mul_ps(y1, x1)};
        const __m256i words[4] = {
            LoadWords(blend.first.pFirst + i), LoadWords(blend.first.pSecond + i),
            LoadWords(blend.second.pFirst + i), LoadWords(blend.second.pSecond + i)};
        __m256i result =
            _mm256_or_si256(BlendChannel<0>(words, weights), BlendChannel<8>(words, weights));
        if (nBytes > 2) {
            result = _mm256_or_si256(result, BlendChannel<16>(words, weights));
        }
        if (nBytes > 3) {
            result = _mm256_or_si256(result, BlendChannel<24>(words, weights));
        }
        StorePixels<nBytes>(blend.pOut + static_cast<std::int64_t>(i) * nBytes, result);
    }
    return i;
}

}  // namespace

void ZoomBlendAvx2(int nBytes, const ZoomBlend& blend) {
    const int nDone = nBytes == 2   ? Blend<2>(blend)
                      : nBytes == 3 ? Blend<3>(blend)
                                    : Blend<4>(blend);
    ZoomBlend rest = blend;
    rest.first = {blend.first.pFirst + nDone, blend.first.pSecond + nDone};
    rest.second = {blend.second.pFirst + nDone, blend.second.pSecond + nDone};
    rest.pFraction += nDone;
    rest.pOut += static_cast<std::int64_t>(nDone) * nBytes;
    rest.nCount -= nDone;
    ZoomBlendPortable(nBytes, rest);
}

}  // namespace kel

#endif  // __x86_64__
