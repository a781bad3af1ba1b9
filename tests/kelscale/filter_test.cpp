// The scale filter: what its parameters mean, and what an image is left with.
#include <gtest/gtest.h>
#include <ikelex/handle.h>

#include <climits>
#include <limits>
#include <memory>
#include <vector>

#include "kelimage/kelimage.h"
#include "kelscale/kelfilter.h"
#include "kelscale/kelscale.h"
#include "support/allocfaults.h"
#include "support/inspect.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"
#include "support/reference/operations.h"

namespace {

using support::Bytes;
using support::RowsOf;

CVamVariant Tagged(int nTag, unsigned long long nValue) {
    CVamVariant value;
    value.Set(static_cast<unsigned char>(nTag), nValue);
    return value;
}

// The 24-bit picture that the filter makes of source.
Bytes Scaled(CKelImage& source, tagKelParameters* pOptions) {
    IKelImage* pMade = nullptr;
    EXPECT_EQ(KEL_OK, source.ApplyFilter(&pMade, KEL_FILTER_SCALE, pOptions));
    const std::unique_ptr<CKelImage> made(dynamic_cast<CKelImage*>(pMade));
    EXPECT_EQ(24, made->GetBitsPerPixel());
    return RowsOf(*made).bytes;
}

// What the reference makes of source at 24 bits; black without a kernel.
Bytes Expected(CKelImage& source, int nKernel, int nWidth, int nHeight) {
    CKelImage lines, made;
    lines.Create(source.GetWidth(), source.GetHeight(), 24);
    source.ConvertTo24Bit(2, lines.GetBits());
    made.Create(nWidth, nHeight, 24);
    if (nKernel >= 1 && nKernel <= reference::kKernelCount) {
        reference::Scale(nKernel, lines.GetLineArray(), source.GetWidth(), source.GetHeight(),
                         made.GetLineArray(), nWidth, nHeight);
    }
    return RowsOf(made).bytes;
}

TEST(ScaleFilter, ReadsSizesByTheirKind) {
    const double dNone = std::numeric_limits<double>::quiet_NaN();
    const std::pair<CVamVariant, int> cases[] = {{short{-1}, -1},
                                                 {Tagged(VAM_UINT16, 65535), 65535},
                                                 {-5, -5},
                                                 {77u, 77},
                                                 {Tagged(VAM_LONG, 0x700000010ull), 16},
                                                 {Tagged(VAM_ULONG, 33), 33},
                                                 {0.5f, 50},
                                                 {0.1, 10},
                                                 {-0.999, -100},
                                                 {dNone, 0},
                                                 {21262214.0f, 0},
                                                 {-21262214.0f, INT_MIN},
                                                 {-21262300.0f, 0},
                                                 {Tagged(VAM_EMPTY, 9), 101},
                                                 {Tagged(12, 9), 101}};
    for (const auto& [value, nExpected] : cases) {
        CKelImageFilterScale filter;
        filter.SetParameters(
            KelParameters().Set("Width", 1).Set("width", value).Set("height", value));
        EXPECT_EQ(nExpected, filter.GetScaleWidth(101));
        EXPECT_EQ(nExpected, filter.GetScaleHeight(101)) << nExpected;
    }
    CKelImageFilterScale filter;
    EXPECT_EQ(12, filter.GetScaleWidth(12));
    EXPECT_EQ(3.0, filter.GetScaleRadius());
}

TEST(ScaleFilter, TakesTheKernelFromATaggedIntegerOnly) {
    CKelImage source;
    ASSERT_EQ(KEL_OK, support::OpenRandom(&source, {24, BI_RGB, 0}, 40, 30, 1));
    for (int nTag = 0; nTag <= 12; ++nTag) {
        for (const int nType : {0, 1, 3, reference::kKernelCount + 1}) {
            const auto nValue = static_cast<unsigned long long>(nType);
            KelParameters options = KelParameters().Set("width", 17).Set("height", 45);
            options.Set("type", Tagged(nTag, nValue));
            const int nKernel = nTag == VAM_INT32 ? nType : KEL_SCALE_BILINEAR;
            EXPECT_EQ(Expected(source, nKernel, 17, 45), Scaled(source, options)) << nTag;
        }
    }
}

TEST(ScaleFilter, ConvertsEveryDepthAndLeavesTheSourceAlone) {
    for (const support::Kind& kind : support::AllKinds()) {
        SCOPED_TRACE(support::Name(kind));
        CKelImage source;
        ASSERT_EQ(KEL_OK, support::OpenRandom(&source, kind, 21, 9, 1));
        const Bytes before = RowsOf(source).bytes;
        const Bytes expected = Expected(source, KEL_SCALE_HAMMING, 50, 4);
        KelParameters options =
            KelParameters().Set("width", 50).Set("height", 0.5f).Set("type", KEL_SCALE_HAMMING);
        EXPECT_EQ(expected, Scaled(source, options));
        EXPECT_EQ(before, RowsOf(source).bytes);
        ASSERT_EQ(KEL_OK, source.ApplyFilter(KEL_FILTER_SCALE, options));
        EXPECT_EQ(expected, RowsOf(source).bytes);
        EXPECT_EQ(nullptr, source.GetPalette());
    }
}

TEST(ScaleFilter, AnswersBadRequestsAndChangesNothing) {
    CKelImage image, empty;
    ASSERT_EQ(KEL_OK, support::OpenRandom(&image, {24, BI_RGB, 0}, 8, 5, 1));
    const Bytes before = RowsOf(image).bytes;
    IKelImage* pMade = &empty;
    EXPECT_EQ(KEL_ERR_FILTER_TYPE,
              image.ApplyFilter(&pMade, static_cast<KelImageFilterType>(2), nullptr));
    EXPECT_EQ(nullptr, pMade);
    EXPECT_EQ(KEL_ERR_PARAM, empty.ApplyFilter(KEL_FILTER_SCALE, nullptr));
    for (const char* pszName : {"width", "height"}) {
        for (const int nSize : {0, -1}) {
            KelParameters options = KelParameters().Set(pszName, nSize);
            EXPECT_EQ(KEL_ERR_PARAM, image.ApplyFilter(&pMade, KEL_FILTER_SCALE, options));
            EXPECT_EQ(KEL_ERR_PARAM, image.ApplyFilter(KEL_FILTER_SCALE, options));
        }
    }
    KelParameters huge = KelParameters().Set("width", 2000000000).Set("height", 2000000000);
    EXPECT_EQ(KEL_ERR_MEMORY, image.ApplyFilter(KEL_FILTER_SCALE, huge));
    {
        const support::RecordingTrace trace;
        const support::AllocFaults faults(1);  // the new image
        EXPECT_EQ(KEL_ERR_PARAM, image.ApplyFilter(KEL_FILTER_SCALE, nullptr));
    }
    CKelImageFilterScale filter;
    ASSERT_EQ(KEL_OK, support::OpenRandom(&empty, {24, BI_RGB, 0}, 8, 5, 1));
    filter.SetParameters(huge);
    EXPECT_EQ(KEL_ERR_MEMORY, filter.Apply(&image, &empty));
    EXPECT_EQ(nullptr, empty.GetBits());
    EXPECT_EQ(KEL_ERR_PARAM, filter.Apply(nullptr, &image));
    EXPECT_EQ(KEL_ERR_PARAM, filter.Apply(&image, nullptr));
    EXPECT_EQ(KEL_ERR_PARAM, filter.Apply(&image, &image));
    image.m_bmih.biWidth = -8;
    EXPECT_EQ(KEL_ERR_PARAM, image.ApplyFilter(KEL_FILTER_SCALE, KelParameters().Set("width", 3)));
    image.m_bmih.biWidth = 8;
    EXPECT_EQ(before, RowsOf(image).bytes);
    ASSERT_EQ(KEL_OK, image.ApplyFilter(KEL_FILTER_SCALE, nullptr));
    EXPECT_EQ(before, RowsOf(image).bytes);
}

// The conversion's size is traced when it is 0 or over the limit; the work goes on.
TEST(ScaleFilter, TracesStrangeConversionSizes) {
    const struct {
        int nWidth, nHeight;
        const char* pszText;
    } cases[] = {{0, 1000, "bufferSize is invalid: 0"},
                 {1000, 0, "bufferSize is invalid: 0"},
                 {17480, 1000, "bufferSize is invalid: 52440000"},
                 {26488, 37453, "bufferSize is invalid: 2976165192"}};
    for (const auto& [nWidth, nHeight, pszText] : cases) {
        CKelImage image;
        image.Create(nWidth, nHeight, 1);
        support::RecordingTrace trace;
        EXPECT_EQ(KEL_OK, image.ApplyFilter(KEL_FILTER_SCALE,
                                            KelParameters().Set("width", 2).Set("height", 2)));
        EXPECT_EQ(support::InputError(pszText), trace.Lines());
        EXPECT_EQ(Bytes(16), RowsOf(image).bytes);
    }
}

// Old memory shows nowhere: not where no kernel or no colours write, and not in the padding. What
// the target held before is gone.
TEST(ScaleFilter, LeavesNothingOld) {
    for (const int nBits : {8, 16, 32}) {
        for (const int nType : {0, int{KEL_SCALE_BOX}}) {
            CKelImage source, target;
            ASSERT_EQ(KEL_OK, support::OpenRandom(&target, {8, BI_RGB, 0}, 4, 4, 1));
            const unsigned nKind = nBits == 8 ? BI_RGB : BI_BITFIELDS;
            ASSERT_EQ(KEL_OK, support::OpenRandom(&source, {nBits, nKind, 0}, 30, 60, 1));
            source.DestroyPaletteTable();         // or the masks
            const support::RecordingTrace trace;  // not on standard error
            CKelImageFilterScale filter;
            filter.SetParameters(
                KelParameters().Set("width", 7).Set("height", 5).Set("type", nType));
            const support::AllocFill fill(0xCC);
            bool bFired = true;
            for (long nFailing = 1; bFired; ++nFailing) {
                {
                    const support::AllocFaults faults(nFailing, true);
                    const KelResult nResult = filter.Apply(&source, &target);
                    bFired = faults.Fired();
                    EXPECT_TRUE(nResult == KEL_OK || (bFired && nResult == KEL_ERR_MEMORY));
                }
                EXPECT_TRUE(target.GetBits() == nullptr || Bytes(5 * 24) == RowsOf(target).bytes);
            }
            EXPECT_EQ(Bytes(5 * 24), RowsOf(target).bytes) << nBits;
            EXPECT_EQ(nullptr, target.GetPalette());
        }
    }
}

}  // namespace
