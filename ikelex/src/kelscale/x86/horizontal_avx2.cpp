// The horizontal pass over a band of 8 rows for AVX2.
//
// A quad is four neighbouring pixels of one channel, a group the three quads of the same pixels.
// The scratch holds the groups one after another, each quad for all rows.
//
//     group g, channel 0:  row 0  row 1 ... row 7     4 bytes each: pixels 4g to 4g + 3
//              channel 1:  row 0  row 1 ... row 7
//              channel 2:  row 0  row 1 ... row 7
//
// Assumes the plan of PlanGroups with kPairLimit. Exact, because vpmaddubsw never saturates, and
// the rest is added in 32 bits. kBandPortable defines the bytes.
//
//     255 x 128 = 32,640 < 32,768
#if defined(__x86_64__)

#include "kelcpu/x86.h"
#include "kelscale/variants.h"

namespace kel {

namespace {

constexpr unsigned int kRows = 8;
constexpr std::size_t kQuadBytes = 4 * kRows;        // four pixels of one channel, all rows
constexpr std::size_t kGroupBytes = 3 * kQuadBytes;  // of all channels

// Transposes the 4 x 4 quads in each 128-bit half.
KEL_AVX2 inline void TransposeQuads(__m256i* pQuads) {
    const __m256i a = _mm256_unpacklo_epi32(pQuads[0], pQuads[1]);
    const __m256i b = _mm256_unpackhi_epi32(pQuads[0], pQuads[1]);
    const __m256i c = _mm256_unpacklo_epi32(pQuads[2], pQuads[3]);
    const __m256i d = _mm256_unpackhi_epi32(pQuads[2], pQuads[3]);
    pQuads[0] = _mm256_unpacklo_epi64(a, c);
    pQuads[1] = _mm256_unpackhi_epi64(a, c);
    pQuads[2] = _mm256_unpacklo_epi64(b, d);
    pQuads[3] = _mm256_unpackhi_epi64(b, d);
}

// Transposes four pixels, 12 bytes, of every row. Reads 16 bytes at ppIn[r] + nAt.
KEL_AVX2 inline void TransposeGroup(const unsigned char* const* ppIn, std::size_t nAt,
                                    unsigned char* pGroup) {
    // The bytes of each channel side by side, as one quad.
    const __m256i order = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1));
    __m256i quads[4];
    for (unsigned int i = 0; i < 4; ++i) {
        // Half h of vector i is row 4h + i, so that after the transposition lane r is row r.
        const __m256i v = LoadHalves(ppIn[i] + nAt, ppIn[4 + i] + nAt);
        quads[i] = _mm256_shuffle_epi8(v, order);
    }
    TransposeQuads(quads);
    for (unsigned int k = 0; k < 3; ++k) {
        Store256(pGroup + k * kQuadBytes, quads[k]);
    }
}

KEL_AVX2 void Transpose(const unsigned char* const* ppIn, std::size_t nPixels,
                        unsigned char* pGroup) {
    const std::size_t nBytes = 3 * nPixels;
    std::size_t nAt = 0;
    for (; nAt + 16 <= nBytes; nAt += 12, pGroup += kGroupBytes) {
        TransposeGroup(ppIn, nAt, pGroup);
    }
    // The last one or two groups go through a copy, because nothing after the pixels is read.
    for (; nAt < nBytes; nAt += 12, pGroup += kGroupBytes) {
        unsigned char tail[kRows][16] = {};
        const unsigned char* rows[kRows];
        const std::size_t nPart = nBytes - nAt < 12 ? nBytes - nAt : 12;
        for (unsigned int r = 0; r < kRows; ++r) {
            __builtin_memcpy(tail[r], ppIn[r] + nAt, nPart);
            rows[r] = tail[r];
        }
        TransposeGroup(rows, 0, pGroup);
    }
}

// The three rounded sums of output pixel x. The byte is in bits 8 to 15 of each lane.
KEL_AVX2 inline void SumPixel(const Band& band, std::size_t x, __m256i* pSums) {
    __m256i sums[3];
    const __m256i ones = _mm256_set1_epi16(1);
    sums[0] = sums[1] = sums[2] = _mm256_set1_epi32(128);
    const PlanStep* pEnd = band.pSteps + band.pStart[x + 1];
    for (const PlanStep* pStep = band.pSteps + band.pStart[x]; pStep != pEnd; ++pStep) {
        const __m256i weights = _mm256_set1_epi32(pStep->nWeights);
        const unsigned char* pGroup = band.pScratch + std::ptrdiff_t{kGroupBytes} * pStep->nIndex;
        for (unsigned int k = 0; k < 3; ++k) {
            const __m256i bytes = Load256(pGroup + k * kQuadBytes);
            const __m256i pairs = _mm256_maddubs_epi16(bytes, weights);
            sums[k] = _mm256_add_epi32(sums[k], _mm256_madd_epi16(pairs, ones));
        }
    }
    for (unsigned int k = 0; k < 3; ++k) {
        pSums[k] = sums[k];
        if (!band.bUnsigned16) {
            // Adds 255 to negative sums, so that the shift by 8 cuts towards zero.
            const __m256i sign = _mm256_srli_epi32(_mm256_srai_epi32(sums[k], 31), 24);
            pSums[k] = _mm256_add_epi32(sums[k], sign);
        }
    }
}

// Bits 8 to 15 of four vectors as the four bytes of each lane.
KEL_AVX2 inline __m256i PackBytes(const __m256i* p) {
    const __m256i mask = _mm256_set1_epi32(0xFF00);
    const __m256i b0 = _mm256_srli_epi32(_mm256_and_si256(p[0], mask), 8);
    const __m256i b1 = _mm256_and_si256(p[1], mask);
    const __m256i b2 = _mm256_slli_epi32(_mm256_and_si256(p[2], mask), 8);
    const __m256i b3 = _mm256_slli_epi32(_mm256_and_si256(p[3], mask), 16);
    return _mm256_or_si256(_mm256_or_si256(b0, b1), _mm256_or_si256(b2, b3));
}

// The 12 bytes of each row of four output pixels, as three 32-bit lanes.
KEL_AVX2 inline void SumFour(const Band& band, std::size_t x, __m256i* pQuads) {
    __m256i sums[12];  // in registers
    SumPixel(band, x, sums);
    SumPixel(band, x + 1, sums + 3);
    SumPixel(band, x + 2, sums + 6);
    SumPixel(band, x + 3, sums + 9);
    pQuads[0] = PackBytes(sums);
    pQuads[1] = PackBytes(sums + 4);
    pQuads[2] = PackBytes(sums + 8);
}

// Transposes 16 pixels back, 48 bytes to each row.
KEL_AVX2 inline void StoreBlock(__m256i* pQuads, unsigned char* const* ppOut) {
    for (unsigned int k = 0; k < 3; ++k) {
        TransposeQuads(pQuads + 4 * k);
        for (unsigned int i = 0; i < 4; ++i) {
            Store128(ppOut[i] + 16 * k, _mm256_castsi256_si128(pQuads[4 * k + i]));
            Store128(ppOut[4 + i] + 16 * k, _mm256_extracti128_si256(pQuads[4 * k + i], 1));
        }
    }
}

KEL_AVX2 void SumBlock(const Band& band, std::size_t x, unsigned char* const* ppOut) {
    __m256i quads[12];
    for (unsigned int i = 0; i < 4; ++i) {
        band.pAhead->FetchShare();
        SumFour(band, x + 4 * i, quads + 3 * i);
    }
    StoreBlock(quads, ppOut);
}

}  // namespace

const BandFunctions kBandAvx2 = {kRows, kPairLimit, Transpose, SumBlock};

}  // namespace kel

#endif  // __x86_64__
