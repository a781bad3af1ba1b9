// The PNG reader against plain libpng, and what damage leaves.
#include <gtest/gtest.h>
#include "support/reference/codecs.h"

#include <algorithm>
#include <cstring>

#include "keldecoder/kelpngdecoder.h"
#include "support/pictures.h"
#include "support/readers.h"
#include "support/vamlines.h"

using reference::PngFormat;
using support::Bytes;

namespace {

struct Kind {
    int nColorType, nBitDepth;
    int nImageDepth;  // what the image holds
};

constexpr Kind kKinds[] = {{PNG_COLOR_TYPE_GRAY, 1, 24},        {PNG_COLOR_TYPE_GRAY, 2, 24},
                           {PNG_COLOR_TYPE_GRAY, 4, 24},        {PNG_COLOR_TYPE_GRAY, 8, 24},
                           {PNG_COLOR_TYPE_GRAY, 16, 24},       {PNG_COLOR_TYPE_RGB, 8, 24},
                           {PNG_COLOR_TYPE_RGB, 16, 24},        {PNG_COLOR_TYPE_PALETTE, 1, 1},
                           {PNG_COLOR_TYPE_PALETTE, 2, 8},      {PNG_COLOR_TYPE_PALETTE, 4, 4},
                           {PNG_COLOR_TYPE_PALETTE, 8, 8},      {PNG_COLOR_TYPE_GRAY_ALPHA, 8, 32},
                           {PNG_COLOR_TYPE_GRAY_ALPHA, 16, 32}, {PNG_COLOR_TYPE_RGB_ALPHA, 8, 32},
                           {PNG_COLOR_TYPE_RGB_ALPHA, 16, 32}};

// A file with random rows and, for indices, a random palette of nColors (0: of all there can be).
Bytes NoiseFile(PngFormat format, std::size_t nColors = 0,
                const reference::PngRequest& request = nullptr) {
    support::Random random(7);
    if (format.nColorType == PNG_COLOR_TYPE_PALETTE) {
        format.palette.resize(nColors != 0 ? nColors : std::size_t{1} << format.nBitDepth);
    }
    for (png_color& color : format.palette) {
        color = {random.Byte(), random.Byte(), random.Byte()};
    }
    const auto nStride = static_cast<std::size_t>(format.nWidth) * 8;  // enough for any kind
    Bytes rows(nStride * static_cast<std::size_t>(format.nHeight));
    random.Fill(rows.data(), rows.size());
    return reference::EncodePng(rows.data(), nStride, format, request);
}

// The one line of an error, as VamTrace is asked for it.
const std::vector<std::string> kReadError = {"PNG Decoder error msg:%$s\r\n|Read Error"};

constexpr auto Decode = support::Decode<CKelPNGDecoder>;

}  // namespace

TEST(PngReader, EveryKindEqualsPlainLibpng) {
    const support::VamLines trace;
    const support::AllocFill zero(0);  // the unused bits of the judge's rows
    for (const Kind& kind : kKinds) {
        const bool bPalette = kind.nColorType == PNG_COLOR_TYPE_PALETTE;
        // What brings libpng's rows into the image's layout, written from the layouts.
        const auto request = [&](png_structp pPng, png_infop) {
            png_set_strip_16(pPng);
            if (bPalette && kind.nBitDepth == 2) {
                png_set_packing(pPng);
            } else if (!bPalette) {
                png_set_expand_gray_1_2_4_to_8(pPng);
                png_set_gray_to_rgb(pPng);
                png_set_bgr(pPng);
            }
        };
        // Transparency without a channel of its own, which is dropped.
        const auto addAlpha = [&](png_structp pPng, png_infop pInfo) {
            png_byte alpha[2] = {0, 128};
            png_color_16 color = {};
            if ((kind.nColorType & PNG_COLOR_MASK_ALPHA) == 0) {
                png_set_tRNS(pPng, pInfo, alpha, 2, &color);
            }
        };
        for (const int nWidth : {1, 3, 8, 37}) {
            for (const int nInterlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
                SCOPED_TRACE(testing::Message() << kind.nColorType << " " << kind.nBitDepth << " "
                                                << nInterlace << " " << nWidth);
                const Bytes file = NoiseFile(
                    {nWidth, 11, kind.nBitDepth, kind.nColorType, nInterlace, {}}, 0, addAlpha);
                const reference::PngPicture expected = reference::DecodePng(file, request);
                CKelImage image;
                ASSERT_EQ(KEL_OK, Decode(file, image));
                EXPECT_EQ(kind.nImageDepth, image.GetBitsPerPixel());
                ASSERT_TRUE(image.GetWidth() == nWidth && image.GetHeight() == 11);
                for (std::size_t y = 0; y < 11; ++y) {
                    const unsigned char* pRow = &expected.pRows[y * expected.nStride];
                    Bytes row(pRow, pRow + expected.nStride);
                    row.resize(image.GetBmpDataSize() / 11);  // padding is zero
                    EXPECT_TRUE(std::equal(row.begin(), row.end(), image.GetLineArray()[y]));
                }
                ASSERT_EQ(expected.palette.size(), static_cast<std::size_t>(image.GetPaletteNum()));
                for (std::size_t i = 0; i < expected.palette.size(); ++i) {
                    const png_color& color = expected.palette[i];
                    const unsigned char bytes[] = {color.blue, color.green, color.red, 255};
                    EXPECT_EQ(0, std::memcmp(bytes, &image.GetPalette()[i], 4));
                }
            }
        }
    }
    EXPECT_TRUE(trace.Lines().empty());
}

// Every prefix: the error is traced with its exact text, the size stays once it is known, the rows
// read so far are those of the whole file, the rest is zero whatever fresh memory holds.
TEST(PngReader, PrefixesKeepTheRowsReadSoFar) {
    for (const int nColorType : {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_PALETTE}) {
        const Bytes file = NoiseFile({9, 6, 8, nColorType, PNG_INTERLACE_NONE, {}});
        CKelImage whole;
        ASSERT_EQ(KEL_OK, Decode(file, whole));
        const int nStride = static_cast<int>(whole.GetBmpDataSize()) / whole.GetHeight();
        for (std::size_t nLength = 0; nLength < file.size(); ++nLength) {
            SCOPED_TRACE(nLength);
            const support::AllocFill fill(nLength % 2 == 0 ? 0xA5 : 0x5A);
            const support::VamLines trace;
            CKelImage image;
            image.Create(3, 3, 24);  // to be replaced
            ASSERT_EQ(KEL_ERR_CODEC, Decode(Bytes(file.data(), file.data() + nLength), image));
            EXPECT_EQ(kReadError, trace.Lines());
            EXPECT_EQ(image.GetBits() ? 9 : 0, image.GetWidth());
            const Bytes rows(image.GetBits(), image.GetBits() + image.GetBmpDataSize());
            const auto differs = std::mismatch(rows.begin(), rows.end(), whole.GetBits()).first;
            EXPECT_EQ(0, (differs - rows.begin()) % nStride) << "a row is whole or zero";
            EXPECT_EQ(rows.end() - differs, std::count(differs, rows.end(), 0));
        }
    }
}

// More than was asked for is nothing.
TEST(PngReader, TakesAFailedReadAsTheEnd) {
    const Bytes file = NoiseFile({9, 6, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, {}});
    for (int k = 1; k < 10; ++k) {
        support::FaultyArchive archive(file);
        archive.FailAt(support::Op::kRead, k, support::Fault::kHuge);
        const support::VamLines trace;
        CKelImage image;
        EXPECT_EQ(KEL_ERR_CODEC, CKelPNGDecoder().Do(&archive, &image));
        EXPECT_EQ(kReadError, trace.Lines());
    }
}

// 1,000,000 x 1,000,000 pixels: over 31 bits, refused without an attempt to hold them.
TEST(PngReader, HugeClaim) {
    const char start[] =
        "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\x0F\x42\x40\0\x0F\x42\x40\1\0\0\0\0"
        "\x74\x16\5\xD0\0\0\0\tIDAT";
    CKelImage image;
    EXPECT_EQ(KEL_ERR_MEMORY, Decode(Bytes(start, std::end(start) - 1), image));
    EXPECT_EQ(0, image.GetHeight());
}

TEST(PngReader, WarningsAreTracedAndReadingGoesOn) {
    const Bytes few =
        NoiseFile({5, 4, 8, PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE, {}}, 3,
                  [](png_structp pPng, png_infop) { png_set_check_for_invalid_index(pPng, 0); });
    const support::VamLines trace;
    CKelImage image;
    EXPECT_EQ(KEL_OK, Decode(few, image));
    EXPECT_EQ(3, image.GetPaletteNum());
    const char* pszText =
        "PNG Decode warning msg:%s\r\n|IDAT: Read palette index exceeding num_palette";
    EXPECT_EQ(std::vector<std::string>{pszText}, trace.Lines());
}
