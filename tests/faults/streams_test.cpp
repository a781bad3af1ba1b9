// Streams that misbehave the way they do outside tests.
#include <gtest/gtest.h>
#include <platform/vamarchivefile.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "scenarios.h"
#include "support/recordingtrace.h"

using namespace faults;
using support::Fault;
using support::Op;

namespace {

Bytes Load(const char* pszFile) {
    std::ifstream in(std::string(FAULTS_CORPUS "/") + pszFile, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), {});
}

// One file of each kind, and what opening it gives when the stream ends early: libjpeg makes up the
// rest, libpng refuses, missing BMP rows are zero.
struct Short {
    const char* pszFile;
    KelResult nResult;
};
constexpr Short kShort[] = {
    {"bmp/40-24-0", KEL_OK}, {"jpeg/3b0", KEL_OK}, {"png/2-8-0", KEL_ERR_CODEC}};

// A file that loses its second half after the first read.
class ShrinkingFile : public CVamArchiveFile {
  public:
    unsigned int Read(void* pBuffer, unsigned int nCount) override {
        const unsigned int nRead = CVamArchiveFile::Read(pBuffer, nCount);
        if (!m_bShrunk) {
            EXPECT_EQ(ftruncate(fileno(GetHandle()), 120), 0);
        }
        m_bShrunk = true;
        return nRead;
    }

  private:
    bool m_bShrunk = false;
};

}  // namespace

TEST(Streams, FullDiskDuringSaveIsKnownToTheArchive) {
    CKelImage image;
    ASSERT_NE(image.Create(200, 100, 24), nullptr);
    for (const KelImageFormat eFormat : {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG}) {
        CVamArchiveFile full;
        if (!full.Open("/dev/full", "w+b"))
            GTEST_SKIP() << "no /dev/full here";
        EXPECT_EQ(image.Save(&full, eFormat, nullptr), KEL_OK);
        EXPECT_FALSE(full.Close());
        EXPECT_TRUE(full.HasFailed());
        EXPECT_EQ(image.Save("/dev/full", eFormat, nullptr), KEL_OK);
    }
}

TEST(Streams, FileShrinksWhileItIsRead) {
    const support::RecordingTrace silence(-1);
    const auto path =
        std::filesystem::temp_directory_path() / ("ikelex-shrinking-" + std::to_string(getpid()));
    for (const Short& item : kShort) {
        const Bytes bytes = Load(item.pszFile);
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
        ShrinkingFile file;
        ASSERT_TRUE(file.Open(path.string().c_str(), "r+b"));
        CKelImage image;
        const KelResult nResult = image.Open(&file);
        EXPECT_TRUE(nResult == item.nResult || nResult == KEL_ERR_CODEC) << item.pszFile;
        ExpectSound(image, item.pszFile);
        EXPECT_EQ(file.GetPosition(), 0);
    }
    std::filesystem::remove(path);
}

TEST(Streams, StreamReturnsMinusOne) {
    const support::RecordingTrace silence(-1);
    for (const Short& item : kShort) {
        const Bytes bytes = Load(item.pszFile);
        // The first read finds the format and the reader meets the fault at once or a little later.
        for (const int nCall : {2, 4}) {
            support::FaultyArchive archive(bytes);
            archive.FailAt(Op::kRead, nCall, Fault::kMinusOne, true);
            CKelImage image;
            const KelResult nResult = image.Open(&archive);
            EXPECT_TRUE(nResult == KEL_OK || nResult == KEL_ERR_CODEC || nResult == KEL_ERR_PARAM)
                << item.pszFile << ": " << nResult;
            ExpectSound(image, item.pszFile);
        }
    }
}

TEST(Streams, CodecErrorInTheMiddleKeepsTheRowsReadSoFar) {
    const support::RecordingTrace silence(-1);
    // PNG: pixel data that end after some rows. JPEG: a second start-of-image marker among the
    // data.
    CKelImage picture;
    ASSERT_EQ(support::OpenRandom(&picture, {24, BI_RGB, 0}, 64, 400, 1), KEL_OK);
    for (const KelImageFormat eFormat : {KEL_IMAGE_PNG, KEL_IMAGE_JPEG}) {
        CVamArchiveMemory whole, damaged;
        ASSERT_EQ(picture.Save(&whole, eFormat, nullptr), KEL_OK);
        const std::size_t nHalf = whole.GetSize() / 2;
        damaged.Write(whole.GetData(), static_cast<unsigned int>(whole.GetSize()));
        damaged.Seek(static_cast<long long>(nHalf), 0);
        damaged.Write("\xFF\xD8\xFF\xD8", 4);
        damaged.Seek(0, 0);
        CKelImage image;
        EXPECT_EQ(image.Open(&damaged), KEL_ERR_CODEC);
        ExpectSound(image, "damaged");
        ASSERT_EQ(image.GetHeight(), 400);
        CKelImage intact;
        whole.Seek(0, 0);
        ASSERT_EQ(intact.Open(&whole), KEL_OK);
        EXPECT_EQ(std::memcmp(image.GetLineArray()[40], intact.GetLineArray()[40], 192), 0);
        const Bytes last(image.GetLineArray()[399], image.GetLineArray()[399] + 192);
        EXPECT_NE(std::memcmp(last.data(), intact.GetLineArray()[399], 192), 0);
        if (eFormat == KEL_IMAGE_PNG) {
            EXPECT_EQ(last, Bytes(192, 0));
        }
    }
}
