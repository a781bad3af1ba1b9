// The horizontal pass for AVX2: 8 rows at a time, one lane a row.
//
// Assumes the plan of PlanGroups with kPairLimit: signed bytes, four to a group, each pair of them
// at most 128 together. Exact, because vpmaddubsw then stays within 255 x 128 = 32,640 and never
// saturates, and the rest is added in 32 bits. ScaleBand_Portable defines the bytes.
#if defined(__x86_64__)

#include <immintrin.h>

#include "horizontal.h"

#define KEL_TARGET __attribute__((target("avx2"))) static

namespace kel {

namespace {

constexpr unsigned int kRows = kBandRowsAvx2;
constexpr std::size_t kWordBytes = 4 * kRows;        // four pixels of one channel, all rows
constexpr std::size_t kGroupBytes = 3 * kWordBytes;  // of all channels

// Transposes the 4 x 4 words in each 128-bit half.
KEL_TARGET inline void TransposeWords(__m256i* pWords) {
    const __m256i a = _mm256_unpacklo_epi32(pWords[0], pWords[1]);
    const __m256i b = _mm256_unpackhi_epi32(pWords[0], pWords[1]);
    const __m256i c = _mm256_unpacklo_epi32(pWords[2], pWords[3]);
    const __m256i d = _mm256_unpackhi_epi32(pWords[2], pWords[3]);
    pWords[0] = _mm256_unpacklo_epi64(a, c);
    pWords[1] = _mm256_unpackhi_epi64(a, c);
    pWords[2] = _mm256_unpacklo_epi64(b, d);
    pWords[3] = _mm256_unpackhi_epi64(b, d);
}

KEL_TARGET inline __m128i Load16(const unsigned char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// Turns four pixels, 12 bytes, of every row; reads 16 bytes at ppIn[r] + nOffset.
KEL_TARGET inline void TurnGroup(const unsigned char* const* ppIn, std::size_t nOffset,
                                 unsigned char* pGroup) {
    // The bytes of each channel side by side: one word a channel.
    const __m256i order = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 3, 6, 9, 1, 4, 7, 10, 2, 5, 8, 11, -1, -1, -1, -1));
    __m256i words[4];
    for (unsigned int i = 0; i < 4; ++i) {
        // Half h of vector i is row 4h + i, so that after the transposition lane r is row r.
        const __m256i v = _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(ppIn[i] + nOffset)),
                                                  Load16(ppIn[4 + i] + nOffset), 1);
        words[i] = _mm256_shuffle_epi8(v, order);
    }
    TransposeWords(words);
    for (unsigned int k = 0; k < 3; ++k) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(pGroup + k * kWordBytes), words[k]);
    }
}

KEL_TARGET void TurnIn(const HorizontalBand& band) {
    const std::size_t nBytes = 3 * band.nInWidth;
    std::size_t nOffset = 0;
    unsigned char* pGroup = band.pScratch;
    for (; nOffset + 16 <= nBytes; nOffset += 12, pGroup += kGroupBytes) {
        TurnGroup(band.ppIn, nOffset, pGroup);
    }
    // The last one or two groups go through a copy: nothing behind a row is read.
    for (; nOffset < nBytes; nOffset += 12, pGroup += kGroupBytes) {
        unsigned char tail[kRows][16] = {};
        const unsigned char* rows[kRows];
        const std::size_t nPart = nBytes - nOffset < 12 ? nBytes - nOffset : 12;
        for (unsigned int r = 0; r < kRows; ++r) {
            __builtin_memcpy(tail[r], band.ppIn[r] + nOffset, nPart);
            rows[r] = tail[r];
        }
        TurnGroup(rows, 0, pGroup);
    }
}

// The three sums of output pixel x, rounded: the byte is in bits 8 to 15 of each lane.
KEL_TARGET inline void SumPixel(const HorizontalBand& band, std::size_t x, __m256i* pSums) {
    __m256i sums[3];
    const __m256i ones = _mm256_set1_epi16(1);
    sums[0] = sums[1] = sums[2] = _mm256_set1_epi32(128);
    const PlanStep* pEnd = band.pSteps + band.pStart[x + 1];
    for (const PlanStep* pStep = band.pSteps + band.pStart[x]; pStep != pEnd; ++pStep) {
        const __m256i weights = _mm256_set1_epi32(pStep->nWeights);
        const unsigned char* pGroup =
            band.pScratch + kGroupBytes * static_cast<unsigned int>(pStep->nIndex);
        for (unsigned int k = 0; k < 3; ++k) {
            const __m256i bytes =
                _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pGroup + k * kWordBytes));
            const __m256i pairs = _mm256_maddubs_epi16(bytes, weights);
            sums[k] = _mm256_add_epi32(sums[k], _mm256_madd_epi16(pairs, ones));
        }
    }
    for (unsigned int k = 0; k < 3; ++k) {
        pSums[k] = sums[k];
        if (!band.bUnsigned16) {
            // A division by 256 that cuts towards zero: 255 more for negative sums.
            const __m256i sign = _mm256_srli_epi32(_mm256_srai_epi32(sums[k], 31), 24);
            pSums[k] = _mm256_add_epi32(sums[k], sign);
        }
    }
}

// Bits 8 to 15 of four vectors as the four bytes of each lane.
KEL_TARGET inline __m256i PackBytes(const __m256i* p) {
    const __m256i mask = _mm256_set1_epi32(0xFF00);
    const __m256i b0 = _mm256_srli_epi32(_mm256_and_si256(p[0], mask), 8);
    const __m256i b1 = _mm256_and_si256(p[1], mask);
    const __m256i b2 = _mm256_slli_epi32(_mm256_and_si256(p[2], mask), 8);
    const __m256i b3 = _mm256_slli_epi32(_mm256_and_si256(p[3], mask), 16);
    return _mm256_or_si256(_mm256_or_si256(b0, b1), _mm256_or_si256(b2, b3));
}

// The 12 bytes of each row of four output pixels, as words.
KEL_TARGET inline void SumFour(const HorizontalBand& band, std::size_t x, __m256i* pWords) {
    __m256i sums[12];  // in registers
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
KEL_TARGET inline void TurnOut(__m256i* pWords, unsigned char* const* ppOut, std::size_t nOffset) {
    for (unsigned int k = 0; k < 3; ++k) {
        TransposeWords(pWords + 4 * k);
        for (unsigned int i = 0; i < 4; ++i) {
            const std::size_t nAt = nOffset + 16 * k;
            Store16(ppOut[i] + nAt, _mm256_castsi256_si128(pWords[4 * k + i]));
            Store16(ppOut[4 + i] + nAt, _mm256_extracti128_si256(pWords[4 * k + i], 1));
        }
    }
}

KEL_TARGET void ScaleBand(const HorizontalBand& band) {
    TurnIn(band);
    for (std::size_t x = 0; x < band.nOutWidth; x += 16) {
        __m256i words[12];
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

void ScaleBand_Avx2(const HorizontalBand& band) {
    ScaleBand(band);
}

}  // namespace kel

#endif  // __x86_64__
