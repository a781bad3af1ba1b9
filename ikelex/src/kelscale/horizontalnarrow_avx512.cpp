// The horizontal pass for AVX-512 with VNNI where each output pixel reads at most 16 neighbouring
// ones: row by row, without turning.
//
// Assumes the windows of PlanNarrowWindows. Exact, because vpdpbusd adds products to 32-bit lanes
// without saturation; a channel's four lanes are added afterwards, and no sum is below 0 or above
// 65,408. ScaleBand_Portable defines the bytes.
#if defined(__x86_64__)

#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 takes the undefined operands inside its own intrinsics for variables of ours.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <algorithm>

#include "horizontal.h"

#define KEL_TARGET \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vnni"))) static
// Four copies are worth their size: the constants stay in registers.
#define KEL_INLINE KEL_TARGET __attribute__((always_inline)) inline

namespace kel {

namespace {

constexpr __mmask64 kWindowBytes = 0xFFFFFFFFFFFF;  // of 16 pixels

// 16 pixels to and from planes: one channel in each of three 128-bit parts.
struct Orders {
    alignas(64) unsigned char toPlanes[64];
    alignas(64) unsigned char toPixels[64];
};

consteval Orders MakeOrders() {
    Orders orders = {};
    for (unsigned int i = 0; i < 48; ++i) {
        orders.toPlanes[i] = static_cast<unsigned char>(i % 16 * 3 + i / 16);
        orders.toPixels[i] = static_cast<unsigned char>(i % 3 * 16 + i / 3);
    }
    return orders;
}

constexpr Orders kOrders = MakeOrders();

// The bytes of four output pixels as words: one channel in each 128-bit part.
KEL_INLINE __m512i SumFour(const unsigned char* pIn, const NarrowWindow* pWindows) {
    const __m512i toPlanes = _mm512_load_si512(kOrders.toPlanes);
    const __m512i start = _mm512_set1_epi32(128 / 4);
    __m512i sums[4];
    for (unsigned int i = 0; i < 4; ++i) {
        const __m512i pixels =
            _mm512_maskz_loadu_epi8(kWindowBytes, pIn + std::ptrdiff_t{3} * pWindows[i].nFirst);
        const auto* const pWeights = reinterpret_cast<const __m128i*>(pWindows[i].weights);
        sums[i] = _mm512_dpbusd_epi32(start, _mm512_permutexvar_epi8(toPlanes, pixels),
                                      _mm512_broadcast_i32x4(_mm_loadu_si128(pWeights)));
    }
    // Lane i of a part becomes the sum of the four lanes of that part in sums[i].
    const __m512i a = _mm512_add_epi32(_mm512_unpacklo_epi32(sums[0], sums[1]),
                                       _mm512_unpackhi_epi32(sums[0], sums[1]));
    const __m512i b = _mm512_add_epi32(_mm512_unpacklo_epi32(sums[2], sums[3]),
                                       _mm512_unpackhi_epi32(sums[2], sums[3]));
    return _mm512_srli_epi32(
        _mm512_add_epi32(_mm512_unpacklo_epi64(a, b), _mm512_unpackhi_epi64(a, b)), 8);
}

KEL_TARGET void ScaleRow(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                         const NarrowWindow* pWindows) {
    const __m512i toPixels = _mm512_load_si512(kOrders.toPixels);
    for (std::size_t x = 0; x < nOutWidth; x += 16) {
        const NarrowWindow* const p = pWindows + x;
        // Neither pack ever saturates.
        const __m512i low = _mm512_packus_epi32(SumFour(pIn, p), SumFour(pIn, p + 4));
        const __m512i high = _mm512_packus_epi32(SumFour(pIn, p + 8), SumFour(pIn, p + 12));
        const __m512i bytes = _mm512_permutexvar_epi8(toPixels, _mm512_packus_epi16(low, high));
        const std::size_t nPixels = std::min<std::size_t>(16, nOutWidth - x);
        _mm512_mask_storeu_epi8(pOut + 3 * x, kWindowBytes >> (48 - 3 * nPixels), bytes);
    }
}

}  // namespace

void ScaleNarrow_Avx512(const HorizontalBand& band) {
    ScaleRow(*band.ppIn, *band.ppOut, band.nOutWidth, band.pWindows);
}

}  // namespace kel

#endif  // __x86_64__
