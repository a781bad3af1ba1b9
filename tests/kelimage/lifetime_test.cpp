// Construction, emptying, transfer, end; the names of results.
#include <gtest/gtest.h>

#include <set>

#include "support/allocfaults.h"
#include "support/invariants.h"
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
    ASSERT_EQ(image.OpenAs(picture.Info(), picture.bits.data(), 0), KEL_OK);
    image.Clean();
    EXPECT_TRUE(IsEmpty(image));
    EXPECT_EQ(image.m_bOwnBuffers, 0);
    // What it makes from here on is its own (a leak checker sees it otherwise).
    EXPECT_EQ(support::OpenRandom(&image, {8, BI_RGB, 0}, 5, 5, 1), KEL_OK);
    EXPECT_EQ(image.m_bOwnBuffers, 1);
}

TEST(Lifetime, BorrowMovesEverything) {
    CKelImage donor, image;
    ASSERT_EQ(support::OpenRandom(&donor, {8, BI_RGB, 20}, 6, 4, 1), KEL_OK);
    ASSERT_EQ(support::OpenRandom(&image, {24, BI_RGB, 0}, 3, 3, 1), KEL_OK);
    const unsigned char* pBits = donor.GetBits();
    image.Borrow(&donor);
    EXPECT_EQ(image.GetWidth(), 6);
    EXPECT_EQ(image.GetPaletteNum(), 20);
    EXPECT_TRUE(support::Consistent(image));
    EXPECT_TRUE(IsEmpty(donor));
    EXPECT_EQ(donor.m_bOwnBuffers, 1);
    image.Borrow(&image);
    EXPECT_EQ(image.GetBits(), pBits);

    Picture picture = support::MakePicture({24, BI_RGB, 0}, 5, 5, 1);
    ASSERT_EQ(donor.OpenAs(picture.Info(), picture.bits.data(), 0), KEL_OK);
    image.Borrow(&donor);
    EXPECT_EQ(image.m_bOwnBuffers, 0);
    EXPECT_EQ(image.GetBits(), picture.bits.data());
}

TEST(Lifetime, BeginsAndEndsThroughTheInterface) {
    CKelImage other;
    IKelImage* pImage = &other;
    {
        const support::AllocFaults faults(1);
        CreateImageObject(&pImage);
    }
    EXPECT_EQ(pImage, nullptr);
    DestroyImageObject(nullptr);
    (new CKelImage)->Destroy();
}

TEST(Result, EachCodeHasANameAndAMeaningOfItsOwn) {
    const std::pair<KelResult, const char*> results[] = {{0, "KEL_OK"},
                                                         {1, "KEL_ERR_FAIL"},
                                                         {2, "KEL_ERR_SAVE_FORMAT"},
                                                         {3, "KEL_ERR_OPEN_FORMAT"},
                                                         {4, "KEL_ERR_FILTER_TYPE"},
                                                         {5, "KEL_ERR_PARAM"},
                                                         {6, "KEL_ERR_MEMORY"},
                                                         {8, "KEL_ERR_FILE"},
                                                         {11, "KEL_ERR_CODEC"},
                                                         {1000, "KEL_ERR_NOT_IMPLEMENTED"},
                                                         {7, KelResultName(-1)}};
    std::set<std::string> meanings;
    for (const auto& [nCode, pszName] : results) {
        EXPECT_STREQ(KelResultName(nCode), pszName);
        meanings.insert(KelResultMeaning(nCode));
    }
    EXPECT_EQ(meanings.size(), std::size(results));
}

}  // namespace
