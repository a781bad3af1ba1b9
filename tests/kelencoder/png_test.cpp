#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "kelencoder/kelpngencoder.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/pictures.h"
#include "support/plainpng.h"
#include "support/recordingtrace.h"

using support::Bytes;
using support::PlainPng;

namespace {

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
    for (const int nBits : {1, 4, 8, 16, 24, 32}) {
        SCOPED_TRACE(nBits);
        CKelImage image;
        Paint(image, nBits);
        const Bytes stored(image.GetBits(), image.GetBits() + image.GetBmpDataSize());
        Bytes file;
        ASSERT_EQ(KEL_OK, Encode(image, file));
        EXPECT_TRUE(std::equal(stored.begin(), stored.end(), image.GetBits()));
        const PlainPng read = support::DecodePlainPng(file);
        EXPECT_EQ(16u, read.nWidth);
        ASSERT_EQ(5u, read.nHeight);
        EXPECT_EQ(nBits < 16 ? nBits : 8, read.nBitDepth);
        EXPECT_EQ(PNG_INTERLACE_NONE, read.nInterlace);
        EXPECT_EQ(nBits < 16    ? PNG_COLOR_TYPE_PALETTE
                  : nBits == 32 ? PNG_COLOR_TYPE_RGB_ALPHA
                                : PNG_COLOR_TYPE_RGB,
                  read.nColorType);
        ASSERT_EQ(image.GetPaletteNum(), static_cast<int>(read.palette.size()));
        for (std::size_t i = 0; i < read.palette.size(); ++i) {
            const tagKelRGBQUAD& entry = image.GetPalette()[i];
            const unsigned char bytes[] = {entry.byRed, entry.byGreen, entry.byBlue};
            EXPECT_EQ(0, std::memcmp(bytes, &read.palette[i], 3));
        }
        for (int y = 0; y < 5; ++y) {
            Bytes row(read.RowBytes());
            if (nBits == 16 || nBits == 24) {
                image.GetLine24AsRGBAt(y, row.data());
            } else {
                std::copy_n(image.GetLineArray()[y], row.size(), row.begin());
            }
            for (std::size_t x = 0; nBits == 32 && x < row.size(); x += 4) {
                std::swap(row[x], row[x + 2]);
            }
            const auto nAt = static_cast<std::ptrdiff_t>(read.RowBytes()) * y;
            EXPECT_TRUE(std::equal(row.begin(), row.end(), read.rows.begin() + nAt)) << y;
        }
    }
}

TEST(PngWriter, Refusals) {
    struct Case {
        const char* pszWhat;
        void (*pfnSpoil)(CKelImage&);
        int nBits;
        KelResult nResult;
        const char* pszTrace;
    };
    const Case cases[] = {
        {"no palette", [](CKelImage& i) { i.DestroyPaletteTable(); }, 8, KEL_ERR_CODEC,
         "PNG Encoder error msg:Valid palette required for paletted images\r\n"},
        {"17 entries at 4 bits", [](CKelImage& i) { i.AddPaletteEntry(1, 2, 3, 4); }, 4,
         KEL_ERR_CODEC, "PNG Encoder error msg:Invalid palette length\r\n"},
        {"index beyond the palette", [](CKelImage& i) { i.m_nPaletteNum = 2; }, 8, KEL_ERR_CODEC,
         "PNG Encoder error msg:Wrote palette index exceeding num_palette\r\n"},
        {"no row array", [](CKelImage& i) { i.DeleteLineArray(); }, 32, KEL_ERR_CODEC,
         "PNG Encoder error msg:No IDATs written into file\r\n"},
        {"no row array, converted rows", [](CKelImage& i) { i.DeleteLineArray(); }, 24, KEL_OK,
         nullptr},
        {"depth 2", [](CKelImage& i) { i.m_bmih.biBitCount = 2; }, 8, KEL_ERR_FAIL, nullptr},
        {"depth 48", [](CKelImage& i) { i.m_bmih.biBitCount = 48; }, 8, KEL_ERR_FAIL, nullptr},
        {"empty", [](CKelImage& i) { i.Clean(); }, 8, KEL_ERR_FAIL, nullptr}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pszWhat);
        CKelImage image;
        Paint(image, c.nBits);
        c.pfnSpoil(image);
        support::RecordingTrace trace;
        Bytes file;
        EXPECT_EQ(c.nResult, Encode(image, file));
        EXPECT_TRUE(file.empty() || c.nResult != KEL_ERR_FAIL);
        if (c.pszTrace) {
            ASSERT_FALSE(trace.Lines().empty());
            EXPECT_EQ((support::TraceLine{ZT_TRACE_VAM, 0, c.pszTrace}), trace.Lines().back());
        } else {
            EXPECT_TRUE(trace.Lines().empty());
        }
    }
    CKelImage wide;
    Bytes file;
    support::RecordingTrace trace;
    ASSERT_NE(nullptr, wide.Create(0, 3, 24));
    EXPECT_EQ(KEL_ERR_CODEC, Encode(wide, file));
}

TEST(PngWriter, Palette) {
    tagKelRGBQUAD entries[2] = {{1, 2, 3, 4}, {5, 6, 7, 8}};
    const std::unique_ptr<unsigned char[]> pPalette(CKelPNGEncoder().CreatePNGPalette(2, entries));
    const unsigned char expected[] = {3, 2, 1, 7, 6, 5};
    EXPECT_TRUE(std::equal(expected, expected + 6, pPalette.get()));
    EXPECT_EQ(nullptr, CKelPNGEncoder().CreatePNGPalette(0, entries));
    EXPECT_EQ(nullptr, CKelPNGEncoder().CreatePNGPalette(-1, entries));
}

TEST(PngWriter, Faults) {
    for (const int nBits : {8, 24}) {
        CKelImage image;
        Paint(image, nBits);
        const support::LiveBlocks before = support::CountLiveBlocks();
        {
            support::FaultyArchive archive;
            support::RecordingTrace trace(-1);
            support::AllocFaults faults(1);
            EXPECT_EQ(KEL_ERR_MEMORY, CKelPNGEncoder().Do(&archive, &image));
        }
        for (int n = 1; n <= 4; ++n) {
            support::FaultyArchive throwing;
            throwing.FailAt(support::Op::kWrite, n, support::Fault::kThrow);
            EXPECT_THROW(CKelPNGEncoder().Do(&throwing, &image), support::ForeignError);
        }
        EXPECT_EQ(before, support::CountLiveBlocks());
    }
}
