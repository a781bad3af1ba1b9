// Construction, emptying, transfer, end.
#include <gtest/gtest.h>

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

TEST(Lifetime, EndsThroughTheInterface) {
    DestroyImageObject(nullptr);
    (new CKelImage)->Destroy();
}

}  // namespace
