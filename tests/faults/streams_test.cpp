// Streams that misbehave the way they do outside tests.
#include <gtest/gtest.h>
#include <platform/vamarchivefile.h>

#include <cstring>

#include "scenarios.h"
#include "support/recordingtrace.h"

using namespace faults;

TEST(Streams, FullDiskDuringSaveIsKnownToTheArchive) {
    CKelImage image;
    ASSERT_NE(image.Create(200, 100, 24), nullptr);
    for (const KelImageFormat eFormat : {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG}) {
        CVamArchiveFile full;
        if (!full.Open("/dev/full", "w+b"))
            GTEST_SKIP() << "no /dev/full here";
        EXPECT_EQ(image.Save(&full, eFormat, nullptr), KEL_OK);
        EXPECT_FALSE(full.Close());
        EXPECT_TRUE(full.HasFailed());
        EXPECT_EQ(image.Save("/dev/full", eFormat, nullptr), KEL_OK);
    }
}

TEST(Streams, CodecErrorInTheMiddleKeepsTheRowsReadSoFar) {
    const support::RecordingTrace silence(-1);
    // PNG: pixel data that end after some rows. JPEG: a second start-of-image marker among the
    // data.
    CKelImage picture;
    ASSERT_EQ(support::OpenRandom(&picture, {24, BI_RGB, 0}, 64, 400, 1), KEL_OK);
    for (const KelImageFormat eFormat : {KEL_IMAGE_PNG, KEL_IMAGE_JPEG}) {
        CVamArchiveMemory whole, damaged;
        ASSERT_EQ(picture.Save(&whole, eFormat, nullptr), KEL_OK);
        const std::size_t nHalf = whole.GetSize() / 2;
        damaged.Write(whole.GetData(), static_cast<unsigned int>(whole.GetSize()));
        damaged.Seek(static_cast<long long>(nHalf), 0);
        damaged.Write("\xFF\xD8\xFF\xD8", 4);
        damaged.Seek(0, 0);
        CKelImage image;
        EXPECT_EQ(image.Open(&damaged), KEL_ERR_CODEC);
        ExpectSound(image, "damaged");
        ASSERT_EQ(image.GetHeight(), 400);
        CKelImage intact;
        whole.Seek(0, 0);
        ASSERT_EQ(intact.Open(&whole), KEL_OK);
        EXPECT_EQ(std::memcmp(image.GetLineArray()[40], intact.GetLineArray()[40], 192), 0);
        const Bytes last(image.GetLineArray()[399], image.GetLineArray()[399] + 192);
        EXPECT_NE(std::memcmp(last.data(), intact.GetLineArray()[399], 192), 0);
        if (eFormat == KEL_IMAGE_PNG) {
            EXPECT_EQ(last, Bytes(192, 0));
        }
    }
}
