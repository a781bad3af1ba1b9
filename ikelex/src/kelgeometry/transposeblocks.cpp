// The portable 16 x 16 blocks. Rows of small vectors are interleaved until they are columns.
#include <cstring>

#include "kelcpu/shuffle.h"
#include "transpose.h"

namespace kel {

namespace {

using Bytes16 = unsigned char __attribute__((vector_size(16)));
using Words8 = std::uint16_t __attribute__((vector_size(16)));
using Words4 = std::uint32_t __attribute__((vector_size(16)));

// The lower and the upper halves of two vectors, interleaved.
Bytes16 Low(Bytes16 a, Bytes16 b) {
    return KEL_SHUFFLE(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
Bytes16 High(Bytes16 a, Bytes16 b) {
    return KEL_SHUFFLE(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}
Words8 Low(Words8 a, Words8 b) {
    return KEL_SHUFFLE(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
}
Words8 High(Words8 a, Words8 b) {
    return KEL_SHUFFLE(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}
Words4 Low(Words4 a, Words4 b) {
    return KEL_SHUFFLE(a, b, 0, 4, 1, 5);
}
Words4 High(Words4 a, Words4 b) {
    return KEL_SHUFFLE(a, b, 2, 6, 3, 7);
}

// A square as wide as one vector. Each step interleaves row i with row i + half, for all i. After
// log2 of the width steps rows are columns.
template <typename Vector>
void TransposeSquare(const unsigned char* pSrc, std::int64_t nSrcStride, unsigned char* pDst,
                     std::int64_t nDstStride) {
    constexpr int kLanes = sizeof(Vector) / sizeof(Vector{}[0]);
    Vector rows[kLanes];
    for (int i = 0; i < kLanes; ++i) {
        std::memcpy(&rows[i], pSrc + i * nSrcStride, sizeof(Vector));
    }
    for (int nStep = 1; nStep < kLanes; nStep *= 2) {
        Vector next[kLanes];
        for (int i = 0; i < kLanes / 2; ++i) {
            next[2 * i] = Low(rows[i], rows[i + kLanes / 2]);
            next[2 * i + 1] = High(rows[i], rows[i + kLanes / 2]);
        }
        for (int i = 0; i < kLanes; ++i) {
            rows[i] = next[i];
        }
    }
    for (int i = 0; i < kLanes; ++i) {
        std::memcpy(pDst + i * nDstStride, &rows[i], sizeof(Vector));
    }
}

// Along the rows first, so that each of their cache lines is fetched once.
template <typename Vector>
void TransposeSquares(const Transposition& work) {
    constexpr int kLanes = sizeof(Vector) / sizeof(Vector{}[0]);
    constexpr int kBytes = sizeof(Vector{}[0]);
    for (int nY = 0; nY < work.nHeight; nY += kLanes) {
        for (int nX = 0; nX < work.nWidth; nX += kLanes) {
            TransposeSquare<Vector>(work.pSrc + nY * work.nSrcStride + nX * kBytes, work.nSrcStride,
                                    work.pDst + nX * work.nDstStride + nY * kBytes,
                                    work.nDstStride);
        }
    }
}

// Moves a column of 16 pixels of 3 bytes. All but the last are moved as kMove (3 or 4) bytes. The
// next pixel of the destination row overwrites the fourth.
template <int kMove>
void MoveTriples(const unsigned char* pFrom, std::int64_t nStride, unsigned char* pTo) {
    for (int i = 0; i < 15; ++i) {
        std::memcpy(pTo, pFrom, kMove);
        pFrom += nStride;
        pTo += 3;
    }
    std::memcpy(pTo, pFrom, 3);
}

}  // namespace

void portable::TransposeBlocks1(const Transposition& work) {
    TransposeSquares<Bytes16>(work);
}

void portable::TransposeBlocks2(const Transposition& work) {
    TransposeSquares<Words8>(work);
}

// 16 rows at a time. The last column of the last row has no fourth byte.
void portable::TransposeBlocks3(const Transposition& work) {
    for (int nY = 0; nY < work.nHeight; nY += 16) {
        const unsigned char* pFrom = work.pSrc + nY * work.nSrcStride;
        unsigned char* pTo = work.pDst + nY * 3;
        for (int nX = 1; nX < work.nWidth; ++nX) {
            MoveTriples<4>(pFrom, work.nSrcStride, pTo);
            pFrom += 3;
            pTo += work.nDstStride;
        }
        MoveTriples<3>(pFrom, work.nSrcStride, pTo);
    }
}

void portable::TransposeBlocks4(const Transposition& work) {
    TransposeSquares<Words4>(work);
}

const TransposeFunctions kTransposePortable = {
    {portable::TransposeBlocks1, portable::TransposeBlocks2, portable::TransposeBlocks3,
     portable::TransposeBlocks4}};

}  // namespace kel
