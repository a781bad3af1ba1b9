// One row of the horizontal pass from windows, for AVX-512 with VNNI.
//
// A chunk of 16 pixels becomes three planes of 16 bytes, one channel each, in 128-bit parts. Exact,
// because vpdpbusd adds four products to a 32-bit lane without saturation. The four lanes of a
// channel are added afterwards. kBandPortable defines the bytes.
#if defined(__x86_64__)

#include <algorithm>

#include "kelbitmap/integers.h"
#include "kelcpu/x86.h"
#include "kelscale/variants.h"

namespace kel {

namespace {

constexpr __mmask64 kChunkBytes = 0xFFFFFFFFFFFF;  // 48 bytes, 16 pixels

// So far ahead of a window its row is prefetched, unless there are rows to prefetch in its place.
constexpr std::size_t kAhead = 4096;

// 16 pixels to and from planes.
struct Orders {
    alignas(64) unsigned char toPlanes[64];
    alignas(64) unsigned char toPlanesLate[64];  // 16 bytes into a vector
    alignas(64) unsigned char toPixels[64];
};

consteval Orders MakeOrders() {
    Orders orders = {};
    for (unsigned int i = 0; i < 48; ++i) {
        orders.toPlanes[i] = LowByte(i % 16 * 3 + i / 16);
        orders.toPlanesLate[i] = static_cast<unsigned char>(orders.toPlanes[i] + 16);
        orders.toPixels[i] = LowByte(i % 3 * 16 + i / 3);
    }
    return orders;
}

constexpr Orders kOrders = MakeOrders();

// Chunk c of the window at p in planes. Loads of 64 bytes, which are faster than loads with a mask,
// stay within a window of several chunks, since the last one begins 16 bytes early.
template <std::size_t kChunks>
KEL_AVX512 KEL_INLINE __m512i Planes(const unsigned char* p, std::size_t c) {
    if (kChunks == 1) {
        return _mm512_permutexvar_epi8(_mm512_load_si512(kOrders.toPlanes),
                                       _mm512_maskz_loadu_epi8(kChunkBytes, p));
    }
    if (c + 1 == kChunks) {
        return _mm512_permutexvar_epi8(_mm512_load_si512(kOrders.toPlanesLate),
                                       _mm512_loadu_si512(p + 48 * c - 16));
    }
    return _mm512_permutexvar_epi8(_mm512_load_si512(kOrders.toPlanes),
                                   _mm512_loadu_si512(p + 48 * c));
}

// The sum of window x, spread over the four lanes of each part. The four starts add up to 128.
template <std::size_t kChunks, bool kOwnRow>
KEL_AVX512 KEL_INLINE __m512i SumWindow(const unsigned char* pIn, const WindowPlan& plan,
                                        std::size_t x) {
    const unsigned char* p = pIn + std::ptrdiff_t{3} * plan.pFirst[x];
    const signed char* pWeights = plan.pWeights.get() + x * kChunks * kChunkPixels;
    __m512i sum = _mm512_set1_epi32(128 / 4);
    for (std::size_t c = 0; c < kChunks; ++c) {
        if (kOwnRow) {
            _mm_prefetch(p + 48 * c + kAhead, _MM_HINT_T0);
        }
        const __m512i planes = Planes<kChunks>(p, c);
        const __m128i weights = Load128(pWeights + c * kChunkPixels);
        sum = _mm512_dpbusd_epi32(sum, planes, _mm512_broadcast_i32x4(weights));
    }
    return sum;
}

// The bytes of four output pixels in 32-bit lanes, one channel in each part.
//
//     part k of sums[i]:  a  b  c  d      i = 0 to 3
//     part k of the result, lane i:  (a + b + c + d of sums[i]) / 256
template <std::size_t kChunks, bool kOwnRow>
KEL_AVX512 KEL_INLINE __m512i SumFour(const unsigned char* pIn, const WindowPlan& plan,
                                      std::size_t x) {
    __m512i sums[4];
    for (std::size_t i = 0; i < 4; ++i) {
        sums[i] = SumWindow<kChunks, kOwnRow>(pIn, plan, x + i);
    }
    const __m512i a = _mm512_add_epi32(_mm512_unpacklo_epi32(sums[0], sums[1]),
                                       _mm512_unpackhi_epi32(sums[0], sums[1]));
    const __m512i b = _mm512_add_epi32(_mm512_unpacklo_epi32(sums[2], sums[3]),
                                       _mm512_unpackhi_epi32(sums[2], sums[3]));
    __m512i sum = _mm512_add_epi32(_mm512_unpacklo_epi64(a, b), _mm512_unpackhi_epi64(a, b));
    if (!plan.bUnsigned16) {
        // Adds 255 to negative sums, so that the shift by 8 cuts towards zero.
        sum = _mm512_add_epi32(sum, _mm512_srli_epi32(_mm512_srai_epi32(sum, 31), 24));
    }
    return _mm512_and_si512(_mm512_srli_epi32(sum, 8), _mm512_set1_epi32(255));
}

template <std::size_t kChunks, bool kOwnRow>
KEL_AVX512 void ScaleChunks(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                            const WindowPlan& plan, RowsAhead& ahead) {
    const __m512i toPixels = _mm512_load_si512(kOrders.toPixels);
    for (std::size_t x = 0; x < nOutWidth; x += kBlockPixels) {
        ahead.FetchShare();
        ahead.FetchShare();
        // Neither pack ever saturates.
        const __m512i low = _mm512_packus_epi32(SumFour<kChunks, kOwnRow>(pIn, plan, x),
                                                SumFour<kChunks, kOwnRow>(pIn, plan, x + 4));
        const __m512i high = _mm512_packus_epi32(SumFour<kChunks, kOwnRow>(pIn, plan, x + 8),
                                                 SumFour<kChunks, kOwnRow>(pIn, plan, x + 12));
        const __m512i bytes = _mm512_permutexvar_epi8(toPixels, _mm512_packus_epi16(low, high));
        const std::size_t nPixels = std::min(kBlockPixels, nOutWidth - x);
        _mm512_mask_storeu_epi8(pOut + 3 * x, kChunkBytes >> (48 - 3 * nPixels), bytes);
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

const WindowFunctions kWindowsAvx512 = {kNoLaneLimit, ScaleRow};

}  // namespace kel

#endif  // __x86_64__
