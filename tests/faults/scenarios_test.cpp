// The scenarios themselves, and what they see of an image.
#include "scenarios.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "support/allocfaults.h"
#include "support/inspect.h"

namespace faults {

namespace {

const support::Kind kIndexed4{4, BI_RGB, 0}, kIndexed8{8, BI_RGB, 0}, kBits1{1, BI_RGB, 0},
    kBits16{16, BI_RGB, 0}, kMasks16{16, BI_BITFIELDS, 0}, kBits24{24, BI_RGB, 0},
    kBits32{32, BI_RGB, 0};

std::function<void(Stage&)> Holding(support::Kind kind, int nWidth = 13, int nHeight = 9) {
    return [=](Stage& stage) {
        EXPECT_EQ(KEL_OK, support::OpenRandom(&stage.image, kind, nWidth, nHeight, 5));
    };
}

Scenario OpenStream(const std::string& strFile) {
    return {"open " + strFile, Promise::kAnything,
            [=](Stage& stage) {
                Holding(kIndexed8)(stage);
                stage.file = Load(strFile);
                stage.pIn = std::make_unique<support::FaultyArchive>(stage.file);
            },
            [](Stage& stage) { return stage.image.Open(stage.pIn.get()); }};
}

Scenario OpenPath(const std::string& strFile) {
    return {"open path " + strFile, Promise::kAnything, Holding(kIndexed8),
            [strPath = FAULTS_CORPUS "/" + strFile](Stage& stage) {
                return stage.image.Open(strPath.c_str());
            }};
}

Scenario SaveStream(const char* pszName, support::Kind kind, KelImageFormat eFormat) {
    return {std::string("save ") + pszName + " from " + support::Name(kind), Promise::kUnchanged,
            Holding(kind), [=](Stage& stage) {
                static tagKelParameterItem item = {"quality", CVamVariant(60)};
                tagKelParameters params = {1, &item};
                return stage.image.Save(&stage.out, eFormat, &params);
            }};
}

#ifdef _WIN32
constexpr char kSavePath[] = "saved.tmp";  // no device is a file there
#else
constexpr char kSavePath[] = "/dev/null";
#endif

Scenario SavePath(const char* pszName, KelImageFormat eFormat) {
    return {std::string("save path ") + pszName, Promise::kUnchanged, Holding(kBits24),
            [=](Stage& stage) { return stage.image.Save(kSavePath, eFormat, nullptr); }};
}

// An operation without a result: it has worked when the picture is another one.
Scenario InPlace(const char* pszName, support::Kind kind, std::function<void(CKelImage&)> work) {
    return {pszName, Promise::kUnchanged, Holding(kind), [=](Stage& stage) {
                Bytes before;
                {
                    const support::AllocPause pause;
                    before = support::Snapshot(stage.image);
                }
                work(stage.image);
                const support::AllocPause pause;
                return support::Snapshot(stage.image) == before ? KEL_ERR_MEMORY : KEL_OK;
            }};
}

// An operation that needs a buffer of its own on a picture that a caller lent: the image owns
// everything afterwards, or goes on borrowing. The caller's memory stays as it was.
Scenario OnLent(const char* pszName, std::function<void(CKelImage&)> work) {
    return {std::string("lent: ") + pszName, Promise::kUnchanged,
            [](Stage& stage) {
                stage.lent = support::MakePicture(kBits24, 9, 7, 3);
                stage.image.OpenAs(stage.lent.Info(), stage.lent.bits.data(), 0);
            },
            [=](Stage& stage) {
                work(stage.image);
                const support::AllocPause pause;
                const support::Picture before = support::MakePicture(kBits24, 9, 7, 3);
                EXPECT_TRUE(stage.lent.block == before.block && stage.lent.bits == before.bits);
                const bool bOwns = stage.image.m_bOwnBuffers != 0;
                EXPECT_NE(stage.image.m_pBits == stage.lent.bits.data(), bOwns);
                EXPECT_NE(stage.image.m_pBMI == stage.lent.Info(), bOwns);
                EXPECT_TRUE(bOwns || stage.image.m_ppLineArray != nullptr);
                return bOwns ? KEL_OK : KEL_ERR_MEMORY;
            }};
}

Scenario Scale(support::Kind kind, int nKernel, bool bNew) {
    static tagKelParameterItem items[] = {
        {"width", CVamVariant(8)}, {"height", CVamVariant(0.5)}, {"type", CVamVariant()}};
    return {"scale " + support::Name(kind) + (bNew ? " anew" : " in place"), Promise::kUnchanged,
            Holding(kind, 21, 17), [=](Stage& stage) {
                items[2].varValue = CVamVariant(nKernel);
                tagKelParameters params = {3, items};
                return bNew ? stage.image.ApplyFilter(&stage.pMade, KEL_FILTER_SCALE, &params)
                            : stage.image.ApplyFilter(KEL_FILTER_SCALE, &params);
            }};
}

}  // namespace

Bytes Load(const std::string& strFile) {
    std::ifstream in(FAULTS_CORPUS "/" + strFile, std::ios::binary);
    const Bytes bytes(std::istreambuf_iterator<char>(in), {});
    EXPECT_FALSE(bytes.empty()) << strFile;
    return bytes;
}

const std::vector<Scenario>& AllScenarios() {
    static const std::vector<Scenario> all = {
        OpenStream("bmp/40-8-0"),
        OpenStream("bmp/40-16-3"),
        OpenStream("bmp/40-24-0-top"),
        OpenStream("bmp/12-4-0"),
        OpenStream("jpeg/1b0"),
        OpenStream("jpeg/3p0"),
        OpenStream("jpeg/4b0"),
        OpenStream("png/3-4-0"),
        OpenStream("png/2-16-1"),
        OpenStream("png/4-8-0"),
        OpenPath("png/6-8-1"),
        {"take block and pixels", Promise::kAnything,
         [](Stage& stage) { stage.lent = support::MakePicture(kIndexed4, 9, 7, 3); },
         [](Stage& stage) { return stage.image.Open(stage.lent.Info(), stage.lent.bits.data()); }},
        SaveStream("BMP", kIndexed8, KEL_IMAGE_BMP),
        SaveStream("BMP", kBits24, KEL_IMAGE_BMP),
        SaveStream("JPEG", kBits1, KEL_IMAGE_JPEG),
        SaveStream("JPEG", kBits24, KEL_IMAGE_JPEG),
        SaveStream("PNG", kIndexed4, KEL_IMAGE_PNG),
        SaveStream("PNG", kMasks16, KEL_IMAGE_PNG),
        SaveStream("PNG", kBits24, KEL_IMAGE_PNG),
        SaveStream("PNG", kBits32, KEL_IMAGE_PNG),
        SavePath("PNG", KEL_IMAGE_PNG),
        Scale(kBits24, KEL_SCALE_HAMMING, false),
        Scale(kIndexed8, KEL_SCALE_BILINEAR, true),
        InPlace("zoom 24", kBits24, [](CKelImage& image) { image.ZoomImage(20, 5); }),
        InPlace("zoom 8", kIndexed8, [](CKelImage& image) { image.ZoomImage(6, 30); }),
        InPlace("rotate 24", kBits24, [](CKelImage& image) { image.Rotate(0); }),
        InPlace("rotate 1", kBits1, [](CKelImage& image) { image.Rotate(0); }),
        InPlace("crop 24", kBits24, [](CKelImage& image) { image.SubImage(2, 3, 7, 4); }),
        InPlace("crop 4", kIndexed4, [](CKelImage& image) { image.SubImage(3, 1, 7, 4); }),
        InPlace("mirror", kBits16, [](CKelImage& image) { image.Mirror(0); }),
        InPlace("24 to 32 bits", kBits24, [](CKelImage& image) { image.ChangeBitCount(32); }),
        InPlace("palette growth", kIndexed8,
                [](CKelImage& image) { image.AddPaletteEntry(1, 2, 3, 4); }),
        OnLent("zoom", [](CKelImage& image) { image.ZoomImage(4, 5); }),
        OnLent("rotate",
               [](CKelImage& image) {
                   const bool bDone = image.Rotate(0);
                   EXPECT_EQ(bDone, image.m_bOwnBuffers != 0);
               }),
        OnLent("32 bits", [](CKelImage& image) { image.ChangeBitCount(32); }),
        OnLent("pixels", [](CKelImage& image) { image.AllocateBits1(); }),
        OnLent("block", [](CKelImage& image) { image.AllocateBMI(1064); }),
    };
    return all;
}

Outcome OutcomeOf(Stage& stage, KelResult nResult) {
    Outcome outcome{nResult, support::Snapshot(stage.image), {}, {}};
    if (auto* pMade = dynamic_cast<CKelImage*>(stage.pMade)) {
        outcome.made = support::Snapshot(*pMade);
    }
    outcome.written.assign(stage.out.GetData(), stage.out.GetData() + stage.out.GetSize());
    return outcome;
}

}  // namespace faults
