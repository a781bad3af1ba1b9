#include <gtest/gtest.h>

#include <cstring>

#include "kelbitmap/bmplayout.h"
#include "kelencoder/kelbmpencoder.h"
#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/recordingtrace.h"
#include "support/securefaults.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Saved(const CVamArchiveMemory& archive) {
    return Bytes(archive.GetData(), archive.GetData() + archive.GetSize());
}

void Append(Bytes& bytes, unsigned int nValue, int nSize) {
    for (int i = 0; i < nSize; ++i) {
        bytes.push_back(static_cast<unsigned char>(nValue >> 8 * i));
    }
}

// The 54 bytes before the rows, field by field.
Bytes Headers(int nWidth, int nHeight, unsigned int nRowsSize, unsigned int nCompression,
              unsigned int nSizeImage, unsigned int nResolution) {
    Bytes bytes = {'B', 'M'};
    Append(bytes, 54 + nRowsSize, 4);
    Append(bytes, 0, 4);
    Append(bytes, 54, 4);
    Append(bytes, 40, 4);
    Append(bytes, static_cast<unsigned int>(nWidth), 4);
    Append(bytes, static_cast<unsigned int>(nHeight), 4);
    Append(bytes, 1, 2);
    Append(bytes, 24, 2);
    Append(bytes, nCompression, 4);
    Append(bytes, nSizeImage, 4);
    Append(bytes, nResolution, 4);
    Append(bytes, 0, 12);
    return bytes;
}

// 3 x 2 pixels whose stored padding is 0xEE; pixel (x, y) has the index or value 1 + x + 3 * y.
void Paint(CKelImage& image, int nBits) {
    ASSERT_NE(nullptr, image.Create(3, 2, nBits));
    std::memset(image.GetBits(), 0xEE, image.GetBmpDataSize());
    for (int i = 0; i < 8 && nBits <= 8; ++i) {
        const auto nValue = static_cast<unsigned char>(i * 10);
        image.AddPaletteEntry(nValue, static_cast<unsigned char>(nValue + 1),
                              static_cast<unsigned char>(nValue + 2), 255);
    }
    for (int y = 0; y < 2; ++y) {
        unsigned char* pRow = image.GetLineArray()[y];
        if (nBits == 4) {
            pRow[0] = static_cast<unsigned char>((1 + 3 * y) << 4 | (2 + 3 * y));
            pRow[1] = static_cast<unsigned char>((3 + 3 * y) << 4);
            continue;
        }
        for (int x = 0; x < 3 * nBits / 8; ++x) {
            pRow[x] = static_cast<unsigned char>(nBits == 8 ? 1 + x + 3 * y : 40 * y + x);
        }
    }
}

Bytes ExpectedRows(int nBits) {
    Bytes rows;
    for (int y = 1; y >= 0; --y) {
        for (int x = 0; x < 3; ++x) {
            for (int c = 0; c < 3; ++c) {
                const int nIndexed = (1 + x + 3 * y) * 10 + 2 - c;
                rows.push_back(
                    static_cast<unsigned char>(nBits <= 8 ? nIndexed : 40 * y + nBits / 8 * x + c));
            }
        }
        rows.insert(rows.end(), 3, 0);
    }
    return rows;
}

}  // namespace

TEST(BmpWriter, WritesTheseBytes) {
    for (const int nBits : {4, 8, 24, 32}) {
        SCOPED_TRACE(nBits);
        CKelImage image;
        Paint(image, nBits);
        BITMAPINFOHEADER& own = *image.GetBitmapInfoHeader();
        own.biXPelsPerMeter = 2835;
        own.biClrUsed = nBits == 8 ? 8 : 0;
        own.biClrImportant = 3;
        const BITMAPINFOHEADER before = own;
        Bytes expected = Headers(3, 2, 24, BI_RGB, nBits == 24 ? 0 : 24, 2835);
        const Bytes rows = ExpectedRows(nBits);
        expected.insert(expected.end(), rows.begin(), rows.end());
        CVamArchiveMemory archive;
        archive.Write("????", 4);  // overwritten: the file starts at position 0
        EXPECT_EQ(KEL_OK, CKelBMPEncoder().Do(&archive, &image));
        EXPECT_EQ(expected, Saved(archive));
        EXPECT_EQ(nBits, image.GetBitmapInfo()->bmiHeader.biBitCount);
        EXPECT_EQ(before.biClrImportant, own.biClrImportant);
        EXPECT_EQ(before.biSizeImage, own.biSizeImage);
    }
}

TEST(BmpWriter, SizesWithoutRows) {
    struct Case {
        int nWidth, nHeight;
        std::size_t nFileSize;
        unsigned int nClaimed;
    };
    for (const Case& c : {Case{1, 1, 58, 58}, Case{0, 3, 54, 54}, Case{3, 0, 54, 54},
                          Case{89478485, 1, 54, 54 + 268435456}}) {
        CKelImage image;
        ASSERT_NE(nullptr, image.Create(c.nWidth, c.nHeight, 1));
        CVamArchiveMemory archive;
        EXPECT_EQ(KEL_OK, CKelBMPEncoder().Do(&archive, &image));
        EXPECT_EQ(c.nFileSize, archive.GetSize());
        EXPECT_EQ(c.nClaimed, kel::Load32(archive.GetData() + kel::kBmpFileSizeAt));
    }
    CKelImage empty;
    support::FaultyArchive untouched;
    EXPECT_EQ(KEL_ERR_PARAM, CKelBMPEncoder().Do(&untouched, &empty));
    EXPECT_EQ(0, untouched.Calls(support::Op::kWrite) + untouched.Calls(support::Op::kSeek));
}

TEST(BmpWriter, Faults) {
    CKelImage image;
    Paint(image, 8);
    ASSERT_NE(nullptr, image.GetBitmapInfo());
    support::FaultyArchive good;
    ASSERT_EQ(KEL_OK, CKelBMPEncoder().Do(&good, &image));
    EXPECT_EQ((std::vector<unsigned int>{14, 40, 12, 12}), good.WriteSizes());

    support::FaultyArchive archive;
    {
        support::AllocFaults faults(1);
        EXPECT_EQ(KEL_ERR_MEMORY, CKelBMPEncoder().Do(&archive, &image));
    }
    for (int n = 1; n <= 4; ++n) {
        support::FaultyArchive throwing;
        throwing.FailAt(support::Op::kWrite, n, support::Fault::kThrow);
        const support::LiveBlocks before = support::CountLiveBlocks();
        EXPECT_THROW(CKelBMPEncoder().Do(&throwing, &image), support::ForeignError);
        EXPECT_EQ(before.nArrays, support::CountLiveBlocks().nArrays);
    }
    for (int n = 1; n <= 3; ++n) {  // the file header and the two rows
        support::RecordingTrace trace(1);
        support::SecureFaults faults(n);
        support::FaultyArchive same;
        EXPECT_EQ(KEL_OK, CKelBMPEncoder().Do(&same, &image));
        EXPECT_EQ(Saved(good), Saved(same));
        ASSERT_EQ(1u, trace.Lines().size());
        EXPECT_EQ(0u, trace.Lines()[0].strText.find("[ikelex/src/kelencoder;"));
    }
}
