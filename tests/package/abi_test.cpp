// The binary interface: slots of the virtual operations, the record of an image, record sizes. A
// host compiled against an older header relies on every value here.
#include <gtest/gtest.h>
#include <ikelex/ikelex.h>

#include <cstddef>
#include <cstring>
#include <vector>

#include "kelimage/kelimage.h"
#include "kelscale/kelscale.h"

namespace {

using Numbers = std::vector<std::ptrdiff_t>;

// The index in the virtual table that a pointer to a virtual member holds: the Itanium C++ ABI
// stores the byte offset, with the lowest bit set or (on ARM) clear.
template <class Member>
std::ptrdiff_t SlotOf(Member pMember) {
    std::ptrdiff_t nOffset = 0;
    std::memcpy(&nOffset, &pMember, sizeof(nOffset));
    return nOffset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

template <class... Member>
Numbers SlotsOf(Member... pMembers) {
    return {SlotOf(pMembers)...};
}

// The destructor takes two entries (0 and 1), so operation number n lies at n.
TEST(Abi, SlotsFollowEachOther) {
    typedef IKelImage I;
    typedef tagKelParameters P;
    const Numbers image = SlotsOf(
        static_cast<KelResult (I::*)(const char*)>(&I::Open),
        static_cast<KelResult (I::*)(CVamArchive*)>(&I::Open),
        static_cast<KelResult (I::*)()>(&I::Open),
        static_cast<KelResult (I::*)(BITMAPINFO*, unsigned char*)>(&I::Open), &I::OpenAs,
        static_cast<KelResult (I::*)(const char*, KelImageFormat, P*)>(&I::Save),
        static_cast<KelResult (I::*)(CVamArchive*, KelImageFormat, P*)>(&I::Save),
        static_cast<KelResult (I::*)(KelImageFilterType, P*)>(&I::ApplyFilter),
        static_cast<KelResult (I::*)(I**, KelImageFilterType, P*)>(&I::ApplyFilter), &I::GetBits,
        &I::GetLineArray, &I::GetPalette, &I::GetBitmapInfoHeader, &I::GetBitmapInfo,
        &I::AllocateBMI, &I::AllocateBits, &I::GetPaletteNum, &I::GetWidth, &I::GetHeight,
        &I::GetBitsPerPixel, &I::GetBmpDataSize, &I::ZoomImage, &I::SubImage, &I::Mirror,
        &I::Rotate, &I::ChangeBitCount, &I::Destroy, &CKelImage::ApplyFilter1);
    const Numbers archive = SlotsOf(&CVamArchive::Read, &CVamArchive::Write, &CVamArchive::Seek,
                                    &CVamArchive::GetPosition, &CVamArchive::Flush);
    for (const Numbers& slots : {image, archive}) {
        for (std::size_t i = 0; i < slots.size(); ++i) {
            EXPECT_EQ(slots[i], static_cast<std::ptrdiff_t>(i) + 2);
        }
    }
}

// No type of a standard library is among the platform's: their layout is the same for every host.
TEST(Abi, Records) {
    CKelImage image;
    const auto at = [&image](const void* pMember) {
        return static_cast<const char*>(pMember) - reinterpret_cast<const char*>(&image);
    };
    EXPECT_EQ(
        (Numbers{at(&image.m_nPaletteNum), at(&image.m_nPaletteSize), at(&image.m_ppLineArray),
                 at(&image.m_pBits), at(&image.m_pPalette), at(&image.m_pBMI),
                 at(&image.m_bOwnBuffers), at(&image.m_bmih), sizeof image}),
        (Numbers{8, 12, 16, 24, 32, 40, 48, 52, 96}));
    EXPECT_EQ(static_cast<void*>(static_cast<IKelImage*>(&image)), static_cast<void*>(&image));
    EXPECT_EQ(
        (Numbers{offsetof(CVamVariant, m_byType), offsetof(CVamVariant, m_Value),
                 offsetof(tagKelParameterItem, strName), offsetof(tagKelParameterItem, varValue),
                 offsetof(BITMAPINFOHEADER, biBitCount), offsetof(BITMAPINFOHEADER, biCompression),
                 offsetof(BITMAPINFOHEADER, biClrImportant)}),
        (Numbers{0, 8, 0, 8, 14, 16, 36}));
    EXPECT_EQ((Numbers{sizeof(CVamString), sizeof(CVamVariant), sizeof(tagKelParameterItem),
                       sizeof(CVamArchive), sizeof(CVamArchiveFile), sizeof(CVamArchiveMemory),
                       sizeof(BITMAPINFOHEADER), sizeof(BITMAPINFO), sizeof(tagKelRGBQUAD),
                       sizeof(tagKelParameters), sizeof(KelImageFormat),
                       sizeof(C2PassScale<CDataRGB_UBYTE>::PixelClass), sizeof(LineContribType),
                       sizeof(PixelContribType)}),
              (Numbers{8, 16, 24, 8, 16, 16, 40, 44, 4, 16, 4, 3, 16, 16}));
}

}  // namespace
