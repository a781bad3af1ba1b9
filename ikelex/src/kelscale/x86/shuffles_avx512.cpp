// One row of the horizontal pass by shuffles, for AVX-512 with VBMI and VNNI, 16 pixels at a time.
//
// Exact, because vpdpbusd adds four products to a 32-bit lane without saturation. kBandPortable
// defines the bytes.
#if defined(__x86_64__)

#include <algorithm>

#include "kelcpu/x86.h"
#include "kelscale/variants.h"

namespace kel {

namespace {

constexpr ShuffleShape kShape = {1, 16, kNoPairLimit};
constexpr std::size_t kBlock = kShape.BlockPixels();
constexpr __mmask64 kBlockBytes = 0xFFFFFFFFFFFF;

// Packs byte 1 of each lane. Blue and green of 16 pixels come first, then red among them.
//
//     sums, by channel   B0 B1 B2 ...    G0 G1 G2 ...    R0 R1 R2 ...
//     with blueGreen     B0 G0  - B1 G1  - B2 G2  - ...
//     with red           B0 G0 R0 B1 G1 R1 B2 G2 R2 ...
struct Orders {
    alignas(64) unsigned char blueGreen[64];
    alignas(64) unsigned char red[64];
};

consteval Orders MakeOrders() {
    Orders orders = {};
    for (unsigned int i = 0; i < 48; ++i) {
        const unsigned int nSum = i / 3 * 4 + 1;
        orders.blueGreen[i] = static_cast<unsigned char>(i % 3 == 1 ? 64 + nSum : nSum);
        orders.red[i] = static_cast<unsigned char>(i % 3 == 2 ? 64 + nSum : i);
    }
    return orders;
}

constexpr Orders kOrders = MakeOrders();

// Adds 255 to negative sums, so that the shift by 8 cuts towards zero.
KEL_AVX512 KEL_INLINE __m512i RoundNegative(__m512i sum) {
    return _mm512_add_epi32(sum, _mm512_srli_epi32(_mm512_srai_epi32(sum, 31), 24));
}

KEL_AVX512 void ScaleRow(const unsigned char* pIn, unsigned char* pOut, std::size_t nOutWidth,
                         const ShufflePlan& plan) {
    const __m512i blueGreen = _mm512_load_si512(kOrders.blueGreen);
    const __m512i red = _mm512_load_si512(kOrders.red);
    const __m512i one = _mm512_set1_epi8(1);
    const __m512i two = _mm512_set1_epi8(2);
    const unsigned int* pStart = plan.pStart.get();
    std::size_t nStep = 0;
    for (std::size_t x = 0; x < nOutWidth; x += kBlock) {
        __m512i b = _mm512_set1_epi32(128);
        __m512i g = b;
        __m512i r = b;
        for (++pStart; nStep < *pStart; ++nStep) {
            const __m512i pixels = _mm512_loadu_si512(pIn + plan.pLoads[nStep]);
            const __m512i order = _mm512_loadu_si512(&plan.pOrders[nStep * 64]);
            const __m512i weights = _mm512_loadu_si512(&plan.pWeights[nStep * 64]);
            b = _mm512_dpbusd_epi32(b, _mm512_permutexvar_epi8(order, pixels), weights);
            g = _mm512_dpbusd_epi32(g, _mm512_permutexvar_epi8(_mm512_add_epi8(order, one), pixels),
                                    weights);
            r = _mm512_dpbusd_epi32(r, _mm512_permutexvar_epi8(_mm512_add_epi8(order, two), pixels),
                                    weights);
        }
        if (!plan.bUnsigned16) {
            b = RoundNegative(b);
            g = RoundNegative(g);
            r = RoundNegative(r);
        }
        const __m512i pixels =
            _mm512_permutex2var_epi8(_mm512_permutex2var_epi8(b, blueGreen, g), red, r);
        const std::size_t nPixels = std::min(kBlock, nOutWidth - x);
        _mm512_mask_storeu_epi8(pOut + 3 * x, kBlockBytes >> (48 - 3 * nPixels), pixels);
    }
}

}  // namespace

const ShuffleFunctions kShufflesAvx512 = {kShape, 3, ScaleRow};

}  // namespace kel

#endif  // __x86_64__
