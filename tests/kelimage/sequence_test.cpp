// Random sequences of operations on tiny pictures, against a model of plain rows.
//
// IKELEX_SEQUENCE_STEPS sets the number of operations, IKELEX_SEQUENCE_SEED where they start.
#include <gtest/gtest.h>
#include <platform/vamplatform.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/allocfaults.h"
#include "support/inspect.h"
#include "support/pictures.h"
#include "support/reference/operations.h"

namespace {

using support::PixelAt;
using support::Rows;
using support::RowsOf;

long Setting(const char* pszName, long nDefault) {
    const char* const pszValue = std::getenv(pszName);
    return pszValue == nullptr ? nDefault : std::atol(pszValue);
}

// One run: an image, its model, and what a caller has lent to the image.
class Sequence {
  public:
    explicit Sequence(std::uint32_t nSeed) : m_Random(nSeed) { OpenBitmap(5, 5); }

    ~Sequence() { m_Image.Clean(); }

    // One random operation on both.
    void Step() {
        const int nWidth = 1 + m_Random.Below(20), nHeight = 1 + m_Random.Below(12);
        switch (m_Random.Below(14)) {
            case 0:
                m_Model = support::BlackRows(support::kDepths[m_Random.Below(6)], nWidth, nHeight);
                ASSERT_NE(m_Image.Create(nWidth, nHeight, m_Model.nBits), nullptr);
                break;
            case 1:
            case 2:
                return OpenBitmap(nWidth, nHeight);
            case 3:
            case 4:
                m_Image.ZoomImage(nWidth, nHeight);
                m_Model = reference::Zoom(m_Model, nWidth, nHeight);
                break;
            case 5:
            case 6:
                ASSERT_TRUE(m_Image.Rotate(m_Random.Below(360)));
                m_Model = reference::Transpose(m_Model);
                break;
            case 7: {
                const int w = 1 + m_Random.Below(m_Model.nWidth);
                const int h = 1 + m_Random.Below(m_Model.nHeight);
                const int x = m_Random.Below(m_Model.nWidth - w + 1);
                const int y = m_Random.Below(m_Model.nHeight - h + 1);
                m_Image.SubImage(x, y, w, h);
                m_Model = reference::Crop(m_Model, x, y, w, h);
                m_Image.SubImage(x, y, w + 1, INT32_MAX);  // outside
                break;
            }
            case 8:
                m_Image.Mirror(0);
                m_Model = reference::Mirror(m_Model);
                break;
            case 9:
                return Widen();
            case 10:
                m_Image.AddPaletteEntry(m_Random.Byte(), m_Random.Byte(), m_Random.Byte(), 0);
                m_Image.GetBitmapInfo();
                break;
            case 11:
                return Scale(nWidth, nHeight);
            case 12:
                return SaveAndReopen(m_Random.Below(2) == 0 ? KEL_IMAGE_BMP : KEL_IMAGE_PNG);
            default: {
                // An operation whose n-th allocation fails leaves old or new picture, all in order.
                support::AllocFaults faults(1 + m_Random.Below(3));
                m_Image.ZoomImage(m_Model.nWidth, m_Model.nHeight);
            }
                TakeOver();
        }
    }

    void Check() { ASSERT_TRUE(support::Shows(m_Image, m_Model)); }

  private:
    void OpenBitmap(int nWidth, int nHeight) {
        const auto& kinds = support::AllKinds();
        const auto& kind = kinds[m_Random.Next() % kinds.size()];
        support::Picture picture = support::MakePicture(kind, nWidth, nHeight, m_Random.Next());
        const int nWay = m_Random.Below(3);
        KelResult nResult = KEL_OK;
        m_Image.Clean();
        if (nWay == 0) {
            nResult = m_Image.Open(picture.Info(), picture.bits.data());
        } else if (nWay == 1) {
            auto* const pBlock = new unsigned char[picture.block.size()];
            auto* const pBits = new unsigned char[picture.bits.size()];
            std::memcpy(pBlock, picture.block.data(), picture.block.size());
            std::memcpy(pBits, picture.bits.data(), picture.bits.size());
            nResult = m_Image.OpenAs(reinterpret_cast<BITMAPINFO*>(pBlock), pBits, 1);
        } else {
            nResult = m_Image.OpenAs(picture.Info(), picture.bits.data(), 0);
        }
        ASSERT_EQ(nResult, KEL_OK);
        m_Model = {kind.nBits, nWidth, nHeight, picture.bits};
        m_Lent = std::move(picture);  // its bytes stay where they are
    }

    // 24 bits become 32 with the same pixel values; other depths stay.
    void Widen() {
        const Rows before = m_Model;
        m_Image.ChangeBitCount(32);
        TakeOver();
        ASSERT_EQ(m_Model.nBits, before.nBits == 24 ? 32 : before.nBits);
        for (int y = 0; y < before.nHeight; ++y) {
            for (int x = 0; x < before.nWidth; ++x) {
                ASSERT_EQ(PixelAt(m_Model.nBits, m_Model.Row(y), x),
                          PixelAt(before.nBits, before.Row(y), x));
            }
        }
    }

    void Scale(int nWidth, int nHeight) {
        tagKelParameterItem items[] = {{"width", CVamVariant(nWidth)},
                                       {"height", CVamVariant(nHeight)}};
        tagKelParameters params = {2, items};
        ASSERT_EQ(m_Image.ApplyFilter(KEL_FILTER_SCALE, &params), KEL_OK);
        ASSERT_EQ(m_Image.GetWidth(), nWidth);
        ASSERT_EQ(m_Image.GetHeight(), nHeight);
        TakeOver();
    }

    // What comes back has the size and, at 24 bits, the pixels of what was written.
    void SaveAndReopen(KelImageFormat eFormat) {
        CVamArchiveMemory file;
        const KelResult nResult = m_Image.Save(&file, eFormat, nullptr);
        if (nResult != KEL_OK) {
            ASSERT_EQ(eFormat, KEL_IMAGE_PNG);
            return;
        }
        file.Seek(0, 0);
        CKelImage copy;
        const KelResult nReopened = copy.Open(&file);
        if (nReopened != KEL_OK) {  // indices past a short palette
            ASSERT_TRUE(eFormat == KEL_IMAGE_PNG && m_Model.nBits <= 8);
            return;
        }
        ASSERT_EQ(copy.GetWidth(), m_Model.nWidth);
        ASSERT_EQ(copy.GetHeight(), m_Model.nHeight);
        ASSERT_EQ("", support::FaultOf(copy));
        if (m_Model.nBits == 24 || (m_Model.nBits == 32 && eFormat == KEL_IMAGE_PNG &&
                                    m_Image.GetBitmapInfoHeader()->biCompression == BI_RGB)) {
            ASSERT_EQ(copy.GetBitsPerPixel(), m_Model.nBits);
            ASSERT_EQ(reference::Transpose(RowsOf(copy)),
                      reference::Transpose(m_Model));  // without padding
            m_Image.Borrow(&copy);
            TakeOver();
        }
    }

    // Takes over what the image holds, for results whose pixels other tests prove.
    void TakeOver() {
        m_Image.CreateLineArray();  // may be what could not be had
        m_Model = RowsOf(m_Image);
    }

    support::Random m_Random;
    support::Picture m_Lent;
    Rows m_Model;
    CKelImage m_Image;
};

TEST(Sequence, RandomOperationsKeepImageAndModelAlike) {
    const long nSteps = Setting("IKELEX_SEQUENCE_STEPS", 400000);
    const auto nSeed = static_cast<std::uint32_t>(Setting("IKELEX_SEQUENCE_SEED", 1));
    const int nTraceLevel = zt_trace_level();
    zt_trace_set_level(-1);
    support::AllKinds();  // a list made once
    const auto before = support::CountLiveBlocks();
    auto pSequence = std::make_unique<Sequence>(nSeed);
    for (long i = 0; i < nSteps; ++i) {
        pSequence->Step();
        pSequence->Check();
        ASSERT_FALSE(HasFatalFailure()) << "step " << i << " of seed " << nSeed;
    }
    pSequence.reset();
    EXPECT_EQ(support::CountLiveBlocks(), before);
    zt_trace_set_level(nTraceLevel);
}

}  // namespace
