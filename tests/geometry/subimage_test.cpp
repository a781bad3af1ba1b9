#include <gtest/gtest.h>

#include <climits>

#include "kelbitmap/strides.h"
#include "support/allocfaults.h"
#include "support/recordingtrace.h"
#include "support/refgeometry.h"
#include "support/securefaults.h"

namespace {

using support::Bytes;

// Every rectangle of small pictures: each offset inside a byte, the right edge, the last row.
TEST(SubImage, EveryRectangleAtEveryDepth) {
    for (const int nBits : support::kDepths) {
        const int nWidth = nBits < 8 ? 37 : 6, nHeight = 3;
        const Bytes src = support::RandomRows(nBits, nWidth, nHeight, 2);
        for (int x = 0; x <= nWidth; ++x) {
            for (int y = 0; y <= nHeight; ++y) {
                for (int w = 0; w <= nWidth - x; ++w) {
                    const int h = nHeight - y - (w + x) % 2 * (y < 2);
                    // The raw form on a block of the exact size: a sanitizer sees what lies behind.
                    Bytes raw = src;
                    CKelImage().CopyBytes(nBits, raw.data(), nWidth, nHeight, x, y, w, h);
                    CKelImage image;
                    support::FillImage(&image, nBits, nWidth, nHeight, src, true);
                    image.SubImage(x, y, w, h);
                    const Bytes want = support::RefCrop(nBits, src, nWidth, x, y, w, h);
                    ASSERT_EQ(support::RowsOf(image), want)
                        << nBits << " bits: " << x << "," << y << " " << w << "x" << h;
                    ASSERT_TRUE(std::equal(want.begin(), want.end(), raw.begin()));
                    ASSERT_EQ("", support::Disagreement(image, static_cast<unsigned>(want.size())));
                }
            }
        }
    }
}

TEST(SubImage, RectanglesOutsideChangeNothing) {
    const int rectangles[][4] = {{-1, 0, 2, 2},
                                 {0, -1, 2, 2},
                                 {0, 0, -1, 2},
                                 {0, 0, 2, -1},
                                 {3, 0, 2, 2},
                                 {0, 3, 2, 2},
                                 {0, 0, 5, 1},
                                 {INT_MAX, 0, 1, 1},
                                 {1, 1, INT_MAX, INT_MAX},
                                 {0, INT_MAX, 1, INT_MAX}};
    const Bytes src = support::RandomRows(24, 4, 4, 2);
    CKelImage image;
    image.SubImage(0, 0, 0, 0);
    EXPECT_EQ(image.GetLineArray(), nullptr);
    support::FillImage(&image, 24, 4, 4, src);
    for (const auto& r : rectangles) {
        image.SubImage(r[0], r[1], r[2], r[3]);
        EXPECT_EQ(support::RowsOf(image), src);
    }
    // The raw form ends at the buffer's end, whatever is asked for: rows from beyond it are zero.
    Bytes raw = src;
    image.CopyBytes(24, raw.data(), 4, 4, 2, 3, 4, 4);
    EXPECT_TRUE(std::all_of(raw.begin() + 6, raw.end(), [](auto by) { return by == 0; }));
    EXPECT_TRUE(std::equal(raw.begin(), raw.begin() + 6, src.end() - 6));
    raw = src;
    image.CopyBytes(24, raw.data(), 4, 4, -1, 0, 2, 2);
    image.CopyBytes(24, raw.data(), 4, 4, 0, -1, 2, 2);
    image.CopyBytes(24, raw.data(), 4, 4, 0, 0, 5, 2);
    EXPECT_EQ(raw, src);
}

TEST(SubImage, FailuresOfMemory) {
    support::RecordingTrace trace(1);
    const Bytes src = support::RandomRows(24, 4, 4, 2);
    for (int n = 1; n <= 4; ++n) {  // two copies for each of two rows
        CKelImage image;
        support::FillImage(&image, 24, 4, 4, src, true);
        trace.Clear();
        {
            support::AllocFaults faults(1);
            image.SubImage(1, 1, 2, 2);
        }
        EXPECT_EQ(trace.Lines(), support::InputError("lpLine is nullptr"));
        EXPECT_EQ(support::RowsOf(image), src);
        EXPECT_EQ(image.GetBitmapInfo()->bmiHeader.biWidth, 4);
        trace.Clear();
        support::SecureFaults faults(n);
        image.SubImage(1, 1, 2, 2);
        EXPECT_EQ(faults.Seen(), 4);
        EXPECT_EQ(trace.Lines().size(), 1u);
        EXPECT_EQ(support::RowsOf(image), support::RefCrop(24, src, 4, 1, 1, 2, 2));
        // Bytes 3 ... 10 of the old rows 1 and 2.
        EXPECT_TRUE(std::equal(src.begin() + 15, src.begin() + 23, image.GetBits()));
        EXPECT_TRUE(std::equal(src.begin() + 27, src.begin() + 35, image.GetBits() + 8));
    }
}

}  // namespace
