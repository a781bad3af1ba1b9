// The vertical pass for AVX-512 with VNNI, 64 columns at a time.
//
// A plan of PlanColumns holds unsigned bytes for pairs of source rows (SumPairs), or
// signed bytes for four source rows (SumFours).
// kVerticalPortable defines the bytes.
#if defined(__x86_64__)

#include "kelcpu/x86.h"
#include "kelscale/variants.h"

namespace kel {

namespace {

// Columns that the mask names. With kWhole it names all 64. A load with a mask takes a slot of the
// arithmetic besides.
template <bool kWhole>
KEL_AVX512 KEL_INLINE __m512i LoadColumns(__mmask64 nMask, const unsigned char* p) {
    return kWhole ? _mm512_loadu_si512(p) : _mm512_maskz_loadu_epi8(nMask, p);
}

template <bool kWhole>
KEL_AVX512 KEL_INLINE void StoreColumns(unsigned char* p, __mmask64 nMask, __m512i columns) {
    if (kWhole) {
        _mm512_storeu_si512(p, columns);
    } else {
        _mm512_mask_storeu_epi8(p, nMask, columns);
    }
}

// The columns from nAt on that the mask names, at most 64, 16 bits unsigned a sum.
//
// vpmaddubsw takes one signed factor. A byte p is passed as p - 128, and 128 times the weights is
// in the start value. Weights that sum to 256 at most cannot make a sum saturate or overflow.
//
//     p x w = (p - 128) x w + 128 x w
//     -128 x 256 = -32,768 <= sum of (p - 128) x w <= 127 x 256 = 32,512
//     sum of p x w + 128 <= 255 x 256 + 128 = 65,408 < 65,536
template <bool kWhole>
KEL_AVX512 KEL_INLINE void SumPairs(const VerticalRow& row, std::size_t nAt, __mmask64 nMask) {
    const __m512i flip = _mm512_set1_epi8(-128);  // p to p - 128
    // Half a 256th, and 128 times each weight.
    const __m512i start = Repeat16Wide(128 + 128 * row.nWeights);
    __m512i low = start;
    __m512i high = start;
    for (unsigned int s = 0; s < row.nSteps; s += 2) {
        const __m512i weights =
            Repeat16Wide(row.pSteps[s].nWeights | row.pSteps[s + 1].nWeights << 8);
        const __m512i a = _mm512_xor_si512(flip, LoadColumns<kWhole>(nMask, row.ppIn[s] + nAt));
        const __m512i b = _mm512_xor_si512(flip, LoadColumns<kWhole>(nMask, row.ppIn[s + 1] + nAt));
        low = _mm512_add_epi16(low, _mm512_maddubs_epi16(weights, _mm512_unpacklo_epi8(a, b)));
        high = _mm512_add_epi16(high, _mm512_maddubs_epi16(weights, _mm512_unpackhi_epi8(a, b)));
    }
    // The pack undoes the order of the lanes and never saturates.
    StoreColumns<kWhole>(
        row.pOut + nAt, nMask,
        _mm512_packus_epi16(_mm512_srli_epi16(low, 8), _mm512_srli_epi16(high, 8)));
}

// Four weights as the bytes of every 32-bit lane.
KEL_AVX512 inline __m512i PackWeights(const PlanStep* pSteps) {
    return _mm512_set1_epi32((pSteps[0].nWeights & 255) | (pSteps[1].nWeights & 255) << 8 |
                             (pSteps[2].nWeights & 255) << 16 | pSteps[3].nWeights << 24);
}

// A rounded sum's byte in each lane, the low 8 bits of its 256th, cut towards zero.
KEL_AVX512 inline __m512i Bytes(__m512i sums) {
    const __m512i sign = _mm512_srli_epi32(_mm512_srai_epi32(sums, 31), 24);
    const __m512i quotient = _mm512_srli_epi32(_mm512_add_epi32(sums, sign), 8);
    return _mm512_and_si512(quotient, _mm512_set1_epi32(255));
}

// The columns from nAt on that the mask names, at most 64, 32 bits signed a sum. vpdpbusd adds the
// products of four rows without saturation.
template <bool kWhole>
KEL_AVX512 KEL_INLINE void SumFours(const VerticalRow& row, std::size_t nAt, __mmask64 nMask) {
    __m512i sums[4];
    sums[0] = sums[1] = sums[2] = sums[3] = _mm512_set1_epi32(128);
    for (unsigned int s = 0; s < row.nSteps; s += 4) {
        const __m512i weights = PackWeights(row.pSteps + s);
        const __m512i a = LoadColumns<kWhole>(nMask, row.ppIn[s] + nAt);
        const __m512i b = LoadColumns<kWhole>(nMask, row.ppIn[s + 1] + nAt);
        const __m512i c = LoadColumns<kWhole>(nMask, row.ppIn[s + 2] + nAt);
        const __m512i d = LoadColumns<kWhole>(nMask, row.ppIn[s + 3] + nAt);
        // The four bytes of one column side by side. The packs below undo the order of the lanes.
        const __m512i abLow = _mm512_unpacklo_epi8(a, b);
        const __m512i abHigh = _mm512_unpackhi_epi8(a, b);
        const __m512i cdLow = _mm512_unpacklo_epi8(c, d);
        const __m512i cdHigh = _mm512_unpackhi_epi8(c, d);
        sums[0] = _mm512_dpbusd_epi32(sums[0], _mm512_unpacklo_epi16(abLow, cdLow), weights);
        sums[1] = _mm512_dpbusd_epi32(sums[1], _mm512_unpackhi_epi16(abLow, cdLow), weights);
        sums[2] = _mm512_dpbusd_epi32(sums[2], _mm512_unpacklo_epi16(abHigh, cdHigh), weights);
        sums[3] = _mm512_dpbusd_epi32(sums[3], _mm512_unpackhi_epi16(abHigh, cdHigh), weights);
    }
    // Neither pack ever saturates, because the lanes hold bytes.
    const __m512i low = _mm512_packus_epi32(Bytes(sums[0]), Bytes(sums[1]));
    const __m512i high = _mm512_packus_epi32(Bytes(sums[2]), Bytes(sums[3]));
    StoreColumns<kWhole>(row.pOut + nAt, nMask, _mm512_packus_epi16(low, high));
}

template <bool kWhole>
KEL_AVX512 KEL_INLINE void SumColumns(const VerticalRow& row, std::size_t nAt, __mmask64 nMask) {
    if (row.bUnsigned16) {
        SumPairs<kWhole>(row, nAt, nMask);
    } else {
        SumFours<kWhole>(row, nAt, nMask);
    }
}

KEL_AVX512 void ScaleColumns(const VerticalRow& row) {
    constexpr __mmask64 kAll = ~__mmask64{0};
    std::size_t nAt = 0;
    for (; nAt + 64 <= row.nBytes; nAt += 64) {
        SumColumns<true>(row, nAt, kAll);
    }
    if (nAt < row.nBytes) {
        SumColumns<false>(row, nAt, kAll >> (64 - (row.nBytes - nAt)));
    }
}

}  // namespace

const VerticalFunctions kVerticalAvx512 = {kNoPairLimit, ScaleColumns};

}  // namespace kel

#endif  // __x86_64__
