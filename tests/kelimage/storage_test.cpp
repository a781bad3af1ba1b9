// The pixel buffer, the header block, and who owns them.
#include <gtest/gtest.h>
#include <malloc.h>

#include <cstring>

#include "support/allocfaults.h"
#include "support/inspect.h"
#include "support/pictures.h"
#include "support/recordingtrace.h"

#ifdef _WIN32
#define malloc_usable_size _msize
#endif

namespace {

using support::Bytes;
using support::InputError;
using support::Picture;
using support::RecordingTrace;

constexpr support::Kind kShort8 = {8, BI_RGB, 20};

Bytes PixelsOf(const CKelImage& image, std::size_t nBytes) {
    return Bytes(image.m_pBits, image.m_pBits + nBytes);
}

// Zeroed pictures, and those in which old memory is left in the pixels alone.
TEST(Storage, CreateMakesAPictureWithRows) {
    const support::AllocFill fill(0xA5);
    for (const int nBits : support::kDepths) {
        for (int nWidth = 1; nWidth <= 33; ++nWidth) {
            SCOPED_TRACE(testing::Message() << nBits << " bits, " << nWidth << " columns");
            CKelImage image, zeroed;
            ASSERT_NE(image.CreateUncleared(nWidth, 3, nBits), nullptr);
            ASSERT_NE(zeroed.Create(nWidth, 3, nBits), nullptr);
            const int header[10] = {40, nWidth, 3, 1 | nBits << 16};
            EXPECT_EQ(0, std::memcmp(zeroed.GetBitmapInfoHeader(), header, 40));
            EXPECT_EQ(0, std::memcmp(image.GetBitmapInfoHeader(), header, 40));
            EXPECT_EQ("", support::FaultOf(image));
            const std::size_t nSize = zeroed.GetBmpDataSize();
            Bytes expected(nSize);
            EXPECT_EQ(expected, PixelsOf(zeroed, nSize));
            for (std::size_t i = 0; i < nSize / 3 * 2; i += nSize / 3) {  // the last row is zero
                std::fill_n(&expected[i], nBits * nWidth / 8, static_cast<unsigned char>(0xA5));
            }
            EXPECT_EQ(expected, PixelsOf(image, nSize));
            image.ClearRowsFrom(1);
            std::fill(&expected[nSize / 3], expected.data() + nSize, static_cast<unsigned char>(0));
            EXPECT_EQ(expected, PixelsOf(image, nSize));
            image.ClearRowsFrom(0);
            EXPECT_EQ(PixelsOf(zeroed, nSize), PixelsOf(image, nSize));
        }
    }
    CKelImage image;
    ASSERT_NE(nullptr, image.Create(1, 70001, 8));
    EXPECT_EQ("", support::FaultOf(image));
    EXPECT_EQ(nullptr, image.CreateUncleared(-1, 3, 24));
    EXPECT_NE(image.CreateUncleared(3, 0, 24), nullptr);
    EXPECT_NE(image.GetLineArray(), nullptr);
}

TEST(Storage, RefusedSizesLeaveNoPixelsAndNoRows) {
    RecordingTrace trace;
    const int aSizes[][3] = {{-1, 1, 24}, {-5, -5, 1}, {1 << 30, 1 << 30, 32}, {23171, 23171, 32}};
    for (const auto& size : aSizes) {
        CKelImage image;
        ASSERT_NE(image.Create(4, 4, 8), nullptr);
        EXPECT_EQ(nullptr, image.Create(size[0], size[1], size[2]));
        EXPECT_EQ(nullptr, image.GetBits());
        EXPECT_EQ(nullptr, image.GetLineArray());
    }
    EXPECT_TRUE(trace.Lines().empty());
    // A picture without width may claim more rows than an array is made for.
    CKelImage image;
    EXPECT_NE(image.Create(0, 0x7FFFFFFF, 24), nullptr);
    EXPECT_EQ(nullptr, image.GetLineArray());
    EXPECT_EQ(InputError("m_ppLineArray is nullptr"), trace.Lines());
}

TEST(Storage, AllocateBitsTracesOddSizesAndCoversTheRows) {
    RecordingTrace trace;
    CKelImage image;
    for (unsigned int nSize : {0u, 52428801u}) {
        EXPECT_NE(image.AllocateBits(nSize), nullptr);
        EXPECT_EQ(InputError("dwSize is invalid: " + std::to_string(nSize)), trace.Lines());
        trace.Clear();
    }
    ASSERT_NE(image.AllocateBits(52428800u), nullptr);
    ASSERT_NE(image.Create(100, 50, 24), nullptr);
    ASSERT_NE(image.AllocateBits(10), nullptr);
    EXPECT_GE(malloc_usable_size(image.GetBits()), 15000u);
    EXPECT_EQ("", support::FaultOf(image));
    image.m_bmih.biWidth = image.m_bmih.biHeight = 1 << 15;  // rows of 3 GiB
    EXPECT_EQ(nullptr, image.AllocateBits(10));
    image.m_bmih.biWidth = image.m_bmih.biHeight = -(1 << 15);
    EXPECT_NE(image.AllocateBits(10), nullptr);
    EXPECT_EQ(InputError("m_ppLineArray is nullptr"), trace.Lines());
}

TEST(Storage, OpenMeasuresThePixelData) {
    Picture picture = support::MakePicture({8, BI_RGB, 0}, 10, 10, 1);  // 120 bytes
    CKelImage image;
    BITMAPINFOHEADER& header = picture.Info()->bmiHeader;
    header.biSizeImage = 0;
    EXPECT_EQ(KEL_OK, image.Open(picture.Info(), picture.bits.data()));
    EXPECT_EQ(picture.bits, PixelsOf(image, 120));
    EXPECT_NE(image.GetBits(), picture.bits.data());
    EXPECT_EQ(0, std::memcmp(image.GetBitmapInfo(), &header, picture.block.size()));
    header.biSizeImage = 119;
    EXPECT_EQ(KEL_ERR_PARAM, image.Open(picture.Info(), picture.bits.data()));
    EXPECT_EQ(nullptr, image.GetBits());
    // Run-length data may be shorter than the rows, and is as long as biSizeImage says: what it
    // does not fill is zero.
    header.biCompression = BI_RLE8;
    for (const unsigned int nSize : {7u, 0u}) {
        header.biSizeImage = nSize;
        EXPECT_EQ(KEL_OK, image.Open(picture.Info(), picture.bits.data()));
        Bytes expected(picture.bits.begin(), picture.bits.begin() + nSize);
        expected.resize(120);
        EXPECT_EQ(expected, PixelsOf(image, 120));
    }
}

TEST(Storage, OpenRefusesWhatItCannotHold) {
    using Header = BITMAPINFOHEADER;
    const struct {
        void (*pfnChange)(Header& header);
        bool bCopyOnly;  // refused by Open(pBMI, pBits) alone
    } changes[] = {
        {[](Header& h) { h.biSize = 124; }, false},
        {[](Header& h) { h.biBitCount = 2; }, false},
        {[](Header& h) { h.biCompression = 4; }, false},
        {[](Header& h) { h.biWidth = -10; }, false},
        {[](Header& h) { h.biHeight = -10; }, false},
        {[](Header& h) { h.biClrUsed = 65537; }, true},
        {[](Header& h) { h.biHeight = 0x7FFFFFFF, h.biSizeImage = 0; }, true},
    };
    Picture valid = support::MakePicture(kShort8, 10, 10, 1);
    for (const auto& change : changes) {
        SCOPED_TRACE(&change - changes);
        Picture picture = support::MakePicture(kShort8, 10, 10, 1);
        change.pfnChange(picture.Info()->bmiHeader);
        CKelImage image;
        ASSERT_EQ(KEL_OK, support::OpenRandom(&image, kShort8, 3, 3, 1));
        EXPECT_EQ(KEL_ERR_PARAM, image.Open(picture.Info(), picture.bits.data()));
        EXPECT_EQ(nullptr, image.GetBits());
        if (!change.bCopyOnly) {
            image.OpenAs(valid.Info(), valid.bits.data(), 0);
            EXPECT_EQ(KEL_ERR_PARAM, image.OpenAs(picture.Info(), picture.bits.data(), 0));
            EXPECT_EQ(picture.bits.data(), image.GetBits());  // kept
            EXPECT_EQ(0, image.GetWidth());
            EXPECT_EQ(nullptr, image.GetLineArray());
            EXPECT_EQ(nullptr, image.GetPalette());
            const Bytes refused = picture.block;
            image.SubImage(0, 0, 0, 0);
            EXPECT_EQ(refused, picture.block);
        }
    }
    CKelImage image;
    Picture picture = support::MakePicture(kShort8, 10, 10, 1);
    EXPECT_EQ(KEL_ERR_PARAM, image.Open(picture.Info(), nullptr));
    EXPECT_EQ(KEL_ERR_PARAM, image.Open(nullptr, picture.bits.data()));
    EXPECT_EQ(KEL_OK, support::OpenRandom(&image, {8, BI_RGB, 65536}, 3, 3, 1));
}

// Emptying the image would release what it is asked to copy: it refuses and stays as it was.
TEST(Storage, OpenRefusesMemoryOfTheImageItself) {
    Picture other = support::MakePicture(kShort8, 10, 10, 1), third = other;
    CKelImage image;
    ASSERT_EQ(KEL_OK, support::OpenRandom(&image, {8, BI_RGB, 0}, 40, 40, 1));
    const Bytes before = support::Snapshot(image);
    const auto bytesAt = [](void* p) { return static_cast<unsigned char*>(p); };
    const auto blockAt = [](void* p) { return static_cast<BITMAPINFO*>(p); };
    const std::pair<BITMAPINFO*, unsigned char*> cases[] = {
        {other.Info(), image.m_pBits},
        {other.Info(), image.m_ppLineArray[20]},
        {other.Info(), image.m_pBits + 40 * 40 - 1},
        {nullptr, image.m_pBits},
        {other.Info(), bytesAt(image.m_pBMI) + 1063},
        {other.Info(), bytesAt(image.m_pPalette + 255)},
        {other.Info(), bytesAt(image.m_ppLineArray + 39)},
        {image.m_pBMI, other.bits.data()},
        {blockAt(&image.m_bmih), other.bits.data()},
        {blockAt(image.m_ppLineArray[1]), nullptr}};
    for (const auto& [pBMI, pBits] : cases) {
        EXPECT_EQ(KEL_ERR_PARAM, image.Open(pBMI, pBits)) << "case " << &pBMI - &cases[0].first;
        EXPECT_EQ(before, support::Snapshot(image));
    }
    // Before Open() the block that is to be opened tells how long the pixels are.
    image.Clean();
    std::memcpy(image.AllocateBMI(120), other.block.data(), 120);
    ASSERT_NE(image.AllocateBits(120), nullptr);
    EXPECT_EQ(KEL_ERR_PARAM, image.Open(third.Info(), image.m_pBits + 119));
    EXPECT_EQ(KEL_OK, image.Open());
    // Lent buffers are not released, so they can be copied.
    image.Clean();
    ASSERT_EQ(KEL_OK, image.OpenAs(other.Info(), other.bits.data(), 0));
    EXPECT_EQ(KEL_OK, image.Open(image.GetBitmapInfo(), image.GetBits()));
    EXPECT_EQ(other.bits, PixelsOf(image, 120));
    // Colours and pixels whose last byte is the image's first pixel.
    Bytes mixed = other.block;
    mixed.insert(mixed.end(), other.bits.begin(), other.bits.end());
    CKelImage owner;
    ASSERT_EQ(KEL_OK, owner.OpenAs(other.Info(), &mixed[119], 1));
    EXPECT_EQ(KEL_ERR_PARAM, owner.Open(blockAt(mixed.data()), third.bits.data()));
    EXPECT_EQ(KEL_ERR_PARAM, owner.Open(third.Info(), mixed.data()));
    EXPECT_EQ(&mixed[119], owner.m_pBits);
    owner.m_bmih.biSizeImage = 0xFFFFFFFF;  // ends beyond 32 bits
    EXPECT_EQ(KEL_ERR_PARAM, owner.Open(third.Info(), owner.m_pBits));
    owner.m_bOwnBuffers = 0;
}

// Of lent pixels the rows are copied, of lent run-length codes biSizeImage bytes.
TEST(Storage, LentPixelsAreMeasuredByTheirHeader) {
    const struct {
        unsigned int nCompression, nSizeImage;
        std::size_t nCopied;
    } cases[] = {{BI_RGB, 0xFFFFFFFF, 120}, {BI_RGB, 7, 120}, {BI_RLE4, 7, 7}, {BI_RLE8, 200, 200}};
    for (const auto& c : cases) {
        Picture lent = support::MakePicture({8, BI_RGB, 0}, 10, 10, 1);
        lent.Info()->bmiHeader.biCompression = c.nCompression;
        lent.Info()->bmiHeader.biSizeImage = c.nSizeImage;
        lent.bits.resize(c.nCopied, 0x77);
        CKelImage image;
        ASSERT_EQ(KEL_OK, image.OpenAs(lent.Info(), lent.bits.data(), 0));
        ASSERT_NE(image.AllocateBMI(40), nullptr);
        lent.bits.resize(std::max<std::size_t>(c.nCopied, 120));
        EXPECT_EQ(lent.bits, PixelsOf(image, lent.bits.size()));
        // The header claims no more than was copied.
        EXPECT_EQ(std::min<std::size_t>(c.nSizeImage, lent.bits.size()), image.m_bmih.biSizeImage);
    }
}

TEST(Storage, LentMemoryOfUnknownLengthIsNotCopied) {
    const struct {
        unsigned int nCompression;
        KelResult nOpened;
        bool (*pfnOwn)(CKelImage& image);
    } cases[] = {// A refused block of 40 bytes; run-length codes whose header does not count them.
                 {4, KEL_ERR_PARAM, [](CKelImage& i) { return i.AllocateBMI(40) && !i.m_pBits; }},
                 {4, KEL_ERR_PARAM, [](CKelImage& i) { return i.AllocateBits(1) && !i.m_pBMI; }},
                 {4, KEL_ERR_PARAM, [](CKelImage& i) { return i.AllocateBits1() && !i.m_pBMI; }},
                 {BI_RLE8, KEL_OK, [](CKelImage& i) { return i.AllocateBMI(40) && !i.m_pBits; }}};
    const RecordingTrace silence(-1);
    for (const auto& c : cases) {
        Picture lent = support::MakePicture({8, BI_RGB, 0}, 1000, 1000, 1);
        lent.Info()->bmiHeader.biCompression = c.nCompression;
        lent.Info()->bmiHeader.biSizeImage = 0;
        CKelImage image;
        ASSERT_EQ(c.nOpened, image.OpenAs(lent.Info(), lent.bits.data(), 0));
        EXPECT_TRUE(c.pfnOwn(image)) << &c - cases;
        EXPECT_EQ(1, image.m_bOwnBuffers);
        EXPECT_EQ("", support::FaultOf(image));
    }
    // Of a negative size there is none. The image goes on borrowing.
    Picture lent = support::MakePicture({24, BI_RGB, 0}, 5, 5, 1);
    CKelImage image;
    ASSERT_EQ(KEL_OK, image.OpenAs(lent.Info(), lent.bits.data(), 0));
    image.m_bmih.biHeight = -5;
    EXPECT_EQ(nullptr, image.AllocateBMI(40));
    EXPECT_EQ(lent.bits.data(), image.m_pBits);
}

TEST(Storage, PictureSizesKeepTheirLowBits) {
    constexpr int kMost = 0x7FFFFFFF;
    const int cases[][4] = {{24, 3, 2, 24},
                            {1, -128, 3, -48},
                            {1, 5, -2, -8},
                            {32, kMost, kMost, 4},
                            {65535, kMost, kMost, 0x10001FFC}};
    for (const auto& [nBits, nWidth, nHeight, nSize] : cases) {
        CKelImage image;
        image.m_bmih.biBitCount = static_cast<unsigned short>(nBits);
        image.m_bmih.biWidth = nWidth;
        image.m_bmih.biHeight = nHeight;
        EXPECT_EQ(nSize, static_cast<int>(image.GetBmpDataSize())) << nBits << " x " << nWidth;
    }
}

// The old pixels are released before the size is traced, so that both are never held at once.
TEST(Storage, AllocateBitsReleasesBeforeItTraces) {
    const RecordingTrace restore;
    CKelImage image;
    ASSERT_NE(image.Create(3, 2, 24), nullptr);
    zt_trace_set_sink(
        [](void* pImage, ZT_TraceCall, int, const char*) {
            EXPECT_EQ(nullptr, static_cast<CKelImage*>(pImage)->GetBits());
            EXPECT_EQ(nullptr, static_cast<CKelImage*>(pImage)->GetLineArray());
        },
        &image);
    EXPECT_NE(image.AllocateBits(0), nullptr);
}

TEST(Storage, GetBitmapInfoBuildsTheBlockOnceWithRoomForItsTable) {
    CKelImage image;
    EXPECT_EQ(nullptr, image.GetBitmapInfo());
    image.m_bmih.biSize = 41;
    EXPECT_EQ(nullptr, image.GetBitmapInfo());
    EXPECT_EQ(nullptr, image.AllocateBMI(39));
    const support::AllocFill fill(0xA5);
    EXPECT_EQ(0, image.AllocateBMI(44)->bmiColors[0].rgbRed);
    const unsigned int aCases[][3] = {{24, 0, 0}, {8, 16, 16}, {8, 256, 0}, {4, 16, 0}, {1, 1, 1}};
    for (const auto& [nBits, nEntries, nColors] : aCases) {
        image.Create(5, 4, static_cast<int>(nBits));
        for (unsigned int i = 0; i < nEntries; ++i) {
            image.AddPaletteEntry(1, 2, static_cast<unsigned char>(i), 255);
        }
        BITMAPINFO* pBlock = image.GetBitmapInfo();
        ASSERT_NE(pBlock, nullptr);
        EXPECT_EQ(nColors, image.GetBitmapInfoHeader()->biClrUsed);
        EXPECT_EQ(0, std::memcmp(pBlock, image.GetBitmapInfoHeader(), 40));
        for (unsigned int i = 0; i < nEntries; ++i) {
            EXPECT_EQ(i, pBlock->bmiColors[i].rgbBlue);
        }
        image.AddPaletteEntry(9, 9, 9, 9);
        EXPECT_EQ(pBlock, image.GetBitmapInfo());
        // What the block's header describes can be read back.
        CKelImage other;
        EXPECT_EQ(KEL_OK, other.Open(pBlock, image.GetBits()));
        EXPECT_GE(malloc_usable_size(pBlock), IMG_GetBitmapInfoSize(&pBlock->bmiHeader));
    }
}

}  // namespace
