// The pixel buffer, the header block, and who owns them.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "support/allocfaults.h"
#include "support/invariants.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"

namespace {

using support::Consistent;
using support::InputError;
using support::Picture;
using support::RecordingTrace;
using Bytes = std::vector<unsigned char>;

constexpr support::Kind kShort8 = {8, BI_RGB, 20};

Bytes PixelsOf(const CKelImage& image, std::size_t nBytes) {
    return Bytes(image.m_pBits, image.m_pBits + nBytes);
}

TEST(Storage, CreateMakesAZeroedPictureWithRows) {
    CKelImage image;
    unsigned char* pBits = image.Create(3, 2, 24);
    ASSERT_NE(pBits, nullptr);
    EXPECT_EQ(image.GetBmpDataSize(), 24u);
    EXPECT_EQ(PixelsOf(image, 24), Bytes(24));
    EXPECT_EQ(image.GetLineArray()[1], pBits + 12);
    const unsigned int expected[10] = {40, 3, 2, 1 | 24 << 16};
    EXPECT_EQ(std::memcmp(image.GetBitmapInfoHeader(), expected, 40), 0);
}

TEST(Storage, RefusedSizesLeaveNoPixelsAndNoRows) {
    RecordingTrace trace;
    const int aSizes[][3] = {{-1, 1, 24}, {-5, -5, 1}, {1 << 30, 1 << 30, 32}, {23171, 23171, 32}};
    for (const auto& size : aSizes) {
        CKelImage image;
        ASSERT_NE(image.Create(4, 4, 8), nullptr);
        EXPECT_EQ(image.Create(size[0], size[1], size[2]), nullptr);
        EXPECT_EQ(image.GetBits(), nullptr);
        EXPECT_EQ(image.GetLineArray(), nullptr);
    }
    EXPECT_TRUE(trace.Lines().empty());
    // A picture without width may claim more rows than an array is made for.
    CKelImage image;
    EXPECT_NE(image.Create(0, 0x7FFFFFFF, 24), nullptr);
    EXPECT_EQ(image.GetLineArray(), nullptr);
    EXPECT_EQ(trace.Lines(), InputError("m_ppLineArray is nullptr"));
}

TEST(Storage, AllocateBitsTracesOddSizesAndCoversTheRows) {
    RecordingTrace trace;
    CKelImage image;
    for (unsigned int nSize : {0u, 52428801u}) {
        EXPECT_NE(image.AllocateBits(nSize), nullptr);
        EXPECT_EQ(trace.Lines(), InputError("dwSize is invalid: " + std::to_string(nSize)));
        trace.Clear();
    }
    ASSERT_NE(image.Create(100, 50, 24), nullptr);
    ASSERT_NE(image.AllocateBits(10), nullptr);
    EXPECT_TRUE(Consistent(image));
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(Storage, OpenMeasuresThePixelData) {
    Picture picture = support::MakePicture({8, BI_RGB, 0}, 10, 10, 1);  // 120 bytes
    CKelImage image;
    BITMAPINFOHEADER& header = picture.Info()->bmiHeader;
    header.biSizeImage = 0;
    EXPECT_EQ(image.Open(picture.Info(), picture.bits.data()), KEL_OK);
    EXPECT_EQ(PixelsOf(image, 120), picture.bits);
    EXPECT_NE(image.GetBits(), picture.bits.data());
    EXPECT_EQ(std::memcmp(image.GetBitmapInfo(), &header, picture.block.size()), 0);
    header.biSizeImage = 119;
    EXPECT_EQ(image.Open(picture.Info(), picture.bits.data()), KEL_ERR_PARAM);
    EXPECT_EQ(image.GetBits(), nullptr);
    // Run-length data may be shorter than the rows; what it does not fill is zero.
    header.biSizeImage = 7;
    header.biCompression = BI_RLE8;
    EXPECT_EQ(image.Open(picture.Info(), picture.bits.data()), KEL_OK);
    Bytes expected(picture.bits.begin(), picture.bits.begin() + 7);
    expected.resize(120);
    EXPECT_EQ(PixelsOf(image, 120), expected);
}

TEST(Storage, OpenRefusesWhatItCannotHold) {
    using Header = BITMAPINFOHEADER;
    const struct {
        void (*pfnChange)(Header& header);
        bool bCopyOnly;  // refused by Open(pBMI, pBits) alone
    } changes[] = {
        {[](Header& h) { h.biSize = 124; }, false},
        {[](Header& h) { h.biBitCount = 2; }, false},
        {[](Header& h) { h.biCompression = 4; }, false},
        {[](Header& h) { h.biWidth = -10; }, false},
        {[](Header& h) { h.biHeight = -10; }, false},
        {[](Header& h) { h.biClrUsed = 65537; }, true},
        {[](Header& h) { h.biHeight = 0x7FFFFFFF, h.biSizeImage = 0; }, true},
    };
    for (const auto& change : changes) {
        SCOPED_TRACE(&change - changes);
        Picture picture = support::MakePicture(kShort8, 10, 10, 1);
        change.pfnChange(picture.Info()->bmiHeader);
        CKelImage image;
        EXPECT_EQ(image.Open(picture.Info(), picture.bits.data()), KEL_ERR_PARAM);
        if (!change.bCopyOnly) {
            EXPECT_EQ(image.OpenAs(picture.Info(), picture.bits.data(), 0), KEL_ERR_PARAM);
            EXPECT_EQ(image.GetBits(), picture.bits.data());  // kept
            EXPECT_EQ(image.GetWidth(), 0);
        }
    }
    CKelImage image;
    Picture picture = support::MakePicture(kShort8, 10, 10, 1);
    EXPECT_EQ(image.Open(picture.Info(), nullptr), KEL_ERR_PARAM);
    EXPECT_EQ(image.Open(nullptr, picture.bits.data()), KEL_ERR_PARAM);
    ASSERT_EQ(image.Open(picture.Info(), picture.bits.data()), KEL_OK);
    EXPECT_EQ(image.Open(image.GetBitmapInfo(), image.GetBits()), KEL_ERR_PARAM);  // its own
}

TEST(Storage, GetBitmapInfoBuildsTheBlockOnceWithRoomForItsTable) {
    CKelImage image;
    EXPECT_EQ(image.GetBitmapInfo(), nullptr);
    EXPECT_EQ(image.AllocateBMI(39), nullptr);
    const unsigned int aCases[][3] = {{24, 0, 0}, {8, 16, 16}, {8, 256, 0}, {4, 16, 0}, {1, 1, 1}};
    for (const auto& [nBits, nEntries, nColors] : aCases) {
        image.Create(5, 4, static_cast<int>(nBits));
        for (unsigned int i = 0; i < nEntries; ++i) {
            image.AddPaletteEntry(1, 2, static_cast<unsigned char>(i), 255);
        }
        BITMAPINFO* pBlock = image.GetBitmapInfo();
        ASSERT_NE(pBlock, nullptr);
        EXPECT_EQ(image.GetBitmapInfoHeader()->biClrUsed, nColors);
        EXPECT_EQ(std::memcmp(pBlock, image.GetBitmapInfoHeader(), 40), 0);
        for (unsigned int i = 0; i < nEntries; ++i) {
            EXPECT_EQ(pBlock->bmiColors[i].rgbBlue, i);
        }
        image.AddPaletteEntry(9, 9, 9, 9);
        EXPECT_EQ(image.GetBitmapInfo(), pBlock);
        // What the block's header speaks of can be read back.
        CKelImage other;
        EXPECT_EQ(other.Open(pBlock, image.GetBits()), KEL_OK);
    }
}

// An image that borrows and cannot get a buffer of its own goes on borrowing, unchanged; one that
// gets it owns everything.
TEST(Storage, BorrowersTakeOwnershipOrStayAsTheyAre) {
    const struct {
        const char* pszName;
        std::function<bool(CKelImage*)> run;
    } operations[] = {
        {"AllocateBits1", [](auto* p) { return p->AllocateBits1() != nullptr; }},
        {"AllocateBMI", [](auto* p) { return p->AllocateBMI(1064) != nullptr; }},
        {"ChangeBitCount",
         [](auto* p) { return p->ChangeBitCount(32), p->GetBitsPerPixel() == 32; }},
        {"Rotate", [](auto* p) { return p->Rotate(0), p->GetWidth() == 3; }},
        {"ZoomImage", [](auto* p) { return p->ZoomImage(4, 5), p->GetWidth() == 4; }},
    };
    const RecordingTrace silence(-1);
    for (const auto& operation : operations) {
        bool bFired = true;
        for (int nFailing = 1; bFired; ++nFailing) {
            SCOPED_TRACE(operation.pszName + std::to_string(nFailing));
            Picture picture = support::MakePicture({24, BI_RGB, 0}, 11, 3, 1);
            const Picture before = picture;
            {
                CKelImage image;
                ASSERT_EQ(image.OpenAs(picture.Info(), picture.bits.data(), 0), KEL_OK);
                bool bDone = false;
                {
                    support::AllocFaults faults(nFailing);
                    bDone = operation.run(&image);
                    bFired = faults.Fired();
                }
                EXPECT_TRUE(bDone || bFired);
                EXPECT_TRUE(Consistent(image));
                EXPECT_EQ(image.m_bOwnBuffers, bDone ? 1 : 0);
                EXPECT_EQ(image.m_pBits == picture.bits.data(), !bDone);
                EXPECT_EQ(image.m_pBMI == picture.Info(), !bDone);
                EXPECT_TRUE(bDone || image.m_ppLineArray != nullptr);
                if (operation.pszName == std::string("AllocateBMI")) {  // the pixels stay in use
                    EXPECT_EQ(PixelsOf(image, before.bits.size()), before.bits);
                }
            }
            EXPECT_EQ(picture.block, before.block);
            EXPECT_EQ(picture.bits, before.bits);
        }
    }
}

}  // namespace
