// The horizontal pass for AVX2 where each output pixel reads at most 16 neighbouring ones: row by
// row, without turning.
//
// Assumes the windows of PlanNarrowWindows. Exact, because no more than 128 of a window's weight
// meets in one 16-bit lane, so that vpmaddubsw and the addition stay within 255 x 128 = 32,640; the
// lanes of a channel are added in 32 bits, and no sum is below 0 or above 65,408.
// ScaleBand_Portable defines the bytes.
#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "horizontal.h"

#define KEL_TARGET __attribute__((target("avx2"))) static

namespace kel {

namespace {

KEL_TARGET inline __m128i Load(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

KEL_TARGET inline __m256i LoadParts(const unsigned char* pLow, const unsigned char* pHigh) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(Load(pLow)), Load(pHigh), 1);
}

// The sums of one output pixel: in each part, words of the three channels.
KEL_TARGET inline __m256i SumOne(const unsigned char* pIn, const NarrowWindow& window) {
    // Pixels 0 to 3 and 4 to 7 by channel; 8 to 11 and 12 to 15, of which the last load ends where
    // the window ends.
    const __m256i firstOrder =
        _mm256_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1,  //
                         0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1);
    const __m256i secondOrder =
        _mm256_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1,  //
                         4, 7, 10, 13, 5, 8, 11, 14, 6, 9, 12, 15, -1, -1, -1, -1);
    const unsigned char* const p = pIn + std::ptrdiff_t{3} * window.nFirst;
    const __m256i first = _mm256_shuffle_epi8(LoadParts(p, p + 12), firstOrder);
    const __m256i second = _mm256_shuffle_epi8(LoadParts(p + 24, p + 32), secondOrder);
    // The weights of four pixels in each word of a part.
    const __m256i weights = _mm256_broadcastsi128_si256(Load(window.weights));
    const __m256i firstWeights = _mm256_shuffle_epi8(
        weights, _mm256_setr_epi32(0x03020100, 0x03020100, 0x03020100, 0x03020100,  //
                                   0x07060504, 0x07060504, 0x07060504, 0x07060504));
    const __m256i secondWeights = _mm256_shuffle_epi8(
        weights, _mm256_setr_epi32(0x0B0A0908, 0x0B0A0908, 0x0B0A0908, 0x0B0A0908,  //
                                   0x0F0E0D0C, 0x0F0E0D0C, 0x0F0E0D0C, 0x0F0E0D0C));
    const __m256i pairs = _mm256_add_epi16(_mm256_maddubs_epi16(first, firstWeights),
                                           _mm256_maddubs_epi16(second, secondWeights));
    return _mm256_madd_epi16(pairs, _mm256_set1_epi16(1));
}

// The bytes of two output pixels as words, one pixel in each part.
KEL_TARGET inline __m256i SumTwo(const unsigned char* pIn, const NarrowWindow& a,
                                 const NarrowWindow& b) {
    const __m256i first = SumOne(pIn, a);
    const __m256i second = SumOne(pIn, b);
    const __m256i sums = _mm256_add_epi32(_mm256_permute2x128_si256(first, second, 0x20),
                                          _mm256_permute2x128_si256(first, second, 0x31));
    return _mm256_srli_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(128)), 8);
}

// Eight output pixels: 12 bytes in each part.
KEL_TARGET inline __m256i SumEight(const unsigned char* pIn, const NarrowWindow* p) {
    const __m256i pack =
        _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,  //
                         0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    // No pack ever saturates.
    const __m256i low = _mm256_packus_epi32(SumTwo(pIn, p[0], p[4]), SumTwo(pIn, p[1], p[5]));
    const __m256i high = _mm256_packus_epi32(SumTwo(pIn, p[2], p[6]), SumTwo(pIn, p[3], p[7]));
    return _mm256_shuffle_epi8(_mm256_packus_epi16(low, high), pack);
}

KEL_TARGET void ScaleRow(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                         const NarrowWindow* pWindows) {
    for (std::size_t x = 0; x < nOutWidth; x += 8) {
        const __m256i bytes = SumEight(pIn, pWindows + x);
        unsigned char pixels[12 + 16];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels), _mm256_castsi256_si128(bytes));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(pixels + 12),
                         _mm256_extracti128_si256(bytes, 1));
        std::memcpy(pOut + 3 * x, pixels, 3 * std::min<std::size_t>(8, nOutWidth - x));
    }
}

}  // namespace

void ScaleNarrow_Avx2(const HorizontalBand& band) {
    ScaleRow(*band.ppIn, *band.ppOut, band.nOutWidth, band.pWindows);
}

}  // namespace kel

#endif  // __x86_64__
