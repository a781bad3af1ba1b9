// FreeImage, over a bitmap of its own. Its transposition is a quarter turn.
#include <FreeImage.h>

// The bitmap structures are those of the header above.
#define IKELEX_NO_BITMAP_TYPES

#include <cstdlib>

#include "allpeers.h"

namespace bench {

namespace {

using Bitmap = std::shared_ptr<FIBITMAP>;

Bitmap Owned(FIBITMAP* pBitmap) {
    if (pBitmap == nullptr) {
        std::exit(1);
    }
    return {pBitmap, FreeImage_Unload};
}

Bitmap Convert(CKelImage& image) {
    const int nBits = image.GetBitsPerPixel();
    FIBITMAP* pBitmap = FreeImage_ConvertFromRawBits(
        image.GetBits(), image.GetWidth(), image.GetHeight(), StrideOf(image),
        static_cast<unsigned int>(nBits), 0xFF0000, 0xFF00, 0xFF, TRUE);
    for (int i = 0; i < image.GetPaletteNum(); ++i) {
        const tagKelRGBQUAD& entry = image.GetPalette()[i];
        FreeImage_GetPalette(pBitmap)[i] = {entry.byBlue, entry.byGreen, entry.byRed, 0};
    }
    return Owned(pBitmap);
}

FREE_IMAGE_FORMAT FormatOf(KelImageFormat eFormat) {
    return eFormat == KEL_IMAGE_JPEG ? FIF_JPEG : eFormat == KEL_IMAGE_PNG ? FIF_PNG : FIF_BMP;
}

struct FreeImage : Peer {
    const char* Name() const override { return "FreeImage"; }
    Side Scale(SharedImage pImage, Size out, int nKernel) const override {
        constexpr FREE_IMAGE_FILTER kFilters[] = {FILTER_BILINEAR, FILTER_BOX, FILTER_BSPLINE,
                                                  FILTER_LANCZOS3};
        const Bitmap pBitmap = Convert(*pImage);
        return Timed([=] {
            Owned(FreeImage_Rescale(pBitmap.get(), out.nWidth, out.nHeight, kFilters[nKernel - 1]));
        });
    }
    Side Transpose(SharedImage pImage) const override {
        if (pImage->GetBitsPerPixel() == 4) {
            return nullptr;
        }
        const Bitmap pBitmap = Convert(*pImage);
        return Timed([=] { Owned(FreeImage_Rotate(pBitmap.get(), 90, nullptr)); });
    }
    Side Mirror(SharedImage pImage) const override {
        const Bitmap pBitmap = Convert(*pImage);
        return Timed([=] { FreeImage_FlipVertical(pBitmap.get()); });
    }
    Side Lines(SharedImage pImage) const override {
        const int nBits = pImage->GetBitsPerPixel();
        if (nBits == 24) {
            return nullptr;
        }
        const Bitmap pBitmap = Convert(*pImage);
        const auto pLine =
            std::make_shared<support::Bytes>(PictureSize(24, {pImage->GetWidth(), 1}));
        return Timed([=] {
            RGBQUAD* const pPalette = FreeImage_GetPalette(pBitmap.get());
            for (int y = 0; y < pImage->GetHeight(); ++y) {
                BYTE* const pRow = FreeImage_GetScanLine(pBitmap.get(), y);
                switch (nBits) {
                    case 1:
                        FreeImage_ConvertLine1To24(pLine->data(), pRow, pImage->GetWidth(),
                                                   pPalette);
                        break;
                    case 8:
                        FreeImage_ConvertLine8To24(pLine->data(), pRow, pImage->GetWidth(),
                                                   pPalette);
                        break;
                    case 16:
                        FreeImage_ConvertLine16To24_555(pLine->data(), pRow, pImage->GetWidth());
                        break;
                    default:
                        FreeImage_ConvertLine32To24(pLine->data(), pRow, pImage->GetWidth());
                }
                Use(pLine->data());
            }
        });
    }
    Side Expand(SharedImage pImage) const override {
        const Bitmap pBitmap = Convert(*pImage);
        return Timed([=] { Owned(FreeImage_ConvertTo32Bits(pBitmap.get())); });
    }
    Side OpenFile(std::string strPath) const override {
        return Timed([=] { Owned(FreeImage_Load(FIF_BMP, strPath.c_str(), 0)); });
    }
    Side SaveFile(SharedImage pImage, std::string strPath) const override {
        const Bitmap pBitmap = Convert(*pImage);
        return Timed([=] { FreeImage_Save(FIF_BMP, pBitmap.get(), strPath.c_str(), 0); });
    }
    Side OpenMemory(std::shared_ptr<support::Bytes> pFile, KelImageFormat eFormat) const override {
        return Timed([=] {
            FIMEMORY* pMemory =
                FreeImage_OpenMemory(pFile->data(), static_cast<DWORD>(pFile->size()));
            Owned(FreeImage_LoadFromMemory(FormatOf(eFormat), pMemory, 0));
            FreeImage_CloseMemory(pMemory);
        });
    }
    Side SaveMemory(SharedImage pImage, KelImageFormat eFormat) const override {
        const Bitmap pBitmap = Convert(*pImage);
        return Timed([=] {
            FIMEMORY* pMemory = FreeImage_OpenMemory(nullptr, 0);
            if (!FreeImage_SaveToMemory(FormatOf(eFormat), pBitmap.get(), pMemory,
                                        eFormat == KEL_IMAGE_JPEG ? JPEG_QUALITYGOOD : 0)) {
                std::exit(1);
            }
            FreeImage_CloseMemory(pMemory);
        });
    }
};

}  // namespace

const Peer* FreeImagePeer() {
    static const FreeImage peer;
    return &peer;
}

}  // namespace bench
