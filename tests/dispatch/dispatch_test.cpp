#include <gtest/gtest.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>
#include <string>

#include "kelimage/kelimage.h"
#include "support/faultyarchive.h"
#include "support/recordingtrace.h"

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

// The picture of Fill as a file of the given format, between nOffset other bytes on both sides.
Bytes File(KelImageFormat eFormat, int nOffset = 0) {
    CKelImage image;
    Fill(&image);
    CVamArchiveMemory archive;
    const Bytes before(static_cast<std::size_t>(nOffset), 'x');
    archive.Write(before.data(), static_cast<unsigned int>(nOffset));
    EXPECT_EQ(image.Save(&archive, eFormat, nullptr), KEL_OK);
    archive.Write(before.data(), static_cast<unsigned int>(nOffset));
    return Bytes(archive.GetData(), archive.GetData() + archive.GetSize());
}

constexpr KelImageFormat kWritten[] = {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG};

struct Signature {
    unsigned char bytes[4];
    KelImageFormat eFormat;
    KelResult nResult;  // of Open on these four bytes alone; -1: what the reader makes of them
};

const Signature kSignatures[] = {{{'B', 'M', 0, 0}, KEL_IMAGE_BMP, -1},
                                 {{'B', 'A', 1, 1}, KEL_IMAGE_BMP, -1},
                                 {{'C', 'I', 0, 0}, KEL_IMAGE_BMP, -1},
                                 {{'C', 'P', 0, 0}, KEL_IMAGE_BMP, -1},
                                 {{'I', 'C', 0, 0}, KEL_IMAGE_BMP, -1},
                                 {{40, 0, 0, 0}, KEL_IMAGE_BMP, -1},
                                 {{0xFF, 0xD8, 0xFF, 9}, KEL_IMAGE_JPEG, KEL_ERR_CODEC},
                                 {{0x89, 'P', 'N', 'G'}, KEL_IMAGE_PNG, KEL_ERR_CODEC},
                                 {{'I', 'I', 42, 0}, KEL_IMAGE_TIFF, KEL_OK},
                                 {{'M', 'M', 0, 42}, KEL_IMAGE_TIFF, KEL_OK},
                                 {{'G', 'I', 'F', '8'}, KEL_IMAGE_GIF, KEL_ERR_OPEN_FORMAT},
                                 {{10, 77, 1, 8}, KEL_IMAGE_PCX, KEL_ERR_OPEN_FORMAT},
                                 {{'8', 'B', 'P', 'S'}, KEL_IMAGE_PSD, KEL_ERR_OPEN_FORMAT},
                                 {{'P', '2', 0, 0}, KEL_IMAGE_PGM, KEL_ERR_OPEN_FORMAT},
                                 {{'P', '5', 0, 0}, KEL_IMAGE_PGM, KEL_ERR_OPEN_FORMAT},
                                 {{'P', '3', 0, 0}, KEL_IMAGE_PPM, KEL_ERR_OPEN_FORMAT},
                                 {{'P', '6', 0, 0}, KEL_IMAGE_PPM, KEL_ERR_OPEN_FORMAT},
                                 {{'P', '1', 0, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{'P', '4', 0, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{'P', '7', 0, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{'B', 'X', 0, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{41, 0, 0, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{10, 1, 0, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{0xFF, 0xD8, 0xFE, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{0x89, 'P', 'N', 'F'}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{'8', 'B', 'P', 'X'}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL},
                                 {{0, 0, 0, 0}, KEL_IMAGE_UNKNOWN, KEL_ERR_FAIL}};

TEST(Dispatch, RecognisesSignaturesAndRestoresThePosition) {
    for (const Signature& signature : kSignatures) {
        SCOPED_TRACE(testing::PrintToString(signature.bytes));
        const support::RecordingTrace trace(-1);
        CKelImage image;
        Fill(&image);
        Bytes four(signature.bytes, signature.bytes + 4);
        EXPECT_EQ(image.DetectImageFormat(four.data(), 0), signature.eFormat);
        four.insert(four.begin(), 100, 0xFF);
        FaultyArchive archive(four);
        archive.Seek(100, 0);
        const KelResult nResult = image.Open(&archive);
        if (signature.nResult >= 0) {
            EXPECT_EQ(nResult, signature.nResult);
            EXPECT_TRUE(IsEmpty(image));
        }
        EXPECT_EQ(archive.GetPosition(), 100);
    }
    for (std::size_t n = 0; n < 4; ++n) {  // shorter than any signature but "BM"
        const Bytes few(n, 0x89);
        FaultyArchive archive(few);
        CKelImage image;
        EXPECT_EQ(image.Open(&archive), KEL_ERR_FAIL);
    }
}

TEST(Dispatch, OpensWhatItSavesAlsoInsideALargerStream) {
    for (const KelImageFormat eFormat : kWritten) {
        SCOPED_TRACE(int{eFormat});
        const int nOffset = eFormat == KEL_IMAGE_BMP ? 0 : 100;
        const Bytes file = File(eFormat, nOffset);
        FaultyArchive archive(file);
        archive.Seek(nOffset, 0);
        CKelImage image, original;
        Fill(&original);
        ASSERT_EQ(image.Open(&archive), KEL_OK);
        EXPECT_EQ(archive.GetPosition(), nOffset);
        ASSERT_EQ(image.GetBmpDataSize(), original.GetBmpDataSize());
        if (eFormat != KEL_IMAGE_JPEG) {
            EXPECT_EQ(std::memcmp(image.GetBits(), original.GetBits(), 40 * 30 * 3), 0);
        }
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
    const char* pszNone = nullptr;
    const std::string strDirectory = testing::TempDir();
    EXPECT_EQ(image.Open(pszNone), KEL_ERR_PARAM);
    EXPECT_EQ(image.Save(pszNone, KEL_IMAGE_JPEG, nullptr), KEL_ERR_PARAM);
    EXPECT_EQ(image.Open(static_cast<CVamArchive*>(nullptr)), KEL_ERR_PARAM);
    EXPECT_EQ(image.Save(static_cast<CVamArchive*>(nullptr), KEL_IMAGE_PNG, nullptr),
              KEL_ERR_PARAM);
    for (const std::string& strPath : {strDirectory, strDirectory + "/no/such/file"}) {
        EXPECT_EQ(image.Open(strPath.c_str()), KEL_ERR_FILE);
        EXPECT_EQ(image.Save(strPath.c_str(), KEL_IMAGE_JPEG, nullptr), KEL_ERR_FILE);
    }
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
