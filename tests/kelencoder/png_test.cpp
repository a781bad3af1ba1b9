// The PNG writer, read back by plain libpng, and the pictures it refuses.
#include <gtest/gtest.h>
#include <platform/vamarchivememory.h>
#include "support/reference/codecs.h"

#include <algorithm>
#include <cstring>

#include "kelencoder/kelpngencoder.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/pictures.h"
#include "support/vamlines.h"

namespace {

using support::Bytes;

// 16 x 5 random pixels; at 1, 4 and 8 bits with a palette for every index.
void Paint(CKelImage& image, int nBits) {
    ASSERT_EQ(KEL_OK, support::OpenRandom(&image, {nBits, BI_RGB, 0}, 16, 5, 1));
}

KelResult Encode(CKelImage& image, Bytes& file) {
    CVamArchiveMemory archive;
    const KelResult nResult = CKelPNGEncoder().Do(&archive, &image);
    file.assign(archive.GetData(), archive.GetData() + archive.GetSize());
    return nResult;
}

}  // namespace

TEST(PngWriter, PlainLibpngReadsTheSamePixels) {
    const int kinds[][3] = {{1, 1, PNG_COLOR_TYPE_PALETTE}, {4, 4, PNG_COLOR_TYPE_PALETTE},
                            {8, 8, PNG_COLOR_TYPE_PALETTE}, {16, 8, PNG_COLOR_TYPE_RGB},
                            {24, 8, PNG_COLOR_TYPE_RGB},    {32, 8, PNG_COLOR_TYPE_RGB_ALPHA}};
    for (const auto& [nBits, nBitDepth, nColorType] : kinds) {
        SCOPED_TRACE(nBits);
        CKelImage image;
        Paint(image, nBits);
        const Bytes stored(image.GetBits(), image.GetBits() + image.GetBmpDataSize());
        Bytes file;
        ASSERT_EQ(KEL_OK, Encode(image, file));
        EXPECT_TRUE(std::equal(stored.begin(), stored.end(), image.GetBits()));
        const reference::PngPicture read = reference::DecodePng(file);
        EXPECT_EQ(16, read.nWidth);
        ASSERT_EQ(5, read.nHeight);
        EXPECT_EQ(nBitDepth, read.nBitDepth);
        EXPECT_EQ(PNG_INTERLACE_NONE, read.nInterlace);
        EXPECT_EQ(nColorType, read.nColorType);
        ASSERT_EQ(image.GetPaletteNum(), static_cast<int>(read.palette.size()));
        for (std::size_t i = 0; i < read.palette.size(); ++i) {
            const tagKelRGBQUAD& entry = image.GetPalette()[i];
            const unsigned char bytes[] = {entry.byRed, entry.byGreen, entry.byBlue};
            EXPECT_EQ(0, std::memcmp(bytes, &read.palette[i], 3));
        }
        for (int y = 0; y < 5; ++y) {
            Bytes row(read.nStride);
            if (nBits == 16 || nBits == 24) {
                image.GetLine24AsRGBAt(y, row.data());
            } else {
                std::copy_n(image.GetLineArray()[y], row.size(), row.begin());
            }
            for (std::size_t x = 0; nBits == 32 && x < row.size(); x += 4) {
                std::swap(row[x], row[x + 2]);
            }
            const auto nAt = read.nStride * static_cast<std::size_t>(y);
            EXPECT_TRUE(std::equal(row.begin(), row.end(), &read.pRows[nAt])) << y;
        }
    }
}

TEST(PngWriter, Refusals) {
    struct Case {
        void (*pfnSpoil)(CKelImage&);
        int nBits;
        KelResult nResult;
        const char* pszTrace;
    };
    const Case cases[] = {
        {[](CKelImage& i) { i.DestroyPaletteTable(); }, 8, KEL_ERR_CODEC,
         "Valid palette required for paletted images"},
        {[](CKelImage& i) { i.m_nPaletteNum = 0; }, 8, KEL_ERR_CODEC,
         "Valid palette required for paletted images"},
        {[](CKelImage& i) { i.AddPaletteEntry(1, 2, 3, 4); }, 4, KEL_ERR_CODEC,
         "Invalid palette length"},
        {[](CKelImage& i) { i.m_nPaletteNum = 2; }, 8, KEL_ERR_CODEC,
         "Wrote palette index exceeding num_palette"},
        {[](CKelImage& i) { i.DeleteLineArray(); }, 32, KEL_ERR_CODEC,
         "No IDATs written into file"},
        {[](CKelImage& i) { i.Create(0, 3, 24); }, 24, KEL_ERR_CODEC, "Invalid IHDR data"},
        {[](CKelImage& i) { i.m_bmih.biBitCount = 48; }, 8, KEL_ERR_FAIL, nullptr},
        {[](CKelImage& i) { i.Clean(); }, 8, KEL_ERR_FAIL, nullptr}};
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        CKelImage image;
        Paint(image, c.nBits);
        c.pfnSpoil(image);
        const support::VamLines trace;
        Bytes file;
        EXPECT_EQ(c.nResult, Encode(image, file));
        EXPECT_TRUE(file.empty() || c.nResult == KEL_ERR_CODEC);
        ASSERT_EQ(c.pszTrace == nullptr, trace.Lines().empty());
        if (c.pszTrace) {
            const std::string strText = "PNG Encoder error msg:%$s\r\n|";
            EXPECT_EQ(strText + c.pszTrace, trace.Lines().back());
        }
    }
    const support::VamLines trace;
    CKelPNGEncoder::user_warning_fn(nullptr, "x");
    EXPECT_EQ(nullptr, CKelPNGEncoder().CreatePNGPalette(0, nullptr));
    EXPECT_EQ(std::vector<std::string>{"PNG Encode warning msg:%s\r\n|x"}, trace.Lines());
}

// An index is refused from the palette's count on, wherever it stands, and only in the picture.
TEST(PngWriter, IndicesAgainstThePalette) {
    const std::vector<std::string> error = {
        "PNG Encoder error msg:%$s\r\n|Wrote palette index exceeding num_palette"};
    const int palettes[][2] = {{8, 5}, {8, 256}, {4, 3}, {1, 1}, {1, 2}};
    for (const auto& [nBits, nColors] : palettes) {
        for (const int nIndex : {nColors - 1, nColors}) {
            for (int nX = 0; nX < 10 && nIndex < 1 << nBits; ++nX) {
                SCOPED_TRACE(testing::Message() << nBits << " " << nColors << " " << nX);
                CKelImage image;
                image.Create(9, 2, nBits);
                for (int i = 0; i < nColors; ++i) {
                    image.AddPaletteEntry(1, 2, 3, 0);
                }
                support::SetPixelAt(nBits, image.GetLineArray()[1], nX,
                                    static_cast<unsigned int>(nIndex));
                const bool bRefused = nIndex == nColors && nX < 9;  // the tenth is padding
                const support::VamLines trace;
                Bytes file;
                EXPECT_EQ(bRefused ? KEL_ERR_CODEC : KEL_OK, Encode(image, file));
                EXPECT_EQ(bRefused, file.empty());
                EXPECT_EQ(bRefused ? error : std::vector<std::string>(), trace.Lines());
            }
        }
    }
}

TEST(PngWriter, FlushReachesTheStream) {
    support::FaultyArchive archive;
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_set_write_fn(pPng, static_cast<CVamArchive*>(&archive), nullptr, nullptr);
    CKelPNGEncoder::user_flush_data(pPng);
    EXPECT_EQ(1, archive.Calls(support::Op::kFlush));
    png_destroy_write_struct(&pPng, nullptr);
}
