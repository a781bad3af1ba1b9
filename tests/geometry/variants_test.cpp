// Every variant of the zoom and of the transposition against the plain loops, byte for byte.
#include <gtest/gtest.h>

#include "kelimage/transpose.h"
#include "kelimage/zoomblend.h"
#include "support/refgeometry.h"

namespace {

using support::Bytes;
using support::RandomRows;
using support::Rows;

// Sizes around blocks and tiles, odd alignments, guard bytes.
TEST(GeometryVariants, TranspositionsEqualThePlainLoop) {
    const int sizes[][2] = {{16, 16}, {17, 16},   {18, 33},  {80, 15},  {81, 47},   {64, 70},
                            {65, 70}, {145, 300}, {30, 530}, {66, 257}, {70, 1100}, {1300, 1101}};
    for (int nLevel = 0; nLevel <= static_cast<int>(kel::BestCpuLevel()); ++nLevel) {
        for (int nBytes = 1; nBytes <= 5; ++nBytes) {
            for (const auto& s : sizes) {
                const std::int64_t nFrom = s[0] * nBytes + nLevel;  // rows at every alignment
                const std::int64_t nTo = s[1] * nBytes + 3;
                // Exactly the bytes the rows need, so that a sanitizer sees any other.
                Bytes exact = RandomRows(8, static_cast<int>(nFrom), s[1], 6).bytes;
                exact.resize(static_cast<std::size_t>((s[1] - 1) * nFrom + s[0] * nBytes));
                exact.shrink_to_fit();
                Bytes want(static_cast<std::size_t>(nTo * s[0]), 0xA5);
                Bytes have = want;
                kel::TransposePixelsPlain(nBytes,
                                          {exact.data(), nFrom, s[0], s[1], want.data(), nTo});
                kel::TransposePixels(static_cast<kel::CpuLevel>(nLevel), nBytes,
                                     {exact.data(), nFrom, s[0], s[1], have.data(), nTo});
                ASSERT_TRUE(want == have)
                    << "level " << nLevel << ", " << nBytes << " bytes, " << s[0] << "x" << s[1];
            }
        }
    }
}

// One source row and two; guard bytes behind each result.
void CheckZoom(int nLevel, int nBytes, int nSrcWidth, int nWidth) {
    const Rows src = RandomRows(8 * nBytes, nSrcWidth, 3, 5);
    std::vector<int> first, second;
    std::vector<float> fractions;
    for (int i = 0; i < nWidth; ++i) {
        const auto s = kel::ZoomSampleAt(i, kel::ZoomStep(nSrcWidth, nWidth), nSrcWidth);
        first.push_back(s.nFirst);
        second.push_back(s.nSecond);
        fractions.push_back(s.fFraction);
    }
    const kel::ZoomColumns columns = {first.data(), second.data(), fractions.data(), nWidth};
    for (const kel::ZoomSample& rows :
         {kel::ZoomSample{0, 0, 0.25f}, {0, 1, 0.7f}, {1, 2, 0.51f}, {0, 1, 0.5f}, {2, 2, 0.0f}}) {
        Bytes want(static_cast<std::size_t>(nWidth * nBytes) + 64, 0xA5);
        Bytes have = want;
        kel::ZoomRow row = {src.Row(rows.nFirst), src.Row(rows.nSecond), rows.fFraction,
                            want.data()};
        kel::ZoomRowPlain(nBytes, columns, row, 0);
        row.pOut = have.data();
        kel::ZoomRowBlend(static_cast<kel::CpuLevel>(nLevel), nBytes, columns, row,
                          static_cast<std::int64_t>(src.Stride()));
        ASSERT_EQ(want, have) << "level " << nLevel << ", " << nBytes << " bytes, " << nSrcWidth
                              << " to " << nWidth;
    }
}

TEST(GeometryVariants, ZoomsEqualThePlainRowsAtEveryWidth) {
    for (int nLevel = 0; nLevel <= static_cast<int>(kel::BestCpuLevel()); ++nLevel) {
        for (int nBytes = 2; nBytes <= 4; ++nBytes) {
            for (int nWidth = 1; nWidth < 70; ++nWidth) {
                for (const int nSrcWidth : {1, 2, 3, 31, 150, 400}) {
                    ASSERT_NO_FATAL_FAILURE(CheckZoom(nLevel, nBytes, nSrcWidth, nWidth));
                }
            }
        }
    }
}

}  // namespace
