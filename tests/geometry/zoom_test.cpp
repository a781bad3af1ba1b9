#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "kelbitmap/strides.h"
#include "kelcpu/kelcpu.h"
#include "kelimage/zoomblend.h"
#include "support/allocfaults.h"
#include "support/recordingtrace.h"
#include "support/refgeometry.h"

namespace {

using support::Bytes;

Bytes ZoomRaw(int nBits, Bytes src, int nSrcWidth, int nSrcHeight, int nWidth, int nHeight) {
    // A heap block of the exact size, so that a sanitizer sees every byte read behind it.
    Bytes out(static_cast<std::size_t>(kel::PictureSize(nBits, nWidth, nHeight)));
    CKelImage().ZoomBytes(nBits, src.data(), nSrcWidth, nSrcHeight, out.data(), nWidth, nHeight);
    return out;
}

TEST(Zoom, EveryDepthAndManySizesAgreeWithTheFormula) {
    const int sizes[][4] = {{1, 1, 5, 4},    {1, 7, 3, 3},   {2, 2, 3, 3},   {3, 5, 1, 1},
                            {9, 4, 1, 9},    {40, 3, 13, 1}, {33, 9, 33, 9}, {17, 11, 80, 31},
                            {90, 31, 21, 8}, {200, 3, 9, 4}, {64, 5, 49, 7}, {5, 3, 200, 2}};
    for (const int nBits : support::kDepths) {
        for (const auto& s : sizes) {
            const Bytes src = support::RandomRows(nBits, s[0], s[1], static_cast<unsigned>(s[2]));
            EXPECT_EQ(ZoomRaw(nBits, src, s[0], s[1], s[2], s[3]),
                      support::RefZoom(nBits, src, s[0], s[1], s[2], s[3]))
                << nBits << " bits, " << s[0] << "x" << s[1] << " to " << s[2] << "x" << s[3];
        }
    }
}

TEST(Zoom, EveryVariantEqualsThePlainRowsAtEveryWidth) {
    for (int nLevel = 0; nLevel <= static_cast<int>(kel::BestCpuLevel()); ++nLevel) {
        for (int nBytes = 2; nBytes <= 4; ++nBytes) {
            for (int nWidth = 1; nWidth < 70; ++nWidth) {
                for (const int nSrcWidth : {1, 2, 3, 31, 150, 400}) {
                    const int nBits = 8 * nBytes;
                    const Bytes src = support::RandomRows(nBits, nSrcWidth, 3, 5);
                    std::vector<int> first, second;
                    std::vector<float> fractions;
                    const float fStep = kel::ZoomStep(nSrcWidth, nWidth);
                    for (int i = 0; i < nWidth; ++i) {
                        const kel::ZoomSample s = kel::ZoomSampleAt(i, fStep, nSrcWidth);
                        first.push_back(s.nFirst);
                        second.push_back(s.nSecond);
                        fractions.push_back(s.fFraction);
                    }
                    const kel::ZoomColumns columns = {first.data(), second.data(), fractions.data(),
                                                      nWidth};
                    const std::int64_t nStride = kel::RowStride(nBits, nSrcWidth);
                    kel::ZoomSampler sampler(static_cast<kel::CpuLevel>(nLevel), nBytes, columns,
                                             src.data(), nStride);
                    // Rows that repeat, follow, return and skip; guard bytes behind each.
                    for (const auto& rows : {kel::ZoomSample{0, 0, 0.25f},
                                             {0, 1, 0.7f},
                                             {1, 2, 0.51f},
                                             {0, 1, 0.5f},
                                             {2, 2, 0.0f}}) {
                        const auto nUsed = static_cast<std::size_t>(nWidth * nBytes);
                        Bytes want(nUsed + 64, 0xA5);
                        Bytes have = want;
                        kel::ZoomRowPlain(
                            nBytes, columns,
                            {src.data() + rows.nFirst * nStride,
                             src.data() + rows.nSecond * nStride, rows.fFraction, want.data()},
                            0);
                        sampler.SampleRow(rows, have.data());
                        ASSERT_EQ(want, have) << "level " << nLevel << ", " << nBytes << " bytes, "
                                              << nSrcWidth << " to " << nWidth;
                    }
                }
            }
        }
    }
}

// Channel values of 2 x 2 pixels, the size they are zoomed to, and a pixel of the result whose byte
// becomes another one when products and sums are fused.
TEST(Zoom, ResultsAreThoseOfSeparateProductsAndSums) {
    const struct {
        unsigned char by[4];
        int nWidth, nHeight, nX, nY;
        int nWant;
    } cases[] = {{{27, 51, 51, 0}, 3, 4, 1, 2, 29}, {{1, 204, 0, 0}, 3, 6, 1, 3, 41},
                 {{6, 204, 0, 0}, 3, 6, 1, 4, 21},  {{3, 255, 51, 51}, 3, 7, 1, 5, 64},
                 {{1, 153, 0, 0}, 3, 8, 1, 4, 33},  {{11, 255, 0, 0}, 3, 8, 1, 5, 38}};
    for (const auto& c : cases) {
        const float fX = static_cast<float>(c.nX) / static_cast<float>(c.nWidth - 1);
        const float fY = static_cast<float>(c.nY) * (1.0f / static_cast<float>(c.nHeight - 1));
        const float fFused =
            std::fma(static_cast<float>(c.by[3]), fY * fX,
                     std::fma(static_cast<float>(c.by[2]), fY * (1 - fX),
                              std::fma(static_cast<float>(c.by[1]), (1 - fY) * fX,
                                       static_cast<float>(c.by[0]) * ((1 - fY) * (1 - fX)))));
        ASSERT_NE(static_cast<int>(fFused), c.nWant);  // the input tells the two apart
        for (const int nBits : {16, 24, 32}) {
            const int nBytes = nBits / 8;
            const auto nStride = static_cast<std::size_t>(kel::RowStride(nBits, 2));
            Bytes src(2 * nStride);
            for (int i = 0; i < 4; ++i) {
                std::memset(&src[static_cast<std::size_t>(i / 2) * nStride +
                                 static_cast<std::size_t>(i % 2 * nBytes)],
                            c.by[i], static_cast<std::size_t>(nBytes));
            }
            const Bytes out = ZoomRaw(nBits, src, 2, 2, c.nWidth, c.nHeight);
            EXPECT_EQ(out[static_cast<std::size_t>(c.nY * kel::RowStride(nBits, c.nWidth) +
                                                   c.nX * nBytes)],
                      c.nWant);
        }
    }
}

TEST(Zoom, SamplesStayInsideTheSource) {
    // From 2^23 on a position plus one half rounds to a whole number, maybe past the last column.
    for (const int nSrc : {(1 << 23) + 2, (1 << 24) + 3, 0x7FFFFFFF}) {
        for (const int nDst : {2, 3, 9, 1 << 24, 0x7FFFFFFF}) {
            const kel::ZoomSample s = kel::ZoomSampleAt(nDst - 1, kel::ZoomStep(nSrc, nDst), nSrc);
            EXPECT_LT(s.nFirst, nSrc);
            EXPECT_LT(s.nSecond, nSrc);
            EXPECT_GE(s.nFirst, 0);
            EXPECT_GE(s.fFraction, 0.0f);
        }
    }
}

TEST(Zoom, ImageTakesTheNewSizeAndKeepsDepthAndPalette) {
    for (const int nBits : support::kDepths) {
        const Bytes src = support::RandomRows(nBits, 7, 5, 3);
        CKelImage image;
        support::FillImage(&image, nBits, 7, 5, src, true);
        image.AddPaletteEntry(1, 2, 3, 4);
        const int nPalette = image.GetPaletteNum();
        image.ZoomImage(10, 4);
        EXPECT_EQ(support::RowsOf(image), support::RefZoom(nBits, src, 7, 5, 10, 4));
        EXPECT_EQ("", support::Disagreement(
                          image, static_cast<unsigned int>(kel::PictureSize(nBits, 10, 4))));
        EXPECT_EQ(image.GetBitsPerPixel(), nBits);
        EXPECT_EQ(image.GetPaletteNum(), nPalette);
        image.ZoomImage(0, 3);
        image.ZoomImage(3, -1);
        EXPECT_EQ(image.GetWidth(), 10);
    }
}

TEST(Zoom, TracesUnusualSizesAndGoesOn) {
    support::RecordingTrace trace(2);
    CKelImage image;
    image.ZoomImage(3, 3);
    EXPECT_TRUE(trace.Lines().empty());
    support::FillImage(&image, 32, 2, 2, support::RandomRows(32, 2, 2, 1));
    image.ZoomImage(81920, 161);  // 52,756,480 bytes
    EXPECT_EQ(trace.Lines(), support::InputError("bufferSize is invalid: 52756480"));
    EXPECT_EQ(image.GetHeight(), 161);
    image.ZoomImage(2, 1);
    trace.Clear();
    image.ZoomImage(81921, 1);
    EXPECT_EQ(trace.Lines(), support::InputError("nDstWidth is invalid: 81921"));
    trace.Clear();
    image.ZoomImage(0x7FFFFFFF, 2);  // 17,179,869,176 bytes do not fit 32 bits
    EXPECT_EQ(trace.Lines(), support::InputError("bufferSize is invalid: 4294967288"));
    EXPECT_EQ(image.GetWidth(), 81921);
    trace.Clear();
    unsigned char byOut = 7;
    image.ZoomBytes(8, &byOut, 1, 1, &byOut, 0, 1);
    EXPECT_EQ(trace.Lines(), support::InputError("nDstWidth is invalid: 0"));
    image.ZoomBytes(8, &byOut, 0, 1, &byOut, 1, 1);
    image.ZoomBytes(8, &byOut, 1, 1, &byOut, -3, 1);
    EXPECT_EQ(byOut, 7);
    EXPECT_EQ(trace.Lines().size(), 2u);
}

// Allocations in their order: pixel buffer, three tables, the sampler's words, the row array.
TEST(Zoom, FailedAllocations) {
    const Bytes src = support::RandomRows(24, 6, 5, 9);
    const Bytes want = support::RefZoom(24, src, 6, 5, 9, 8);
    for (int n = 1; n <= 6; ++n) {
        CKelImage image;
        support::FillImage(&image, 24, 6, 5, src, true);
        const auto before = support::CountLiveBlocks();
        {
            support::AllocFaults faults(n);
            image.ZoomImage(9, 8);
            ASSERT_TRUE(faults.Fired());
        }
        if (n == 1) {
            EXPECT_EQ(support::RowsOf(image), src);
        } else {
            EXPECT_EQ(image.GetWidth(), 9);
            EXPECT_EQ(support::RowsOf(image), n <= 4 ? Bytes(want.size()) : want);
        }
        EXPECT_EQ(support::CountLiveBlocks().nArrays, before.nArrays - (n == 6));
        EXPECT_EQ(image.GetLineArray() == nullptr, n == 6);
    }
}

}  // namespace
