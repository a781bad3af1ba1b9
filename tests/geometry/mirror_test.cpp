#include <gtest/gtest.h>

#include "kelbitmap/strides.h"
#include "support/allocfaults.h"
#include "support/recordingtrace.h"
#include "support/refgeometry.h"
#include "support/securefaults.h"

namespace {

using support::Bytes;

TEST(Mirror, TurnsEveryDepthAndSizeUpsideDownInPlace) {
    for (const int nBits : support::kDepths) {
        for (const int nWidth : {1, 3, 31, 70}) {
            for (const int nHeight : {1, 2, 3, 8, 9}) {
                const Bytes src = support::RandomRows(nBits, nWidth, nHeight, 1);
                CKelImage image;
                support::FillImage(&image, nBits, nWidth, nHeight, src, true);
                unsigned char* const pBits = image.GetBits();
                image.Mirror(1);
                image.Mirror(-1);
                EXPECT_EQ(support::RowsOf(image), src);
                image.Mirror(0);
                EXPECT_EQ(image.GetBits(), pBits);
                EXPECT_EQ(support::RowsOf(image), support::RefMirror(nBits, src, nWidth, nHeight));
                EXPECT_EQ("", support::Disagreement(image, image.m_bmih.biSizeImage));
            }
        }
    }
}

TEST(Mirror, FailuresOfMemory) {
    support::RecordingTrace trace(1);
    CKelImage image;
    {
        support::AllocFaults faults(0);
        image.Mirror(0);  // without pixels
        EXPECT_EQ(faults.Seen(), 0);
    }
    const Bytes src = support::RandomRows(24, 5, 5, 1);
    support::FillImage(&image, 24, 5, 5, src);
    {
        support::AllocFaults faults(1);
        image.Mirror(0);
    }
    EXPECT_EQ(trace.Lines(), support::InputError("pRowByte is nullptr"));
    EXPECT_EQ(support::RowsOf(image), src);
    Bytes want = src;
    for (int n = 1; n <= 6; ++n) {  // three copies for each of two pairs of rows
        trace.Clear();
        support::SecureFaults faults(n);
        image.Mirror(0);
        EXPECT_EQ(faults.Seen(), 6);
        ASSERT_EQ(trace.Lines().size(), 1u);
        EXPECT_EQ(trace.Lines()[0].strText.rfind("[ikelex/src/kelimage;", 0), 0u);
        want = support::RefMirror(24, want, 5, 5);
        EXPECT_EQ(support::RowsOf(image), want);
    }
}

}  // namespace
