// The whole scaler against the slow reference, and what it does when it is stopped or fails.
#include <gtest/gtest.h>
#include <ikelex/filters.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "kelscale/kelscale.h"
#include "kelscale/rowblock.h"
#include "rowpicture.h"
#include "support/allocfaults.h"
#include "support/reference/operations.h"

namespace {

using Scaler = C2PassScale<CDataRGB_UBYTE>;

struct Size {
    unsigned int nWidth, nHeight;
};

// The kernel of the scale filter with a number.
PLContribDef* FindKernel(int nType) {
    static const auto kernels = [] {
        int nCount = 0;
        const tagKelScaleKernel* pKernels = GetScaleKernels(&nCount);
        std::vector<std::unique_ptr<PLContribDef>> made;
        for (const auto* p = pKernels; p != pKernels + nCount; ++p) {
            made.emplace_back(p->pfnCreate(p->dWidth));
        }
        return made;
    }();
    return kernels.at(static_cast<std::size_t>(nType) - 1).get();
}

std::vector<unsigned char> g_Percents;
std::size_t g_nStopAt = 0;
Scaler* g_pForgetful = nullptr;  // forgets its callback at g_nStopAt instead of stopping
bool Progress(unsigned char byPercent) {
    g_Percents.push_back(byPercent);
    if (g_Percents.size() == g_nStopAt && g_pForgetful != nullptr) {
        g_pForgetful->m_pfnProgress = nullptr;
        return true;
    }
    return g_Percents.size() != g_nStopAt;
}

// The scaler against the reference, guard bytes included; with and without a callback.
void ExpectExact(int nType, Size in, Size out) {
    RowPicture source(in.nWidth, in.nHeight);
    source.Fill(in.nWidth * 31 + in.nHeight);
    RowPicture expected(out.nWidth, out.nHeight);
    reference::Scale(nType, source.Rows(), in.nWidth, in.nHeight, expected.Rows(), out.nWidth,
                     out.nHeight);
    g_nStopAt = 0;
    for (const ScaleProgressFunc pfnProgress : {ScaleProgressFunc{nullptr}, Progress}) {
        RowPicture result(out.nWidth, out.nHeight);
        Scaler scaler(FindKernel(nType), pfnProgress);
        ASSERT_EQ(result.Pixels(), scaler.Scale(source.Pixels(), in.nWidth, in.nHeight,
                                                result.Pixels(), out.nWidth, out.nHeight));
        ASSERT_TRUE(expected == result)
            << "kernel " << nType << ", " << in.nWidth << "x" << in.nHeight << " to " << out.nWidth
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
    for (int nType = 1; nType <= reference::kKernelCount; ++nType) {
        for (const auto& sizes : cases) {
            ASSERT_NO_FATAL_FAILURE(ExpectExact(nType, sizes[0], sizes[1]));
        }
        for (unsigned int nIn = 1; nIn <= 40; ++nIn) {
            for (unsigned int nOut = 1; nOut <= 40; ++nOut) {
                ASSERT_NO_FATAL_FAILURE(ExpectExact(nType, {nIn, 2}, {nOut, 1}));
            }
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

    // A host's kernel may have two different sides. Weights without a positive sum stay as they
    // are.
    struct : PLBoxContribDef {
        using PLBoxContribDef::PLBoxContribDef;
        double Filter(double x) const override { return -1 - x; }
    } negative{0.5};
    pTable = Scaler(&negative).CalcContributions(3, 3, 1.0);
    EXPECT_EQ((std::vector<int>{-512, -256, 0}),
              std::vector<int>(pTable->pPixels[1].pWeights, pTable->pPixels[1].pWeights + 3));
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
        EXPECT_TRUE(untouched == out);
    }
    Scaler scaler(FindKernel(KEL_SCALE_HAMMING));
    EXPECT_EQ(nullptr, scaler.CalcContributions(1, 4000000000u, 1.0));
    EXPECT_EQ(nullptr, scaler.AllocContributions(4000000000u, 1));
    EXPECT_EQ(nullptr, scaler.AllocContributions(0, 4000000000u));
    EXPECT_EQ(nullptr, scaler.AllocContributions(INT_MAX, INT_MAX));
    if (sizeof(void*) == 4) {
        EXPECT_EQ(nullptr, scaler.AllocContributions(65536, 65537));  // 2^32 + 65536 weights
    }
    EXPECT_FALSE(kel::RowBlock().Allocate(1, SIZE_MAX / 128 + 2, 128));  // 2^64 + 128 bytes
    EXPECT_EQ(sizeof(void*) == 8, kel::RowBlock().Allocate(2, 2, (std::size_t{1} << 30) + 1));
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
    RowPicture in(5, 5), out(5, 6);
    const support::LiveBlocks before = support::CountLiveBlocks();
    for (const int nCalls : {0, 4}) {  // in the first table, in the second
        kernel.nCalls = nCalls;
        EXPECT_THROW(Scaler(&kernel).Scale(in.Pixels(), 5, 5, out.Pixels(), 5, 6), double);
        EXPECT_TRUE(before == support::CountLiveBlocks());
    }
}

TEST(Scaler, EmptySourcesGiveBlackAndEmptyTargetsNothing) {
    const Size sizes[][2] = {{{0, 5}, {4, 3}}, {{5, 0}, {4, 3}}, {{0, 0}, {4, 3}},
                             {{5, 5}, {0, 3}}, {{5, 5}, {4, 0}}, {{5, 5}, {0, 0}}};
    for (int nType = 1; nType <= reference::kKernelCount; ++nType) {
        for (const auto& [in, out] : sizes) {
            RowPicture source(in.nWidth, in.nHeight), result(4, 3), expected(4, 3);
            for (std::size_t y = 0; y < 3 && in.nWidth * in.nHeight == 0; ++y) {
                std::fill_n(expected.Rows()[y], 12, static_cast<unsigned char>(0));
            }
            Scaler scaler(FindKernel(nType));
            EXPECT_EQ(result.Pixels(), scaler.Scale(source.Pixels(), in.nWidth, in.nHeight,
                                                    result.Pixels(), out.nWidth, out.nHeight));
            EXPECT_TRUE(expected == result) << in.nWidth << "x" << in.nHeight;
        }
    }
}

// The rows of one picture may be both source and target, in any order, and overlap in one row.
TEST(Scaler, ScalesOntoItsOwnSource) {
    for (int nType = 1; nType <= reference::kKernelCount; ++nType) {
        for (const bool bReversed : {false, true}) {
            RowPicture picture(50, 120), expected(50, 120);
            picture.Fill(7);
            reference::Scale(nType, picture.Rows(), 50, 120, expected.Rows(), 30, 110);
            std::vector<RowPicture::Pixel*> target(picture.Pixels(), picture.Pixels() + 110);
            if (bReversed) {
                std::reverse(target.begin(), target.end());
            }
            Scaler scaler(FindKernel(nType));
            scaler.Scale(picture.Pixels(), 50, 120, target.data(), 30, 110);
            for (std::size_t y = 0; y < 110; ++y) {
                ASSERT_TRUE(std::equal(expected.Rows()[y], expected.Rows()[y] + 90, *target[y]))
                    << "kernel " << nType << ", row " << y;
            }
        }
        RowPicture row(100, 1), expected(60, 1);
        row.Fill(5);
        reference::Scale(nType, row.Rows(), 50, 1, expected.Rows(), 60, 1);
        RowPicture::Pixel* pInside = row.Pixels()[0] + 40;  // within the last third
        Scaler(FindKernel(nType)).Scale(row.Pixels(), 50, 1, &pInside, 60, 1);
        EXPECT_TRUE(std::equal(expected.Rows()[0], expected.Rows()[0] + 180, *pInside)) << nType;
    }
}

// The callback is asked before each row of either pass. Where it stops, no later row is written.
TEST(Scaler, ReportsEachRowAndStopsWhenTold) {
    constexpr unsigned int kIn = 50, kOut = 33;  // several bands
    RowPicture source(9, kIn), whole(6, kOut);
    source.Fill(1);
    reference::Scale(KEL_SCALE_BILINEAR, source.Rows(), 9, kIn, whole.Rows(), 6, kOut);
    Scaler scaler(FindKernel(KEL_SCALE_BILINEAR));
    const auto scale = [&](RowPicture& to) {
        g_Percents.clear();
        return scaler.Scale(source.Pixels(), 9, kIn, to.Pixels(), 6, kOut);
    };
    std::vector<unsigned char> percents;
    for (unsigned int y = 0; y < kIn; ++y) {
        percents.push_back(static_cast<unsigned char>(y / double{kIn} * 50.0));
    }
    for (unsigned int y = 0; y < kOut; ++y) {
        percents.push_back(static_cast<unsigned char>(50 + int(y / double{kOut} * 50.0)));
    }
    for (g_nStopAt = kIn + kOut; g_nStopAt > 0; --g_nStopAt) {
        percents.resize(g_nStopAt);
        for (const bool bForget : {true, false}) {
            g_pForgetful = bForget ? &scaler : nullptr;
            scaler.m_pfnProgress = Progress;
            RowPicture result(6, kOut), expected(6, kOut);
            EXPECT_EQ(bForget ? result.Pixels() : nullptr, scale(result));
            EXPECT_EQ(!bForget, scaler.m_bCancelled);
            EXPECT_EQ(percents, g_Percents);
            for (std::size_t y = 0; y < kOut && (bForget || y + kIn + 1 < g_nStopAt); ++y) {
                std::copy_n(whole.Rows()[y], 18, expected.Rows()[y]);
            }
            EXPECT_TRUE(expected == result) << "stopped at " << g_nStopAt;
        }
    }
    // The cancel of an earlier run is not kept.
    scaler.m_pfnProgress = nullptr;
    EXPECT_TRUE(scaler.m_bCancelled);
    EXPECT_NE(nullptr, scale(whole));
    EXPECT_FALSE(scaler.m_bCancelled);
}

// Each pass by itself, and a row of the first one.
TEST(Scaler, PassesMakeTheWholeTogether) {
    RowPicture source(30, 20), temp(11, 20), row(11, 20), result(11, 33), expected(11, 33);
    source.Fill(2);
    reference::Scale(KEL_SCALE_HAMMING, source.Rows(), 30, 20, expected.Rows(), 11, 33);
    Scaler scaler(FindKernel(KEL_SCALE_HAMMING));
    scaler.HorizScale(source.Pixels(), 30, 20, temp.Pixels(), 11, 20);
    scaler.VertScale(temp.Pixels(), 11, 20, result.Pixels(), 11, 33);
    EXPECT_TRUE(expected == result);

    LineContribType* pTable = scaler.CalcContributions(11, 30, 11.0 / 30.0);
    for (unsigned int y = 0; y < 20; ++y) {
        scaler.ScaleRow(source.Pixels(), 30, row.Pixels(), 11, y, pTable);
    }
    scaler.ScaleRow(nullptr, 30, row.Pixels(), 11, 0, pTable);
    scaler.ScaleRow(source.Pixels(), 30, nullptr, 11, 0, pTable);
    scaler.ScaleRow(source.Pixels(), 30, row.Pixels(), 0, 0, pTable);
    scaler.HorizScale(nullptr, 30, 20, row.Pixels(), 11, 20);
    scaler.HorizScale(source.Pixels(), 30, 20, nullptr, 11, 20);
    scaler.VertScale(temp.Pixels(), 0, 20, nullptr, 0, 33);
    EXPECT_TRUE(temp == row);
    scaler.FreeContributions(pTable);

    // Stopped at their third row, the passes have written two.
    scaler.m_pfnProgress = Progress;
    for (const bool bVertical : {false, true}) {
        scaler.m_bCancelled = false;
        g_Percents.clear();
        g_nStopAt = 3;
        RowPicture stopped(11, 33), two(11, 33);
        bVertical ? scaler.VertScale(temp.Pixels(), 11, 20, stopped.Pixels(), 11, 33)
                  : scaler.HorizScale(source.Pixels(), 30, 20, stopped.Pixels(), 11, 20);
        EXPECT_TRUE(scaler.m_bCancelled);
        using Percents = std::vector<unsigned char>;
        EXPECT_EQ((bVertical ? Percents{50, 51, 53} : Percents{0, 2, 5}), g_Percents);
        for (std::size_t y = 0; y < 2; ++y) {
            std::copy_n((bVertical ? expected : temp).Rows()[y], 33, two.Rows()[y]);
        }
        EXPECT_TRUE(two == stopped) << bVertical;
    }
}

// Without the memory for its fast form the scaler still makes the whole picture; else none of it.
TEST(Scaler, FailedAllocationsGiveTheWholePictureOrNothing) {
    RowPicture source(30, 200), expected(20, 90), untouched(20, 90);
    source.Fill(3);
    reference::Scale(KEL_SCALE_GAUSSIAN, source.Rows(), 30, 200, expected.Rows(), 20, 90);
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
            EXPECT_TRUE((bDone ? expected : untouched) == result) << nFailing;
            EXPECT_TRUE(bDone || bFired);
        }
    }
}

}  // namespace
