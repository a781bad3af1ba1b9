// One row of the horizontal pass from windows, for AVX2.
//
// Assumes windows of PlanWindows with kLaneLimit. Exact, because vpmaddubsw and the addition of its
// results stay within 16 bits signed, and the rest is added in 32 bits. kBandPortable defines the
// bytes.
//
//     255 x 128 = 32,640 < 32,768
#if defined(__x86_64__)

#include "kelcpu/x86.h"
#include "kelscale/variants.h"
#include "kelscale/x86/storeeight_avx2.h"

namespace kel {

namespace {

// So far ahead of a window its row is prefetched, unless there are rows to prefetch in its place.
constexpr std::size_t kAhead = 4096;

// The sums of 16 pixels from p on. Each half has 32-bit lanes of the three channels.
KEL_AVX2 KEL_INLINE __m256i SumChunk(const unsigned char* p, const signed char* pWeights) {
    // Pixels 0 to 3 and 4 to 7 by channel, then 8 to 11 and 12 to 15. The last load begins four
    // bytes early, and ends where the chunk ends.
    const __m256i firstOrder =
        _mm256_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1,  //
                         0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1);
    const __m256i secondOrder =
        _mm256_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1,  //
                         4, 7, 10, 13, 5, 8, 11, 14, 6, 9, 12, 15, -1, -1, -1, -1);
    const __m256i first = _mm256_shuffle_epi8(LoadHalves(p, p + 12), firstOrder);
    const __m256i second = _mm256_shuffle_epi8(LoadHalves(p + 24, p + 32), secondOrder);
    // The weights of four pixels in each 32-bit lane of a half.
    const __m256i weights = _mm256_broadcastsi128_si256(Load128(pWeights));
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

template <std::size_t kChunks, bool kOwnRow>
KEL_AVX2 KEL_INLINE __m256i SumWindow(const unsigned char* pIn, const WindowPlan& plan,
                                      std::size_t x) {
    const unsigned char* p = pIn + std::ptrdiff_t{3} * plan.pFirst[x];
    const signed char* pWeights = plan.pWeights.get() + x * kChunks * kChunkPixels;
    __m256i sum = _mm256_setzero_si256();
    for (std::size_t c = 0; c < kChunks; ++c) {
        if (kOwnRow) {
            _mm_prefetch(p + 48 * c + kAhead, _MM_HINT_T0);
        }
        sum = _mm256_add_epi32(sum, SumChunk(p + 48 * c, pWeights + c * kChunkPixels));
    }
    return sum;
}

// The bytes of output pixels x and x + 4 in 32-bit lanes, one pixel in each half.
template <std::size_t kChunks, bool kOwnRow>
KEL_AVX2 KEL_INLINE __m256i SumTwo(const unsigned char* pIn, const WindowPlan& plan,
                                   std::size_t x) {
    const __m256i a = SumWindow<kChunks, kOwnRow>(pIn, plan, x);
    const __m256i b = SumWindow<kChunks, kOwnRow>(pIn, plan, x + 4);
    __m256i sums = _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20),
                                    _mm256_permute2x128_si256(a, b, 0x31));
    sums = _mm256_add_epi32(sums, _mm256_set1_epi32(128));
    if (!plan.bUnsigned16) {
        // Adds 255 to negative sums, so that the shift by 8 cuts towards zero.
        sums = _mm256_add_epi32(sums, _mm256_srli_epi32(_mm256_srai_epi32(sums, 31), 24));
    }
    return _mm256_and_si256(_mm256_srli_epi32(sums, 8), _mm256_set1_epi32(255));
}

// Eight output pixels, 12 bytes in each half.
template <std::size_t kChunks, bool kOwnRow>
KEL_AVX2 KEL_INLINE __m256i SumEight(const unsigned char* pIn, const WindowPlan& plan,
                                     std::size_t x) {
    const __m256i pack =
        _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1,  //
                         0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    // No pack ever saturates.
    const __m256i low = _mm256_packus_epi32(SumTwo<kChunks, kOwnRow>(pIn, plan, x),
                                            SumTwo<kChunks, kOwnRow>(pIn, plan, x + 1));
    const __m256i high = _mm256_packus_epi32(SumTwo<kChunks, kOwnRow>(pIn, plan, x + 2),
                                             SumTwo<kChunks, kOwnRow>(pIn, plan, x + 3));
    return _mm256_shuffle_epi8(_mm256_packus_epi16(low, high), pack);
}

template <std::size_t kChunks, bool kOwnRow>
KEL_AVX2 void ScaleChunks(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                          const WindowPlan& plan, RowsAhead& ahead) {
    for (std::size_t x = 0; x < nOutWidth; x += 8) {
        ahead.FetchShare();
        StoreEight(SumEight<kChunks, kOwnRow>(pIn, plan, x), pOut, x, nOutWidth);
    }
}

template <bool kOwnRow>
constexpr decltype(WindowFunctions::pfnRow) kRows[] = {
    ScaleChunks<1, kOwnRow>, ScaleChunks<2, kOwnRow>, ScaleChunks<3, kOwnRow>,
    ScaleChunks<4, kOwnRow>};
static_assert(sizeof kRows<true> / sizeof *kRows<true> == kMostChunks);

void ScaleRow(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
              const WindowPlan& plan, RowsAhead& ahead) {
    const auto* pfnRows = ahead.IsEmpty() ? kRows<true> : kRows<false>;
    pfnRows[plan.nChunks - 1](pIn, pOut, nOutWidth, plan, ahead);
}

}  // namespace

const WindowFunctions kWindowsAvx2 = {kLaneLimit, ScaleRow};

}  // namespace kel

#endif  // __x86_64__
