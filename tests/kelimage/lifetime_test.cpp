// Construction, emptying, transfer, end; the names of results.
#include <gtest/gtest.h>

#include <set>

#include "support/allocfaults.h"
#include "support/invariants.h"
#include "support/pictures.h"

namespace {

using support::Picture;

bool IsEmpty(CKelImage& image) {
    const BITMAPINFOHEADER zero = {};
    return image.GetBits() == nullptr && image.GetLineArray() == nullptr &&
           image.GetPalette() == nullptr && image.m_pBMI == nullptr && image.GetPaletteNum() == 0 &&
           image.m_nPaletteSize == 0 &&
           std::equal(reinterpret_cast<const char*>(&zero),
                      reinterpret_cast<const char*>(&zero + 1),
                      reinterpret_cast<const char*>(image.GetBitmapInfoHeader()));
}

TEST(Lifetime, CleanForgetsBorrowedBuffersAndKeepsTheFlag) {
    Picture picture = support::MakePicture({8, BI_RGB, 0}, 5, 5, 1);
    const Picture before = picture;
    CKelImage image;
    EXPECT_TRUE(IsEmpty(image));
    ASSERT_EQ(image.OpenAs(picture.Info(), picture.bits.data(), 0), KEL_OK);
    image.Clean();
    image.Clean();
    EXPECT_TRUE(IsEmpty(image));
    EXPECT_EQ(image.m_bOwnBuffers, 0);
    EXPECT_EQ(picture.bits, before.bits);
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
    EXPECT_EQ(image.GetBits(), pBits);
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
    const Picture before = picture;
    EXPECT_NE(image.Create(2, 2, 8), nullptr);  // lets go of what it borrows
    EXPECT_EQ(image.m_bOwnBuffers, 1);
    EXPECT_TRUE(support::Consistent(image));
    EXPECT_EQ(picture.block, before.block);
    EXPECT_EQ(picture.bits, before.bits);
}

TEST(Lifetime, InitForgetsWithoutReleasing) {
    CKelImage image;
    unsigned char* pBits = image.Create(2, 2, 8);
    unsigned char** ppRows = image.GetLineArray();
    image.Init();
    EXPECT_TRUE(IsEmpty(image));
    pBits[0] = 1;
    delete[] pBits;
    delete[] ppRows;
}

TEST(Lifetime, BeginsAndEndsThroughTheInterface) {
    int nStorage = 0;
    IKelImage* pImage = reinterpret_cast<IKelImage*>(&nStorage);
    {
        const support::AllocFaults faults(1);
        CreateImageObject(&pImage);
    }
    EXPECT_EQ(pImage, nullptr);
    DestroyImageObject(pImage);
    (new CKelImage)->Destroy();
}

TEST(Result, EachCodeHasANameAndAMeaningOfItsOwn) {
    const KelResult codes[] = {0, 1, 2, 3, 4, 5, 6, 8, 11, 1000, -1, 7, 9, 10, 12, 999, 1001};
    const std::vector<std::string> names = {
        "OK",        "ERR_FAIL",   "ERR_SAVE_FORMAT", "ERR_OPEN_FORMAT", "ERR_FILTER_TYPE",
        "ERR_PARAM", "ERR_MEMORY", "ERR_FILE",        "ERR_CODEC",       "ERR_NOT_IMPLEMENTED"};
    std::set<std::string> meanings;
    for (std::size_t i = 0; i < std::size(codes); ++i) {
        const std::string strUnknown = KelResultName(-1);
        EXPECT_EQ(KelResultName(codes[i]), i < names.size() ? "KEL_" + names[i] : strUnknown);
        meanings.insert(KelResultMeaning(codes[i]));
    }
    EXPECT_EQ(meanings.size(), names.size() + 1);
}

}  // namespace
