// Pictures as a caller of Open holds them, of every depth and compression.
#include "support/pictures.h"

#include <cstring>

namespace support {

const std::vector<Kind>& AllKinds() {
    static const std::vector<Kind> kinds = {
        {1, BI_RGB, 0},  {4, BI_RGB, 0},        {4, BI_RGB, 3},        {8, BI_RGB, 0},
        {8, BI_RGB, 20}, {16, BI_RGB, 0},       {16, BI_BITFIELDS, 0}, {24, BI_RGB, 0},
        {32, BI_RGB, 0}, {32, BI_BITFIELDS, 0},
    };
    return kinds;
}

std::string Name(const Kind& kind) {
    return std::to_string(kind.nBits) + "bit_c" + std::to_string(kind.nCompression) + "_n" +
           std::to_string(kind.nColors);
}

Picture MakePicture(const Kind& kind, int nWidth, int nHeight, std::uint32_t nSeed) {
    Random random(nSeed);
    BITMAPINFOHEADER header = {};
    header.biSize = sizeof header;
    header.biWidth = nWidth;
    header.biHeight = nHeight;
    header.biPlanes = 1;
    header.biBitCount = static_cast<unsigned short>(kind.nBits);
    header.biCompression = kind.nCompression;
    header.biClrUsed = kind.nColors;
    const auto nSize = static_cast<std::size_t>(kel::PictureSize(kind.nBits, nWidth, nHeight));
    header.biSizeImage = static_cast<unsigned int>(nSize);

    Picture picture;
    picture.block.resize(IMG_GetBitmapInfoSize(&header));
    std::memcpy(picture.block.data(), &header, sizeof header);
    random.Fill(picture.block.data() + sizeof header, picture.block.size() - sizeof header);
    if (kind.nCompression == BI_BITFIELDS) {
        const std::uint32_t a16[3] = {0xF800, 0x07E0, 0x001F};
        const std::uint32_t a32[3] = {0x00FF0000, 0x0000FF00, 0x000000FF};
        std::memcpy(picture.block.data() + sizeof header, kind.nBits == 16 ? a16 : a32, 12);
    }
    picture.bits.reserve(nSize == 0 ? 1 : nSize);  // never a null pointer
    picture.bits.resize(nSize);
    random.Fill(picture.bits.data(), nSize);
    return picture;
}

KelResult OpenRandom(CKelImage* pImage, const Kind& kind, int nWidth, int nHeight,
                     std::uint32_t nSeed) {
    Picture picture = MakePicture(kind, nWidth, nHeight, nSeed);
    return pImage->Open(picture.Info(), picture.bits.data());
}

}  // namespace support
