// The palette table's growth, line buffers, sizes of colour tables, and 24 to 32 bits.
#include <gtest/gtest.h>

#include "support/allocfaults.h"
#include "support/invariants.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"

namespace {

using support::InputError;
using support::Picture;
using support::RecordingTrace;

TEST(Depth, TwentyFourBecomesThirtyTwo) {
    for (int nWidth : {0, 1, 2, 17, 67, 400}) {
        CKelImage image;
        Picture picture = support::MakePicture({24, BI_RGB, 0}, nWidth, 3, 5);
        ASSERT_EQ(image.Open(picture.Info(), picture.bits.data()), KEL_OK);
        const std::size_t nStride = picture.bits.size() / 3;
        for (int nBits : {24, 8, 32, 32, 24}) {
            image.ChangeBitCount(nBits);
        }
        ASSERT_EQ(image.GetBitsPerPixel(), 32);
        EXPECT_TRUE(support::Consistent(image));
        EXPECT_EQ(image.m_bmih.biSizeImage, image.GetBmpDataSize());
        for (std::size_t y = 0; y < 3; ++y) {
            for (std::size_t i = 0; i < 4 * static_cast<std::size_t>(nWidth); ++i) {
                const int nExpected =
                    i % 4 == 3 ? 0 : picture.bits[y * nStride + i / 4 * 3 + i % 4];
                ASSERT_EQ(image.GetLineArray()[y][i], nExpected) << nWidth << ": " << i;
            }
        }
    }
}

TEST(Depth, FailuresAndOtherImagesChangeNothing) {
    const int aImages[][2] = {{3, 24}, {3, 8}, {-1, 24}};  // no memory, 8 bits, no pixels
    for (const auto& [nWidth, nBits] : aImages) {
        CKelImage image;
        const unsigned char* pBits = image.Create(nWidth, 3, nBits);
        const bool bFails = nWidth > 0 && nBits == 24;
        const RecordingTrace trace;
        {
            support::AllocFaults faults(bFails ? 1 : 0);
            image.ChangeBitCount(32);
        }
        EXPECT_EQ(trace.Lines().size(), bFails ? 2u : 0u);
        if (bFails) {
            EXPECT_EQ(trace.Lines(), InputError("lpNewBit is nullptr"));
        }
        EXPECT_EQ(image.GetBits(), pBits);
        EXPECT_EQ(image.GetBitsPerPixel(), nBits);
    }
}

TEST(Depth, AHeaderBlockNeverSpeaksOfMoreThanItHolds) {
    // At 32 bits the bit fields are three masks, for which a 24-bit block has no room.
    CKelImage image;
    ASSERT_EQ(support::OpenRandom(&image, {24, BI_RGB, 0}, 4, 4, 1), KEL_OK);
    image.m_bmih.biCompression = BI_BITFIELDS;
    image.m_pBMI->bmiHeader.biCompression = BI_BITFIELDS;
    image.ChangeBitCount(32);
    CKelImage copy;
    EXPECT_EQ(copy.Open(image.GetBitmapInfo(), image.GetBits()), KEL_OK);
    EXPECT_EQ(copy.GetPaletteNum(), 3);
}

TEST(Palette, GrowsBySixteenFromTwiceTheDepth) {
    const int aFirst[][2] = {{1, 2}, {4, 8}, {8, 16}, {16, 256}, {24, 256}};
    for (const auto& first : aFirst) {
        CKelImage image;
        image.Create(1, 1, first[0]);
        for (int i = 0; i < first[1] + 17; ++i) {
            const auto by = static_cast<unsigned char>(i);
            ASSERT_EQ(image.AddPaletteEntry(by, 2, 3, 4), i + 1);
            const int nGrown = (i - first[1] + 16) / 16 * 16;
            ASSERT_EQ(image.m_nPaletteSize, i < first[1] ? first[1] : first[1] + nGrown);
        }
        for (int i = 0; i < first[1] + 17; ++i) {
            const tagKelRGBQUAD& entry = image.GetPalette()[i];
            EXPECT_EQ(entry.byRed, i & 255);
            EXPECT_EQ(entry.byBlue, 3);
        }
        const tagKelRGBQUAD& unused = image.GetPalette()[image.m_nPaletteSize - 1];
        EXPECT_EQ(unused.byBlue | unused.byGreen | unused.byRed | unused.byReserved, 0);
    }
}

TEST(Palette, FailedGrowthKeepsTheOldTable) {
    RecordingTrace trace;
    CKelImage empty;
    EXPECT_FALSE(empty.ExpandPaletteTable());  // no depth, no room
    EXPECT_TRUE(trace.Lines().empty());
    CKelImage image;
    image.Create(1, 1, 1);
    for (int nCount : {0, 2}) {
        support::AllocFaults faults(1);
        EXPECT_EQ(image.AddPaletteEntry(1, 1, 1, 1), nCount);
        EXPECT_EQ(trace.Lines(),
                  InputError(nCount == 0 ? "m_pPalette is nullptr" : "pNewPalette is nullptr"));
        EXPECT_TRUE(support::Consistent(image));
        trace.Clear();
        image.AddPaletteEntry(1, 1, 1, 1);
        image.AddPaletteEntry(1, 1, 1, 1);
    }
    BITMAPINFO info = {};
    info.bmiHeader = {40, 1, 1, 1, 24, 0, 0, 0, 0, 0xFFFFFFFF, 0};
    EXPECT_EQ(image.CreatePalette(&info), nullptr);  // a table of 16 GiB
    EXPECT_EQ(trace.Lines(), InputError("pNewPalette is nullptr"));
}

TEST(Palette, LineBuffers) {
    RecordingTrace trace;
    CKelImage image;
    image.Create(5, 1, 8);
    for (unsigned char* pLine :
         {image.CreateLine32(), image.CreateLine24(), image.CreateLine16()}) {
        EXPECT_NE(pLine, nullptr);
        delete[] pLine;
    }
    EXPECT_TRUE(trace.Lines().empty());
    for (int nWidth : {-1, 0x7FFFFFFF}) {
        image.m_bmih.biWidth = nWidth;
        trace.Clear();
        EXPECT_EQ(image.CreateLine24(), nullptr);
        EXPECT_EQ(trace.Lines(), InputError("p is nullptr"));
    }
}

TEST(Palette, ColorTableSizes) {
    const unsigned int aCases[][4] = {
        {1, 1, 0, 8},   {4, 0, 0, 64},  {4, 3, 0, 12},    {8, 0, 0, 1024}, {8, 20, 0, 80},
        {16, 0, 3, 12}, {32, 9, 3, 12}, {16, 2, 0, 8},    {32, 0, 0, 0},   {24, 0, 0, 0},
        {24, 5, 3, 20}, {2, 9, 0, 0},   {65535, 9, 0, 0}, {0, 9, 0, 0},    {8, 0x40000001, 0, 4}};
    for (const auto& c : aCases) {
        BITMAPINFOHEADER header = {};
        header.biSize = 124;
        header.biBitCount = static_cast<unsigned short>(c[0]);
        header.biClrUsed = c[1];
        header.biCompression = c[2];
        EXPECT_EQ(IMG_GetColorTableSize(&header), c[3]) << c[0];
        EXPECT_EQ(IMG_GetBitmapInfoSize(&header), 124 + c[3]);
    }
    const CKelImage image;
    for (int nBits = -1; nBits < 40; ++nBits) {
        const bool bValid =
            nBits == 1 || nBits == 4 || nBits == 8 || nBits == 16 || nBits == 24 || nBits == 32;
        EXPECT_EQ(image.IsValidPixelDepth(nBits), bValid);
    }
    EXPECT_TRUE(image.IsValidWINCompression(3));
    EXPECT_FALSE(image.IsValidWINCompression(4));
}

}  // namespace
