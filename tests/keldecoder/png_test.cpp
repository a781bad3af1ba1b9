#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "keldecoder/kelpngdecoder.h"
#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/plainpng.h"
#include "support/recordingtrace.h"

using support::Bytes;
using support::PlainPng;

namespace {

struct Kind {
    int nColorType;
    int nBitDepth;
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

// What brings libpng's rows into the image's layout, written from the layouts, not from the reader.
support::PngRequest LayoutRequest(const Kind& kind) {
    return [kind](png_structp pPng, png_infop) {
        if (kind.nBitDepth == 16) {
            png_set_strip_16(pPng);
        }
        if (kind.nColorType == PNG_COLOR_TYPE_PALETTE) {
            if (kind.nBitDepth == 2) {
                png_set_packing(pPng);
            }
            return;
        }
        png_set_expand_gray_1_2_4_to_8(pPng);
        png_set_gray_to_rgb(pPng);
        png_set_bgr(pPng);
    };
}

// The rows of an image without their padding, which must be zero.
Bytes RowsOf(CKelImage& image, std::size_t nRowBytes) {
    Bytes rows;
    const auto nStride = image.GetBmpDataSize() / static_cast<unsigned int>(image.GetHeight());
    for (int i = 0; i < image.GetHeight(); ++i) {
        const unsigned char* pRow = image.GetLineArray()[i];
        rows.insert(rows.end(), pRow, pRow + nRowBytes);
        EXPECT_TRUE(std::all_of(pRow + nRowBytes, pRow + nStride,
                                [](unsigned char byte) { return byte == 0; }));
    }
    return rows;
}

KelResult Decode(const Bytes& file, CKelImage& image) {
    CVamArchiveMemory archive(file.data(), file.size());
    return CKelPNGDecoder().Do(&archive, &image);
}

support::TraceLine Vam(const std::string& strText) {
    return {ZT_TRACE_VAM, 0, strText};
}

Bytes SmallFile(int nColorType, int nInterlace) {
    return support::EncodePlainPng(support::RandomPng(nColorType, 8, nInterlace, 9, 6));
}

}  // namespace

TEST(PngReader, EveryKindEqualsPlainLibpng) {
    support::RecordingTrace trace;
    for (const Kind& kind : kKinds) {
        for (const int nInterlace : {PNG_INTERLACE_NONE, PNG_INTERLACE_ADAM7}) {
            for (const unsigned int nWidth : {1u, 3u, 8u, 37u}) {
                SCOPED_TRACE(testing::Message() << kind.nColorType << " " << kind.nBitDepth << " "
                                                << nInterlace << " " << nWidth);
                const Bytes file = support::EncodePlainPng(
                    support::RandomPng(kind.nColorType, kind.nBitDepth, nInterlace, nWidth, 11));
                const PlainPng expected = support::DecodePlainPng(file, LayoutRequest(kind));
                CKelImage image;
                ASSERT_EQ(KEL_OK, Decode(file, image));
                EXPECT_EQ(kind.nImageDepth, image.GetBitsPerPixel());
                ASSERT_EQ(static_cast<int>(nWidth), image.GetWidth());
                ASSERT_EQ(11, image.GetHeight());
                EXPECT_EQ(expected.rows, RowsOf(image, expected.RowBytes()));
                ASSERT_EQ(expected.palette.size(), static_cast<std::size_t>(image.GetPaletteNum()));
                for (std::size_t i = 0; i < expected.palette.size(); ++i) {
                    const tagKelRGBQUAD& entry = image.GetPalette()[i];
                    EXPECT_EQ(expected.palette[i].blue, entry.byBlue);
                    EXPECT_EQ(expected.palette[i].green, entry.byGreen);
                    EXPECT_EQ(expected.palette[i].red, entry.byRed);
                    EXPECT_EQ(255, entry.byReserved);
                }
            }
        }
    }
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(PngReader, TransparencyChunksAreDropped) {
    for (const int nColorType : {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_PALETTE}) {
        const PlainPng picture = support::RandomPng(nColorType, 8, PNG_INTERLACE_NONE, 5, 4);
        const Bytes with = support::EncodePlainPng(picture, [](png_structp pPng, png_infop pInfo) {
            png_byte alpha[3] = {0, 128, 255};
            png_color_16 color = {};
            color.gray = 17;
            png_set_tRNS(pPng, pInfo, alpha, 3, &color);
        });
        const Bytes without = support::EncodePlainPng(picture);
        ASSERT_NE(with, without);
        CKelImage image, plain;
        ASSERT_EQ(KEL_OK, Decode(with, image));
        ASSERT_EQ(KEL_OK, Decode(without, plain));
        ASSERT_EQ(plain.GetBmpDataSize(), image.GetBmpDataSize());
        EXPECT_TRUE(
            std::equal(plain.GetBits(), plain.GetBits() + plain.GetBmpDataSize(), image.GetBits()));
    }
}

TEST(PngReader, ReadsInsideALargerStreamAndRestoresItsPosition) {
    Bytes stream(100, 0x42);
    const Bytes file = SmallFile(PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE);
    stream.insert(stream.end(), file.begin(), file.end());
    stream.resize(stream.size() + 700, 0x42);
    CVamArchiveMemory archive(stream.data(), stream.size());
    archive.Seek(100, 0);
    CKelImage image;
    EXPECT_EQ(KEL_OK, image.Open(&archive));
    EXPECT_EQ(9, image.GetWidth());
    EXPECT_EQ(100, archive.GetPosition());
}

// Every prefix: the error is traced with its exact text, the size stays once it is known, the rows
// read so far are those of the whole file, the rest is zero whatever fresh memory holds.
TEST(PngReader, PrefixesKeepTheRowsReadSoFar) {
    for (const int nColorType : {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_PALETTE}) {
        const Bytes file = SmallFile(nColorType, PNG_INTERLACE_NONE);
        CKelImage whole;
        ASSERT_EQ(KEL_OK, Decode(file, whole));
        const unsigned int nSize = whole.GetBmpDataSize();
        for (std::size_t nLength = 0; nLength < file.size(); ++nLength) {
            SCOPED_TRACE(nLength);
            const support::AllocFill fill(nLength % 2 == 0 ? 0xA5 : 0x5A);
            support::RecordingTrace trace;
            CKelImage image;
            ASSERT_EQ(KEL_ERR_CODEC, Decode(Bytes(file.data(), file.data() + nLength), image));
            ASSERT_EQ(1u, trace.Lines().size());
            EXPECT_EQ(Vam("PNG Decoder error msg:Read Error\r\n"), trace.Lines()[0]);
            if (!image.GetBits()) {
                EXPECT_EQ(0, image.GetWidth());
                continue;
            }
            ASSERT_EQ(nSize, image.GetBmpDataSize());
            bool bEnded = false;
            for (int i = 0; i < image.GetHeight(); ++i) {
                const unsigned char* pRow = image.GetLineArray()[i];
                const unsigned int nStride = nSize / 6;
                const bool bEqual = std::equal(pRow, pRow + nStride, whole.GetLineArray()[i]);
                const bool bZero =
                    std::all_of(pRow, pRow + nStride, [](unsigned char byte) { return byte == 0; });
                bEnded = bEnded || !bEqual;
                EXPECT_TRUE(bEnded ? bZero : bEqual) << i;
            }
        }
    }
}

TEST(PngReader, DamageAndHugeClaims) {
    const Bytes file = SmallFile(PNG_COLOR_TYPE_RGB, PNG_INTERLACE_ADAM7);
    for (std::size_t nAt = 0; nAt < file.size(); ++nAt) {
        Bytes damaged = file;
        damaged[nAt] = static_cast<unsigned char>(damaged[nAt] ^ 0x41);
        support::RecordingTrace trace;
        CKelImage image;
        const KelResult nResult = Decode(damaged, image);
        EXPECT_TRUE(nResult == KEL_OK || nResult == KEL_ERR_CODEC) << nAt << " " << nResult;
        EXPECT_FALSE(trace.Lines().empty()) << nAt;
    }
    // 1,000,000 x 1,000,000 pixels: over 31 bits, refused without an attempt to hold them.
    PlainPng claim = support::RandomPng(PNG_COLOR_TYPE_GRAY, 1, PNG_INTERLACE_NONE, 1000000, 1);
    Bytes huge = support::EncodePlainPng(claim);
    const unsigned char height[] = {0x00, 0x0F, 0x42, 0x40};
    std::copy(height, height + 4, huge.begin() + 20);
    const auto nCrc = [](unsigned long n) {
        return Bytes{static_cast<unsigned char>(n >> 24), static_cast<unsigned char>(n >> 16),
                     static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n)};
    };
    // The checksum of the changed header, bit by bit.
    unsigned long n = 0xFFFFFFFFul;
    for (std::size_t i = 12; i < 29; ++i) {
        n ^= huge[i];
        for (int nBit = 0; nBit < 8; ++nBit) {
            n = (n & 1) != 0 ? (n >> 1) ^ 0xEDB88320ul : n >> 1;
        }
    }
    const Bytes crc = nCrc(~n & 0xFFFFFFFFul);
    std::copy(crc.begin(), crc.end(), huge.begin() + 29);
    CKelImage image;
    EXPECT_EQ(KEL_ERR_MEMORY, Decode(huge, image));
    EXPECT_EQ(nullptr, image.GetBits());
    EXPECT_EQ(0, image.GetHeight());
}

TEST(PngReader, WarningsAreTracedAndReadingGoesOn) {
    PlainPng picture = support::RandomPng(PNG_COLOR_TYPE_PALETTE, 8, PNG_INTERLACE_NONE, 5, 4);
    const Bytes file = support::EncodePlainPng(picture);
    picture.palette.resize(3);
    const Bytes few = support::EncodePlainPng(
        picture, [](png_structp pPng, png_infop) { png_set_check_for_invalid_index(pPng, 0); });
    support::RecordingTrace trace;
    CKelImage image;
    EXPECT_EQ(KEL_OK, Decode(few, image));
    EXPECT_EQ(3, image.GetPaletteNum());
    ASSERT_EQ(1u, trace.Lines().size());
    EXPECT_EQ(0u, trace.Lines()[0].strText.find("PNG Decode warning msg:"));
    EXPECT_EQ("\r\n", trace.Lines()[0].strText.substr(trace.Lines()[0].strText.size() - 2));
}

TEST(PngReader, EveryFailedAllocation) {
    for (const int nColorType : {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_PALETTE}) {
        const Bytes file = SmallFile(nColorType, PNG_INTERLACE_NONE);
        for (const bool bForEver : {false, true}) {
            bool bFired = true;
            for (long n = 1; bFired; ++n) {
                support::RecordingTrace trace(-1);
                const support::LiveBlocks before = support::CountLiveBlocks();
                {
                    CKelImage image;
                    CVamArchiveMemory archive(file.data(), file.size());
                    KelResult nResult = KEL_OK;
                    {
                        support::AllocFaults faults(n, bForEver);
                        nResult = CKelPNGDecoder().Do(&archive, &image);
                        bFired = faults.Fired();
                    }
                    EXPECT_EQ(bFired ? KEL_ERR_MEMORY : KEL_OK, nResult) << n;
                    EXPECT_EQ(bFired, image.GetBits() == nullptr) << n;
                }
                EXPECT_EQ(before, support::CountLiveBlocks()) << n;
            }
        }
    }
}

TEST(PngReader, EveryFailedRead) {
    const Bytes file = SmallFile(PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE);
    for (const support::Fault eFault : support::kAllFaults) {
        bool bFired = true;
        for (int n = 1; bFired; ++n) {
            support::RecordingTrace trace(-1);
            const support::LiveBlocks before = support::CountLiveBlocks();
            {
                CKelImage image;
                support::FaultyArchive archive(file);
                archive.FailAt(support::Op::kRead, n, eFault);
                KelResult nResult = -1;
                try {
                    nResult = CKelPNGDecoder().Do(&archive, &image);
                } catch (const support::ForeignError&) {
                }
                bFired = archive.Fired();
                EXPECT_EQ(!bFired                            ? KEL_OK
                          : eFault == support::Fault::kThrow ? -1
                                                             : KEL_ERR_CODEC,
                          nResult);
            }
            EXPECT_EQ(before, support::CountLiveBlocks());
        }
    }
}
