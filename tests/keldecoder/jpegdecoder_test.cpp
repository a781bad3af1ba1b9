#include "keldecoder/keljpegdecoder.h"

#include <gtest/gtest.h>
#include <jerror.h>

#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/plainjpeg.h"
#include "support/recordingtrace.h"
#include "support/securefaults.h"

namespace {

using support::Bytes;
using support::FaultyArchive;
using support::Samples;

const char kPrefix[] = "CKelJpegDecoder::jpeg_error_exit, err msg: ";

// The picture as libjpeg would have delivered it, from the image's blue, green, red rows.
Bytes SamplesOf(CKelImage& image) {
    Bytes bytes;
    const int nBytes = image.GetBitsPerPixel() / 8;
    for (int y = 0; y < image.GetHeight(); ++y) {
        const unsigned char* pRow = image.GetLineArray()[y];
        for (int x = 0; x < image.GetWidth() * nBytes; ++x) {
            bytes.push_back(nBytes == 3 ? pRow[x + 2 - x % 3 * 2] : pRow[x]);
        }
    }
    return bytes;
}

bool IsEmpty(CKelImage& image) {
    return image.GetWidth() == 0 && image.GetHeight() == 0 && image.GetBits() == nullptr &&
           image.GetLineArray() == nullptr;
}

KelResult Decode(const Bytes& file, CKelImage* pImage) {
    FaultyArchive archive(file);
    return CKelJpegDecoder().Do(&archive, pImage);
}

// Decodes with the reader and with the plain loop and compares all they deliver.
void ExpectAsPlain(const Bytes& file) {
    CKelImage image;
    Samples plain;
    if (!support::PlainDecode(file, &plain)) {
        EXPECT_EQ(Decode(file, &image), KEL_ERR_CODEC);
        return;
    }
    ASSERT_EQ(Decode(file, &image), KEL_OK);
    EXPECT_EQ(image.GetWidth(), plain.nWidth);
    EXPECT_EQ(image.GetHeight(), plain.nHeight);
    EXPECT_EQ(image.GetBitsPerPixel(), plain.nComponents * 8);
    EXPECT_TRUE(SamplesOf(image) == plain.bytes);
}

TEST(JpegDecoder, DeliversWhatPlainLibjpegDelivers) {
    const int sizes[][2] = {{1, 1}, {7, 5}, {16, 16}, {33, 17}, {130, 71}};
    for (const auto& size : sizes) {
        for (const int nComponents : {1, 3, 4}) {
            const Samples samples = support::MakeSamples(size[0], size[1], nComponents);
            for (const bool bProgressive : {false, true}) {
                SCOPED_TRACE(testing::Message() << size[0] << " x " << size[1] << " x "
                                                << nComponents << ", " << bProgressive);
                ExpectAsPlain(support::PlainEncode(samples, {.bProgressive = bProgressive}));
                const J_COLOR_SPACE eStored = nComponents == 3   ? JCS_RGB
                                              : nComponents == 4 ? JCS_YCCK
                                                                 : JCS_GRAYSCALE;
                // The comment is longer than two input blocks and has to be skipped.
                ExpectAsPlain(support::PlainEncode(
                    samples, {.eStored = eStored, .nQuality = 95, .nComment = 9000}));
            }
        }
    }
}

TEST(JpegDecoder, RefusesTwoAndMoreThanFourComponents) {
    for (const int nComponents : {2, 5}) {
        CKelImage image;
        image.Create(3, 3, 24);
        support::RecordingTrace trace;
        // Five do not fit into one scan, so they come in several.
        const Samples samples = support::MakeSamples(9, 9, nComponents);
        EXPECT_EQ(Decode(support::PlainEncode(samples, {.bProgressive = true}), &image),
                  KEL_ERR_CODEC);
        EXPECT_TRUE(IsEmpty(image));
        EXPECT_EQ(trace.Lines().size(), nComponents == 2 ? 2u : 0u);  // libjpeg does not mind five
    }
}

TEST(JpegDecoder, TreatsEveryTruncationAsPlainLibjpegDoes) {
    testing::internal::CaptureStderr();  // libjpeg's warnings keep their default way out
    {
        support::RecordingTrace trace(-1);
        for (const bool bProgressive : {false, true}) {
            const Bytes file = support::PlainEncode(support::MakeSamples(40, 33, 3),
                                                    {.bProgressive = bProgressive});
            for (std::size_t n = 0; n < file.size(); ++n) {
                SCOPED_TRACE(n);
                ExpectAsPlain(Bytes(file.begin(), file.begin() + static_cast<long>(n)));
            }
        }
        EXPECT_TRUE(trace.Lines().empty());
    }
    testing::internal::GetCapturedStderr();
}

TEST(JpegDecoder, TracesEachDecodeAndEachError) {
    const Bytes file = support::PlainEncode(support::MakeSamples(8, 8, 3));
    const std::string strDetail = "CKelJpegDecoder::Do, jpeg_decompress_struct:" +
                                  std::to_string(sizeof(jpeg_decompress_struct));
    CKelImage image;
    for (const int nLevel : {1, 2}) {
        support::RecordingTrace trace(nLevel);
        EXPECT_EQ(Decode(file, &image), KEL_OK);
        const std::vector<support::TraceLine> detail = {{ZT_TRACE_WRITE, 2, strDetail}};
        EXPECT_EQ(trace.Lines(), nLevel == 2 ? detail : std::vector<support::TraceLine>());
    }
    support::RecordingTrace trace;
    EXPECT_EQ(Decode({0xFF, 0xD8}, &image), KEL_ERR_CODEC);
    EXPECT_TRUE(IsEmpty(image));
    ASSERT_EQ(trace.Lines().size(), 2u);
    const std::string strText = trace.Lines()[0].strText;
    EXPECT_EQ(strText.substr(0, sizeof kPrefix - 1), kPrefix);
    EXPECT_GT(strText.size(), sizeof kPrefix);
    EXPECT_EQ(trace.Lines(), support::InputError(strText));

    jpeg_decompress_struct info = {};
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    errors.msg_code = JERR_NO_IMAGE;
    try {
        CKelJpegDecoder::jpeg_error_exit(reinterpret_cast<jpeg_common_struct*>(&info));
        FAIL() << "the error handler returned";
    } catch (const CKelJpegDecoder::MyJpegException& exception) {
        EXPECT_EQ(exception.m_nMsgCode, static_cast<int>(JERR_NO_IMAGE));
    }
}

TEST(JpegDecoder, TakesAFailedReadAsTheEndAndPassesExceptionsOn) {
    const Bytes file = support::PlainEncode(support::MakeSamples(150, 90, 3), {.nQuality = 98});
    ASSERT_GT(file.size(), 3u * 4096);
    Samples whole, cut;
    ASSERT_TRUE(support::PlainDecode(file, &whole));
    ASSERT_TRUE(support::PlainDecode(Bytes(file.begin(), file.begin() + 4096), &cut));
    for (const support::Fault eFault : support::kAllFaults) {
        SCOPED_TRACE(static_cast<int>(eFault));
        const support::LiveBlocks before = support::CountLiveBlocks();
        {
            CKelImage image;
            FaultyArchive archive(file);
            archive.FailAt(support::Op::kRead, 2, eFault, true);
            CKelJpegDecoder decoder;
            testing::internal::CaptureStderr();
            if (eFault == support::Fault::kThrow) {
                EXPECT_THROW(decoder.Do(&archive, &image), support::ForeignError);
                EXPECT_EQ(image.GetWidth(), 150);
            } else {
                EXPECT_EQ(decoder.Do(&archive, &image), KEL_OK);
                const bool bShort = eFault == support::Fault::kShort;  // short is not yet the end
                EXPECT_TRUE(SamplesOf(image) == (bShort ? whole : cut).bytes);
            }
            testing::internal::GetCapturedStderr();
            EXPECT_TRUE(archive.Fired());
        }
        EXPECT_TRUE(support::CountLiveBlocks() == before);
    }
}

TEST(JpegDecoder, LeavesAnEmptyImageWhenMemoryRunsOut) {
    const Bytes file = support::PlainEncode(support::MakeSamples(20, 20, 3));
    support::RecordingTrace trace(-1);
    bool bFired = true;
    for (long n = 1; bFired; ++n) {
        FaultyArchive archive(file);
        CKelImage image;
        const support::LiveBlocks before = support::CountLiveBlocks();
        support::AllocFaults faults(n);
        const KelResult nResult = CKelJpegDecoder().Do(&archive, &image);
        bFired = faults.Fired();
        EXPECT_EQ(nResult, bFired ? KEL_ERR_MEMORY : KEL_OK) << n;
        EXPECT_EQ(IsEmpty(image), bFired) << n;
        EXPECT_TRUE(!bFired || support::CountLiveBlocks() == before) << n;
        EXPECT_LT(n, 10);
    }
}

TEST(JpegDecoder, RefusesAPictureNoImageCanHoldBeforeDecodingIt) {
    Bytes file = support::PlainEncode(support::MakeSamples(8, 8, 3), {.bProgressive = true});
    for (std::size_t i = 0; i + 8 < file.size(); ++i) {
        if (file[i] == 0xFF && file[i + 1] == 0xC2) {  // the frame header: height and width
            file[i + 5] = file[i + 7] = 0xFF;
        }
    }
    CKelImage image;
    EXPECT_EQ(Decode(file, &image), KEL_ERR_MEMORY);
    EXPECT_TRUE(IsEmpty(image));
}

TEST(JpegSource, SkipsAcrossBlocksAndPastTheEnd) {
    const Bytes data(5000, 7);
    FaultyArchive archive(data);
    CKelJpegSrcMgr source(&archive);
    jpeg_decompress_struct info = {};
    info.src = &source;
    CKelJpegSrcMgr::SkipInputData(&info, -5);
    EXPECT_EQ(archive.Calls(support::Op::kRead), 0);
    CKelJpegSrcMgr::SkipInputData(&info, 4100);
    EXPECT_EQ(source.bytes_in_buffer, 900u);
    CKelJpegSrcMgr::SkipInputData(&info, 901);
    EXPECT_EQ(source.bytes_in_buffer, 1u);
    EXPECT_EQ(*source.next_input_byte, JPEG_EOI);
}

}  // namespace
