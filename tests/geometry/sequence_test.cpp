// Random sequences of operations on tiny pictures, against a model that is a plain list of pixels.
//
// IKELEX_SEQUENCE_STEPS sets the number of operations, IKELEX_SEQUENCE_SEED where they start.
#include <gtest/gtest.h>
#include <platform/vamplatform.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "kelbitmap/strides.h"
#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/invariants.h"
#include "support/pictures.h"
#include "support/refgeometry.h"

namespace {

using support::Bytes;
using support::PixelAt;
using support::SetPixelAt;

long Setting(const char* pszName, long nDefault) {
    const char* const pszValue = std::getenv(pszName);
    return pszValue == nullptr ? nDefault : std::atol(pszValue);
}

// What a picture is: a depth, a size, pixels row after row.
struct Model {
    int nBits = 0;
    int nWidth = 0;
    int nHeight = 0;
    std::vector<std::uint32_t> pixels;

    std::uint32_t& At(int nX, int nY) {
        return pixels[static_cast<std::size_t>(nY) * static_cast<std::size_t>(nWidth) +
                      static_cast<std::size_t>(nX)];
    }
    void Resize(int nNewWidth, int nNewHeight) {
        nWidth = nNewWidth;
        nHeight = nNewHeight;
        pixels.assign(static_cast<std::size_t>(nWidth) * static_cast<std::size_t>(nHeight), 0);
    }
    std::size_t Stride() const { return static_cast<std::size_t>(kel::RowStride(nBits, nWidth)); }

    Bytes Rows() const {
        Bytes rows(Stride() * static_cast<std::size_t>(nHeight));
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const auto w = static_cast<std::size_t>(nWidth);
            SetPixelAt(nBits, &rows[i / w * Stride()], static_cast<int>(i % w), pixels[i]);
        }
        return rows;
    }
    // Takes the pixels of padded rows of the given depth and size.
    void Take(int nNewBits, int nNewWidth, int nNewHeight, const unsigned char* pRows) {
        nBits = nNewBits;
        Resize(nNewWidth, nNewHeight);
        for (int y = 0; y < nHeight; ++y) {
            for (int x = 0; x < nWidth; ++x) {
                At(x, y) = PixelAt(nBits, pRows + static_cast<std::size_t>(y) * Stride(), x);
            }
        }
    }
    void TransposeOrMirror(bool bTranspose) {
        const Model old = *this;
        Model from = old;
        if (bTranspose) {
            Resize(old.nHeight, old.nWidth);
        }
        for (int y = 0; y < old.nHeight; ++y) {
            for (int x = 0; x < old.nWidth; ++x) {
                (bTranspose ? At(y, x) : At(x, old.nHeight - 1 - y)) = from.At(x, y);
            }
        }
    }
    void Crop(int nX, int nY, int w, int h) {
        Model from = *this;
        Resize(w, h);
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                At(x, y) = from.At(nX + x, nY + y);
            }
        }
    }
};

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
                m_Model.nBits = support::kDepths[m_Random.Below(6)];
                m_Model.Resize(nWidth, nHeight);
                ASSERT_NE(m_Image.Create(nWidth, nHeight, m_Model.nBits), nullptr);
                break;
            case 1:
            case 2:
                return OpenBitmap(nWidth, nHeight);
            case 3:
            case 4: {
                const Bytes rows = support::RefZoom(m_Model.nBits, m_Model.Rows(), m_Model.nWidth,
                                                    m_Model.nHeight, nWidth, nHeight);
                m_Image.ZoomImage(nWidth, nHeight);
                m_Model.Take(m_Model.nBits, nWidth, nHeight, rows.data());
                break;
            }
            case 5:
            case 6:
                ASSERT_TRUE(m_Image.Rotate(m_Random.Below(360)));
                m_Model.TransposeOrMirror(true);
                break;
            case 7: {
                const int w = 1 + m_Random.Below(m_Model.nWidth);
                const int h = 1 + m_Random.Below(m_Model.nHeight);
                const int x = m_Random.Below(m_Model.nWidth - w + 1);
                const int y = m_Random.Below(m_Model.nHeight - h + 1);
                m_Image.SubImage(x, y, w, h);
                m_Model.Crop(x, y, w, h);
                m_Image.SubImage(x, y, w + 1, INT32_MAX);  // outside
                break;
            }
            case 8:
                m_Image.Mirror(0);
                m_Model.TransposeOrMirror(false);
                break;
            case 9:
                m_Image.ChangeBitCount(32);
                m_Model.nBits = m_Model.nBits == 24 ? 32 : m_Model.nBits;
                break;
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
                Resynchronise();
        }
    }

    void Check() {
        ASSERT_TRUE(support::Consistent(m_Image));
        ASSERT_EQ(m_Image.GetWidth(), m_Model.nWidth);
        ASSERT_EQ(m_Image.GetHeight(), m_Model.nHeight);
        ASSERT_EQ(m_Image.GetBitsPerPixel(), m_Model.nBits);
        Model now;
        now.Take(m_Model.nBits, m_Model.nWidth, m_Model.nHeight, m_Image.GetBits());
        ASSERT_TRUE(now.pixels == m_Model.pixels);
    }

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
        m_Model.Take(kind.nBits, nWidth, nHeight, picture.bits.data());
        m_Lent = std::move(picture);  // its bytes stay where they are
    }

    void Scale(int nWidth, int nHeight) {
        tagKelParameterItem items[2];
        items[0].strName = "width";
        items[0].varValue = CVamVariant(nWidth);
        items[1].strName = "height";
        items[1].varValue = CVamVariant(nHeight);
        tagKelParameters params = {2, items};
        ASSERT_EQ(m_Image.ApplyFilter(KEL_FILTER_SCALE, &params), KEL_OK);
        ASSERT_EQ(m_Image.GetWidth(), nWidth);
        ASSERT_EQ(m_Image.GetHeight(), nHeight);
        Resynchronise();
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
        ASSERT_TRUE(support::Consistent(copy));
        if (m_Model.nBits == 24 || (m_Model.nBits == 32 && eFormat == KEL_IMAGE_PNG &&
                                    m_Image.GetBitmapInfoHeader()->biCompression == BI_RGB)) {
            ASSERT_EQ(copy.GetBitsPerPixel(), m_Model.nBits);
            m_Image.Borrow(&copy);  // the model stays
        }
    }

    // Takes over what the image holds, for results whose pixels other tests prove.
    void Resynchronise() {
        m_Image.CreateLineArray();  // may be what could not be had
        m_Model.Take(m_Image.GetBitsPerPixel(), m_Image.GetWidth(), m_Image.GetHeight(),
                     m_Image.GetBits());
    }

    support::Random m_Random;
    support::Picture m_Lent;
    Model m_Model;
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
