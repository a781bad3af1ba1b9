#include <gtest/gtest.h>

#include "kelbitmap/strides.h"
#include "kelimage/transpose.h"
#include "support/allocfaults.h"
#include "support/recordingtrace.h"
#include "support/refgeometry.h"
#include "support/securefaults.h"

namespace {

using support::Bytes;

TEST(Rotate, TransposesEveryDepthAndSizeAndKeepsTheRest) {
    const int sizes[][2] = {{1, 1}, {3, 2}, {2, 3}, {8, 8}, {17, 5}, {33, 31}, {1, 70}, {90, 1}};
    for (const int nBits : support::kDepths) {
        for (const auto& s : sizes) {
            const Bytes src = support::RandomRows(nBits, s[0], s[1], 4);
            CKelImage image;
            support::FillImage(&image, nBits, s[0], s[1], src, true);
            ASSERT_TRUE(image.Rotate(270));
            EXPECT_EQ(image.GetWidth(), s[1]);
            EXPECT_EQ(image.GetHeight(), s[0]);
            EXPECT_EQ(support::RowsOf(image), support::RefTranspose(nBits, src, s[0], s[1]))
                << nBits << " bits, " << s[0] << "x" << s[1];
            EXPECT_EQ("", support::Disagreement(
                              image, static_cast<unsigned>(kel::PictureSize(nBits, s[1], s[0]))));
        }
    }
}

// Each variant against the plain loop: sizes around blocks and strips, odd alignments, guard bytes.
TEST(Rotate, EveryVariantEqualsThePlainLoop) {
    const int sizes[][2] = {{16, 16}, {17, 16},   {18, 33},  {80, 15},  {81, 47},  {64, 70},
                            {65, 70}, {145, 300}, {30, 530}, {66, 257}, {70, 1100}};
    for (int nLevel = 0; nLevel <= static_cast<int>(kel::BestCpuLevel()); ++nLevel) {
        for (int nBytes = 1; nBytes <= 5; ++nBytes) {
            for (const auto& s : sizes) {
                const std::int64_t nFrom = s[0] * nBytes + nLevel;  // rows at every alignment
                const std::int64_t nTo = s[1] * nBytes + 3;
                const Bytes src = support::RandomRows(8, static_cast<int>(nFrom), s[1], 6);
                // Exactly the bytes the rows need, so that a sanitizer sees any other.
                const Bytes exact(src.begin(), src.begin() + (s[1] - 1) * nFrom + s[0] * nBytes);
                Bytes want(static_cast<std::size_t>(nTo * s[0]), 0xA5);
                Bytes have = want;
                kel::TransposePixelsPlain(nBytes,
                                          {exact.data(), nFrom, s[0], s[1], want.data(), nTo});
                kel::TransposePixels(static_cast<kel::CpuLevel>(nLevel), nBytes,
                                     {exact.data(), nFrom, s[0], s[1], have.data(), nTo});
                ASSERT_EQ(want, have)
                    << "level " << nLevel << ", " << nBytes << " bytes, " << s[0] << "x" << s[1];
            }
        }
    }
}

TEST(Rotate, LargePicturesAreWrittenPastTheCaches) {
    const int nWidth = 2100, nHeight = 3003;  // 25 MB
    const Bytes src = support::RandomRows(32, nWidth, nHeight, 8);
    CKelImage image;
    support::FillImage(&image, 32, nWidth, nHeight, src);
    image.Rotate(0);
    EXPECT_TRUE(support::RowsOf(image) == support::RefTranspose(32, src, nWidth, nHeight));
}

TEST(Rotate, OnePixelOfTheExample) {
    CKelImage image;
    support::FillImage(&image, 24, 3, 2, support::RandomRows(24, 3, 2, 2), true);
    const std::uint32_t nPixel = support::PixelAt(24, image.GetLineArray()[0], 2);
    image.Rotate(90);
    EXPECT_EQ(support::PixelAt(24, image.GetLineArray()[2], 0), nPixel);
    EXPECT_EQ("", support::Disagreement(image, 24));
    // Followed by a mirroring: 90 degrees counter-clockwise.
    image.Mirror(0);
    EXPECT_EQ(support::PixelAt(24, image.GetLineArray()[0], 0), nPixel);
}

TEST(Rotate, TracesTheSizeAndRefusesWhatDoesNotFit) {
    support::RecordingTrace trace(2);
    CKelImage image;
    EXPECT_FALSE(image.Rotate(0));
    EXPECT_TRUE(trace.Lines().empty());
    support::FillImage(&image, 8, 13200000, 1, Bytes());  // 4 bytes a row once transposed
    EXPECT_TRUE(image.Rotate(0));
    EXPECT_EQ(trace.Lines(), support::InputError("bufferSize is invalid: 52800000"));
    trace.Clear();
    support::FillImage(&image, 8, 0, 3, Bytes());
    EXPECT_TRUE(image.Rotate(0));
    EXPECT_EQ(trace.Lines(), support::InputError("bufferSize is invalid: 0"));
    trace.Clear();
    support::FillImage(&image, 1, 1200000000, 1, Bytes());  // 4,800,000,000 bytes once transposed
    EXPECT_FALSE(image.Rotate(0));
    EXPECT_EQ(trace.Lines(), support::InputError("bufferSize is invalid: 505032704"));
    EXPECT_EQ(image.GetWidth(), 1200000000);
}

TEST(Rotate, FailuresOfMemory) {
    const Bytes src = support::RandomRows(16, 40, 30, 1);
    const Bytes want = support::RefTranspose(16, src, 40, 30);
    for (int n = 1; n <= 3; ++n) {  // the buffer, the strip, the rows
        CKelImage image;
        support::FillImage(&image, 16, 40, 30, src);
        support::AllocFaults faults(n);
        EXPECT_EQ(image.Rotate(0), n > 1);
        EXPECT_TRUE(faults.Fired());
        EXPECT_EQ(support::RowsOf(image), n == 1 ? src : want);
    }
    support::RecordingTrace trace(1);
    CKelImage image;
    support::FillImage(&image, 16, 40, 30, src);
    support::SecureFaults faults(1);
    EXPECT_TRUE(image.Rotate(0));
    EXPECT_EQ(faults.Seen(), 1);
    ASSERT_EQ(trace.Lines().size(), 1u);
    EXPECT_EQ(trace.Lines()[0].nLevel, 1);
    EXPECT_EQ(support::RowsOf(image), want);
}

// What the caller lent stays as it was, also when the copy of the header block cannot be had.
TEST(Rotate, AndZoomLeaveBorrowedBuffersAlone) {
    for (const bool bZoom : {false, true}) {
        for (const int nFailing : {0, 2, 6}) {
            const Bytes src = support::RandomRows(24, 5, 4, 7);
            Bytes bits = src;
            BITMAPINFO block = {};
            block.bmiHeader.biSize = 40;
            block.bmiHeader.biWidth = 5;
            block.bmiHeader.biHeight = 4;
            block.bmiHeader.biBitCount = 24;
            CKelImage image;
            ASSERT_EQ(image.OpenAs(&block, bits.data(), 0), KEL_OK);
            const auto before = support::CountLiveBlocks();
            bool bDone = true;
            {
                support::AllocFaults faults(nFailing);
                bZoom ? image.ZoomImage(4, 5) : static_cast<void>(image.Rotate(0));
                bDone = image.m_bOwnBuffers != 0;
            }
            EXPECT_EQ(bits, src);
            EXPECT_EQ(block.bmiHeader.biWidth, 5);
            EXPECT_EQ(block.bmiHeader.biSizeImage, 0u);
            if (bDone) {
                EXPECT_EQ(image.GetWidth(), 4);
                EXPECT_EQ("", support::Disagreement(image, 60));
            } else {
                EXPECT_EQ(image.GetBits(), bits.data());
                EXPECT_EQ(support::CountLiveBlocks(), before);
            }
            EXPECT_TRUE(bDone || nFailing != 0);
            image.Clean();
        }
    }
}

}  // namespace
