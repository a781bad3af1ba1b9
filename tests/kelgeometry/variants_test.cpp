// Every variant of the zoom and of the transposition against the plain loops, byte for byte.
#include <gtest/gtest.h>

#include <algorithm>

#include "kelgeometry/transpose.h"
#include "kelgeometry/zoom.h"
#include "kelgeometry/zoomrows.h"
#include "support/guardedrows.h"
#include "support/reference/operations.h"

namespace {

using support::RandomRows;
using support::Rows;

// Transposes by every level, straight and past the caches.
void CheckTransposition(int nBytes, const kel::Transposition& work, const Rows& expected) {
    for (const kel::CpuLevel eLevel : kel::Levels()) {
        for (const bool bStream : {false, true}) {
            for (int x = 0; x < work.nWidth; ++x) {
                std::fill_n(work.pDst + x * work.nDstStride, work.nHeight * nBytes, 0xA5);
            }
            kel::TransposePixels(eLevel, nBytes, work, bStream);
            for (int x = 0; x < work.nWidth; ++x) {
                const unsigned char* const pRow = work.pDst + x * work.nDstStride;
                ASSERT_TRUE(std::equal(pRow, pRow + work.nHeight * nBytes, expected.Row(x)))
                    << "level " << static_cast<int>(eLevel) << ", " << expected << ", " << bStream;
            }
        }
    }
}

// Sizes around blocks and tiles. Every row of both pictures touches a protected page, or the rows
// of the destination lie at every place in their cache lines, with nothing between them.
TEST(GeometryVariants, TransposedPicturesEqualTheReference) {
    const int sizes[][2] = {{1, 3},   {16, 16}, {17, 16},   {15, 33},  {80, 15},  {81, 47},
                            {64, 70}, {65, 70}, {400, 300}, {30, 530}, {70, 1100}};
    for (const auto& s : sizes) {
        for (int nBytes = 1; nBytes <= 4; ++nBytes) {
            const auto nWidth = static_cast<std::size_t>(s[0]);
            const auto nHeight = static_cast<std::size_t>(s[1]);
            const std::size_t nFrom = nWidth * static_cast<std::size_t>(nBytes);
            const std::size_t nTo = nHeight * static_cast<std::size_t>(nBytes);
            const Rows src = RandomRows(8 * nBytes, s[0], s[1], 6);
            const Rows expected = reference::Transpose(src);
            const support::GuardedRows from(nHeight, nFrom), to(nWidth, nTo),
                dense(1, nWidth * nTo);
            for (const bool bAtEnd : {false, true}) {
                for (std::size_t y = 0; y < nHeight; ++y) {
                    std::copy_n(src.Row(static_cast<int>(y)), nFrom, from.Row(y, nFrom, bAtEnd));
                }
                kel::Transposition work = {from.Row(0, nFrom, bAtEnd),
                                           static_cast<std::int64_t>(from.Stride()),
                                           s[0],
                                           s[1],
                                           to.Row(0, nTo, bAtEnd),
                                           static_cast<std::int64_t>(to.Stride())};
                ASSERT_NO_FATAL_FAILURE(CheckTransposition(nBytes, work, expected));
                work.pDst = dense.Row(0, nWidth * nTo, bAtEnd);
                work.nDstStride = static_cast<std::int64_t>(nTo);
                ASSERT_NO_FATAL_FAILURE(CheckTransposition(nBytes, work, expected));
            }
        }
    }
}

// Sizes around blocks and strips of rows.
TEST(GeometryVariants, TransposedBitsEqualTheReference) {
    for (const int nBits : {1, 2, 4}) {
        for (const int nHeight : {7, 8, 127, 530}) {
            const Rows src = RandomRows(nBits, 21, nHeight, 3);
            const Rows expected = reference::Transpose(src);
            Rows actual = support::BlackRows(nBits, nHeight, 21);
            kel::TransposeBits(
                nBits, {src.bytes.data(), static_cast<std::int64_t>(src.Stride()), 21, nHeight,
                        actual.bytes.data(), static_cast<std::int64_t>(actual.Stride())});
            ASSERT_TRUE(actual == expected) << src;
        }
    }
}

// Rows of whole pixels that touch protected pages, blended by a level and by the portable form.
void CheckBlend(kel::CpuLevel eLevel, int nBytes, int nSrcWidth, int nWidth, bool bAtEnd) {
    const auto nIn = static_cast<std::size_t>(nBytes * nSrcWidth);
    const auto nOut = static_cast<std::size_t>(nBytes * nWidth);
    const support::GuardedRows in(2, nIn), expected(1, nOut), actual(1, nOut);
    support::Random(1).Fill(in.Row(0, nIn, bAtEnd), nIn);
    support::Random(2).Fill(in.Row(1, nIn, bAtEnd), nIn);
    const kel::ZoomTables tables(nSrcWidth, nWidth);
    const kel::ZoomColumns columns = tables.Columns();
    const kel::ZoomFunctions& functions = kel::ZoomFunctionsFor(eLevel);
    functions.pfnPrepare(nBytes, columns);
    for (const float fFraction : {0.0f, 0.25f, 0.51f}) {
        for (const std::size_t nSecond : {std::size_t{0}, std::size_t{1}}) {
            kel::ZoomRow row = {in.Row(0, nIn, bAtEnd), in.Row(nSecond, nIn, bAtEnd),
                                static_cast<std::int64_t>(nIn), fFraction,
                                expected.Row(0, nOut, bAtEnd)};
            kel::kZoomPortable.apfnBlend[nBytes - 2](columns, row);
            row.pOut = actual.Row(0, nOut, bAtEnd);
            functions.apfnBlend[nBytes - 2](columns, row);
            ASSERT_TRUE(expected == actual)
                << "level " << static_cast<int>(eLevel) << ", " << nBytes << " bytes, " << nSrcWidth
                << " to " << nWidth;
        }
    }
}

TEST(GeometryVariants, BlendedRowsEqualThePortableOnes) {
    for (const kel::CpuLevel eLevel : kel::Levels()) {
        const bool bPortable = eLevel == kel::CpuLevel::kPortable || eLevel == kel::CpuLevel::kNeon;
        ASSERT_EQ(bPortable, &kel::ZoomFunctionsFor(eLevel) == &kel::kZoomPortable);
        ASSERT_EQ(bPortable, &kel::TransposeFunctionsFor(eLevel) == &kel::kTransposePortable);
        for (int nBytes = 2; nBytes <= 4; ++nBytes) {
            for (int nWidth = 1; nWidth < 70; nWidth += nWidth < 36 ? 1 : 7) {
                for (const int nSrcWidth : {2, 3, 5, 31, 40, 150, 400}) {
                    for (const bool bAtEnd : {false, true}) {
                        ASSERT_NO_FATAL_FAILURE(
                            CheckBlend(eLevel, nBytes, nSrcWidth, nWidth, bAtEnd));
                    }
                }
            }
        }
    }
}

TEST(GeometryVariants, ZoomedPicturesEqualTheReference) {
    const int sizes[][4] = {{1, 1, 3, 3},    {1, 5, 40, 9},   {40, 30, 17, 70}, {100, 9, 33, 4},
                            {33, 7, 100, 9}, {700, 3, 16, 2}, {20, 12, 1, 1},   {130, 4, 130, 4}};
    for (const kel::CpuLevel eLevel : kel::Levels()) {
        for (const int nBits : support::kDepths) {
            for (const auto& s : sizes) {
                const Rows src = RandomRows(nBits, s[0], s[1], 5);
                const Rows expected = reference::Zoom(src, s[2], s[3]);
                Rows actual = support::BlackRows(nBits, s[2], s[3]);
                kel::ZoomPicture(eLevel, nBits,
                                 {src.bytes.data(), s[0], s[1], actual.bytes.data(), s[2], s[3]});
                ASSERT_TRUE(actual == expected)
                    << "level " << static_cast<int>(eLevel) << ", " << src << " to " << expected;
            }
        }
    }
}

}  // namespace
