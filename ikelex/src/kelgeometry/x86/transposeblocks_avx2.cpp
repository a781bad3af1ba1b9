// Blocks of 1-byte and 3-byte pixels with AVX2. Pixels are only moved, so the result is exact.
//
// For bytes, each half of a vector takes 16 pixels of a row of its own. The rows are interleaved,
// in both halves at the same time, until they are columns. Triples become 32-bit words, of which 8
// rows of 8 are interleaved.
#if defined(__x86_64__)

#include "kelcpu/x86.h"
#include "kelgeometry/transpose.h"

namespace kel {

namespace {

// Rows to columns, by 2 x 2 squares of words, then of pairs, then of halves.
KEL_AVX2 KEL_INLINE void TransposeWords(__m256i* pRows) {
    __m256i pairs[8];
    for (int i = 0; i < 8; i += 2) {
        pairs[i] = _mm256_unpacklo_epi32(pRows[i], pRows[i + 1]);
        pairs[i + 1] = _mm256_unpackhi_epi32(pRows[i], pRows[i + 1]);
    }
    // quads[4g + k]: in each half h, column 4h + k of rows 4g ... 4g + 3.
    __m256i quads[8];
    for (int i = 0; i < 8; i += 4) {
        quads[i] = _mm256_unpacklo_epi64(pairs[i], pairs[i + 2]);
        quads[i + 1] = _mm256_unpackhi_epi64(pairs[i], pairs[i + 2]);
        quads[i + 2] = _mm256_unpacklo_epi64(pairs[i + 1], pairs[i + 3]);
        quads[i + 3] = _mm256_unpackhi_epi64(pairs[i + 1], pairs[i + 3]);
    }
    for (int k = 0; k < 4; ++k) {
        pRows[k] = _mm256_permute2x128_si256(quads[k], quads[k + 4], 0x20);
        pRows[k + 4] = _mm256_permute2x128_si256(quads[k], quads[k + 4], 0x31);
    }
}

// 8 pixels as words, from their first 16 bytes and their last 16, which are 24 in all.
KEL_AVX2 KEL_INLINE __m256i LoadPixels(const unsigned char* p) {
    return _mm256_shuffle_epi8(
        LoadHalves(p, p + 8),
        _mm256_setr_epi8(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11, 4, 5, 6, 6, 7, 8, 9, 9,
                         10, 11, 12, 12, 13, 14, 15, 15));
}

// Stores the low three bytes of 8 words, first 8 of these 24 bytes, then the last 16.
KEL_AVX2 KEL_INLINE void StorePixels(unsigned char* p, __m256i words) {
    // Each half is packed to 12 bytes, the lower half into its bytes 4 to 15.
    const __m256i packed = _mm256_shuffle_epi8(
        words, _mm256_setr_epi8(-1, -1, -1, -1, 0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 1, 2, 4,
                                5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    const __m128i low = _mm256_castsi256_si128(packed);
    const __m128i high = _mm256_extracti128_si256(packed, 1);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), _mm_srli_si128(low, 4));
    Store128(p + 8, _mm_alignr_epi8(high, low, 12));
}

// 16 columns of 32 rows. Interleaving row i with row i + 8, for all i, four times, transposes each
// half.
KEL_AVX2 KEL_INLINE void TransposeBytes(const unsigned char* pSrc, std::int64_t nSrcStride,
                                        unsigned char* pDst, std::int64_t nDstStride) {
    __m256i rows[16];
    for (int i = 0; i < 16; ++i) {
        rows[i] = LoadHalves(pSrc + i * nSrcStride, pSrc + (16 + i) * nSrcStride);
    }
    for (int nStep = 0; nStep < 4; ++nStep) {
        __m256i next[16];
        for (int i = 0; i < 8; ++i) {
            next[2 * i] = _mm256_unpacklo_epi8(rows[i], rows[i + 8]);
            next[2 * i + 1] = _mm256_unpackhi_epi8(rows[i], rows[i + 8]);
        }
        for (int i = 0; i < 16; ++i) {
            rows[i] = next[i];
        }
    }
    for (int i = 0; i < 16; ++i) {
        Store256(pDst + i * nDstStride, rows[i]);
    }
}

}  // namespace

KEL_AVX2 void TransposeBlocks1Avx2(const Transposition& work) {
    const int nDouble = work.nHeight / 32 * 32;
    for (int nX = 0; nX < work.nWidth; nX += 16) {
        for (int nY = 0; nY < nDouble; nY += 32) {
            TransposeBytes(work.pSrc + nY * work.nSrcStride + nX, work.nSrcStride,
                           work.pDst + nX * work.nDstStride + nY, work.nDstStride);
        }
    }
    Transposition rest = work;
    rest.pSrc += nDouble * work.nSrcStride;
    rest.pDst += nDouble;
    rest.nHeight -= nDouble;
    portable::TransposeBlocks1(rest);
}

namespace {

KEL_AVX2 void TransposeBlocks3(const Transposition& work) {
    for (int nY = 0; nY < work.nHeight; nY += 8) {
        for (int nX = 0; nX < work.nWidth; nX += 8) {
            const unsigned char* const pFrom = work.pSrc + nY * work.nSrcStride + nX * 3;
            unsigned char* const pTo = work.pDst + nX * work.nDstStride + nY * 3;
            __m256i rows[8];
            for (int i = 0; i < 8; ++i) {
                rows[i] = LoadPixels(pFrom + i * work.nSrcStride);
            }
            TransposeWords(rows);
            for (int i = 0; i < 8; ++i) {
                StorePixels(pTo + i * work.nDstStride, rows[i]);
            }
        }
    }
}

}  // namespace

const TransposeFunctions kTransposeAvx2 = {{TransposeBlocks1Avx2, portable::TransposeBlocks2,
                                            TransposeBlocks3, portable::TransposeBlocks4}};

}  // namespace kel

#endif  // __x86_64__
