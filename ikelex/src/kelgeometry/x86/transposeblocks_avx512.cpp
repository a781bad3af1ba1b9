// Blocks of 3-byte pixels with AVX-512. Pixels become 32-bit words. 16 rows of 16 words are
// interleaved in growing parts until they are columns. Pixels are only moved, so the result is
// exact.
#if defined(__x86_64__)

#include "kelcpu/x86.h"
#include "kelgeometry/transpose.h"

namespace kel {

namespace {

// Rows to columns, by 2 x 2 squares of words, then of pairs, quarters and halves.
KEL_AVX512 KEL_INLINE void TransposeWords(__m512i* pRows) {
    __m512i pairs[16];
    for (int i = 0; i < 16; i += 2) {
        pairs[i] = _mm512_unpacklo_epi32(pRows[i], pRows[i + 1]);
        pairs[i + 1] = _mm512_unpackhi_epi32(pRows[i], pRows[i + 1]);
    }
    // quads[4g + k]: in each quarter q, column 4q + k of rows 4g ... 4g + 3.
    __m512i quads[16];
    for (int i = 0; i < 16; i += 4) {
        quads[i] = _mm512_unpacklo_epi64(pairs[i], pairs[i + 2]);
        quads[i + 1] = _mm512_unpackhi_epi64(pairs[i], pairs[i + 2]);
        quads[i + 2] = _mm512_unpacklo_epi64(pairs[i + 1], pairs[i + 3]);
        quads[i + 3] = _mm512_unpackhi_epi64(pairs[i + 1], pairs[i + 3]);
    }
    for (int k = 0; k < 4; ++k) {
        const __m512i low02 = _mm512_shuffle_i32x4(quads[k], quads[k + 4], 0x88);
        const __m512i low13 = _mm512_shuffle_i32x4(quads[k], quads[k + 4], 0xDD);
        const __m512i high02 = _mm512_shuffle_i32x4(quads[k + 8], quads[k + 12], 0x88);
        const __m512i high13 = _mm512_shuffle_i32x4(quads[k + 8], quads[k + 12], 0xDD);
        pRows[k] = _mm512_shuffle_i32x4(low02, high02, 0x88);
        pRows[k + 4] = _mm512_shuffle_i32x4(low13, high13, 0x88);
        pRows[k + 8] = _mm512_shuffle_i32x4(low02, high02, 0xDD);
        pRows[k + 12] = _mm512_shuffle_i32x4(low13, high13, 0xDD);
    }
}

KEL_AVX512 void TransposeBlocks3(const Transposition& work) {
    alignas(64) static constexpr unsigned char kUnpack[64] = {
        0,  1,  2,  2,  3,  4,  5,  5,  6,  7,  8,  8,  9,  10, 11, 11, 12, 13, 14, 14, 15, 16,
        17, 17, 18, 19, 20, 20, 21, 22, 23, 23, 24, 25, 26, 26, 27, 28, 29, 29, 30, 31, 32, 32,
        33, 34, 35, 35, 36, 37, 38, 38, 39, 40, 41, 41, 42, 43, 44, 44, 45, 46, 47, 47};
    alignas(64) static constexpr unsigned char kPack[64] = {
        0,  1,  2,  4,  5,  6,  8,  9,  10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28,
        29, 30, 32, 33, 34, 36, 37, 38, 40, 41, 42, 44, 45, 46, 48, 49, 50, 52, 53, 54, 56, 57,
        58, 60, 61, 62, 0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0};
    const __m512i unpack = _mm512_load_si512(kUnpack);
    const __m512i pack = _mm512_load_si512(kPack);
    const __mmask64 bytes = (__mmask64{1} << 48) - 1;
    // Along the rows first, so that each of their cache lines is fetched once.
    for (int nY = 0; nY < work.nHeight; nY += 16) {
        for (int nX = 0; nX < work.nWidth; nX += 16) {
            const unsigned char* const pFrom = work.pSrc + nY * work.nSrcStride + nX * 3;
            unsigned char* const pTo = work.pDst + nX * work.nDstStride + nY * 3;
            __m512i rows[16];
            for (int i = 0; i < 16; ++i) {
                rows[i] = _mm512_permutexvar_epi8(
                    unpack, _mm512_maskz_loadu_epi8(bytes, pFrom + i * work.nSrcStride));
            }
            TransposeWords(rows);
            for (int i = 0; i < 16; ++i) {
                _mm512_mask_storeu_epi8(pTo + i * work.nDstStride, bytes,
                                        _mm512_permutexvar_epi8(pack, rows[i]));
            }
        }
    }
}

}  // namespace

const TransposeFunctions kTransposeAvx512 = {{TransposeBlocks1Avx2, portable::TransposeBlocks2,
                                              TransposeBlocks3, portable::TransposeBlocks4}};

}  // namespace kel

#endif  // __x86_64__
