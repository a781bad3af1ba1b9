// The palette table's growth, line buffers, sizes of colour tables, and 24 to 32 bits.
#include <gtest/gtest.h>

#include "support/allocfaults.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"

namespace {

using support::InputError;
using support::RecordingTrace;

TEST(Depth, OnlyTwentyFourBitsBecomeThirtyTwo) {
    const RecordingTrace trace;
    for (const int nBits : {8, 24, 32}) {
        for (const int nWanted : {8, 24, 32}) {
            CKelImage image;
            ASSERT_NE(image.Create(5, 3, nBits), nullptr);
            image.ChangeBitCount(nWanted);
            const bool bChanges = nBits == 24 && nWanted == 32;
            EXPECT_EQ(image.GetBitsPerPixel(), bChanges ? 32 : nBits);
            EXPECT_EQ(image.m_bmih.biSizeImage, bChanges ? 60u : 0u);
        }
    }
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(Depth, AHeaderBlockNeverSpeaksOfMoreThanItHolds) {
    // At 32 bits the bit fields are three masks, for which a 24-bit block has no room.
    CKelImage image;
    ASSERT_EQ(support::OpenRandom(&image, {24, BI_RGB, 0}, 4, 4, 1), KEL_OK);
    image.m_bmih.biCompression = image.m_pBMI->bmiHeader.biCompression = BI_BITFIELDS;
    image.ChangeBitCount(32);
    CKelImage copy;
    EXPECT_EQ(copy.Open(image.GetBitmapInfo(), image.GetBits()), KEL_OK);
    EXPECT_EQ(copy.GetPaletteNum(), 3);
}

TEST(Palette, GrowsBySixteenFromTwiceTheDepth) {
    for (const auto& [nBits, nFirst] : {std::pair{1, 2}, {8, 16}, {16, 256}}) {
        CKelImage image;
        image.Create(1, 1, nBits);
        for (int i = 0; i < nFirst + 17; ++i) {
            ASSERT_EQ(image.AddPaletteEntry(static_cast<unsigned char>(i), 2, 3, 4), i + 1);
            const int nGrown = (i - nFirst + 16) / 16 * 16;
            ASSERT_EQ(image.m_nPaletteSize, i < nFirst ? nFirst : nFirst + nGrown);
        }
        for (int i = 0; i < nFirst + 17; ++i) {
            EXPECT_EQ(image.GetPalette()[i].byRed, i & 255);
            EXPECT_EQ(image.GetPalette()[i].byBlue, 3);
        }
        EXPECT_EQ(image.GetPalette()[image.m_nPaletteSize - 1].byReserved, 0);  // unused
    }
}

TEST(Palette, MissingMemoryIsTraced) {
    RecordingTrace trace;
    CKelImage image;
    EXPECT_FALSE(image.ExpandPaletteTable());  // no depth, no room
    image.Create(0x7FFFFFFF, 0, 24);
    EXPECT_EQ(image.CreateLine24(), nullptr);
    EXPECT_EQ(trace.Lines(), InputError("p is nullptr"));
    trace.Clear();
    BITMAPINFO info = {};
    info.bmiHeader = {40, 1, 1, 1, 24, 0, 0, 0, 0, 0xFFFFFFFF, 0};
    EXPECT_EQ(image.CreatePalette(&info), nullptr);  // a table of 16 GiB
    EXPECT_EQ(trace.Lines(), InputError("pNewPalette is nullptr"));
    trace.Clear();
    image.Create(1, 1, 24);
    const support::AllocFaults faults(1);
    image.ChangeBitCount(32);
    EXPECT_EQ(trace.Lines(), InputError("lpNewBit is nullptr"));
}

TEST(Palette, ColorTableSizes) {
    const unsigned int aCases[][4] = {
        {1, 1, 0, 8},  {4, 0, 0, 64}, {8, 20, 0, 80}, {16, 0, 3, 12}, {32, 9, 3, 12},
        {16, 2, 0, 8}, {24, 0, 0, 0}, {24, 5, 3, 20}, {2, 9, 0, 0},   {8, 0x40000001, 0, 4}};
    for (const auto& c : aCases) {
        BITMAPINFOHEADER header = {};
        header.biSize = 124;
        header.biBitCount = static_cast<unsigned short>(c[0]);
        header.biClrUsed = c[1];
        header.biCompression = c[2];
        EXPECT_EQ(IMG_GetColorTableSize(&header), c[3]) << c[0];
        EXPECT_EQ(IMG_GetBitmapInfoSize(&header), 124 + c[3]);
    }
}

}  // namespace
