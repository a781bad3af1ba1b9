// The horizontal pass by shuffles over 4 rows, for AVX-512 with VBMI and VNNI, 16 pixels at a time.
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
constexpr unsigned int kRows = 4;
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

KEL_AVX512 KEL_INLINE __m512i Add(__m512i sum, __m512i pixels, __m512i order, __m512i weights) {
    return _mm512_dpbusd_epi32(sum, _mm512_permutexvar_epi8(order, pixels), weights);
}

// The sums of a block, 48 bytes.
KEL_AVX512 KEL_INLINE __m512i Pack(const __m512i* pSums) {
    const __m512i blueGreen = _mm512_load_si512(kOrders.blueGreen);
    const __m512i red = _mm512_load_si512(kOrders.red);
    return _mm512_permutex2var_epi8(_mm512_permutex2var_epi8(pSums[0], blueGreen, pSums[1]), red,
                                    pSums[2]);
}

KEL_AVX512 void ScaleRows(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                          std::size_t nOutWidth, const ShufflePlan& plan, RowsAhead& ahead) {
    const __m512i one = _mm512_set1_epi8(1);
    const __m512i two = _mm512_set1_epi8(2);
    const unsigned int* pStart = plan.pStart.get();
    std::size_t nStep = 0;
    for (std::size_t x = 0; x < nOutWidth; x += kBlock) {
        __m512i sums[kRows][3];  // in registers
        for (unsigned int r = 0; r < kRows; ++r) {
            sums[r][0] = sums[r][1] = sums[r][2] = _mm512_set1_epi32(128);
        }
        ahead.FetchShare();
        ahead.FetchShare();
        for (++pStart; nStep < *pStart; ++nStep) {
            const __m512i weights = _mm512_loadu_si512(&plan.pWeights[nStep * 64]);
            const __m512i blue = _mm512_loadu_si512(&plan.pOrders[nStep * 64]);
            const __m512i green = _mm512_add_epi8(blue, one);
            const __m512i red = _mm512_add_epi8(blue, two);
            for (unsigned int r = 0; r < kRows; ++r) {
                const __m512i pixels = _mm512_loadu_si512(ppIn[r] + plan.pLoads[nStep]);
                sums[r][0] = Add(sums[r][0], pixels, blue, weights);
                sums[r][1] = Add(sums[r][1], pixels, green, weights);
                sums[r][2] = Add(sums[r][2], pixels, red, weights);
            }
        }
        const std::size_t nPixels = std::min(kBlock, nOutWidth - x);
        const __mmask64 nMask = kBlockBytes >> (48 - 3 * nPixels);
        for (unsigned int r = 0; r < kRows; ++r) {
            if (!plan.bUnsigned16) {
                for (__m512i& sum : sums[r]) {
                    sum = RoundNegative(sum);
                }
            }
            _mm512_mask_storeu_epi8(ppOut[r] + 3 * x, nMask, Pack(sums[r]));
        }
    }
}

}  // namespace

const ShuffleFunctions kShufflesAvx512 = {kShape, 9, kRows, ScaleRows};

}  // namespace kel

#endif  // __x86_64__
