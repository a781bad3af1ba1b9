// Mirror, Rotate, SubImage and ZoomImage: their pictures, what they trace, and what failures leave.
#include <gtest/gtest.h>

#include <climits>

#include "kelgeometry/zoomrows.h"
#include "support/allocfaults.h"
#include "support/inspect.h"
#include "support/recordingtrace.h"
#include "support/reference/operations.h"

namespace {

using support::BlackRows;
using support::FillImage;
using support::InputError;
using support::RandomRows;
using support::Rows;
using support::Shows;

// Every operation, and what is to change nothing.
TEST(Geometry, EveryOperationAtEveryDepth) {
    const int sizes[][4] = {{1, 7, 3, 3}, {90, 31, 21, 8}, {200, 3, 9, 4}, {1, 70, 200, 2}};
    for (const int nBits : support::kDepths) {
        for (const auto& s : sizes) {
            Rows expected = RandomRows(nBits, s[0], s[1], static_cast<unsigned int>(s[2]));
            CKelImage image;
            FillImage(&image, expected);
            const int nPalette = image.AddPaletteEntry(1, 2, 3, 4);
            image.Mirror(0);
            image.Mirror(1);  // unknown
            image.ZoomImage(s[2], s[3]);
            image.ZoomImage(0, 3);
            image.ZoomImage(3, -1);
            EXPECT_TRUE(image.Rotate(270));
            expected =
                reference::Transpose(reference::Zoom(reference::Mirror(expected), s[2], s[3]));
            image.SubImage(1, 1, s[3] - 1, s[2] - 2);
            expected = reference::Crop(expected, 1, 1, s[3] - 1, s[2] - 2);
            EXPECT_TRUE(Shows(image, expected)) << "from " << s[0] << "x" << s[1];
            EXPECT_EQ(expected.bytes.size(), image.m_bmih.biSizeImage);
            EXPECT_EQ(nPalette, image.GetPaletteNum());
        }
    }
}

TEST(Geometry, WhereOnePixelGoes) {
    const Rows src = RandomRows(24, 3, 2, 2);
    CKelImage image;
    FillImage(&image, src);
    const auto at = [&](int x, int y) { return support::PixelAt(24, image.GetLineArray()[y], x); };
    const std::uint32_t nPixel = at(2, 0);
    image.Rotate(90);
    EXPECT_EQ(nPixel, at(0, 2));
    image.Mirror(0);  // with it: 90 degrees counter-clockwise
    EXPECT_EQ(nPixel, at(0, 0));
    FillImage(&image, src);
    image.SubImage(2, 0, 1, 2);
    EXPECT_EQ(nPixel, at(0, 0));
}

TEST(SubImage, RectanglesOutsideChangeNothing) {
    const int rectangles[][4] = {{-1, 0, 2, 2}, {0, -1, 2, 2}, {0, 0, -1, 2},
                                 {3, 0, 2, 2},  {0, 3, 2, 2},  {1, 1, INT_MAX, INT_MAX}};
    const Rows src = RandomRows(24, 4, 4, 2);
    CKelImage image;
    FillImage(&image, src);
    for (const auto& r : rectangles) {
        image.SubImage(r[0], r[1], r[2], r[3]);
        EXPECT_TRUE(Shows(image, src));
    }
    support::Bytes raw = src.bytes;
    image.CopyBytes(24, raw.data(), 4, 4, -1, 0, 2, 2);
    image.CopyBytes(24, raw.data(), 4, 4, 0, 0, 5, 2);
    EXPECT_EQ(src.bytes, raw);
    // The raw form ends at the buffer's end, whatever is asked for: rows from beyond it are zero.
    for (const int nBits : support::kDepths) {
        const Rows part = RandomRows(nBits, 7, 4, 2);
        raw = part.bytes;
        image.CopyBytes(nBits, raw.data(), 7, 4, 3, 3, 4, 4);
        const support::Bytes expected = reference::Crop(part, 3, 3, 4, 4).bytes;
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), raw.begin())) << nBits;
    }
}

// Channel values of 2 x 2 pixels, the size they are zoomed to, a pixel of the result, and its byte,
// which becomes another one when products and sums are fused.
TEST(Zoom, ResultsAreThoseOfSeparateProductsAndSums) {
    const struct {
        unsigned char by[4];
        int nWidth, nHeight, nX, nY, nExpected;
    } cases[] = {{{27, 51, 51, 0}, 3, 4, 1, 2, 29},
                 {{1, 204, 0, 0}, 3, 6, 1, 3, 41},
                 {{3, 255, 51, 51}, 3, 7, 1, 5, 64},
                 {{1, 153, 0, 0}, 3, 8, 1, 4, 33}};
    for (const auto& c : cases) {
        Rows src = BlackRows(24, 2, 2);
        for (int i = 0; i < 4; ++i) {
            std::fill_n(src.Row(i / 2) + i % 2 * 3, 3, c.by[i]);
        }
        CKelImage image;
        FillImage(&image, src);
        image.ZoomImage(c.nWidth, c.nHeight);
        EXPECT_EQ(c.nExpected, image.GetLineArray()[c.nY][c.nX * 3]);
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

TEST(Geometry, UnusualSizesAreTraced) {
    const struct {
        int nBits, nWidth, nHeight, nNewWidth, nNewHeight;  // no new size: a rotation
        const char* pszTrace;
    } cases[] = {
        {8, 13200000, 1, 0, 0, "bufferSize is invalid: 52800000"},  // 4 bytes a row
        {8, 0, 3, 0, 0, "bufferSize is invalid: 0"},
        {32, 2, 2, 81920, 161, "bufferSize is invalid: 52756480"},
        {32, 2, 2, 81921, 1, "nDstWidth is invalid: 81921"},
        // 4,800,000,000 and 17,179,869,176 bytes do not fit 32 bits.
        {1, 1200000000, 1, 0, 0, "bufferSize is invalid: 505032704"},
        {32, 2, 2, 0x7FFFFFFF, 2, "bufferSize is invalid: 4294967288"},
    };
    for (const auto& c : cases) {
        CKelImage image;
        image.Create(c.nWidth, c.nHeight, c.nBits);
        support::RecordingTrace trace(2);
        c.nNewWidth == 0 ? static_cast<void>(image.Rotate(0))
                         : image.ZoomImage(c.nNewWidth, c.nNewHeight);
        EXPECT_EQ(InputError(c.pszTrace), trace.Lines());
        const bool bFits = &c - cases < 4;  // the others end here
        EXPECT_EQ(bFits, image.GetWidth() != c.nWidth) << c.pszTrace;
    }
    const support::AllocFill fill(0xA5);
    CKelImage unknown;
    unknown.Create(8, 8, 2);  // a depth that is not sampled
    unknown.ZoomImage(5, 4);
    EXPECT_TRUE(Shows(unknown, BlackRows(2, 5, 4)));
    support::RecordingTrace trace(2);
    CKelImage image;
    image.m_bmih = {40, 5, 4, 1, 24, 0, 0, 0, 0, 0, 0};  // without pixels
    EXPECT_FALSE(image.Rotate(0));
    image.Mirror(0);
    image.SubImage(1, 1, 2, 2);
    image.ZoomImage(3, 3);
    EXPECT_EQ(5, image.GetWidth());
    unsigned char byOut = 7;
    image.ZoomBytes(8, &byOut, 1, 1, &byOut, 0, 1);
    EXPECT_EQ(InputError("nDstWidth is invalid: 0"), trace.Lines());
    image.ZoomBytes(8, &byOut, 0, 1, &byOut, 1, 1);
    EXPECT_EQ(7, byOut);
    image.Create(3, -1, 24);  // refused, but its header stays
    image.AllocateBits(8);
    EXPECT_FALSE(image.Rotate(0));
}

}  // namespace
