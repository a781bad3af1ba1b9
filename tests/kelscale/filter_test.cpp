// The scale filter: what its parameters mean, and what an image is left with.
#include <gtest/gtest.h>
#include <ikelex/parameters.h>

#include <limits>
#include <memory>
#include <vector>

#include "kelimage/kelimage.h"
#include "kelscale/kelfilter.h"
#include "support/allocfaults.h"
#include "support/recordingtrace.h"
#include "support/refscale.h"

namespace {

// A list whose items live as long as it does.
struct Options : tagKelParameters {
    std::vector<tagKelParameterItem> items;

    Options() : tagKelParameters{0, nullptr} {}
    Options& Add(const char* pszName, const CVamVariant& value) {
        items.push_back({CVamString(pszName), value});
        nCount = static_cast<unsigned int>(items.size());
        pItems = items.data();
        return *this;
    }
};

CVamVariant Tagged(int nTag, unsigned long long nValue) {
    CVamVariant value;
    value.Set(static_cast<unsigned char>(nTag), nValue);
    return value;
}

void FillImage(CKelImage& image, int nWidth, int nHeight, int nBits) {
    ASSERT_NE(nullptr, image.Create(nWidth, nHeight, nBits));
    for (unsigned int i = 0; i < image.GetBmpDataSize(); ++i) {
        image.GetBits()[i] = static_cast<unsigned char>(i * i / 7 + i);
    }
}

std::vector<unsigned char> BytesOf(CKelImage& image) {
    return {image.GetBits(), image.GetBits() + image.GetBmpDataSize()};
}

// The 24-bit picture that the filter makes of source.
std::vector<unsigned char> Scaled(CKelImage& source, Options& options) {
    IKelImage* pMade = nullptr;
    EXPECT_EQ(KEL_OK, source.ApplyFilter(&pMade, KEL_FILTER_SCALE, &options));
    const std::unique_ptr<CKelImage> made(dynamic_cast<CKelImage*>(pMade));
    EXPECT_EQ(24, made->GetBitsPerPixel());
    return BytesOf(*made);
}

TEST(ScaleFilter, ReadsSizesByTheirKind) {
    const double dNone = std::numeric_limits<double>::quiet_NaN();
    const struct {
        CVamVariant value;
        int nExpected;
    } cases[] = {{CVamVariant(short{-1}), -1},
                 {Tagged(VAM_UINT16, 65535), 65535},
                 {CVamVariant(-5), -5},
                 {CVamVariant(77u), 77},
                 {Tagged(VAM_LONG, 0x700000010ull), 16},
                 {Tagged(VAM_ULONG, 33), 33},
                 {CVamVariant(0.5f), 50},
                 {CVamVariant(0.1), 10},
                 {CVamVariant(-0.999), -100},
                 {CVamVariant(dNone), 0},
                 {CVamVariant(1e300), 0},
                 {CVamVariant(21262214.0f), 0},
                 {Tagged(VAM_EMPTY, 9), 101},
                 {Tagged(3, 9), 101},
                 {Tagged(12, 9), 101}};
    for (const auto& test : cases) {
        Options options;
        options.Add("Width", CVamVariant(1)).Add("width", test.value).Add("height", test.value);
        options.Add("width", CVamVariant(2));
        CKelImageFilterScale filter;
        filter.SetParameters(&options);
        const int nTag = test.value.m_byType;
        EXPECT_EQ(test.nExpected, filter.GetScaleWidth(101)) << "tag " << nTag;
        EXPECT_EQ(test.nExpected, filter.GetScaleHeight(101)) << "tag " << nTag;
    }
    CKelImageFilterScale filter;
    EXPECT_EQ(12, filter.GetScaleWidth(12));
    EXPECT_EQ(3.0, filter.GetScaleRadius());
}

TEST(ScaleFilter, TakesTheKernelFromATaggedIntegerOnly) {
    CKelImage source;
    FillImage(source, 40, 30, 24);
    for (int nTag = 0; nTag <= 12; ++nTag) {
        for (int nType = 0; nType <= 5; ++nType) {
            Options options;
            options.Add("width", CVamVariant(17)).Add("height", CVamVariant(45));
            options.Add("type", Tagged(nTag, static_cast<unsigned int>(nType)));
            CKelImage expected;
            expected.Create(17, 45, 24);
            const int nKernel = nTag == VAM_INT32 ? nType : KEL_SCALE_BILINEAR;
            if (nKernel >= 1 && nKernel <= 4) {
                support::RefScale(static_cast<KelScaleType>(nKernel), source.GetLineArray(), 40, 30,
                                  expected.GetLineArray(), 17, 45);
            }
            EXPECT_EQ(BytesOf(expected), Scaled(source, options))
                << "tag " << nTag << ", type " << nType;
        }
    }
}

TEST(ScaleFilter, ConvertsEveryDepthAndLeavesTheSourceAlone) {
    for (const int nBits : {1, 4, 8, 16, 24, 32}) {
        CKelImage source, lines;
        FillImage(source, 21, 9, nBits);
        for (int i = 0; nBits <= 8 && i < 1 << nBits; ++i) {
            const auto byValue = static_cast<unsigned char>(i * 37);
            source.AddPaletteEntry(byValue, static_cast<unsigned char>(i), 200, 255);
        }
        const std::vector<unsigned char> before = BytesOf(source);
        lines.Create(21, 9, 24);
        for (int y = 0; y < 9; ++y) {
            source.GetLine24AsBGRAt(y, lines.GetLineArray()[y]);
        }
        CKelImage expected;
        expected.Create(50, 4, 24);
        support::RefScale(KEL_SCALE_HAMMING, lines.GetLineArray(), 21, 9, expected.GetLineArray(),
                          50, 4);
        Options options;
        options.Add("width", CVamVariant(50)).Add("height", CVamVariant(0.5f));
        options.Add("type", CVamVariant(KEL_SCALE_HAMMING));
        EXPECT_EQ(BytesOf(expected), Scaled(source, options)) << nBits << " bits";
        EXPECT_EQ(before, BytesOf(source));
        ASSERT_EQ(KEL_OK, source.ApplyFilter(KEL_FILTER_SCALE, &options));
        EXPECT_EQ(BytesOf(expected), BytesOf(source)) << nBits << " bits, in place";
        EXPECT_EQ(nullptr, source.GetPalette());
    }
}

TEST(ScaleFilter, AnswersBadRequestsAndChangesNothing) {
    CKelImage image, empty;
    FillImage(image, 8, 5, 24);
    const std::vector<unsigned char> before = BytesOf(image);
    IKelImage* pMade = &empty;
    EXPECT_EQ(KEL_ERR_FILTER_TYPE,
              image.ApplyFilter(&pMade, static_cast<KelImageFilterType>(2), nullptr));
    EXPECT_EQ(nullptr, pMade);
    EXPECT_EQ(KEL_ERR_PARAM, empty.ApplyFilter(KEL_FILTER_SCALE, nullptr));
    for (const char* pszName : {"width", "height"}) {
        for (const CVamVariant& value : {CVamVariant(0), CVamVariant(-1), CVamVariant(1e30)}) {
            Options options;
            options.Add(pszName, value);
            pMade = &empty;
            EXPECT_EQ(KEL_ERR_PARAM, image.ApplyFilter(&pMade, KEL_FILTER_SCALE, &options));
            EXPECT_EQ(nullptr, pMade);
            EXPECT_EQ(KEL_ERR_PARAM, image.ApplyFilter(KEL_FILTER_SCALE, &options));
        }
    }
    Options huge;
    huge.Add("width", CVamVariant(2000000000)).Add("height", CVamVariant(2000000000));
    EXPECT_EQ(KEL_ERR_MEMORY, image.ApplyFilter(KEL_FILTER_SCALE, &huge));
    {
        const support::AllocFaults faults(1);  // the new image
        EXPECT_EQ(KEL_ERR_PARAM, image.ApplyFilter(KEL_FILTER_SCALE, nullptr));
    }
    CKelImageFilterScale filter;
    EXPECT_EQ(KEL_ERR_PARAM, filter.Apply(nullptr, &image));
    EXPECT_EQ(KEL_ERR_PARAM, filter.Apply(&image, nullptr));
    EXPECT_EQ(KEL_ERR_PARAM, filter.Apply(&image, &image));
    EXPECT_EQ(before, BytesOf(image));
    ASSERT_EQ(KEL_OK, image.ApplyFilter(KEL_FILTER_SCALE, nullptr));
    EXPECT_EQ(before, BytesOf(image));
}

// The conversion's size is traced when it is 0 or over the limit; the work goes on.
TEST(ScaleFilter, TracesStrangeConversionSizes) {
    const struct {
        int nWidth, nHeight;
        const char* pszText;
    } cases[] = {{0, 3, "bufferSize is invalid: 0"},
                 {17480, 1000, "bufferSize is invalid: 52440000"}};
    for (const auto& test : cases) {
        CKelImage image;
        image.Create(test.nWidth, test.nHeight, 1);
        Options options;
        options.Add("width", CVamVariant(2)).Add("height", CVamVariant(2));
        options.Add("type", CVamVariant(9));
        support::RecordingTrace trace;
        EXPECT_EQ(KEL_OK, image.ApplyFilter(KEL_FILTER_SCALE, &options));
        EXPECT_EQ(support::InputError(test.pszText), trace.Lines());
    }
}

}  // namespace
