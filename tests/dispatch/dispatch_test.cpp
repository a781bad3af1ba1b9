#include <gtest/gtest.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>
#include <string>
#include <string_view>

#include "kelimage/kelimage.h"
#include "support/faultyarchive.h"
#include "support/recordingtrace.h"

using namespace std::literals;

namespace {

using support::FaultyArchive;
using Bytes = std::vector<unsigned char>;

bool IsEmpty(CKelImage& image) {
    return image.GetWidth() == 0 && image.GetBits() == nullptr && image.GetLineArray() == nullptr &&
           image.GetPalette() == nullptr && image.m_pBMI == nullptr;
}

void Fill(CKelImage* pImage) {
    ASSERT_NE(pImage->Create(40, 30, 24), nullptr);
    for (int i = 0; i < 40 * 30 * 3; ++i) {
        pImage->GetBits()[i] = static_cast<unsigned char>(i * 7 + i / 120 * 3);
    }
}

constexpr KelImageFormat kWritten[] = {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG};

const struct {
    KelImageFormat eFormat;
    KelResult nResult;  // of Open on the signature alone; -1: what the reader makes of it
    std::string_view strSignatures;  // four bytes each
} kSignatures[] = {{KEL_IMAGE_BMP, -1, "BM__BA__CI__CP__IC__(\0\0\0"sv},
                   {KEL_IMAGE_JPEG, KEL_ERR_CODEC, "\xFF\xD8\xFF_"sv},
                   {KEL_IMAGE_PNG, KEL_ERR_CODEC, "\x89PNG"sv},
                   {KEL_IMAGE_TIFF, KEL_OK, "II*\0MM\0*"sv},
                   {KEL_IMAGE_GIF, KEL_ERR_OPEN_FORMAT, "GIF8"sv},
                   {KEL_IMAGE_PCX, KEL_ERR_OPEN_FORMAT, "\nM\1\b"sv},
                   {KEL_IMAGE_PSD, KEL_ERR_OPEN_FORMAT, "8BPS"sv},
                   {KEL_IMAGE_PGM, KEL_ERR_OPEN_FORMAT, "P2__P5__"sv},
                   {KEL_IMAGE_PPM, KEL_ERR_OPEN_FORMAT, "P3__P6__"sv},
                   {KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL,
                    "P1__P4__P7__BX__)\0\0\0\n\1\0\0\xFF\xD8\xFE_\x89PNF8BPX\0\0\0\0"sv}};

TEST(Dispatch, RecognisesSignaturesAndRestoresThePosition) {
    const support::RecordingTrace silence(-1);
    for (const auto& [eFormat, nResult, strSignatures] : kSignatures) {
        for (std::size_t i = 0; i < strSignatures.size(); i += 4) {
            SCOPED_TRACE(strSignatures.substr(i, 4));
            Bytes file(104, 0xFF);
            std::memcpy(&file[100], &strSignatures[i], 4);
            CKelImage image;
            Fill(&image);
            EXPECT_EQ(image.DetectImageFormat(&file[100], 0), eFormat);
            FaultyArchive archive(file);
            archive.Seek(100, 0);
            const KelResult nOpened = image.Open(&archive);
            EXPECT_TRUE(nResult < 0 || (nOpened == nResult && IsEmpty(image))) << nOpened;
            EXPECT_EQ(archive.GetPosition(), 100);
        }
    }
    const Bytes three(3, 0x89);
    FaultyArchive archive(three);
    EXPECT_EQ(CKelImage().Open(&archive), KEL_ERR_FAIL);
}

TEST(Dispatch, OpensWhatItSavesAlsoInsideALargerStream) {
    for (const KelImageFormat eFormat : kWritten) {
        SCOPED_TRACE(int{eFormat});
        const int nOffset = eFormat == KEL_IMAGE_BMP ? 0 : 100;
        CKelImage image, original;
        Fill(&original);
        CVamArchiveMemory archive;
        const Bytes other(100, 'x');
        archive.Write(other.data(), static_cast<unsigned int>(nOffset));
        ASSERT_EQ(original.Save(&archive, eFormat, nullptr), KEL_OK);
        archive.Write(other.data(), 100);
        archive.Seek(nOffset, 0);
        ASSERT_EQ(image.Open(&archive), KEL_OK);
        EXPECT_EQ(archive.GetPosition(), nOffset);
        ASSERT_EQ(image.GetBmpDataSize(), original.GetBmpDataSize());
        EXPECT_TRUE(eFormat == KEL_IMAGE_JPEG ||
                    std::memcmp(image.GetBits(), original.GetBits(), 40 * 30 * 3) == 0);
    }
}

TEST(Dispatch, AnswersEveryFormatInSaveAndCreatesTheFileFirst) {
    const std::string strPath = testing::TempDir() + "ikelex_dispatch_test";
    CKelImage image;
    Fill(&image);
    for (int nFormat = -2; nFormat <= 14; ++nFormat) {
        SCOPED_TRACE(nFormat);
        const bool bWritten = nFormat == 1 || nFormat == 4 || nFormat == 5;
        const KelResult nExpected = bWritten                       ? KEL_OK
                                    : nFormat == 6 || nFormat == 7 ? KEL_ERR_NOT_IMPLEMENTED
                                                                   : KEL_ERR_SAVE_FORMAT;
        std::remove(strPath.c_str());
        const auto eFormat = static_cast<KelImageFormat>(nFormat);
        EXPECT_EQ(image.Save(strPath.c_str(), eFormat, nullptr), nExpected);
        std::ifstream file(strPath, std::ios::binary | std::ios::ate);
        ASSERT_TRUE(file.is_open());
        EXPECT_EQ(file.tellg() > 0, bWritten);
        CKelImage again;
        EXPECT_EQ(again.Open(strPath.c_str()), bWritten ? KEL_OK : KEL_ERR_FAIL);
        EXPECT_EQ(again.GetWidth(), bWritten ? 40 : 0);
    }
    std::remove(strPath.c_str());
}

TEST(Dispatch, KeepsTheImageWhenThePathIsNoFile) {
    CKelImage image;
    Fill(&image);
    const auto expect = [&](auto pWhere, KelResult nResult) {
        EXPECT_EQ(image.Open(pWhere), nResult);
        EXPECT_EQ(image.Save(pWhere, KEL_IMAGE_JPEG, nullptr), nResult);
    };
    expect(static_cast<const char*>(nullptr), KEL_ERR_PARAM);
    expect(static_cast<CVamArchive*>(nullptr), KEL_ERR_PARAM);
    expect(testing::TempDir().c_str(), KEL_ERR_FILE);
    expect((testing::TempDir() + "/no/such/file").c_str(), KEL_ERR_FILE);
    EXPECT_EQ(image.GetWidth(), 40);
    EXPECT_NE(image.GetBits(), nullptr);
}

struct HungryArchive : CVamArchiveMemory {
    unsigned int Read(void*, unsigned int) override { throw std::bad_alloc(); }
    unsigned int Write(const void*, unsigned int) override { throw std::bad_alloc(); }
};

TEST(Dispatch, AnswersMemoryWhenTheStreamHasNone) {
    HungryArchive hungry;
    CKelImage image;
    Fill(&image);
    for (const KelImageFormat eFormat : kWritten) {
        EXPECT_EQ(image.Save(&hungry, eFormat, nullptr), KEL_ERR_MEMORY);
    }
    EXPECT_EQ(image.Open(&hungry), KEL_ERR_MEMORY);
    EXPECT_TRUE(IsEmpty(image));
}

}  // namespace
