// The palette table's growth, line buffers, sizes of colour tables, and 24 to 32 bits.
#include <gtest/gtest.h>
#include <malloc.h>

#include <functional>
#include <memory>
#include <numeric>

#include "support/allocfaults.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"

#ifdef _WIN32
#define malloc_usable_size _msize
#endif

namespace {

using support::Bytes;
using support::InputError;
using support::RecordingTrace;

TEST(Depth, OnlyTwentyFourBitsBecomeThirtyTwo) {
    const auto before = support::CountLiveBlocks();
    for (const int nBits : {8, 24, 32}) {
        for (const int nWanted : {8, 24, 32}) {
            const RecordingTrace trace;
            CKelImage image;
            ASSERT_NE(image.Create(5, 3, nBits), nullptr);
            image.ChangeBitCount(nWanted);
            const bool bChanges = nBits == 24 && nWanted == 32;
            EXPECT_EQ(bChanges ? 32 : nBits, image.GetBitsPerPixel());
            EXPECT_EQ(bChanges ? 60u : 0u, image.m_bmih.biSizeImage);
            EXPECT_TRUE(trace.Lines().empty());
        }
    }
    EXPECT_EQ(before, support::CountLiveBlocks());
    CKelImage two;
    unsigned char* const pBits = two.Create(2, 2, 24);
    std::iota(pBits, pBits + 16, Bytes::value_type{1});
    const Bytes expected = {1, 2, 3, 0, 4, 5, 6, 0, 9, 10, 11, 0, 12, 13, 14, 0};
    Bytes row(8);
    two.Convert24BitTo32Bit(0, two.GetLineArray()[0], row.data());
    EXPECT_EQ(Bytes(expected.begin(), expected.begin() + 8), row);
    two.ChangeBitCount(32);
    EXPECT_EQ(expected, Bytes(two.GetBits(), two.GetBits() + 16));
    // Without pixels, without rows, and with 2 GiB a row at 32 bits.
    RecordingTrace trace;
    CKelImage image;
    image.m_bmih.biBitCount = 24;
    image.ChangeBitCount(32);
    image.Create(5, 3, 24);
    image.DeleteLineArray();
    image.ChangeBitCount(32);
    EXPECT_TRUE(trace.Lines().empty());
    image.CreateLineArray();
    image.m_bmih.biWidth = 1 << 29;
    image.ChangeBitCount(32);
    EXPECT_EQ(24, image.GetBitsPerPixel());
    EXPECT_EQ(InputError("lpNewBit is nullptr"), trace.Lines());
}

TEST(Depth, AHeaderBlockNeverDescribesMoreThanItHolds) {
    // At 32 bits the bit fields are three masks, for which a 24-bit block has no room.
    CKelImage image;
    ASSERT_EQ(KEL_OK, support::OpenRandom(&image, {24, BI_RGB, 0}, 4, 4, 1));
    image.m_bmih.biCompression = image.m_pBMI->bmiHeader.biCompression = BI_BITFIELDS;
    image.ChangeBitCount(32);
    CKelImage copy;
    EXPECT_EQ(KEL_OK, copy.Open(image.GetBitmapInfo(), image.GetBits()));
    EXPECT_EQ(3, copy.GetPaletteNum());
    EXPECT_GE(malloc_usable_size(image.GetBitmapInfo()), 52u);
}

TEST(Palette, GrowsBySixteenFromTwiceTheDepth) {
    for (const auto& [nBits, nFirst] : {std::pair{1, 2}, {8, 16}, {16, 256}}) {
        CKelImage image;
        image.Create(1, 1, nBits);
        for (int i = 0; i < nFirst + 17; ++i) {
            ASSERT_EQ(i + 1, image.AddPaletteEntry(static_cast<unsigned char>(i), 2, 3, 4));
            const int nGrown = (i - nFirst + 16) / 16 * 16;
            ASSERT_EQ(i < nFirst ? nFirst : nFirst + nGrown, image.m_nPaletteSize);
        }
        for (int i = 0; i < nFirst + 17; ++i) {
            EXPECT_EQ(i & 255, image.GetPalette()[i].byRed);
            EXPECT_EQ(3, image.GetPalette()[i].byBlue);
            EXPECT_EQ(4, image.GetPalette()[i].byReserved);
        }
        EXPECT_EQ(0, image.GetPalette()[image.m_nPaletteSize - 1].byReserved);  // unused
    }
}

// What each operation traces when memory runs out, or asks for a size that is refused.
TEST(Palette, MissingMemoryIsTraced) {
    BITMAPINFO info = {};
    info.bmiHeader = {40, 1, 1, 1, 24, 0, 0, 0, 0, 0xFFFFFFFF, 0};  // a table of 16 GiB
    const struct {
        int nWidth, nHeight;  // 1 x 1: memory runs out
        std::function<bool(CKelImage&)> fails;
        const char* pszText;
    } cases[] = {
        {1, 1, [](auto& i) { return !i.ExpandPaletteTable(); }, "m_pPalette is nullptr"},
        {1, 1, [](auto& i) { return i.AddPaletteEntry(1, 2, 3, 4) == 0; }, "m_pPalette is nullptr"},
        {2, 1, [&](auto& i) { return !i.CreatePalette(&info); }, "pNewPalette is nullptr"},
        {1, 1, [](auto& i) { return !i.AllocateBMI(40); }, "p is nullptr"},
        {1, 1, [](auto& i) { return !i.CreateLineArray(); }, "m_ppLineArray is nullptr"},
        {1, -1, [](auto& i) { return !i.CreateLineArray(); }, "m_ppLineArray is nullptr"},
        {-1, 1, [](auto& i) { return !i.CreateLineArray(); }, "m_ppLineArray is nullptr"},
        {1, 1, [](auto& i) { return !i.CreateLine16(); }, "p is nullptr"},
        {0x7FFFFFFF, 0, [](auto& i) { return !i.CreateLine24(); }, "p is nullptr"},
        {-1, 0, [](auto& i) { return !i.CreateLine32(); }, "p is nullptr"},
        {1, 1, [](auto& i) { return i.Mirror(0), true; }, "pRowByte is nullptr"},
        {1, 1, [](auto& i) { return i.SubImage(0, 0, 1, 1), true; }, "lpLine is nullptr"},
        {1, 1, [](auto& i) { return i.ChangeBitCount(32), i.GetBitsPerPixel() == 24; },
         "lpNewBit is nullptr"},
        {1, 1, [](auto& i) { return i.ApplyFilter(KEL_FILTER_SCALE, nullptr) == KEL_ERR_PARAM; },
         "pImage is nullptr"},
    };
    for (const auto& c : cases) {
        CKelImage image;
        image.Create(1, 1, 24);
        image.m_bmih.biWidth = c.nWidth;
        image.m_bmih.biHeight = c.nHeight;
        image.m_nPaletteNum = image.m_nPaletteSize = 7;  // counts without a table
        RecordingTrace trace;
        {
            const support::AllocFaults faults(c.nWidth == 1 && c.nHeight == 1 ? 1 : 0);
            EXPECT_TRUE(c.fails(image)) << &c - cases;
        }
        EXPECT_EQ(InputError(c.pszText), trace.Lines()) << &c - cases;
        image.DestroyPaletteTable();
    }
    RecordingTrace trace;
    CKelImage image;
    EXPECT_FALSE(image.ExpandPaletteTable());  // no depth, no room
    image.m_bmih.biHeight = 3;
    EXPECT_EQ(nullptr, image.CreateLineArray());  // no pixels, no rows
    EXPECT_TRUE(trace.Lines().empty());
    image.Create(1, 1, 1);
    image.AddPaletteEntry(1, 2, 3, 4);
    image.AddPaletteEntry(5, 6, 7, 8);
    const support::AllocFaults faults(1);
    EXPECT_EQ(2, image.AddPaletteEntry(9, 9, 9, 9));  // the old table stays
    EXPECT_EQ(5, image.GetPalette()[1].byRed);
    EXPECT_EQ(InputError("pNewPalette is nullptr"), trace.Lines());
}

TEST(Line, BuffersHoldARowOfTheirDepth) {
    CKelImage image;
    image.Create(1001, 1, 8);
    const std::pair<unsigned char* (CKelImage::*)() const, std::size_t> kinds[] = {
        {&CKelImage::CreateLine32, 4004},
        {&CKelImage::CreateLine24, 3004},
        {&CKelImage::CreateLine16, 2004}};
    for (const auto& [pfnCreate, nSize] : kinds) {
        const std::unique_ptr<unsigned char[]> pLine((image.*pfnCreate)());
        EXPECT_GE(malloc_usable_size(pLine.get()), nSize);
        EXPECT_LT(malloc_usable_size(pLine.get()), nSize + 32);
    }
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
        EXPECT_EQ(c[3], IMG_GetColorTableSize(&header)) << c[0];
        EXPECT_EQ(124 + c[3], IMG_GetBitmapInfoSize(&header));
    }
}

}  // namespace
