// Saves a picture in each format and opens it again: the size comes back, and where nothing may be
// lost, every pixel.
#include <cstring>

#include "fuzz.h"

namespace {

fuzz::Bytes Line(CKelImage& image, int nRow) {
    fuzz::Bytes line(static_cast<std::size_t>(image.GetWidth()) * 3 + 4);
    image.GetLine24AsBGRAt(nRow, line.data());
    line.resize(static_cast<std::size_t>(image.GetWidth()) * 3);  // without the padding
    return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    CKelImage image;
    fuzz::MakeImage(image, input);
    fuzz::CheckImage(image);
    for (const KelImageFormat eFormat : {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG}) {
        CVamArchiveMemory archive;
        const KelResult nSaved = image.Save(&archive, eFormat, nullptr);
        fuzz::CheckResult(nSaved);
        if (nSaved != KEL_OK || image.GetWidth() == 0 || image.GetHeight() == 0) {
            continue;
        }
        CKelImage again;
        archive.Seek(0, 0);
        fuzz::Require(again.Open(&archive) == KEL_OK, "a file of our own does not open");
        fuzz::CheckImage(again);
        fuzz::Require(
            again.GetWidth() == image.GetWidth() && again.GetHeight() == image.GetHeight(),
            "the size of a file of our own");
        // A picture without a palette shows nothing of its own; bit fields go to PNG as stored.
        const bool bPlain = image.GetBitsPerPixel() > 8 || image.GetPaletteNum() > 0;
        const bool bMasks = image.m_bmih.biCompression == BI_BITFIELDS;
        if (eFormat == KEL_IMAGE_JPEG || !bPlain || (eFormat == KEL_IMAGE_PNG && bMasks)) {
            continue;
        }
        for (int y = 0; y < image.GetHeight(); ++y) {
            fuzz::Require(Line(image, y) == Line(again, y), "a pixel changed on its way");
        }
    }
    return 0;
}
