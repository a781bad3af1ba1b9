// The JPEG reader against plain libjpeg, and what damage leaves.
#include <gtest/gtest.h>
#include "support/reference/codecs.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "keldecoder/keljpegdecoder.h"
#include "support/pictures.h"
#include "support/readers.h"

namespace {

using support::Bytes;

constexpr auto Decode = support::Decode<CKelJpegDecoder>;

Bytes NoiseFile(const reference::JpegFormat& format) {
    Bytes rows(static_cast<std::size_t>(format.nWidth * format.nHeight * format.nComponents));
    support::Random(1).Fill(rows.data(), rows.size());
    return reference::EncodeJpeg(rows.data(), format);
}

Bytes Start(const Bytes& file, std::size_t nLength) {
    return Bytes(file.data(), file.data() + nLength);
}

// Expects of the stream all that the plain loop delivers for the file.
void ExpectAsPlain(const Bytes& file, CVamArchive&& archive) {
    CKelImage image;
    const KelResult nResult = CKelJpegDecoder().Do(&archive, &image);
    try {
        const reference::JpegPicture expected = reference::DecodeJpeg(file);
        ASSERT_EQ(KEL_OK, nResult);
        ASSERT_EQ(expected.nWidth, image.GetWidth());
        ASSERT_EQ(expected.nHeight, image.GetHeight());
        ASSERT_EQ(expected.nComponents * 8, image.GetBitsPerPixel());
        Bytes rows;  // as libjpeg delivers them, from the image's blue, green, red
        for (int y = 0; y < image.GetHeight(); ++y) {
            const unsigned char* pRow = image.GetLineArray()[y];
            for (int x = 0; x < image.GetWidth() * expected.nComponents; ++x) {
                rows.push_back(expected.nComponents == 3 ? pRow[x + 2 - x % 3 * 2] : pRow[x]);
            }
        }
        EXPECT_TRUE(rows == Bytes(&expected.pRows[0], &expected.pRows[expected.nSize]));
    } catch (const reference::JpegError&) {
        EXPECT_EQ(KEL_ERR_CODEC, nResult);
    }
}

void ExpectAsPlain(const Bytes& file) {
    ExpectAsPlain(file, support::FaultyArchive(file));
}

}  // namespace

TEST(JpegDecoder, DeliversWhatPlainLibjpegDelivers) {
    // From 1,366 columns on rows are decoded in place; up to there some go through scratch.
    const int sizes[][2] = {{1, 1},    {7, 5},    {16, 16},  {33, 17},
                            {130, 71}, {1364, 9}, {2001, 9}, {6000, 20}};
    for (const auto& [nWidth, nHeight] : sizes) {
        for (const int nComponents : {1, 3, 4}) {
            SCOPED_TRACE(testing::Message() << nWidth << " x " << nHeight << " x " << nComponents);
            // A comment longer than two input blocks is skipped.
            ExpectAsPlain(NoiseFile({nWidth, nHeight, nComponents, 75, true, JCS_UNKNOWN, 9000}));
            ExpectAsPlain(NoiseFile({nWidth, nHeight, nComponents}));
        }
        for (const J_COLOR_SPACE eStored : {JCS_RGB, JCS_YCCK}) {
            const int nComponents = eStored == JCS_RGB ? 3 : 4;
            ExpectAsPlain(NoiseFile({nWidth, nHeight, nComponents, 75, false, eStored}));
        }
    }
}

TEST(JpegDecoder, TreatsEveryTruncationAsPlainLibjpegDoes) {
    testing::internal::CaptureStderr();  // libjpeg's warnings keep their default way out
    const support::RecordingTrace trace(-1);
    for (const bool bProgressive : {false, true}) {
        const unsigned int nComment = bProgressive ? 5000 : 0;
        const Bytes file = NoiseFile({40, 33, 3, 50, bProgressive, JCS_UNKNOWN, nComment});
        for (std::size_t n = 0; n < file.size(); n += bProgressive ? 17 : 1) {
            SCOPED_TRACE(n);
            ExpectAsPlain(Start(file, n));
        }
    }
    EXPECT_TRUE(trace.Lines().empty());
    testing::internal::GetCapturedStderr();
}

// Restart markers bring the decoder back into step where data between them are lost.
TEST(JpegDecoder, GoesOnAtTheNextRestartMarkerAsPlainLibjpegDoes) {
    testing::internal::CaptureStderr();
    const Bytes file = NoiseFile({64, 64, 3, 75, false, JCS_UNKNOWN, 0, 3});
    int nMarkers = 0;
    for (std::size_t i = 0; i + 1 < file.size(); ++i) {
        if (file[i] != 0xFF || (file[i + 1] & 0xF8) != JPEG_RST0) {
            continue;
        }
        SCOPED_TRACE(++nMarkers);
        for (const int nStep : {1, 3, 6}) {  // steps that libjpeg treats in three ways
            Bytes other = file;
            other[i + 1] = static_cast<unsigned char>(JPEG_RST0 + (file[i + 1] + nStep) % 8);
            ExpectAsPlain(other);
        }
        Bytes without = file;
        without.erase(without.begin() + static_cast<std::ptrdiff_t>(i) - 5,
                      without.begin() + static_cast<std::ptrdiff_t>(i) + 2);
        ExpectAsPlain(without);
    }
    Bytes ended = NoiseFile({8, 8});
    ended.insert(ended.end() - 2, {0xFF, 0xD8});  // an error after the last row
    ExpectAsPlain(ended);
    EXPECT_GT(nMarkers, 3);
    testing::internal::GetCapturedStderr();
}

// When the stream throws in the middle, the rows that were not reached are zero, whatever fresh
// memory holds.
TEST(JpegDecoder, RowsThatWereNotReachedAreZero) {
    const Bytes file = NoiseFile({200, 300});
    const support::AllocFill fill(0xA5);
    support::FaultyArchive archive(file);
    archive.FailAt(support::Op::kRead, 4, support::Fault::kThrow);
    CKelImage image;
    EXPECT_THROW(CKelJpegDecoder().Do(&archive, &image), support::ForeignError);
    ASSERT_EQ(300, image.GetHeight());
    const unsigned char* const pFirst = image.GetLineArray()[0];
    const unsigned char* const pLast = image.GetLineArray()[298];  // 299 is always cleared
    EXPECT_NE(Bytes(600, 0xA5), Bytes(pFirst, pFirst + 600));
    EXPECT_EQ(Bytes(600), Bytes(pLast, pLast + 600));
}

TEST(JpegDecoder, TakesAFailedReadAsTheEnd) {
    const Bytes file = NoiseFile({300, 150});
    ASSERT_GT(file.size(), 3u * 4096);
    testing::internal::CaptureStderr();
    for (const support::Fault eFault : {support::Fault::kHuge, support::Fault::kShort}) {
        support::FaultyArchive archive(file);
        archive.FailAt(support::Op::kRead, 2, eFault, true);
        const bool bGoesOn = eFault == support::Fault::kShort;  // a short read is not yet the end
        ExpectAsPlain(bGoesOn ? file : Start(file, 4096), std::move(archive));
    }
    testing::internal::GetCapturedStderr();
}

TEST(JpegDecoder, RefusesWhatNoImageCanHold) {
    for (const int nComponents : {2, 5}) {
        CKelImage image;
        image.Create(3, 3, 24);
        const support::RecordingTrace trace;
        // Five do not fit into one scan, so they come in several.
        EXPECT_EQ(KEL_ERR_CODEC, Decode(NoiseFile({9, 9, nComponents, 75, true}), image));
        EXPECT_EQ(nullptr, image.GetBits());
        EXPECT_EQ(0, image.GetWidth());
        EXPECT_EQ(nComponents == 2 ? 2u : 0u, trace.Lines().size());  // libjpeg does not mind five
    }
    Bytes file = NoiseFile({8, 8, 3, 75, true});
    const unsigned char frame[] = {0xFF, 0xC2};
    const auto pFrame = std::search(file.begin(), file.end(), frame, frame + 2);
    pFrame[5] = pFrame[7] = 0xFF;  // height and width
    CKelImage image;
    const std::clock_t nStart = std::clock();
    EXPECT_EQ(KEL_ERR_MEMORY, Decode(file, image));
    EXPECT_LT(std::clock() - nStart, CLOCKS_PER_SEC);  // refused before libjpeg begins
    EXPECT_EQ(0, image.GetWidth());
}

TEST(JpegDecoder, TracesEachDecodeAndEachError) {
    const std::string strDetail = "CKelJpegDecoder::Do, jpeg_decompress_struct:" +
                                  std::to_string(sizeof(jpeg_decompress_struct));
    CKelImage image;
    for (const int nLevel : {1, 2}) {
        const support::RecordingTrace trace(nLevel);
        EXPECT_EQ(KEL_OK, Decode(NoiseFile({8, 8}), image));
        const std::vector<support::TraceLine> detail = {{ZT_TRACE_WRITE, 2, strDetail}};
        EXPECT_EQ(nLevel == 2 ? detail : std::vector<support::TraceLine>(), trace.Lines());
    }
    const support::RecordingTrace trace;
    EXPECT_EQ(KEL_ERR_CODEC, Decode({0xFF, 0xD8}, image));
    EXPECT_EQ(0, image.GetWidth());
    ASSERT_EQ(2u, trace.Lines().size());
    const std::string strText = trace.Lines()[0].strText;
    EXPECT_TRUE(strText.starts_with("CKelJpegDecoder::jpeg_error_exit, err msg: "));
    EXPECT_FALSE(strText.ends_with(": "));
    EXPECT_EQ(support::InputError(strText), trace.Lines());
}
