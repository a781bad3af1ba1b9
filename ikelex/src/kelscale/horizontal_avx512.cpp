// The horizontal pass for AVX-512 with VNNI: 16 rows at a time, one lane a row.
//
// Assumes the plan of PlanGroups: signed bytes, four to a group. Exact, because vpdpbusd adds the
// four products to a 32-bit lane without saturation. ScaleBand_Portable defines the bytes.
#if defined(__x86_64__)

#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 takes the undefined operands inside its own intrinsics for variables of ours.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include "horizontal.h"

#define KEL_TARGET \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vnni"))) static

namespace kel {

namespace {

constexpr unsigned int kRows = kBandRowsAvx512;
constexpr std::size_t kWordBytes = 4 * kRows;        // four pixels of one channel, all rows
constexpr std::size_t kGroupBytes = 3 * kWordBytes;  // of all channels

// Transposes the 4 x 4 words in each of the four 128-bit parts.
KEL_TARGET inline void TransposeWords(__m512i* pWords) {
    const __m512i a = _mm512_unpacklo_epi32(pWords[0], pWords[1]);
    const __m512i b = _mm512_unpackhi_epi32(pWords[0], pWords[1]);
    const __m512i c = _mm512_unpacklo_epi32(pWords[2], pWords[3]);
    const __m512i d = _mm512_unpackhi_epi32(pWords[2], pWords[3]);
    pWords[0] = _mm512_unpacklo_epi64(a, c);
    pWords[1] = _mm512_unpackhi_epi64(a, c);
    pWords[2] = _mm512_unpacklo_epi64(b, d);
    pWords[3] = _mm512_unpackhi_epi64(b, d);
}

// Transposes the 4 x 4 parts of 128 bits of four vectors.
KEL_TARGET inline void TransposeParts(__m512i* pParts) {
    const __m512i a = _mm512_shuffle_i32x4(pParts[0], pParts[1], 0x44);
    const __m512i b = _mm512_shuffle_i32x4(pParts[0], pParts[1], 0xEE);
    const __m512i c = _mm512_shuffle_i32x4(pParts[2], pParts[3], 0x44);
    const __m512i d = _mm512_shuffle_i32x4(pParts[2], pParts[3], 0xEE);
    pParts[0] = _mm512_shuffle_i32x4(a, c, 0x88);
    pParts[1] = _mm512_shuffle_i32x4(a, c, 0xDD);
    pParts[2] = _mm512_shuffle_i32x4(b, d, 0x88);
    pParts[3] = _mm512_shuffle_i32x4(b, d, 0xDD);
}

// Turns four groups, 48 bytes of every row, of which the mask names those that are there.
KEL_TARGET inline void TurnGroups(const unsigned char* const* ppIn, std::size_t nOffset,
                                  __mmask64 nMask, unsigned char* pGroups) {
    // Part g of a row: the bytes of group g, those of each channel side by side as one word.
    const __m512i part =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, 0, 0, 0, 0));
    const __m512i order = _mm512_add_epi8(
        part, _mm512_set_epi64(0x2424242424242424, 0x2424242424242424, 0x1818181818181818,
                               0x1818181818181818, 0x0C0C0C0C0C0C0C0C, 0x0C0C0C0C0C0C0C0C, 0, 0));
    __m512i parts[3][4];  // of each channel: four rows a vector, four groups in its parts
    for (unsigned int q = 0; q < 4; ++q) {
        __m512i words[4];
        for (unsigned int i = 0; i < 4; ++i) {
            const __m512i row = _mm512_maskz_loadu_epi8(nMask, ppIn[4 * q + i] + nOffset);
            words[i] = _mm512_permutexvar_epi8(order, row);
        }
        TransposeWords(words);
        for (unsigned int k = 0; k < 3; ++k) {
            parts[k][q] = words[k];
        }
    }
    for (unsigned int k = 0; k < 3; ++k) {
        TransposeParts(parts[k]);
        for (unsigned int g = 0; g < 4; ++g) {
            _mm512_storeu_si512(pGroups + g * kGroupBytes + k * kWordBytes, parts[k][g]);
        }
    }
}

KEL_TARGET void TurnIn(const HorizontalBand& band) {
    constexpr __mmask64 kAll = 0xFFFFFFFFFFFF;
    const std::size_t nBytes = 3 * band.nInWidth;
    unsigned char* pGroups = band.pScratch;
    std::size_t nOffset = 0;
    for (; nOffset + 48 <= nBytes; nOffset += 48, pGroups += 4 * kGroupBytes) {
        TurnGroups(band.ppIn, nOffset, kAll, pGroups);
    }
    if (nOffset < nBytes) {
        TurnGroups(band.ppIn, nOffset, kAll >> (48 - (nBytes - nOffset)), pGroups);
    }
}

// The three sums of output pixel x, rounded: the byte is in bits 8 to 15 of each lane.
KEL_TARGET inline void SumPixel(const HorizontalBand& band, std::size_t x, __m512i* pSums) {
    __m512i sums[3];
    sums[0] = sums[1] = sums[2] = _mm512_set1_epi32(128);
    const PlanStep* pEnd = band.pSteps + band.pStart[x + 1];
    for (const PlanStep* pStep = band.pSteps + band.pStart[x]; pStep != pEnd; ++pStep) {
        const __m512i weights = _mm512_set1_epi32(pStep->nWeights);
        const unsigned char* pGroup =
            band.pScratch + kGroupBytes * static_cast<unsigned int>(pStep->nIndex);
        for (unsigned int k = 0; k < 3; ++k) {
            sums[k] =
                _mm512_dpbusd_epi32(sums[k], _mm512_loadu_si512(pGroup + k * kWordBytes), weights);
        }
    }
    for (unsigned int k = 0; k < 3; ++k) {
        pSums[k] = sums[k];
        if (!band.bUnsigned16) {
            // A division by 256 that cuts towards zero: 255 more for negative sums.
            const __m512i sign = _mm512_srli_epi32(_mm512_srai_epi32(sums[k], 31), 24);
            pSums[k] = _mm512_add_epi32(sums[k], sign);
        }
    }
}

// Bits 8 to 15 of four vectors as the four bytes of each lane.
KEL_TARGET inline __m512i PackBytes(const __m512i* p) {
    constexpr int kSelect =
        0xCA;  // the bits of the second where the mask is set, else of the third
    const __m512i low = _mm512_ternarylogic_epi32(_mm512_set1_epi32(0xFF00), p[1],
                                                  _mm512_srli_epi32(p[0], 8), kSelect);
    const __m512i high =
        _mm512_ternarylogic_epi32(_mm512_set1_epi32(0xFF0000), _mm512_slli_epi32(p[2], 8),
                                  _mm512_slli_epi32(p[3], 16), kSelect);
    return _mm512_ternarylogic_epi32(_mm512_set1_epi32(0xFFFF), low, high, kSelect);
}

// The 12 bytes of each row of four output pixels, as words.
KEL_TARGET inline void SumFour(const HorizontalBand& band, std::size_t x, __m512i* pWords) {
    __m512i sums[12];  // in registers
    SumPixel(band, x, sums);
    SumPixel(band, x + 1, sums + 3);
    SumPixel(band, x + 2, sums + 6);
    SumPixel(band, x + 3, sums + 9);
    pWords[0] = PackBytes(sums);
    pWords[1] = PackBytes(sums + 4);
    pWords[2] = PackBytes(sums + 8);
}

KEL_TARGET inline void Store16(unsigned char* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}

// Turns the words of 16 pixels back: 48 bytes to each row.
KEL_TARGET inline void TurnOut(__m512i* pWords, unsigned char* const* ppOut, std::size_t nOffset) {
    for (unsigned int k = 0; k < 3; ++k) {
        TransposeWords(pWords + 4 * k);
        for (unsigned int i = 0; i < 4; ++i) {
            const std::size_t nAt = nOffset + 16 * k;
            Store16(ppOut[i] + nAt, _mm512_castsi512_si128(pWords[4 * k + i]));
            Store16(ppOut[4 + i] + nAt, _mm512_extracti32x4_epi32(pWords[4 * k + i], 1));
            Store16(ppOut[8 + i] + nAt, _mm512_extracti32x4_epi32(pWords[4 * k + i], 2));
            Store16(ppOut[12 + i] + nAt, _mm512_extracti32x4_epi32(pWords[4 * k + i], 3));
        }
    }
}

KEL_TARGET void ScaleBand(const HorizontalBand& band) {
    TurnIn(band);
    for (std::size_t x = 0; x < band.nOutWidth; x += 16) {
        __m512i words[12];
        for (unsigned int i = 0; i < 4; ++i) {
            band.pAhead->FetchShare();
            SumFour(band, x + 4 * i, words + 3 * i);
        }
        if (x + 16 <= band.nOutWidth) {
            TurnOut(words, band.ppOut, 3 * x);
        } else {
            // The last pixels go through a copy: nothing behind a row is written.
            unsigned char tail[kRows][48];
            unsigned char* rows[kRows];
            for (unsigned int r = 0; r < kRows; ++r) {
                rows[r] = tail[r];
            }
            TurnOut(words, rows, 0);
            for (unsigned int r = 0; r < kRows; ++r) {
                __builtin_memcpy(band.ppOut[r] + 3 * x, tail[r], 3 * (band.nOutWidth - x));
            }
        }
    }
}

}  // namespace

void ScaleBand_Avx512(const HorizontalBand& band) {
    ScaleBand(band);
}

}  // namespace kel

#endif  // __x86_64__
