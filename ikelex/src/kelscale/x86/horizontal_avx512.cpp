// The horizontal pass over a band of 16 rows for AVX-512 with VNNI.
//
// A quad is four neighbouring pixels of one channel, a group the three quads of the same pixels.
// The scratch holds the groups one after another, each quad for all rows.
//
//     group g, channel 0:  row 0  row 1 ... row 15    4 bytes each: pixels 4g to 4g + 3
//              channel 1:  row 0  row 1 ... row 15
//              channel 2:  row 0  row 1 ... row 15
//
// Assumes a plan of PlanGroups. Exact, because vpdpbusd adds the four products to a 32-bit lane
// without saturation. kBandPortable defines the bytes.
#if defined(__x86_64__)

#include "kelcpu/x86.h"
#include "kelscale/variants.h"

namespace kel {

namespace {

constexpr unsigned int kRows = 16;
constexpr std::size_t kQuadBytes = 4 * kRows;        // four pixels of one channel, all rows
constexpr std::size_t kGroupBytes = 3 * kQuadBytes;  // of all channels

// Transposes the 4 x 4 quads in each of the four 128-bit parts.
KEL_AVX512 inline void TransposeQuads(__m512i* pQuads) {
    const __m512i a = _mm512_unpacklo_epi32(pQuads[0], pQuads[1]);
    const __m512i b = _mm512_unpackhi_epi32(pQuads[0], pQuads[1]);
    const __m512i c = _mm512_unpacklo_epi32(pQuads[2], pQuads[3]);
    const __m512i d = _mm512_unpackhi_epi32(pQuads[2], pQuads[3]);
    pQuads[0] = _mm512_unpacklo_epi64(a, c);
    pQuads[1] = _mm512_unpackhi_epi64(a, c);
    pQuads[2] = _mm512_unpacklo_epi64(b, d);
    pQuads[3] = _mm512_unpackhi_epi64(b, d);
}

// Transposes the 4 x 4 parts of 128 bits of four vectors.
KEL_AVX512 inline void TransposeParts(__m512i* pParts) {
    const __m512i a = _mm512_shuffle_i32x4(pParts[0], pParts[1], 0x44);
    const __m512i b = _mm512_shuffle_i32x4(pParts[0], pParts[1], 0xEE);
    const __m512i c = _mm512_shuffle_i32x4(pParts[2], pParts[3], 0x44);
    const __m512i d = _mm512_shuffle_i32x4(pParts[2], pParts[3], 0xEE);
    pParts[0] = _mm512_shuffle_i32x4(a, c, 0x88);
    pParts[1] = _mm512_shuffle_i32x4(a, c, 0xDD);
    pParts[2] = _mm512_shuffle_i32x4(b, d, 0x88);
    pParts[3] = _mm512_shuffle_i32x4(b, d, 0xDD);
}

// Transposes four groups, 48 bytes, of every row, of which the mask names those that exist.
KEL_AVX512 inline void TransposeGroups(const unsigned char* const* ppIn, std::size_t nAt,
                                       __mmask64 nMask, unsigned char* pGroups) {
    // Part g of a row gets the bytes of group g, those of each channel side by side as one quad.
    const __m512i part =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, 0, 0, 0, 0));
    const __m512i order = _mm512_add_epi8(
        part, _mm512_set_epi64(0x2424242424242424, 0x2424242424242424, 0x1818181818181818,
                               0x1818181818181818, 0x0C0C0C0C0C0C0C0C, 0x0C0C0C0C0C0C0C0C, 0, 0));
    __m512i parts[3][4];  // of each channel: four rows a vector, four groups in its parts
    for (unsigned int q = 0; q < 4; ++q) {
        __m512i quads[4];
        for (unsigned int i = 0; i < 4; ++i) {
            const __m512i row = _mm512_maskz_loadu_epi8(nMask, ppIn[4 * q + i] + nAt);
            quads[i] = _mm512_permutexvar_epi8(order, row);
        }
        TransposeQuads(quads);
        for (unsigned int k = 0; k < 3; ++k) {
            parts[k][q] = quads[k];
        }
    }
    for (unsigned int k = 0; k < 3; ++k) {
        TransposeParts(parts[k]);
        for (unsigned int g = 0; g < 4; ++g) {
            _mm512_storeu_si512(pGroups + g * kGroupBytes + k * kQuadBytes, parts[k][g]);
        }
    }
}

KEL_AVX512 void Transpose(const unsigned char* const* ppIn, std::size_t nPixels,
                          unsigned char* pGroups) {
    constexpr __mmask64 kAll = 0xFFFFFFFFFFFF;
    const std::size_t nBytes = 3 * nPixels;
    std::size_t nAt = 0;
    for (; nAt + 48 <= nBytes; nAt += 48, pGroups += 4 * kGroupBytes) {
        TransposeGroups(ppIn, nAt, kAll, pGroups);
    }
    if (nAt < nBytes) {
        TransposeGroups(ppIn, nAt, kAll >> (48 - (nBytes - nAt)), pGroups);
    }
}

// The three rounded sums of output pixel x. The byte is in bits 8 to 15 of each lane.
KEL_AVX512 inline void SumPixel(const Band& band, std::size_t x, __m512i* pSums) {
    __m512i sums[3];
    sums[0] = sums[1] = sums[2] = _mm512_set1_epi32(128);
    const PlanStep* pEnd = band.pSteps + band.pStart[x + 1];
    for (const PlanStep* pStep = band.pSteps + band.pStart[x]; pStep != pEnd; ++pStep) {
        const __m512i weights = _mm512_set1_epi32(pStep->nWeights);
        const unsigned char* pGroup = band.pScratch + std::ptrdiff_t{kGroupBytes} * pStep->nIndex;
        for (unsigned int k = 0; k < 3; ++k) {
            sums[k] =
                _mm512_dpbusd_epi32(sums[k], _mm512_loadu_si512(pGroup + k * kQuadBytes), weights);
        }
    }
    for (unsigned int k = 0; k < 3; ++k) {
        pSums[k] = sums[k];
        if (!band.bUnsigned16) {
            // Adds 255 to negative sums, so that the shift by 8 cuts towards zero.
            const __m512i sign = _mm512_srli_epi32(_mm512_srai_epi32(sums[k], 31), 24);
            pSums[k] = _mm512_add_epi32(sums[k], sign);
        }
    }
}

// Bits 8 to 15 of four vectors as the four bytes of each lane.
KEL_AVX512 inline __m512i PackBytes(const __m512i* p) {
    // The bits of the second where the mask is set, else of the third.
    constexpr int kSelect = 0xCA;
    const __m512i low = _mm512_ternarylogic_epi32(_mm512_set1_epi32(0xFF00), p[1],
                                                  _mm512_srli_epi32(p[0], 8), kSelect);
    const __m512i high =
        _mm512_ternarylogic_epi32(_mm512_set1_epi32(0xFF0000), _mm512_slli_epi32(p[2], 8),
                                  _mm512_slli_epi32(p[3], 16), kSelect);
    return _mm512_ternarylogic_epi32(_mm512_set1_epi32(0xFFFF), low, high, kSelect);
}

// The 12 bytes of each row of four output pixels, as three 32-bit lanes.
KEL_AVX512 inline void SumFour(const Band& band, std::size_t x, __m512i* pQuads) {
    __m512i sums[12];  // in registers
    SumPixel(band, x, sums);
    SumPixel(band, x + 1, sums + 3);
    SumPixel(band, x + 2, sums + 6);
    SumPixel(band, x + 3, sums + 9);
    pQuads[0] = PackBytes(sums);
    pQuads[1] = PackBytes(sums + 4);
    pQuads[2] = PackBytes(sums + 8);
}

// Transposes 16 pixels back, 48 bytes to each row.
KEL_AVX512 inline void StoreBlock(__m512i* pQuads, unsigned char* const* ppOut) {
    for (unsigned int k = 0; k < 3; ++k) {
        TransposeQuads(pQuads + 4 * k);
        for (unsigned int i = 0; i < 4; ++i) {
            Store128(ppOut[i] + 16 * k, _mm512_castsi512_si128(pQuads[4 * k + i]));
            Store128(ppOut[4 + i] + 16 * k, _mm512_extracti32x4_epi32(pQuads[4 * k + i], 1));
            Store128(ppOut[8 + i] + 16 * k, _mm512_extracti32x4_epi32(pQuads[4 * k + i], 2));
            Store128(ppOut[12 + i] + 16 * k, _mm512_extracti32x4_epi32(pQuads[4 * k + i], 3));
        }
    }
}

KEL_AVX512 void SumBlock(const Band& band, std::size_t x, unsigned char* const* ppOut) {
    __m512i quads[12];
    for (unsigned int i = 0; i < 4; ++i) {
        band.pAhead->FetchShare();
        SumFour(band, x + 4 * i, quads + 3 * i);
    }
    StoreBlock(quads, ppOut);
}

}  // namespace

const BandFunctions kBandAvx512 = {kRows, kNoPairLimit, Transpose, SumBlock};

}  // namespace kel

#endif  // __x86_64__
