#include "pictures.h"

#include <platform/vamarchivememory.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "paintscene.h"

namespace bench {

namespace {

Image Blank(Size size, int nBits) {
    Image pImage(new CKelImage);
    if (pImage->Create(size.nWidth, size.nHeight, nBits) == nullptr) {
        std::fputs("bench: out of memory\n", stderr);
        std::exit(1);
    }
    return pImage;
}

// One row of the scene (blue, green, red) at another depth; 8 bits as 3-3-2 bit indices.
void Reduce(const unsigned char* pIn, int nWidth, int nBits, unsigned char* pOut) {
    for (int x = 0; x < nWidth; x++) {
        const int b = pIn[3 * x], g = pIn[3 * x + 1], r = pIn[3 * x + 2];
        switch (nBits) {
            case 1:
                pOut[x / 8] = static_cast<unsigned char>(pOut[x / 8] | (g > 127) << (7 - x % 8));
                break;
            case 8:
                pOut[x] = static_cast<unsigned char>((r & 0xE0) | (g & 0xE0) >> 3 | b >> 6);
                break;
            case 16: {
                const int p = (r & 0xF8) << 7 | (g & 0xF8) << 2 | b >> 3;
                pOut[2 * x] = static_cast<unsigned char>(p);
                pOut[2 * x + 1] = static_cast<unsigned char>(p >> 8);
                break;
            }
            default:
                std::memcpy(pOut + 4 * x, pIn + 3 * x, 3);
                pOut[4 * x + 3] = static_cast<unsigned char>(255 - x % 256 / 4);
        }
    }
}

}  // namespace

Image MakeScene(Size size, int nBits) {
    Image pScene = Blank(size, 24);
    unsigned char** ppRows = pScene->GetLineArray();
    PaintScene(pScene->GetBits(), size.nWidth, size.nHeight, (24 * size.nWidth + 31) / 32 * 4);
    if (nBits == 24)
        return pScene;

    Image pImage = Blank(size, nBits);
    for (int y = 0; y < size.nHeight; y++) {
        Reduce(ppRows[y], size.nWidth, nBits, pImage->GetLineArray()[y]);
    }
    for (int i = 0; nBits <= 8 && i < 1 << nBits; i++) {
        const int nGrey = nBits == 1 ? 255 * i : 0;
        pImage->AddPaletteEntry(static_cast<unsigned char>((i & 0xE0) | nGrey),
                                static_cast<unsigned char>((i << 3 & 0xE0) | nGrey),
                                static_cast<unsigned char>((i << 6 & 0xC0) | nGrey), 255);
    }
    return pImage;
}

Image Copy(CKelImage& image) {
    Image pCopy = Blank({image.GetWidth(), image.GetHeight()}, image.GetBitsPerPixel());
    std::memcpy(pCopy->GetBits(), image.GetBits(), image.GetBmpDataSize());
    for (int i = 0; i < image.GetPaletteNum(); i++) {
        const tagKelRGBQUAD entry = image.GetPalette()[i];
        pCopy->AddPaletteEntry(entry.byRed, entry.byGreen, entry.byBlue, entry.byReserved);
    }
    return pCopy;
}

plain::Bytes RgbPixels(CKelImage& image) {
    const std::size_t nRow = static_cast<std::size_t>(image.GetWidth()) * 3;
    plain::Bytes pixels(nRow * static_cast<std::size_t>(image.GetHeight()) + 4);
    for (int y = 0; y < image.GetHeight(); y++) {
        image.GetLine24AsRGBAt(y, pixels.data() + nRow * static_cast<std::size_t>(y));
    }
    return pixels;
}

plain::Bytes Saved(CKelImage& image, KelImageFormat eFormat) {
    CVamArchiveMemory archive;
    const KelResult nResult = image.Save(&archive, eFormat, nullptr);
    if (nResult != KEL_OK) {
        std::fprintf(stderr, "bench: a picture could not be saved: %s\n", KelResultName(nResult));
        std::exit(1);
    }
    return plain::Bytes(archive.GetData(), archive.GetData() + archive.GetSize());
}

}  // namespace bench
