// The BMP writer, byte for byte.
#include <gtest/gtest.h>

#include <algorithm>

#include "kelbitmap/bmplayout.h"
#include "kelencoder/kelbmpencoder.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/pictures.h"

namespace {

using support::Bytes;

// The file of a 24-bit picture, field by field.
Bytes ExpectedFile(CKelImage& image) {
    const BITMAPINFOHEADER& own = *image.GetBitmapInfoHeader();
    const bool bIs24 = own.biBitCount == 24;
    const auto nWidth = static_cast<unsigned int>(own.biWidth);
    const auto nHeight = static_cast<unsigned int>(own.biHeight);
    const unsigned int nStride = (nWidth * 3 + 3) / 4 * 4;
    Bytes file(54 + nStride * nHeight);
    file[0] = 'B';
    file[1] = 'M';
    const auto Put = [&file](unsigned int nAt, unsigned int nValue) {
        kel::Store32(file.data() + nAt, nValue);
    };
    Put(2, 54 + nStride * nHeight);
    Put(10, 54);
    Put(14, 40);
    Put(18, nWidth);
    Put(22, nHeight);
    Put(26, 1 | 24 << 16);
    const bool bOwn = bIs24 && own.biCompression != BI_RLE8 && own.biCompression != BI_RLE4;
    Put(30, bOwn ? own.biCompression : 0);
    Put(34, bOwn ? own.biSizeImage : nStride * nHeight);
    Put(38, 2835);
    for (unsigned int i = 0; i < nHeight; ++i) {
        Bytes row(nStride);
        image.GetLine24AsBGRAt(static_cast<int>(nHeight - 1 - i), row.data());
        std::copy_n(row.begin(), std::size_t{nWidth} * 3, file.begin() + 54 + i * nStride);
    }
    return file;
}

}  // namespace

TEST(BmpWriter, WritesEveryDepthByteForByteAndLeavesTheImage) {
    std::vector<support::Kind> kinds = support::AllKinds();
    kinds.insert(kinds.end(), {{24, BI_RLE8, 0}, {24, BI_RLE4, 0}});
    for (const support::Kind& kind : kinds) {
        for (int nWidth = 1; nWidth <= 5; ++nWidth) {
            SCOPED_TRACE(Name(kind) + " " + std::to_string(nWidth));
            support::Picture picture = support::MakePicture(kind, nWidth, 3, 1);
            picture.Info()->bmiHeader.biXPelsPerMeter = 2835;
            picture.Info()->bmiHeader.biClrImportant = 3;
            CKelImage image;
            ASSERT_EQ(KEL_OK, image.OpenAs(picture.Info(), picture.bits.data(), 0));
            const support::Picture before = picture;
            CVamArchiveMemory archive;
            archive.Write("????", 4);  // overwritten: the file starts at position 0
            EXPECT_EQ(KEL_OK, CKelBMPEncoder().Do(&archive, &image));
            EXPECT_EQ(ExpectedFile(image),
                      Bytes(archive.GetData(), archive.GetData() + archive.GetSize()));
            EXPECT_EQ(before.block, picture.block);
            EXPECT_EQ(before.bits, picture.bits);
        }
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
    CKelImage image;
    support::FaultyArchive untouched;
    EXPECT_EQ(KEL_ERR_PARAM, CKelBMPEncoder().Do(&untouched, &image));
    ASSERT_NE(nullptr, image.Create(89478484, 1, 1));  // the widest with rows
    ASSERT_NE(nullptr, image.GetBitmapInfo());
    EXPECT_EQ(0, untouched.Calls(support::Op::kWrite) + untouched.Calls(support::Op::kSeek));
    const support::AllocFaults noRow(1);
    EXPECT_EQ(KEL_ERR_MEMORY, CKelBMPEncoder().Do(&untouched, &image));
}

TEST(BmpWriter, WritesHeadersAndRowsOneByOne) {
    CKelImage image;
    ASSERT_EQ(KEL_OK, support::OpenRandom(&image, {8, 0, 0}, 3, 2, 1));
    support::FaultyArchive good;
    ASSERT_EQ(KEL_OK, CKelBMPEncoder().Do(&good, &image));
    EXPECT_EQ((std::vector<unsigned int>{14, 40, 12, 12}), good.WriteSizes());
}
