// Paints and keeps the scenes, and makes what the sides of a row start from.
#include "pictures.h"

#include <platform/vamarchivememory.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <tuple>

#include "examples/paintscene.h"
#include "suite.h"

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

// The pixel (blue, green, red) at another depth; up to 8 bits as an index into RampEntry's colours.
std::uint32_t Reduced(const unsigned char* p, int nBits) {
    const std::uint32_t b = p[0], g = p[1], r = p[2];
    switch (nBits) {
        case 1:
            return g >> 7;
        case 4:
            return g >> 4;
        case 8:
            return (r & 0xE0) | (g & 0xE0) >> 3 | b >> 6;
        case 16:
            return (r & 0xF8) << 7 | (g & 0xF8) << 2 | b >> 3;
        default:
            return 0xC8000000u | r << 16 | g << 8 | b;
    }
}

void AddPalette(CKelImage& image, int nBits) {
    const auto byte = [](int n) { return static_cast<unsigned char>(n); };
    for (int i = 0; nBits <= 8 && i < 1 << nBits; ++i) {
        const int nGrey = nBits < 8 ? 255 * i / ((1 << nBits) - 1) : 0;
        image.AddPaletteEntry(byte(nBits == 8 ? i & 0xE0 : nGrey),
                              byte(nBits == 8 ? i << 3 & 0xE0 : nGrey),
                              byte(nBits == 8 ? i << 6 & 0xC0 : nGrey), 255);
    }
}

Image Paint(Size size, int nBits) {
    support::Rows scene = support::BlackRows(24, size.nWidth, size.nHeight);
    PaintScene(scene.Row(0), size.nWidth, size.nHeight, static_cast<int>(scene.Stride()));
    Image pImage = Blank(size, nBits);
    if (nBits == 24) {
        std::memcpy(pImage->GetBits(), scene.bytes.data(), scene.bytes.size());
        return pImage;
    }
    for (int y = 0; y < size.nHeight; ++y) {
        for (int x = 0; x < size.nWidth; ++x) {
            support::SetPixelAt(nBits, pImage->GetLineArray()[y], x,
                                Reduced(scene.Row(y) + 3 * x, nBits));
        }
    }
    AddPalette(*pImage, nBits);
    return pImage;
}

}  // namespace

SharedImage Scene(Size size, int nBits) {
    static std::map<std::tuple<int, int, int>, SharedImage> scenes;
    SharedImage& pScene = scenes[{size.nWidth, size.nHeight, nBits}];
    if (pScene == nullptr) {
        pScene = Paint(size, nBits);
    }
    return pScene;
}

Image Copy(CKelImage& image) {
    Image pCopy = Blank({image.GetWidth(), image.GetHeight()}, image.GetBitsPerPixel());
    std::memcpy(pCopy->GetBits(), image.GetBits(), image.GetBmpDataSize());
    for (int i = 0; i < image.GetPaletteNum(); ++i) {
        const tagKelRGBQUAD entry = image.GetPalette()[i];
        pCopy->AddPaletteEntry(entry.byRed, entry.byGreen, entry.byBlue, entry.byReserved);
    }
    return pCopy;
}

support::Rows RowsOf(CKelImage& image) {
    support::Rows rows =
        support::BlackRows(image.GetBitsPerPixel(), image.GetWidth(), image.GetHeight());
    std::memcpy(rows.bytes.data(), image.GetBits(), rows.bytes.size());
    return rows;
}

support::Bytes RgbPixels(CKelImage& image) {
    const std::size_t nRow = static_cast<std::size_t>(image.GetWidth()) * 3;
    support::Bytes pixels(nRow * static_cast<std::size_t>(image.GetHeight()) + 4);
    for (int y = 0; y < image.GetHeight(); ++y) {
        image.GetLine24AsRGBAt(y, pixels.data() + nRow * static_cast<std::size_t>(y));
    }
    return pixels;
}

support::Bytes Saved(CKelImage& image, KelImageFormat eFormat) {
    CVamArchiveMemory archive;
    Check(image.Save(&archive, eFormat, nullptr));
    return support::Bytes(archive.GetData(), archive.GetData() + archive.GetSize());
}

}  // namespace bench
