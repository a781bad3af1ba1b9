// contactsheet: shows on one page what every operation of the library does to a picture.
//
//   contactsheet IN OUT.png
//
// Public interface only. Each row of the page is one function below.
#include <ikelex/handle.h>
#include <platform/vamplatform.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "sheet.h"
#include "utf8.h"

namespace {

constexpr int kMargin = 20;
constexpr int kWidth = 264;  // of a panel
constexpr int kHeight = 198;
constexpr int kPitch = kWidth + 16;
constexpr int kLabel = 14;  // from a panel's label to the panel

struct Kernel {
    KelScaleType eType;
    const char* pszName;
};
constexpr Kernel kKernels[] = {{KEL_SCALE_BILINEAR, "bilinear"},
                               {KEL_SCALE_BOX, "box"},
                               {KEL_SCALE_GAUSSIAN, "gaussian"},
                               {KEL_SCALE_HAMMING, "hamming"}};

// Ends the program with a message; the sheet is worth nothing with a panel missing.
[[noreturn]] void Fail(const std::string& strWhat, KelStatus status) {
    std::fprintf(stderr, "contactsheet: %s: %s\n", strWhat.c_str(), status.ToString().c_str());
    std::exit(1);
}

std::string SizeOf(const KelImagePtr& image) {
    return std::to_string(image->GetWidth()) + " x " + std::to_string(image->GetHeight());
}

// A panel in column nColumn at height nY: its label, and below it the picture, as 24 bits.
void Panel(Sheet& sheet, int nColumn, int nY, const std::string& strLabel,
           const KelImagePtr& image) {
    const int nX = kMargin + nColumn * kPitch;
    sheet.Write(nX, nY, strLabel);
    // The box kernel reproduces a picture of unchanged size exactly, so it serves to bring any
    // depth to 24 bits.
    KelImagePtr pPicture = Scaled(image, image->GetWidth(), image->GetHeight(), KEL_SCALE_BOX);
    if (pPicture == nullptr || !sheet.Place(nX, nY + kLabel, *pPicture)) {
        Fail(strLabel, KEL_ERR_MEMORY);
    }
}

KelImagePtr Checked(KelImagePtr pImage, const char* pszWhat) {
    if (pImage == nullptr) {
        Fail(pszWhat, KEL_ERR_MEMORY);
    }
    return pImage;
}

KelImagePtr Copy(const KelImagePtr& image) {
    return Checked(Scaled(image, image->GetWidth(), image->GetHeight(), KEL_SCALE_BOX), "copy");
}

// The part of the picture with the strongest differences between neighbours.
Area BusiestArea(const KelImagePtr& image, int nWidth, int nHeight) {
    Area best = {0, 0, nWidth, nHeight};
    long nBest = -1;
    for (int nY = 0; nY + nHeight <= image->GetHeight(); nY += 6) {
        for (int nX = 0; nX + nWidth <= image->GetWidth(); nX += 6) {
            long nSum = 0;
            for (int y = nY; y < nY + nHeight; ++y) {
                const unsigned char* pRow = image->GetLineArray()[y];
                for (int x = 3 * nX; x < 3 * (nX + nWidth - 1); ++x) {
                    nSum += std::abs(pRow[x] - pRow[x + 3]);
                }
            }
            if (nSum > nBest) {
                nBest = nSum;
                best = {nX, nY, nWidth, nHeight};
            }
        }
    }
    return best;
}

// The four kernels at one size, and under each the same busy part of it, four times enlarged.
void ShowKernels(Sheet& sheet, int nY, const KelImagePtr& source) {
    sheet.Write(kMargin, nY,
                "scale filter: the source at " + std::to_string(kWidth) + " x " +
                    std::to_string(kHeight) + ", and a part of it enlarged 4 times",
                2);
    nY += 26;
    Area part = {};
    int nColumn = 0;
    for (const Kernel& kernel : kKernels) {
        KelImagePtr pScaled =
            Checked(Scaled(source, kWidth, kHeight, kernel.eType), kernel.pszName);
        if (nColumn == 0) {
            part = BusiestArea(pScaled, kWidth / 4, kHeight / 4);
        }
        const int nX = kMargin + nColumn * kPitch;
        Panel(sheet, nColumn, nY, kernel.pszName, pScaled);
        sheet.Frame({nX + part.nX, nY + kLabel + part.nY, part.nWidth, part.nHeight});
        sheet.Place(nX, nY + kLabel + kHeight + 10, *pScaled, 4, &part);
        ++nColumn;
    }
}

void ShowGeometry(Sheet& sheet, int nY, const KelImagePtr& picture) {
    sheet.Write(kMargin, nY, "in place: zoom, mirror, transpose, crop", 2);
    nY += 26;
    KelImagePtr pImage = Copy(picture);
    pImage->ZoomImage(kWidth, kHeight / 2);
    Panel(sheet, 0, nY, "ZoomImage(264, 99)", pImage);
    pImage = Copy(picture);
    pImage->Mirror(0);
    Panel(sheet, 1, nY, "Mirror(0)", pImage);
    pImage = Copy(picture);
    pImage->Rotate(0);
    Panel(sheet, 2, nY, "Rotate(0)", pImage);
    pImage = Copy(picture);
    pImage->SubImage(kWidth / 4, kHeight / 4, kWidth / 2, kHeight / 2);
    Panel(sheet, 3, nY, "SubImage(66, 49, 132, 99)", pImage);
    // What is left of that panel: the crop zoomed back to the width of a panel, half as high.
    pImage->ZoomImage(kWidth, kHeight / 2 - 20);
    Panel(sheet, 3, nY + kLabel + kHeight / 2 + 20, "... then ZoomImage(264, 79)", pImage);
}

// A threshold of a 4 x 4 ordered dither, 0 to 15.
int Threshold(int x, int y) {
    constexpr int kThresholds[4][4] = {
        {0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    return kThresholds[y & 3][x & 3];
}

// The nearest lower or higher of nLevels levels, whichever the dither asks for.
int Level(int nValue, int nLevels, int x, int y) {
    return (nValue * (nLevels - 1) * 16 + Threshold(x, y) * 255 + 127) / (255 * 16);
}

int Grey(const unsigned char* pPixel) {
    return (pPixel[0] * 28 + pPixel[1] * 151 + pPixel[2] * 77) / 256;
}

// The picture held at 1, 4 or 8 bits with a palette, or at 16 bits (5 per channel).
KelImagePtr AtDepth(const KelImagePtr& picture, int nBits) {
    const int nColours = nBits <= 8 ? 1 << nBits : 0;
    KelImagePtr pImage = Checked(NewPicture(kWidth, kHeight, nBits, nColours), "depth");
    RGBQUAD* pColours = pImage->GetBitmapInfo()->bmiColors;
    for (int i = 0; i < nColours; ++i) {
        // 2 or 16 greys; or a cube of 6 x 7 x 6 colours, the rest unused.
        const auto grey = static_cast<unsigned char>(i * 255 / (nColours - 1));
        pColours[i] = {grey, grey, grey, 0};
        if (nBits == 8 && i < 252) {
            pColours[i] = {static_cast<unsigned char>(i % 6 * 51),
                           static_cast<unsigned char>(i / 6 % 7 * 255 / 6),
                           static_cast<unsigned char>(i / 42 * 51), 0};
        }
    }
    const int nStride = (kWidth * nBits + 31) / 32 * 4;
    for (int y = 0; y < kHeight; ++y) {
        const unsigned char* pFrom = picture->GetLineArray()[y];
        unsigned char* pRow = pImage->GetBits() + y * nStride;
        for (int x = 0; x < kWidth; ++x, pFrom += 3) {
            if (nBits == 16) {
                const int n = pFrom[0] >> 3 | pFrom[1] >> 3 << 5 | pFrom[2] >> 3 << 10;
                pRow[2 * x] = static_cast<unsigned char>(n);
                pRow[2 * x + 1] = static_cast<unsigned char>(n >> 8);
            } else if (nBits == 8) {
                pRow[x] = static_cast<unsigned char>(Level(pFrom[0], 6, x, y) +
                                                     Level(pFrom[1], 7, x, y) * 6 +
                                                     Level(pFrom[2], 6, x, y) * 42);
            } else {
                const int nShift = 8 - nBits - x * nBits % 8;
                pRow[x * nBits / 8] = static_cast<unsigned char>(
                    pRow[x * nBits / 8] | Level(Grey(pFrom), nColours, x, y) << nShift);
            }
        }
    }
    const KelStatus status = pImage->Open();
    if (!status) {
        Fail("depth", status);
    }
    return pImage;
}

void ShowDepths(Sheet& sheet, int nY, const KelImagePtr& picture) {
    sheet.Write(kMargin, nY, "every depth that an image holds, read back as 24 bits", 2);
    nY += 26;
    constexpr int kDepths[] = {1, 4, 8, 16};
    for (int i = 0; i < 4; ++i) {
        KelImagePtr pImage = AtDepth(picture, kDepths[i]);
        Panel(sheet, i, nY, std::to_string(kDepths[i]) + (i == 0 ? " bit" : " bits") + " per pixel",
              pImage);
    }
    nY += kLabel + kHeight + 14;
    KelImagePtr pImage = Copy(picture);
    Panel(sheet, 0, nY, "24 bits per pixel", pImage);
    pImage->ChangeBitCount(32);
    Panel(sheet, 1, nY, "ChangeBitCount(32): 32 bits per pixel", pImage);
    pImage = AtDepth(picture, 8);
    pImage->SubImage(kWidth / 4, kHeight / 4, kWidth / 2, kHeight / 2);
    pImage->ZoomImage(kWidth, kHeight);
    Panel(sheet, 2, nY, "8 bits, SubImage, ZoomImage(264, 198)", pImage);
    pImage = AtDepth(picture, 4);
    pImage->SubImage(kWidth / 4, kHeight / 4, kWidth / 2, kHeight / 2);
    pImage->Rotate(0);
    Panel(sheet, 3, nY, "4 bits, SubImage, Rotate(0)", pImage);
}

void ShowFormats(Sheet& sheet, int nY, const KelImagePtr& picture) {
    sheet.Write(kMargin, nY, "saved and opened again", 2);
    nY += 26;
    struct Format {
        KelImageFormat eFormat;
        const char* pszName;
        int nQuality;
    };
    constexpr Format kFormats[] = {{KEL_IMAGE_BMP, "BMP", 0},
                                   {KEL_IMAGE_PNG, "PNG", 0},
                                   {KEL_IMAGE_JPEG, "JPEG, quality 75", 75},
                                   {KEL_IMAGE_JPEG, "JPEG, quality 10", 10}};
    int nColumn = 0;
    for (const Format& format : kFormats) {
        CVamArchiveMemory archive;
        KelImagePtr pImage = Checked(KelNewImage(), format.pszName);
        KelStatus status = picture->Save(&archive, format.eFormat,
                                         KelParameters{}.Set("quality", format.nQuality));
        archive.Seek(0, 0);
        if (status) {
            status = pImage->Open(&archive);
        }
        if (!status) {
            Fail(format.pszName, status);
        }
        Panel(sheet, nColumn++, nY,
              std::string(format.pszName) + ", " + std::to_string(archive.GetSize()) + " bytes",
              pImage);
    }
}

}  // namespace

int main(int argc, char** argv) {
    TakeUtf8Arguments(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: contactsheet IN OUT.png\n");
        return 2;
    }
    KelImagePtr pSource = Checked(KelNewImage(), "source");
    const KelStatus opened = pSource->Open(argv[1]);
    if (!opened) {
        Fail(argv[1], opened);
    }
    Sheet sheet(2 * kMargin + 4 * kPitch - 16, 2030);

    KelImagePtr pLarge =
        Checked(Scaled(pSource, 2 * kWidth, 2 * kHeight, KEL_SCALE_BILINEAR), "source");
    sheet.Write(kMargin, 16, "ikelex " IKELEX_VERSION_STRING, 3);
    sheet.Write(kMargin, 46,
                "source: " + SizeOf(pSource) + ", " + std::to_string(pSource->GetBitsPerPixel()) +
                    " bits per pixel",
                2);
    sheet.Place(kMargin, 70, *pLarge);
    const char* const kNotes[] = {
        "what to look for",
        "",
        "- bilinear and box keep edges clean.",
        "- gaussian blurs, at unchanged size too.",
        "- hamming is sharpest; where an edge",
        "  overshoots white or black, the value",
        "  wraps: single dots of a wrong colour.",
        "- Rotate transposes: rows become columns.",
        "- palette pictures stay palette pictures:",
        "  zooming one repeats or drops pixels.",
        "- 1, 4 and 8 bits are dithered by this",
        "  program; the library never dithers.",
    };
    int nNoteY = 80;
    for (const char* pszNote : kNotes) {
        sheet.Write(kMargin + 2 * kPitch, nNoteY, pszNote, 2);
        nNoteY += 26;
    }

    KelImagePtr pPicture = Checked(Scaled(pSource, kWidth, kHeight, KEL_SCALE_BILINEAR), "picture");
    ShowKernels(sheet, 490, pSource);
    ShowGeometry(sheet, 960, pPicture);
    ShowDepths(sheet, 1280, pPicture);
    ShowFormats(sheet, 1770, pPicture);
    const KelStatus saved = sheet.Save(argv[2]);
    if (!saved) {
        Fail(argv[2], saved);
    }
    return 0;
}
