#include <gtest/gtest.h>
#include <plaincodecs.h>
#include <platform/vamarchivememory.h>

#include <algorithm>
#include <cstring>

#include "kelencoder/kelpngencoder.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"

namespace {

using plain::Bytes;

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
        const plain::PngPicture read = plain::DecodePng(file);
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
        {[](CKelImage& i) { i.AddPaletteEntry(1, 2, 3, 4); }, 4, KEL_ERR_CODEC,
         "Invalid palette length"},
        {[](CKelImage& i) { i.m_nPaletteNum = 2; }, 8, KEL_ERR_CODEC,
         "Wrote palette index exceeding num_palette"},
        {[](CKelImage& i) { i.DeleteLineArray(); }, 32, KEL_ERR_CODEC,
         "No IDATs written into file"},
        {[](CKelImage& i) { i.Create(0, 3, 24); }, 24, KEL_ERR_CODEC, "Invalid IHDR data"},
        {[](CKelImage& i) { i.DeleteLineArray(); }, 24, KEL_OK, nullptr},  // converted rows
        {[](CKelImage& i) { i.m_bmih.biBitCount = 48; }, 8, KEL_ERR_FAIL, nullptr},
        {[](CKelImage& i) { i.Clean(); }, 8, KEL_ERR_FAIL, nullptr}};
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        CKelImage image;
        Paint(image, c.nBits);
        c.pfnSpoil(image);
        support::RecordingTrace trace;
        Bytes file;
        EXPECT_EQ(c.nResult, Encode(image, file));
        EXPECT_TRUE(file.empty() || c.nResult != KEL_ERR_FAIL);
        ASSERT_EQ(c.pszTrace == nullptr, trace.Lines().empty());
        if (c.pszTrace) {
            const std::string strText = "PNG Encoder error msg:" + std::string(c.pszTrace) + "\r\n";
            EXPECT_EQ((support::TraceLine{ZT_TRACE_VAM, 0, strText}), trace.Lines().back());
        }
    }
}
