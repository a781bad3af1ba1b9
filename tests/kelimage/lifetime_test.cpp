// Construction, emptying, transfer, end; the names of results.
#include <gtest/gtest.h>

#include <string>

#include "support/allocfaults.h"
#include "support/inspect.h"
#include "support/pictures.h"

namespace {

using support::Picture;

bool IsEmpty(CKelImage& image) {
    return image.GetBits() == nullptr && image.GetLineArray() == nullptr &&
           image.GetPalette() == nullptr && image.m_pBMI == nullptr && image.GetPaletteNum() == 0 &&
           image.m_nPaletteSize == 0 && image.GetWidth() == 0 && image.GetBitsPerPixel() == 0;
}

TEST(Lifetime, CleanForgetsBorrowedBuffersAndKeepsTheFlag) {
    Picture picture = support::MakePicture({8, BI_RGB, 0}, 5, 5, 1);
    CKelImage image;
    EXPECT_TRUE(IsEmpty(image));
    ASSERT_EQ(KEL_OK, image.OpenAs(picture.Info(), picture.bits.data(), 0));
    image.Clean();
    EXPECT_TRUE(IsEmpty(image));
    EXPECT_EQ(0, image.m_bOwnBuffers);
    // What it makes is its own (a leak checker sees it otherwise).
    EXPECT_EQ(KEL_OK, support::OpenRandom(&image, {8, BI_RGB, 0}, 5, 5, 1));
    EXPECT_EQ(1, image.m_bOwnBuffers);
    CKelImage made;
    made.OpenAs(picture.Info(), picture.bits.data(), 0);
    made.Create(3, 3, 24);
    EXPECT_EQ(nullptr, made.m_pBMI);
}

TEST(Lifetime, BorrowMovesEverything) {
    CKelImage donor, image;
    ASSERT_EQ(KEL_OK, support::OpenRandom(&donor, {8, BI_RGB, 20}, 6, 4, 1));
    ASSERT_EQ(KEL_OK, support::OpenRandom(&image, {24, BI_RGB, 0}, 3, 3, 1));
    const unsigned char* pBits = donor.GetBits();
    image.Borrow(&donor);
    EXPECT_EQ(6, image.GetWidth());
    EXPECT_EQ(20, image.GetPaletteNum());
    EXPECT_EQ("", support::FaultOf(image));
    EXPECT_TRUE(IsEmpty(donor));
    EXPECT_EQ(1, donor.m_bOwnBuffers);
    image.Borrow(&image);
    EXPECT_EQ(pBits, image.GetBits());

    Picture picture = support::MakePicture({24, BI_RGB, 0}, 5, 5, 1);
    ASSERT_EQ(KEL_OK, donor.OpenAs(picture.Info(), picture.bits.data(), 0));
    image.Borrow(&donor);
    EXPECT_EQ(0, image.m_bOwnBuffers);
    EXPECT_EQ(1, donor.m_bOwnBuffers);
    EXPECT_EQ(picture.bits.data(), image.GetBits());
}

TEST(Lifetime, BeginsAndEndsThroughTheInterface) {
    CKelImage other;
    IKelImage* pImage = &other;
    {
        const support::AllocFaults faults(1);
        CreateImageObject(&pImage);
    }
    EXPECT_EQ(nullptr, pImage);
    DestroyImageObject(nullptr);
    EXPECT_EQ(IKELEX_VERSION, GetKelVersion());
    const auto before = support::CountLiveBlocks();
    (new CKelImage)->Destroy();
    EXPECT_EQ(before, support::CountLiveBlocks());
}

TEST(Result, EachCodeHasANameAndAMeaningOfItsOwn) {
    struct {
        KelResult nCode;
        const char* pszName;
        const char* pszWord;  // in its meaning, and in no other
    } const results[] = {{0, "KEL_OK", "success"},
                         {1, "KEL_ERR_FAIL", "not recognised"},
                         {2, "KEL_ERR_SAVE_FORMAT", "no writer"},
                         {3, "KEL_ERR_OPEN_FORMAT", "is recognised"},
                         {4, "KEL_ERR_FILTER_TYPE", "filter"},
                         {5, "KEL_ERR_PARAM", "argument"},
                         {6, "KEL_ERR_MEMORY", "memory"},
                         {8, "KEL_ERR_FILE", "file"},
                         {11, "KEL_ERR_CODEC", "damaged"},
                         {1000, "KEL_ERR_NOT_IMPLEMENTED", "not implemented"},
                         {7, "unknown result", "no result"}};
    for (const auto& row : results) {
        EXPECT_STREQ(row.pszName, KelResultName(row.nCode));
        for (const auto& other : results) {
            const bool bFound =
                std::string(KelResultMeaning(other.nCode)).find(row.pszWord) != std::string::npos;
            EXPECT_EQ(&row == &other, bFound) << row.nCode << " in " << other.nCode;
        }
    }
    EXPECT_STREQ(KelResultName(7), KelResultName(-1));
}

}  // namespace
