// The horizontal pass by shuffles over 2 rows, for AVX2, 8 pixels at a time, 4 in each half.
//
// Exact, because vpmaddubsw never saturates, and the rest is added in 32 bits. kBandPortable
// defines the bytes.
//
//     255 x 128 = 32,640 < 32,768
#if defined(__x86_64__)

#include "kelcpu/x86.h"
#include "kelscale/variants.h"
#include "kelscale/x86/storeeight_avx2.h"

namespace kel {

namespace {

constexpr ShuffleShape kShape = {2, 4, kPairLimit};
constexpr unsigned int kRows = 2;
constexpr std::size_t kBlock = kShape.BlockPixels();

KEL_AVX2 KEL_INLINE __m256i Load(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}

KEL_AVX2 KEL_INLINE __m256i LoadHalves(const unsigned char* pLow, const unsigned char* pHigh) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(pLow))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(pHigh)), 1);
}

KEL_AVX2 KEL_INLINE __m256i Add(__m256i sum, __m256i pixels, __m256i order, __m256i weights) {
    const __m256i pairs = _mm256_maddubs_epi16(_mm256_shuffle_epi8(pixels, order), weights);
    return _mm256_add_epi32(sum, _mm256_madd_epi16(pairs, _mm256_set1_epi16(1)));
}

// The byte of each lane's sum.
KEL_AVX2 KEL_INLINE __m256i ByteOf(__m256i sum, bool bUnsigned16) {
    if (!bUnsigned16) {
        // Adds 255 to negative sums, so that the shift by 8 cuts towards zero.
        sum = _mm256_add_epi32(sum, _mm256_srli_epi32(_mm256_srai_epi32(sum, 31), 24));
    }
    return _mm256_and_si256(_mm256_srli_epi32(sum, 8), _mm256_set1_epi32(255));
}

// The sums of a block, 12 bytes in each half.
KEL_AVX2 KEL_INLINE __m256i Pack(const __m256i* pSums, bool bUnsigned16) {
    const __m256i order =
        _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,  //
                         0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    const __m256i green = _mm256_slli_epi32(ByteOf(pSums[1], bUnsigned16), 8);
    const __m256i red = _mm256_slli_epi32(ByteOf(pSums[2], bUnsigned16), 16);
    const __m256i pixels =
        _mm256_or_si256(ByteOf(pSums[0], bUnsigned16), _mm256_or_si256(green, red));
    return _mm256_shuffle_epi8(pixels, order);
}

KEL_AVX2 void ScaleRows(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                        std::size_t nOutWidth, const ShufflePlan& plan, RowsAhead& ahead) {
    const __m256i one = _mm256_set1_epi8(1);
    const __m256i two = _mm256_set1_epi8(2);
    const unsigned int* pStart = plan.pStart.get();
    std::size_t nStep = 0;
    for (std::size_t x = 0; x < nOutWidth; x += kBlock) {
        __m256i sums[kRows][3];  // in registers
        for (unsigned int r = 0; r < kRows; ++r) {
            sums[r][0] = sums[r][1] = sums[r][2] = _mm256_set1_epi32(128);
        }
        ahead.FetchShare();
        for (++pStart; nStep < *pStart; ++nStep) {
            const unsigned int* pLoads = &plan.pLoads[nStep * 2];
            const __m256i weights = Load(&plan.pWeights[nStep * 32]);
            const __m256i blue = Load(&plan.pOrders[nStep * 32]);
            const __m256i green = _mm256_add_epi8(blue, one);
            const __m256i red = _mm256_add_epi8(blue, two);
            for (unsigned int r = 0; r < kRows; ++r) {
                const __m256i pixels = LoadHalves(ppIn[r] + pLoads[0], ppIn[r] + pLoads[1]);
                sums[r][0] = Add(sums[r][0], pixels, blue, weights);
                sums[r][1] = Add(sums[r][1], pixels, green, weights);
                sums[r][2] = Add(sums[r][2], pixels, red, weights);
            }
        }
        for (unsigned int r = 0; r < kRows; ++r) {
            StoreEight(Pack(sums[r], plan.bUnsigned16), ppOut[r], x, nOutWidth);
        }
    }
}

}  // namespace

const ShuffleFunctions kShufflesAvx2 = {kShape, 3, kRows, ScaleRows};

}  // namespace kel

#endif  // __x86_64__
