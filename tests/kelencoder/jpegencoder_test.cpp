// The JPEG writer against plain libjpeg, and its destination manager.
#include <gtest/gtest.h>
#include "support/reference/codecs.h"

#include "kelencoder/keljpegencoder.h"
#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"

namespace {

using support::Bytes;
using support::FaultyArchive;

// What plain libjpeg writes for the image's rows, which are black where there are none.
Bytes PlainFile(CKelImage& image, int nQuality) {
    Bytes rows, line(static_cast<std::size_t>(image.GetWidth()) * 3 + 3);
    for (int y = 0; y < image.GetHeight(); ++y) {
        image.GetLine24AsRGBAt(y, line.data());
        rows.insert(rows.end(), line.begin(), line.end() - 3);
    }
    return reference::EncodeJpeg(rows.data(), {image.GetWidth(), image.GetHeight(), 3, nQuality});
}

bool Holds(const FaultyArchive& archive, const Bytes& file) {
    return Bytes(archive.GetData(), archive.GetData() + archive.GetSize()) == file;
}

}  // namespace

TEST(JpegEncoder, WritesWhatPlainLibjpegWrites) {
    struct Case {
        unsigned char byType;
        unsigned long long nValue;
        int nQuality;
    };
    const unsigned long long nHigh = 0x5A5A5A5A00000000;
    const Case cases[] = {{VAM_INT16, nHigh | 0x5A00FFFB, -5},
                          {VAM_UINT16, nHigh | 0xFFFB, 65531},
                          {VAM_LONG, nHigh | 0xFFFFFFFF, -1},
                          {VAM_UINT32, nHigh | 40, 40},
                          {VAM_ULONG, nHigh | 41, 41},
                          {VAM_FLOAT, 0x42480000, 75},
                          {VAM_EMPTY, 30, 75}};
    for (const int nBits : {8, 24, 32}) {
        CKelImage image;
        ASSERT_EQ(KEL_OK, support::OpenRandom(&image, {nBits, BI_RGB, 0}, 61, 45, 1));
        for (const Case& c : cases) {
            SCOPED_TRACE(int{c.byType});
            tagKelParameterItem item = {"quality", CVamVariant()};
            item.varValue.Set(c.byType, c.nValue);
            tagKelParameters params = {1, &item};
            CKelJpegEncoder encoder;
            encoder.SetParameters(&params);
            EXPECT_EQ(c.nQuality, encoder.GetQualityParameter());
            FaultyArchive archive;
            ASSERT_EQ(KEL_OK, encoder.Do(&archive, &image));
            EXPECT_TRUE(Holds(archive, PlainFile(image, c.nQuality)));
            // Blocks of 4,096 bytes, a rest, one flush; nothing is sought.
            std::vector<unsigned int> sizes(archive.GetSize() / 4096, 4096);
            sizes.push_back(archive.GetSize() % 4096);
            EXPECT_EQ(sizes, archive.WriteSizes());
            EXPECT_EQ(1, archive.Calls(support::Op::kFlush));
            EXPECT_EQ(0, archive.Calls(support::Op::kSeek));
        }
    }
}

TEST(JpegEncoder, EndsWithLibjpegsErrors) {
    for (const int nWidth : {0, 65501}) {
        CKelImage image;
        image.Create(nWidth, 1, 24);
        FaultyArchive archive;
        support::RecordingTrace trace;
        EXPECT_EQ(KEL_ERR_CODEC, CKelJpegEncoder().Do(&archive, &image)) << nWidth;
        EXPECT_EQ(0u, archive.GetSize());
        ASSERT_EQ(2u, trace.Lines().size());
        const std::string strText = trace.Lines()[0].strText;
        EXPECT_TRUE(strText.starts_with("CKelJpegEncoder::jpeg_error_exit, err msg: "));
        EXPECT_EQ(support::InputError(strText), trace.Lines());
    }
}

// Of a negative height, as many rows: black, for there is none to convert.
TEST(JpegEncoder, WritesBlackForANegativeHeight) {
    CKelImage image;
    image.m_bmih = {40, 20, 12, 1, 24, 0, 0, 0, 0, 0, 0};
    const Bytes black = PlainFile(image, 75);
    image.m_bmih.biHeight = -12;
    FaultyArchive archive;
    const support::AllocFill fill(0xAB);
    EXPECT_EQ(KEL_OK, CKelJpegEncoder().Do(&archive, &image));
    EXPECT_TRUE(Holds(archive, black));
}
