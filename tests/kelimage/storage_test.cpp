// The pixel buffer, the header block, their owners.
#include <gtest/gtest.h>

#include "support/pictures.h"

namespace {

using support::Kind;
using support::Picture;

TEST(Storage, CreateMakesAZeroedPictureWithRows) {
    CKelImage image;
    unsigned char* pBits = image.Create(3, 2, 24);
    ASSERT_NE(pBits, nullptr);
    EXPECT_EQ(image.GetBits(), pBits);
    EXPECT_EQ(image.GetBmpDataSize(), 24u);
    EXPECT_EQ(std::vector<unsigned char>(pBits, pBits + 24), std::vector<unsigned char>(24));
    EXPECT_EQ(image.GetLineArray()[0], pBits);
    EXPECT_EQ(image.GetLineArray()[1], pBits + 12);
    const BITMAPINFOHEADER& header = *image.GetBitmapInfoHeader();
    EXPECT_EQ(header.biSize, 40u);
    EXPECT_EQ(header.biPlanes, 1);
    EXPECT_EQ(header.biSizeImage, 0u);
    EXPECT_EQ(image.GetPalette(), nullptr);
}

TEST(Storage, OpenCopiesEveryKind) {
    for (const Kind& kind : support::AllKinds()) {
        SCOPED_TRACE(support::Name(kind));
        Picture picture = support::MakePicture(kind, 13, 5, 1);
        CKelImage image;
        ASSERT_EQ(image.Open(picture.Info(), picture.bits.data()), KEL_OK);
        EXPECT_NE(image.GetBits(), picture.bits.data());
        EXPECT_EQ(
            std::vector<unsigned char>(image.GetBits(), image.GetBits() + picture.bits.size()),
            picture.bits);
        const auto* pBlock = reinterpret_cast<unsigned char*>(image.GetBitmapInfo());
        EXPECT_EQ(std::vector<unsigned char>(pBlock, pBlock + picture.block.size()), picture.block);
        EXPECT_EQ(static_cast<std::size_t>(image.GetPaletteNum()) * 4 + 40, picture.block.size());
    }
}

}  // namespace
