// The whole scaler against the slow reference, and what it does when it is stopped or fails.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kelscale/kelscale.h"
#include "rowpicture.h"
#include "support/allocfaults.h"
#include "support/refscale.h"

namespace {

using Scaler = C2PassScale<CDataRGB_UBYTE>;

struct Size {
    unsigned int nWidth, nHeight;
};

constexpr KelScaleType kTypes[] = {KEL_SCALE_BILINEAR, KEL_SCALE_BOX, KEL_SCALE_GAUSSIAN,
                                   KEL_SCALE_HAMMING};

PLContribDef* FindKernel(KelScaleType eType) {
    static PLBilinearContribDef bilinear(0.64);
    static PLBoxContribDef box(0.5);
    static PLGaussianContribDef gaussian(3.0);
    static PLHammingContribDef hamming(3.0);
    PLContribDef* kernels[] = {&bilinear, &box, &gaussian, &hamming};
    return kernels[eType - 1];
}

std::vector<unsigned char> g_Percents;
std::size_t g_nStopAt = 0;
bool Progress(unsigned char byPercent) {
    g_Percents.push_back(byPercent);
    return g_Percents.size() != g_nStopAt;
}

// The scaler against the reference, guard bytes included; with and without a callback.
void ExpectExact(KelScaleType eType, Size in, Size out) {
    RowPicture source(in.nWidth, in.nHeight);
    source.Fill(in.nWidth * 31 + in.nHeight);
    RowPicture expected(out.nWidth, out.nHeight);
    support::RefScale(eType, source.Rows(), in.nWidth, in.nHeight, expected.Rows(), out.nWidth,
                      out.nHeight);
    g_nStopAt = 0;
    for (const ScaleProgressFunc pfnProgress : {ScaleProgressFunc{nullptr}, Progress}) {
        RowPicture result(out.nWidth, out.nHeight);
        Scaler scaler(FindKernel(eType), pfnProgress);
        ASSERT_EQ(result.Pixels(), scaler.Scale(source.Pixels(), in.nWidth, in.nHeight,
                                                result.Pixels(), out.nWidth, out.nHeight));
        ASSERT_TRUE(expected.Bytes() == result.Bytes())
            << "kernel " << eType << ", " << in.nWidth << "x" << in.nHeight << " to " << out.nWidth
            << "x" << out.nHeight << (pfnProgress == nullptr ? "" : " with a callback");
    }
}

TEST(Scaler, EqualsTheReference) {
    const Size cases[][2] = {
        {{1, 1}, {1, 1}},       {{1, 1}, {7, 5}},         {{7, 5}, {1, 1}},
        {{10, 10}, {5, 5}},     {{33, 70}, {33, 70}},     {{33, 70}, {33, 20}},
        {{33, 70}, {90, 70}},   {{101, 37}, {50, 80}},    {{64, 64}, {63, 65}},
        {{2, 300}, {200, 3}},   {{1000, 2}, {3, 100}},    {{130, 200}, {97, 31}},
        {{40, 40}, {400, 400}}, {{4000, 3}, {1, 1}},      {{3, 2500}, {5, 2}},
        {{400, 300}, {32, 24}}, {{192, 108}, {384, 216}}, {{5, 1}, {4, 90}}};
    for (const KelScaleType eType : kTypes) {
        for (const auto& sizes : cases) {
            ASSERT_NO_FATAL_FAILURE(ExpectExact(eType, sizes[0], sizes[1]));
        }
        for (unsigned int nIn = 1; nIn <= 40; ++nIn) {
            ASSERT_NO_FATAL_FAILURE(ExpectExact(eType, {nIn, 41 - nIn}, {17, nIn}));
        }
    }
}

TEST(Scaler, WeightsAreTheKnownOnes) {
    Scaler scaler(FindKernel(KEL_SCALE_GAUSSIAN));
    LineContribType* pTable = scaler.CalcContributions(20, 20, 1.0);
    ASSERT_NE(nullptr, pTable);
    EXPECT_EQ(7, pTable->nWindowSize);
    EXPECT_EQ(7, pTable->pPixels[10].nLeft);
    EXPECT_EQ((std::vector<int>{2, 21, 61, 86, 61, 21, 4}),
              std::vector<int>(pTable->pPixels[10].pWeights, pTable->pPixels[10].pWeights + 7));
    scaler.FreeContributions(pTable);

    scaler.FreeContributions(nullptr);
}

// Sizes, ratios and kernels that no conversion to int could survive unguarded.
TEST(Scaler, RefusesTablesItCannotHold) {
    const double dHuge = 1e300;
    const double dNone = std::numeric_limits<double>::quiet_NaN();
    for (const double dWidth : {dHuge, -dHuge, dNone, 2e9}) {
        PLBoxContribDef kernel(dWidth);
        Scaler scaler(&kernel);
        EXPECT_EQ(nullptr, scaler.CalcContributions(3, 3, 1.0)) << dWidth;
        RowPicture in(3, 3), out(3, 3), untouched(3, 3);
        EXPECT_EQ(nullptr, scaler.Scale(in.Pixels(), 3, 3, out.Pixels(), 3, 3));
        EXPECT_TRUE(untouched.Bytes() == out.Bytes());
    }
    Scaler scaler(FindKernel(KEL_SCALE_HAMMING));
    EXPECT_EQ(nullptr, scaler.CalcContributions(1, 4000000000u, 1.0));
    EXPECT_EQ(nullptr, scaler.AllocContributions(4000000000u, 1));
    for (const double dRatio : {dNone, 0.0, -1.0, 1e-300, dHuge}) {
        scaler.FreeContributions(scaler.CalcContributions(4, 4, dRatio));
    }
}

// A host's kernel that throws takes nothing with it.
TEST(Scaler, ReleasesItsTablesWhenAKernelThrows) {
    struct : PLBoxContribDef {
        using PLBoxContribDef::PLBoxContribDef;
        double Filter(double x) const override { return nCalls-- == 0 ? throw x : 1.0; }
        mutable int nCalls = 0;
    } kernel{0.5};
    RowPicture in(5, 5), out(5, 5);
    const support::LiveBlocks before = support::CountLiveBlocks();
    for (const int nCalls : {0, 4}) {  // in the first table, in the second
        kernel.nCalls = nCalls;
        EXPECT_THROW(Scaler(&kernel).Scale(in.Pixels(), 5, 5, out.Pixels(), 5, 5), double);
        EXPECT_TRUE(before == support::CountLiveBlocks());
    }
}

TEST(Scaler, EmptySourcesGiveBlackAndEmptyTargetsNothing) {
    const Size sizes[][2] = {{{0, 5}, {4, 3}}, {{5, 0}, {4, 3}}, {{0, 0}, {4, 3}},
                             {{5, 5}, {0, 3}}, {{5, 5}, {4, 0}}, {{5, 5}, {0, 0}}};
    for (const KelScaleType eType : kTypes) {
        for (const auto& [in, out] : sizes) {
            RowPicture source(in.nWidth, in.nHeight), result(4, 3), expected(4, 3);
            for (std::size_t y = 0; y < 3 && in.nWidth * in.nHeight == 0; ++y) {
                std::fill_n(expected.Rows()[y], 12, static_cast<unsigned char>(0));
            }
            Scaler scaler(FindKernel(eType));
            EXPECT_EQ(result.Pixels(), scaler.Scale(source.Pixels(), in.nWidth, in.nHeight,
                                                    result.Pixels(), out.nWidth, out.nHeight));
            EXPECT_TRUE(expected.Bytes() == result.Bytes()) << in.nWidth << "x" << in.nHeight;
        }
    }
}

// The rows of one picture may be both source and target, in any order.
TEST(Scaler, ScalesOntoItsOwnSource) {
    for (const KelScaleType eType : kTypes) {
        RowPicture picture(50, 120), expected(50, 120);
        picture.Fill(7);
        support::RefScale(eType, picture.Rows(), 50, 120, expected.Rows(), 30, 110);
        Scaler scaler(FindKernel(eType));
        scaler.Scale(picture.Pixels(), 50, 120, picture.Pixels(), 30, 110);
        for (int y = 0; y < 110; ++y) {
            ASSERT_TRUE(std::equal(expected.Rows()[y], expected.Rows()[y] + 90, picture.Rows()[y]))
                << "kernel " << eType << ", row " << y;
        }
    }
}

TEST(Scaler, ReportsEachRowAndStopsWhenTold) {
    RowPicture source(9, 8), whole(6, 4);
    source.Fill(1);
    Scaler scaler(FindKernel(KEL_SCALE_BILINEAR), Progress);
    g_Percents.clear();
    g_nStopAt = 0;
    EXPECT_NE(nullptr, scaler.Scale(source.Pixels(), 9, 8, whole.Pixels(), 6, 4));
    EXPECT_EQ((std::vector<unsigned char>{0, 6, 12, 18, 25, 31, 37, 43, 50, 62, 75, 87}),
              g_Percents);
    for (std::size_t nStopAt = 1; nStopAt <= 12; ++nStopAt) {
        g_Percents.clear();
        g_nStopAt = nStopAt;
        RowPicture result(6, 4), expected(6, 4);
        EXPECT_EQ(nullptr, scaler.Scale(source.Pixels(), 9, 8, result.Pixels(), 6, 4));
        EXPECT_TRUE(scaler.m_bCancelled);
        EXPECT_EQ(nStopAt, g_Percents.size());
        for (std::size_t y = 0; y + 9 < nStopAt; ++y) {
            std::copy_n(whole.Rows()[y], 18, expected.Rows()[y]);
        }
        EXPECT_TRUE(expected.Bytes() == result.Bytes()) << "stopped at " << nStopAt;
    }
}

// Without the memory for its fast form the scaler still makes the whole picture; else none of it.
TEST(Scaler, FailedAllocationsGiveTheWholePictureOrNothing) {
    RowPicture source(30, 200), expected(20, 90), untouched(20, 90);
    source.Fill(3);
    support::RefScale(KEL_SCALE_GAUSSIAN, source.Rows(), 30, 200, expected.Rows(), 20, 90);
    for (const bool bForEver : {false, true}) {
        bool bFired = true;
        for (long nFailing = 1; bFired; ++nFailing) {
            RowPicture result(20, 90);
            bool bDone = false;
            {
                support::AllocFaults faults(nFailing, bForEver);
                Scaler scaler(FindKernel(KEL_SCALE_GAUSSIAN));
                bDone = scaler.Scale(source.Pixels(), 30, 200, result.Pixels(), 20, 90) != nullptr;
                bFired = faults.Fired();
            }
            EXPECT_TRUE((bDone ? expected : untouched).Bytes() == result.Bytes()) << nFailing;
            EXPECT_TRUE(bDone || bFired);
        }
    }
}

}  // namespace
