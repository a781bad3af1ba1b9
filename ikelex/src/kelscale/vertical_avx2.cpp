// The vertical pass for AVX2: 32 columns at a time.
//
// Assumes the plan of PlanColumns with kPairLimit. Pairs of unsigned bytes, two source rows at a
// time: exact, because p x w = (p - 128) x w + 128 x w. Of weights that sum to 256 at most,
// vpmaddubsw gets sums of the first kind between -32,768 and 32,512 and never saturates; those of
// the second kind are in the start value, and the whole, 65,408 at most, fits 16 bits unsigned.
// Fours of signed bytes, each pair of weights at most 128 together, four source rows at a time:
// exact, because vpmaddubsw then stays within 255 x 128 = 32,640 and never saturates, and the rest
// is added in 32 bits. ScaleColumns_Portable defines the bytes.
#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>

#include "vertical.h"

#define KEL_TARGET __attribute__((target("avx2"))) static

namespace kel {

namespace {

KEL_TARGET inline __m256i Load(const unsigned char* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

KEL_TARGET inline void Store(unsigned char* p, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v);
}

// The 32 columns from nAt on, as pairs.
KEL_TARGET inline void SumPairs(const VerticalRow& row, std::size_t nAt) {
    const __m256i flip = _mm256_set1_epi8(-128);  // p to p - 128
    // Half a 256th, and 128 times each weight.
    const __m256i start = _mm256_set1_epi16(static_cast<short>(128 + 128 * row.nWeights));
    __m256i low = start;
    __m256i high = start;
    for (unsigned int s = 0; s < row.nSteps; s += 2) {
        const __m256i weights = _mm256_set1_epi16(
            static_cast<short>(row.pSteps[s].nWeights | row.pSteps[s + 1].nWeights << 8));
        const __m256i a = _mm256_xor_si256(flip, Load(row.ppIn[s] + nAt));
        const __m256i b = _mm256_xor_si256(flip, Load(row.ppIn[s + 1] + nAt));
        low = _mm256_add_epi16(low, _mm256_maddubs_epi16(weights, _mm256_unpacklo_epi8(a, b)));
        high = _mm256_add_epi16(high, _mm256_maddubs_epi16(weights, _mm256_unpackhi_epi8(a, b)));
    }
    // The pack undoes the order of the lanes and never saturates.
    Store(row.pOut + nAt,
          _mm256_packus_epi16(_mm256_srli_epi16(low, 8), _mm256_srli_epi16(high, 8)));
}

// Four weights as the bytes of one word, in every lane.
KEL_TARGET inline __m256i PackWeights(const PlanStep* pSteps) {
    return _mm256_set1_epi32((pSteps[0].nWeights & 255) | (pSteps[1].nWeights & 255) << 8 |
                             (pSteps[2].nWeights & 255) << 16 | pSteps[3].nWeights << 24);
}

// Adds the four products of each lane.
KEL_TARGET inline __m256i Add(__m256i sums, __m256i bytes, __m256i weights) {
    const __m256i pairs = _mm256_maddubs_epi16(bytes, weights);
    return _mm256_add_epi32(sums, _mm256_madd_epi16(pairs, _mm256_set1_epi16(1)));
}

// A rounded sum's byte in each lane: a division by 256 that cuts towards zero, low 8 bits.
KEL_TARGET inline __m256i Bytes(__m256i sums) {
    const __m256i sign = _mm256_srli_epi32(_mm256_srai_epi32(sums, 31), 24);
    const __m256i quotient = _mm256_srli_epi32(_mm256_add_epi32(sums, sign), 8);
    return _mm256_and_si256(quotient, _mm256_set1_epi32(255));
}

// The 32 columns from nAt on, as fours.
KEL_TARGET inline void SumFours(const VerticalRow& row, std::size_t nAt) {
    __m256i sums[4];
    sums[0] = sums[1] = sums[2] = sums[3] = _mm256_set1_epi32(128);
    for (unsigned int s = 0; s < row.nSteps; s += 4) {
        const __m256i weights = PackWeights(row.pSteps + s);
        const __m256i a = Load(row.ppIn[s] + nAt);
        const __m256i b = Load(row.ppIn[s + 1] + nAt);
        const __m256i c = Load(row.ppIn[s + 2] + nAt);
        const __m256i d = Load(row.ppIn[s + 3] + nAt);
        // The four bytes of one column side by side; the packs below undo the order of the lanes.
        const __m256i abLow = _mm256_unpacklo_epi8(a, b);
        const __m256i abHigh = _mm256_unpackhi_epi8(a, b);
        const __m256i cdLow = _mm256_unpacklo_epi8(c, d);
        const __m256i cdHigh = _mm256_unpackhi_epi8(c, d);
        sums[0] = Add(sums[0], _mm256_unpacklo_epi16(abLow, cdLow), weights);
        sums[1] = Add(sums[1], _mm256_unpackhi_epi16(abLow, cdLow), weights);
        sums[2] = Add(sums[2], _mm256_unpacklo_epi16(abHigh, cdHigh), weights);
        sums[3] = Add(sums[3], _mm256_unpackhi_epi16(abHigh, cdHigh), weights);
    }
    // Bytes in 32-bit lanes: neither pack ever saturates.
    const __m256i low = _mm256_packus_epi32(Bytes(sums[0]), Bytes(sums[1]));
    const __m256i high = _mm256_packus_epi32(Bytes(sums[2]), Bytes(sums[3]));
    Store(row.pOut + nAt, _mm256_packus_epi16(low, high));
}

KEL_TARGET void ScaleColumns(const VerticalRow& row) {
    if (row.nBytes < 32) {
        ScaleColumns_Portable(row);
        return;
    }
    for (std::size_t nFrom = 0; nFrom < row.nBytes; nFrom += 32) {
        // The last columns overlap the ones before: the same bytes once more.
        const std::size_t nAt = std::min(nFrom, row.nBytes - 32);
        if (row.bUnsigned16) {
            SumPairs(row, nAt);
        } else {
            SumFours(row, nAt);
        }
    }
}

}  // namespace

void ScaleColumns_Avx2(const VerticalRow& row) {
    ScaleColumns(row);
}

}  // namespace kel

#endif  // __x86_64__
