// The vertical pass for AVX2, 32 columns at a time.
//
// A plan of PlanColumns with kPairLimit holds unsigned bytes for pairs of source rows (SumPairs),
// or signed bytes for four source rows (SumFours). kVerticalPortable defines the bytes.
#if defined(__x86_64__)

#include <algorithm>

#include "kelcpu/x86.h"
#include "kelscale/variants.h"

namespace kel {

namespace {

// The 32 columns from nAt on, 16 bits unsigned a sum.
//
// vpmaddubsw takes one signed factor. A byte p is passed as p - 128, and 128 times the weights is
// in the start value. Weights that sum to 256 at most cannot make a sum saturate or overflow.
//
//     p x w = (p - 128) x w + 128 x w
//     -128 x 256 = -32,768 <= sum of (p - 128) x w <= 127 x 256 = 32,512
//     sum of p x w + 128 <= 255 x 256 + 128 = 65,408 < 65,536
KEL_AVX2 inline void SumPairs(const VerticalRow& row, std::size_t nAt) {
    const __m256i flip = _mm256_set1_epi8(-128);  // p to p - 128
    // Half a 256th, and 128 times each weight.
    const __m256i start = Repeat16(128 + 128 * row.nWeights);
    __m256i low = start;
    __m256i high = start;
    for (unsigned int s = 0; s < row.nSteps; s += 2) {
        const __m256i weights = Repeat16(row.pSteps[s].nWeights | row.pSteps[s + 1].nWeights << 8);
        const __m256i a = _mm256_xor_si256(flip, Load256(row.ppIn[s] + nAt));
        const __m256i b = _mm256_xor_si256(flip, Load256(row.ppIn[s + 1] + nAt));
        low = _mm256_add_epi16(low, _mm256_maddubs_epi16(weights, _mm256_unpacklo_epi8(a, b)));
        high = _mm256_add_epi16(high, _mm256_maddubs_epi16(weights, _mm256_unpackhi_epi8(a, b)));
    }
    // The pack undoes the order of the lanes and never saturates.
    Store256(row.pOut + nAt,
             _mm256_packus_epi16(_mm256_srli_epi16(low, 8), _mm256_srli_epi16(high, 8)));
}

// Four weights as the bytes of every 32-bit lane.
KEL_AVX2 inline __m256i PackWeights(const PlanStep* pSteps) {
    return _mm256_set1_epi32((pSteps[0].nWeights & 255) | (pSteps[1].nWeights & 255) << 8 |
                             (pSteps[2].nWeights & 255) << 16 | pSteps[3].nWeights << 24);
}

// Adds the four products of each lane.
KEL_AVX2 inline __m256i Add(__m256i sums, __m256i bytes, __m256i weights) {
    const __m256i pairs = _mm256_maddubs_epi16(bytes, weights);
    return _mm256_add_epi32(sums, _mm256_madd_epi16(pairs, _mm256_set1_epi16(1)));
}

// A rounded sum's byte in each lane, the low 8 bits of its 256th, cut towards zero.
KEL_AVX2 inline __m256i Bytes(__m256i sums) {
    const __m256i sign = _mm256_srli_epi32(_mm256_srai_epi32(sums, 31), 24);
    const __m256i quotient = _mm256_srli_epi32(_mm256_add_epi32(sums, sign), 8);
    return _mm256_and_si256(quotient, _mm256_set1_epi32(255));
}

// The 32 columns from nAt on, 32 bits signed a sum. vpmaddubsw adds the products of two rows in 16
// bits, and never saturates.
//
//     255 x 128 = 32,640 < 32,768
KEL_AVX2 inline void SumFours(const VerticalRow& row, std::size_t nAt) {
    __m256i sums[4];
    sums[0] = sums[1] = sums[2] = sums[3] = _mm256_set1_epi32(128);
    for (unsigned int s = 0; s < row.nSteps; s += 4) {
        const __m256i weights = PackWeights(row.pSteps + s);
        const __m256i a = Load256(row.ppIn[s] + nAt);
        const __m256i b = Load256(row.ppIn[s + 1] + nAt);
        const __m256i c = Load256(row.ppIn[s + 2] + nAt);
        const __m256i d = Load256(row.ppIn[s + 3] + nAt);
        // The four bytes of one column side by side. The packs below undo the order of the lanes.
        const __m256i abLow = _mm256_unpacklo_epi8(a, b);
        const __m256i abHigh = _mm256_unpackhi_epi8(a, b);
        const __m256i cdLow = _mm256_unpacklo_epi8(c, d);
        const __m256i cdHigh = _mm256_unpackhi_epi8(c, d);
        sums[0] = Add(sums[0], _mm256_unpacklo_epi16(abLow, cdLow), weights);
        sums[1] = Add(sums[1], _mm256_unpackhi_epi16(abLow, cdLow), weights);
        sums[2] = Add(sums[2], _mm256_unpacklo_epi16(abHigh, cdHigh), weights);
        sums[3] = Add(sums[3], _mm256_unpackhi_epi16(abHigh, cdHigh), weights);
    }
    // Neither pack ever saturates, because the lanes hold bytes.
    const __m256i low = _mm256_packus_epi32(Bytes(sums[0]), Bytes(sums[1]));
    const __m256i high = _mm256_packus_epi32(Bytes(sums[2]), Bytes(sums[3]));
    Store256(row.pOut + nAt, _mm256_packus_epi16(low, high));
}

KEL_AVX2 void ScaleColumns(const VerticalRow& row) {
    if (row.nBytes < 32) {
        kVerticalPortable.pfnColumns(row);
        return;
    }
    for (std::size_t nFrom = 0; nFrom < row.nBytes; nFrom += 32) {
        // The last columns overlap the ones before, and get the same bytes once more.
        const std::size_t nAt = std::min(nFrom, row.nBytes - 32);
        if (row.bUnsigned16) {
            SumPairs(row, nAt);
        } else {
            SumFours(row, nAt);
        }
    }
}

}  // namespace

const VerticalFunctions kVerticalAvx2 = {kPairLimit, ScaleColumns};

}  // namespace kel

#endif  // __x86_64__
