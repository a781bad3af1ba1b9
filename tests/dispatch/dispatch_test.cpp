// Open and Save: formats, positions, options, and what must not leave the interface.
#include <gtest/gtest.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <new>
#include <string>
#include <string_view>

#include "kelimage/kelimage.h"
#include "support/faultyarchive.h"
#include "support/inspect.h"
#include "support/recordingtrace.h"

using namespace std::literals;

namespace {

using support::Bytes;
using support::FaultyArchive;

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
    KelResult nResult;               // of Open on the signature alone
    std::string_view strSignatures;  // four bytes each
} kSignatures[] = {{KEL_IMAGE_BMP, KEL_ERR_PARAM, "BM__BA__CI__CP__IC__(\0\0\0"sv},
                   {KEL_IMAGE_JPEG, KEL_ERR_CODEC, "\xFF\xD8\xFF_"sv},
                   {KEL_IMAGE_PNG, KEL_ERR_CODEC, "\x89PNG"sv},
                   {KEL_IMAGE_TIFF, KEL_OK, "II*\0MM\0*"sv},
                   {KEL_IMAGE_GIF, KEL_ERR_OPEN_FORMAT, "GIF8"sv},
                   {KEL_IMAGE_PCX, KEL_ERR_OPEN_FORMAT, "\nM\1_"sv},
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
            EXPECT_EQ(eFormat, image.DetectImageFormat(&file[100], 0));
            FaultyArchive archive(file);
            archive.Seek(100, 0);
            const KelResult nOpened = image.Open(&archive);
            EXPECT_EQ(nResult, nOpened);
            EXPECT_TRUE(IsEmpty(image));
            EXPECT_EQ(100, archive.GetPosition());
            // The same at the start of streams that end early, the fill ("_") not needed.
            const std::size_t nNeeded = strSignatures.substr(i, 4).find_last_not_of('_') + 1;
            for (std::size_t nLength = 0; nLength < 4; ++nLength) {
                const Bytes begin(&file[100], &file[100] + nLength);
                FaultyArchive ended(begin);
                EXPECT_EQ(nLength < nNeeded || nResult == KEL_ERR_FAIL,
                          CKelImage().Open(&ended) == KEL_ERR_FAIL)
                    << nLength;
            }
        }
    }
}

// At position 100 of a larger stream, but for BMP, which begins where the stream does.
TEST(Dispatch, OpensWhatItSavesAlsoInsideALargerStream) {
    for (const KelImageFormat eFormat : kWritten) {
        const int nOffset = eFormat == KEL_IMAGE_BMP ? 0 : 100;
        CKelImage image, original;
        Fill(&original);
        CVamArchiveMemory archive;
        archive.Seek(nOffset, 0);
        ASSERT_EQ(KEL_OK, original.Save(&archive, eFormat, nullptr));
        archive.Write("more", 4);
        archive.Seek(nOffset, 0);
        ASSERT_EQ(KEL_OK, image.Open(&archive)) << eFormat;
        EXPECT_EQ(nOffset, archive.GetPosition());
        EXPECT_TRUE(eFormat == KEL_IMAGE_JPEG ||
                    support::RowsOf(original) == support::RowsOf(image));
    }
}

TEST(Dispatch, AnswersEveryFormatInSaveAndCreatesTheFileFirst) {
    const std::string strPath = testing::TempDir() + "ikelex_dispatch_test";
    CKelImage image;
    Fill(&image);
    tagKelParameterItem quality = {"quality", CVamVariant(5)};
    tagKelParameters params = {1, &quality};
    for (int nFormat = -2; nFormat <= 14; ++nFormat) {
        SCOPED_TRACE(nFormat);
        const bool bWritten = nFormat == 1 || nFormat == 4 || nFormat == 5;
        const KelResult nExpected = bWritten                       ? KEL_OK
                                    : nFormat == 6 || nFormat == 7 ? KEL_ERR_NOT_IMPLEMENTED
                                                                   : KEL_ERR_SAVE_FORMAT;
        std::ofstream(strPath) << std::string(50000, 'x');  // longer than what is written
        const auto eFormat = static_cast<KelImageFormat>(nFormat);
        EXPECT_EQ(bWritten ? KEL_ERR_PARAM : nExpected,
                  image.Save(static_cast<CVamArchive*>(nullptr), eFormat, nullptr));
        EXPECT_EQ(nExpected, image.Save(strPath.c_str(), eFormat, &params));
        CVamArchiveMemory plain, small;
        image.Save(&plain, eFormat, nullptr);
        image.Save(&small, eFormat, &params);
        EXPECT_EQ(eFormat == KEL_IMAGE_JPEG, small.GetSize() < plain.GetSize());  // "quality"
        std::ifstream file(strPath, std::ios::binary);
        ASSERT_TRUE(file.is_open());
        const Bytes written(std::istreambuf_iterator<char>(file), {});
        EXPECT_EQ(Bytes(small.GetData(), small.GetData() + small.GetSize()), written);
        EXPECT_EQ(bWritten, written.size() > 0);
        CKelImage again;
        EXPECT_EQ(bWritten ? KEL_OK : KEL_ERR_FAIL, again.Open(strPath.c_str()));
        EXPECT_EQ(bWritten ? 40 : 0, again.GetWidth());
    }
    std::remove(strPath.c_str());
}

TEST(Dispatch, KeepsTheImageWhenThePathIsNoFile) {
    CKelImage image;
    Fill(&image);
    const auto expect = [&](auto pWhere, KelResult nResult) {
        EXPECT_EQ(nResult, image.Open(pWhere));
        EXPECT_EQ(nResult, image.Save(pWhere, KEL_IMAGE_JPEG, nullptr));
    };
    expect(static_cast<const char*>(nullptr), KEL_ERR_PARAM);
    expect(static_cast<CVamArchive*>(nullptr), KEL_ERR_PARAM);
    expect(testing::TempDir().c_str(), KEL_ERR_FILE);
    expect((testing::TempDir() + "/no/such/file").c_str(), KEL_ERR_FILE);
    EXPECT_EQ(40, image.GetWidth());
    EXPECT_NE(image.GetBits(), nullptr);
    CVamArchiveFile full;  // that a disk is full, its stream alone knows
    if (full.Open("/dev/full", "w+b")) {
        EXPECT_EQ(KEL_OK, image.Save("/dev/full", KEL_IMAGE_BMP, nullptr));
    }
}

// A count above what was asked for means that nothing arrived, whatever lies in the buffer.
TEST(Dispatch, BelievesTheStreamsCount) {
    struct : CVamArchiveMemory {
        unsigned int Read(void* pBuffer, unsigned int) override {
            std::memcpy(pBuffer, "II*", 4);
            return ~0u;
        }
    } archive;
    EXPECT_EQ(KEL_ERR_FAIL, CKelImage().Open(&archive));
}

TEST(Dispatch, OpensFilesThatNobodyMayWriteTo) {
    // A program that runs cannot be opened for writing, not even by the superuser.
    EXPECT_EQ(KEL_ERR_FAIL, CKelImage().Open("/proc/self/exe"));
}

// A host's own image whose overrides throw.
template <typename Thrown>
struct ThrowingImage : CKelImage {
    explicit ThrowingImage(bool bInside) : m_bInside(bInside) {}
    using CKelImage::ApplyFilter;
    using CKelImage::Open;
    using CKelImage::Save;
    KelResult Open(CVamArchive*) override { throw Thrown(); }
    KelResult Save(CVamArchive*, KelImageFormat, tagKelParameters*) override { throw Thrown(); }
    KelResult ApplyFilter1(CKelImage** pp, KelImageFilterType e, tagKelParameters* p) override {
        if (!m_bInside) {
            throw Thrown();
        }
        return CKelImage::ApplyFilter1(pp, e, p);
    }
    int GetWidth() override { throw Thrown(); }

    bool m_bInside;  // whether ApplyFilter1 itself throws, or the filter it runs
};

template <typename Thrown>
void ExpectNothingEscapes(KelResult nResult) {
    const std::string strPath = testing::TempDir() + "ikelex_dispatch_throw";
    for (const bool bInside : {false, true}) {
        ThrowingImage<Thrown> image(bInside);
        EXPECT_EQ(nResult, image.Save(strPath.c_str(), KEL_IMAGE_BMP, nullptr));
        EXPECT_EQ(nResult, image.Open(strPath.c_str()));
        Fill(&image);
        IKelImage* pImage = &image;
        EXPECT_EQ(nResult, image.ApplyFilter(&pImage, KEL_FILTER_SCALE, nullptr));
        EXPECT_EQ(nullptr, pImage);
        EXPECT_EQ(nResult, image.ApplyFilter(KEL_FILTER_SCALE, nullptr));
    }
    std::remove(strPath.c_str());
    ThrowingImage<Thrown> image(true);
    Fill(&image);
    CKelImage* pMade = &image;
    EXPECT_EQ(nResult, image.ApplyFilter1(&pMade, KEL_FILTER_SCALE, nullptr));
    EXPECT_EQ(nullptr, pMade);
}

TEST(Dispatch, NothingThrownLeavesTheInterface) {
    ExpectNothingEscapes<std::bad_alloc>(KEL_ERR_MEMORY);
    ExpectNothingEscapes<std::exception>(KEL_ERR_FILE);
    ExpectNothingEscapes<support::ForeignError>(KEL_ERR_FILE);
}

TEST(Dispatch, FailedFiltersReturnNoImage) {
    CKelImage image;
    Fill(&image);
    IKelImage* pImage = &image;
    CKelImage* pMade = &image;
    const auto eOther = static_cast<KelImageFilterType>(2);
    EXPECT_EQ(KEL_ERR_FILTER_TYPE, image.ApplyFilter(&pImage, eOther, nullptr));
    EXPECT_EQ(nullptr, pImage);
    EXPECT_EQ(KEL_ERR_FILTER_TYPE, image.ApplyFilter1(&pMade, eOther, nullptr));
    EXPECT_EQ(nullptr, pMade);
    EXPECT_EQ(40, image.GetWidth());
}

}  // namespace
