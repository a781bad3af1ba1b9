// Rows at 24 bits against the slow loops, and what is left alone.
#include <gtest/gtest.h>

#include "support/pictures.h"
#include "support/recordingtrace.h"
#include "support/reference/operations.h"

namespace {

using support::Bytes;
using support::Kind;
using support::Picture;

std::size_t Stride24(int nWidth) {
    return (static_cast<std::size_t>(nWidth) * 24 + 31) / 32 * 4;
}

// The row by the member for its depth.
void ConvertRow(CKelImage& image, int nOrder, int nRow, unsigned char* pOut) {
    unsigned char* const pRow = image.GetLineArray()[nRow];
    switch (image.GetBitsPerPixel()) {
        case 1:
            return image.Convert1BitTo24Bit(nOrder, pRow, pOut);
        case 4:
            return image.Convert4BitTo24Bit(nOrder, pRow, pOut);
        case 8:
            return image.Convert8BitTo24Bit(nOrder, pRow, pOut);
        case 16:
            return image.Convert16BitTo24Bit(nOrder, pRow, pOut);
        case 24:
            return image.Convert24BitTo24Bit(nOrder, pRow, pOut);
        default:
            return image.Convert32BitTo24Bit(nOrder, pRow, pOut);
    }
}

TEST(Line24, EveryKindEqualsTheSlowLoop) {
    const support::RecordingTrace silence(-1);
    for (const Kind& kind : support::AllKinds()) {
        for (int nWidth : {0, 1, 7, 33, 100, 1031}) {
            SCOPED_TRACE(support::Name(kind) + ", width " + std::to_string(nWidth));
            Picture picture = support::MakePicture(kind, nWidth, 3, static_cast<unsigned>(nWidth));
            CKelImage image;
            ASSERT_EQ(KEL_OK, image.Open(picture.Info(), picture.bits.data()));
            for (int nOrder : {1, 2, 0, 3, -1}) {  // all but 1: blue, green, red
                Bytes whole(3 * Stride24(nWidth), 0x5A), expectedWhole;
                EXPECT_TRUE(image.ConvertTo24Bit(nOrder, whole.data()));
                for (int nRow = 0; nRow < 3; ++nRow) {
                    Bytes line(Stride24(nWidth), 0x5A), expected = line;
                    reference::Line24(picture.Info(), picture.Row(nRow), nOrder == 1,
                                      expected.data());
                    EXPECT_EQ(line.data(), image.GetLine24At(nOrder, nRow, line.data()));
                    EXPECT_EQ(expected, line);
                    line.assign(line.size(), 0x5A);
                    ConvertRow(image, nOrder, nRow, line.data());
                    EXPECT_EQ(expected, line);
                    expectedWhole.insert(expectedWhole.end(), expected.begin(), expected.end());
                }
                EXPECT_EQ(expectedWhole, whole);
            }
        }
    }
}

TEST(Line24, MasksOfAnyShape) {
    const unsigned int aMasks[] = {0,          1,          0x8000,     0xF0F0,     0x03FF,
                                   0x3FF00000, 0xFFFFFFFF, 0x80000000, 0x0FFFF000, 0x7FFFFFFF};
    for (int nBits : {16, 32}) {
        for (unsigned int nMask : aMasks) {
            Picture picture = support::MakePicture({nBits, BI_BITFIELDS, 0}, 60, 1, nMask);
            reinterpret_cast<unsigned int*>(picture.block.data())[11] = nMask;  // green
            CKelImage image;
            ASSERT_EQ(KEL_OK, image.Open(picture.Info(), picture.bits.data()));
            Bytes line(Stride24(60)), expected(line);
            reference::Line24(picture.Info(), picture.Row(0), true, expected.data());
            image.GetLine24AsRGBAt(0, line.data());
            EXPECT_EQ(expected, line) << nBits << " bits, mask " << nMask;
        }
    }
    EXPECT_EQ(11, MaskToRShift(0xF800));
    EXPECT_EQ(0, MaskToRShift(0));
    EXPECT_EQ(2, MaskToLShift(0x07E0));
    EXPECT_EQ(0, MaskToLShift(0));
}

TEST(Line24, WhatCannotBeConvertedIsLeftAlone) {
    // Unknown depths and indices without a palette; deep pixels under a compression that is not
    // theirs, without masks, and with a fourth. -1: counted masks, but no table.
    const int aCases[][3] = {{0, BI_RGB, 0},        {2, BI_RGB, 0},        {4, BI_RGB, 0},
                             {8, BI_RGB, 0},        {16, BI_RLE8, 0},      {32, BI_RLE8, 0},
                             {16, BI_BITFIELDS, 0}, {32, BI_BITFIELDS, 4}, {16, BI_BITFIELDS, -1},
                             {32, BI_BITFIELDS, -1}};
    const Bytes untouched(12, 0x5A);
    Bytes line = untouched;
    CKelImage image;
    for (const auto& [nBits, nCompression, nMasks] : aCases) {
        image.Create(4, 1, nBits);
        image.GetBitmapInfoHeader()->biCompression = static_cast<unsigned int>(nCompression);
        for (int i = 0; i < nMasks; ++i) {
            image.AddPaletteEntry(0xFF, 0xFF, 0xFF, 0);
        }
        image.m_nPaletteNum = nMasks < 0 ? 3 : nMasks;
        EXPECT_EQ(line.data(), image.GetLine24At(1, 0, line.data()));
        EXPECT_EQ(untouched, line) << nBits << " bits, compression " << nCompression;
    }
    for (const int nBits : {1, 4, 8}) {  // a table without entries
        image.Create(4, 1, nBits);
        image.ExpandPaletteTable();
        EXPECT_EQ(line.data(), image.GetLine24At(1, 0, line.data()));
        EXPECT_EQ(untouched, line) << nBits;
    }
    image.Create(4, 2, 24);
    EXPECT_EQ(nullptr, image.GetLine24At(1, -1, line.data()));
    EXPECT_EQ(nullptr, image.GetLine24At(1, 2, line.data()));
    image.DeleteLineArray();
    EXPECT_EQ(nullptr, image.GetLine24At(1, 1, line.data()));
    EXPECT_EQ(untouched, line);
}

TEST(Line24, OneBitPalettesThatAreTooShort) {
    CKelImage image;
    image.Create(33, 1, 1);
    const Bytes stored = {0x40, 2, 3, 4, 5, 6, 7, 8};
    std::copy(stored.begin(), stored.end(), image.GetBits());
    Bytes line(Stride24(33), 0x5A);
    image.GetLine24AsBGRAt(0, line.data());  // without colours: the stored row
    EXPECT_EQ(stored, Bytes(line.begin(), line.begin() + 8));
    EXPECT_EQ(0x5A, line[8]);
    image.AddPaletteEntry(1, 2, 3, 255);
    for (const int nSlots : {2, 1}) {  // with one: the slot after it, or black
        image.m_nPaletteSize = nSlots;
        image.GetLine24AsRGBAt(0, line.data());
        EXPECT_EQ((Bytes{1, 2, 3, 0, 0, 0}), Bytes(line.begin(), line.begin() + 6));
    }
    image.m_nPaletteSize = 2;
    image.GetPalette()[1] = {7, 8, 9, 0};
    image.GetLine24AsBGRAt(0, line.data());
    EXPECT_EQ((Bytes{3, 2, 1, 7, 8, 9}), Bytes(line.begin(), line.begin() + 6));
}

}  // namespace
