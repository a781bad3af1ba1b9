// Saves a picture in each format and opens it again: the size comes back, and where nothing may be
// lost, every pixel.
#include "fuzz.h"

static fuzz::Bytes Colors(CKelImage& image) {
    const std::int64_t nSize = kel::PictureSize(24, image.GetWidth(), image.GetHeight());
    fuzz::Bytes rows(static_cast<std::size_t>(nSize));
    image.ConvertTo24Bit(1, rows.data());
    return rows;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    CKelImage image;
    support::Picture picture = fuzz::MakePicture(input);
    fuzz::CheckResult(image.Open(picture.Info(), picture.bits.data()));
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
        // Bit fields go to PNG as stored.
        const bool bMasks = image.m_bmih.biCompression == BI_BITFIELDS;
        const bool bLossy = eFormat == KEL_IMAGE_JPEG || (eFormat == KEL_IMAGE_PNG && bMasks);
        fuzz::Require(bLossy || Colors(image) == Colors(again), "a pixel changed");
    }
    return 0;
}
