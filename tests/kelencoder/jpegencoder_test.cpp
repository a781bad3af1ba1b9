#include "kelencoder/keljpegencoder.h"

#include <gtest/gtest.h>

#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/plainjpeg.h"
#include "support/recordingtrace.h"

namespace {

using support::Bytes;
using support::FaultyArchive;
using support::Samples;

Bytes Written(const FaultyArchive& archive) {
    return Bytes(archive.GetData(), archive.GetData() + archive.GetSize());
}

// An image of 24 or 32 bits that shows the samples (red, green, blue).
void Fill(CKelImage* pImage, const Samples& samples, int nBits) {
    ASSERT_NE(pImage->Create(samples.nWidth, samples.nHeight, nBits), nullptr);
    const unsigned char* pSample = samples.bytes.data();
    for (int y = 0; y < samples.nHeight; ++y) {
        unsigned char* pPixel = pImage->GetLineArray()[y];
        for (int x = 0; x < samples.nWidth; ++x, pPixel += nBits / 8, pSample += 3) {
            pPixel[0] = pSample[2];
            pPixel[1] = pSample[1];
            pPixel[2] = pSample[0];
        }
    }
}

TEST(JpegEncoder, WritesWhatPlainLibjpegWrites) {
    struct Case {
        unsigned char byType;
        unsigned long long nValue;
        int nQuality;
    };
    const unsigned long long nHigh = 0x5A5A5A5A00000000;
    const Case cases[] = {{VAM_INT16, nHigh | 0x5A00FFFB, -5},
                          {VAM_UINT16, nHigh | 0xFFFB, 65531},
                          {VAM_INT32, nHigh | 150, 150},
                          {VAM_UINT32, nHigh | 40, 40},
                          {VAM_LONG, nHigh | 0xFFFFFFFF, -1},
                          {VAM_ULONG, nHigh | 90, 90},
                          {VAM_FLOAT, 0x42480000, 75},
                          {VAM_EMPTY, 30, 75},
                          {3, 30, 75},
                          {12, 30, 75}};
    const Samples samples = support::MakeSamples(61, 45, 3);
    for (const int nBits : {24, 32}) {
        CKelImage image;
        Fill(&image, samples, nBits);
        for (const Case& c : cases) {
            SCOPED_TRACE(int{c.byType});
            tagKelParameterItem item = {"quality", CVamVariant()};
            item.varValue.Set(c.byType, c.nValue);
            tagKelParameters params = {1, &item};
            CKelJpegEncoder encoder;
            encoder.SetParameters(&params);
            EXPECT_EQ(encoder.GetQualityParameter(), c.nQuality);
            FaultyArchive archive;
            ASSERT_EQ(encoder.Do(&archive, &image), KEL_OK);
            EXPECT_TRUE(Written(archive) ==
                        support::PlainEncode(samples, {.nQuality = c.nQuality}));
        }
        EXPECT_EQ(image.m_pBMI, nullptr);  // the image was only read
    }
}

TEST(JpegEncoder, WritesAPaletteThroughItsColours) {
    CKelImage image;
    ASSERT_NE(image.Create(9, 4, 8), nullptr);
    image.AddPaletteEntry(200, 100, 50, 0);
    image.AddPaletteEntry(10, 20, 30, 0);
    Samples samples{9, 4, 3, {}};
    for (int i = 0; i < 36; ++i) {
        image.GetLineArray()[i / 9][i % 9] = static_cast<unsigned char>(i % 2);
        const Bytes colour = i % 2 == 0 ? Bytes{200, 100, 50} : Bytes{10, 20, 30};
        samples.bytes.insert(samples.bytes.end(), colour.begin(), colour.end());
    }
    FaultyArchive archive;
    EXPECT_EQ(CKelJpegEncoder().Do(&archive, &image), KEL_OK);
    EXPECT_TRUE(Written(archive) == support::PlainEncode(samples));
}

TEST(JpegEncoder, WritesFullBlocksOneRestAndOneFlush) {
    CKelImage image;
    Fill(&image, support::MakeSamples(300, 200, 3), 24);
    FaultyArchive archive;
    ASSERT_EQ(CKelJpegEncoder().Do(&archive, &image), KEL_OK);
    const std::vector<unsigned int>& sizes = archive.WriteSizes();
    ASSERT_GT(sizes.size(), 2u);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        EXPECT_EQ(sizes[i], i + 1 < sizes.size() ? 4096u : archive.GetSize() % 4096);
    }
    EXPECT_EQ(archive.Calls(support::Op::kFlush), 1);
    EXPECT_EQ(archive.Calls(support::Op::kSeek), 0);
}

TEST(JpegDestination, WritesNoEmptyRest) {
    for (const std::size_t nTotal : {8191u, 8192u, 8193u}) {
        FaultyArchive archive;
        CKelJpegDestMgr destination(&archive);
        jpeg_compress_struct info = {};
        info.dest = &destination;
        CKelJpegDestMgr::InitDestination(&info);
        for (std::size_t i = 0; i < nTotal; ++i) {  // as libjpeg emits a byte
            *destination.next_output_byte++ = static_cast<JOCTET>(i);
            if (--destination.free_in_buffer == 0) {
                EXPECT_EQ(CKelJpegDestMgr::EmptyOutputBuffer(&info), TRUE);
            }
        }
        CKelJpegDestMgr::TermDestination(&info);
        EXPECT_EQ(archive.WriteSizes().size(), nTotal == 8193 ? 3u : 2u);
        EXPECT_EQ(archive.GetSize(), nTotal);
        EXPECT_EQ(archive.Calls(support::Op::kFlush), 1);
    }
}

TEST(JpegEncoder, EndsWithLibjpegsErrors) {
    const int sizes[][2] = {{0, 5}, {5, 0}, {65501, 1}};
    for (const auto& size : sizes) {
        CKelImage image;
        image.Create(size[0], size[1], 24);
        FaultyArchive archive;
        support::RecordingTrace trace;
        EXPECT_EQ(CKelJpegEncoder().Do(&archive, &image), KEL_ERR_CODEC) << size[0];
        EXPECT_EQ(archive.GetSize(), 0u);
        ASSERT_EQ(trace.Lines().size(), 2u);
        const std::string strText = trace.Lines()[0].strText;
        EXPECT_EQ(strText.find("CKelJpegEncoder::jpeg_error_exit, err msg: "), 0u);
        EXPECT_EQ(trace.Lines(), support::InputError(strText));
    }
}

TEST(JpegEncoder, WritesBlackWhereRowsCannotBeConverted) {
    CKelImage image;
    Fill(&image, support::MakeSamples(20, 12, 3), 24);
    image.m_bmih.biHeight = -12;
    FaultyArchive archive;
    const support::AllocFill fill(0xAB);
    EXPECT_EQ(CKelJpegEncoder().Do(&archive, &image), KEL_OK);
    EXPECT_TRUE(Written(archive) == support::PlainEncode({20, 12, 3, Bytes(20 * 12 * 3)}));
    image.m_bmih.biHeight = 12;
}

TEST(JpegEncoder, ReleasesEverythingOnFailure) {
    CKelImage image;
    Fill(&image, support::MakeSamples(150, 90, 3), 24);
    const support::LiveBlocks before = support::CountLiveBlocks();
    for (long n = 1; n <= 2; ++n) {  // the output block, the row buffer
        const support::RecordingTrace trace(-1);
        FaultyArchive archive;
        const support::AllocFaults faults(n);
        EXPECT_EQ(CKelJpegEncoder().Do(&archive, &image), KEL_ERR_MEMORY) << n;
        EXPECT_TRUE(archive.WriteSizes().empty());
    }
    for (const support::Op eOp : {support::Op::kWrite, support::Op::kFlush}) {
        FaultyArchive archive;
        archive.FailAt(eOp, 1, support::Fault::kThrow);
        EXPECT_THROW(CKelJpegEncoder().Do(&archive, &image), support::ForeignError);
    }
    EXPECT_TRUE(support::CountLiveBlocks() == before);
}

}  // namespace
