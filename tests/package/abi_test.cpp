// The binary interface: slots of the virtual operations, the record of an image, record sizes. A
// host compiled against an older header relies on every value here.
#include <gtest/gtest.h>
#include <ikelex/ikelex.h>

#include <cstddef>
#include <cstring>

#include "kelimage/kelimage.h"
#include "kelscale/kelscale.h"

namespace {

// The index in the virtual table that a pointer to a virtual member holds: the Itanium C++ ABI
// stores the byte offset, with the lowest bit set or (on ARM) clear.
template <class Member>
int SlotOf(Member pMember) {
    std::ptrdiff_t nOffset = 0;
    std::memcpy(&nOffset, &pMember, sizeof(nOffset));
    return static_cast<int>(nOffset / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

// The destructor takes two entries (0 and 1), so operation number n lies at n.
TEST(Abi, SlotsOfTheInterface) {
    typedef IKelImage I;
    typedef tagKelParameters P;
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)(const char*)>(&I::Open)), 2);
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)(CVamArchive*)>(&I::Open)), 3);
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)()>(&I::Open)), 4);
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)(BITMAPINFO*, unsigned char*)>(&I::Open)), 5);
    EXPECT_EQ(SlotOf(&I::OpenAs), 6);
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)(const char*, KelImageFormat, P*)>(&I::Save)), 7);
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)(CVamArchive*, KelImageFormat, P*)>(&I::Save)), 8);
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)(KelImageFilterType, P*)>(&I::ApplyFilter)), 9);
    EXPECT_EQ(SlotOf(static_cast<KelResult (I::*)(I**, KelImageFilterType, P*)>(&I::ApplyFilter)),
              10);
    EXPECT_EQ(SlotOf(&I::GetBits), 11);
    EXPECT_EQ(SlotOf(&I::GetLineArray), 12);
    EXPECT_EQ(SlotOf(&I::GetPalette), 13);
    EXPECT_EQ(SlotOf(&I::GetBitmapInfoHeader), 14);
    EXPECT_EQ(SlotOf(&I::GetBitmapInfo), 15);
    EXPECT_EQ(SlotOf(&I::AllocateBMI), 16);
    EXPECT_EQ(SlotOf(&I::AllocateBits), 17);
    EXPECT_EQ(SlotOf(&I::GetPaletteNum), 18);
    EXPECT_EQ(SlotOf(&I::GetWidth), 19);
    EXPECT_EQ(SlotOf(&I::GetHeight), 20);
    EXPECT_EQ(SlotOf(&I::GetBitsPerPixel), 21);
    EXPECT_EQ(SlotOf(&I::GetBmpDataSize), 22);
    EXPECT_EQ(SlotOf(&I::ZoomImage), 23);
    EXPECT_EQ(SlotOf(&I::SubImage), 24);
    EXPECT_EQ(SlotOf(&I::Mirror), 25);
    EXPECT_EQ(SlotOf(&I::Rotate), 26);
    EXPECT_EQ(SlotOf(&I::ChangeBitCount), 27);
    EXPECT_EQ(SlotOf(&I::Destroy), 28);
    EXPECT_EQ(SlotOf(&CKelImage::ApplyFilter1), 29);
}

TEST(Abi, RecordOfAnImage) {
    CKelImage image;
    const auto offset = [&image](const void* pMember) {
        return static_cast<const char*>(pMember) - reinterpret_cast<const char*>(&image);
    };
    EXPECT_EQ(offset(&image.m_nPaletteNum), 8);
    EXPECT_EQ(offset(&image.m_nPaletteSize), 12);
    EXPECT_EQ(offset(&image.m_ppLineArray), 16);
    EXPECT_EQ(offset(&image.m_pBits), 24);
    EXPECT_EQ(offset(&image.m_pPalette), 32);
    EXPECT_EQ(offset(&image.m_pBMI), 40);
    EXPECT_EQ(offset(&image.m_bOwnBuffers), 48);
    EXPECT_EQ(offset(&image.m_bmih), 52);
    EXPECT_EQ(sizeof(CKelImage), 96u);
    EXPECT_EQ(static_cast<void*>(static_cast<IKelImage*>(&image)), static_cast<void*>(&image));
}

// No type of a standard library among them: their layout is the same for every host.
TEST(Abi, PlatformTypes) {
    EXPECT_EQ(sizeof(CVamString), 8u);
    EXPECT_EQ(sizeof(CVamVariant), 16u);
    EXPECT_EQ(offsetof(CVamVariant, m_byType), 0u);
    EXPECT_EQ(offsetof(CVamVariant, m_Value), 8u);
    EXPECT_EQ(sizeof(tagKelParameterItem), 24u);
    EXPECT_EQ(offsetof(tagKelParameterItem, strName), 0u);
    EXPECT_EQ(offsetof(tagKelParameterItem, varValue), 8u);
    EXPECT_EQ(sizeof(CVamArchive), 8u);
    EXPECT_EQ(sizeof(CVamArchiveFile), 16u);
    EXPECT_EQ(sizeof(CVamArchiveMemory), 16u);
    EXPECT_EQ(SlotOf(&CVamArchive::Read), 2);
    EXPECT_EQ(SlotOf(&CVamArchive::Write), 3);
    EXPECT_EQ(SlotOf(&CVamArchive::Seek), 4);
    EXPECT_EQ(SlotOf(&CVamArchive::GetPosition), 5);
    EXPECT_EQ(SlotOf(&CVamArchive::Flush), 6);
}

TEST(Abi, OtherRecords) {
    EXPECT_EQ(sizeof(BITMAPINFOHEADER), 40u);
    EXPECT_EQ(offsetof(BITMAPINFOHEADER, biBitCount), 14u);
    EXPECT_EQ(offsetof(BITMAPINFOHEADER, biCompression), 16u);
    EXPECT_EQ(offsetof(BITMAPINFOHEADER, biClrImportant), 36u);
    EXPECT_EQ(sizeof(BITMAPINFO), 44u);
    EXPECT_EQ(sizeof(tagKelRGBQUAD), 4u);
    EXPECT_EQ(sizeof(tagKelParameters), 16u);
    EXPECT_EQ(sizeof(KelImageFormat), 4u);
    EXPECT_EQ(sizeof(C2PassScale<CDataRGB_UBYTE>::PixelClass), 3u);
    EXPECT_EQ(sizeof(LineContribType), 16u);
    EXPECT_EQ(sizeof(PixelContribType), 16u);
}

}  // namespace
