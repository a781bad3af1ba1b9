#include "fuzz.h"

#include "kelbitmap/strides.h"

namespace fuzz {

bool IsSmall(const std::uint8_t* pData, std::size_t nSize) {
    ClaimedSize claim;
    return ReadClaimedSize(pData, nSize, claim) && claim.nHeight <= 65536 &&
           claim.nWidth <= 65536 && claim.nBytes <= kMaxBytes;
}

KelImageFormat Signature(const std::uint8_t* pData, std::size_t nSize) {
    unsigned char first[4] = {};
    Input(pData, nSize).Fill(first, sizeof first);
    return CKelImage().DetectImageFormat(first, sizeof first);
}

void CheckResult(KelResult nResult) {
    const bool bKnown =
        (nResult >= 0 && nResult <= 6) || nResult == 8 || nResult == 11 || nResult == 1000;
    Require(bKnown, "a result code that is not documented");
}

void CheckImage(CKelImage& image) {
    const BITMAPINFOHEADER& header = *image.GetBitmapInfoHeader();
    unsigned char** ppRows = image.GetLineArray();
    Require(image.m_nPaletteNum >= 0 && image.m_nPaletteNum <= image.m_nPaletteSize,
            "palette count");
    unsigned int nSum = 0;
    for (int i = 0; i < image.m_nPaletteNum; i++)
        nSum += image.m_pPalette[i].byGreen;
    if (ppRows != nullptr) {
        Require(image.m_pBits != nullptr && header.biHeight >= 0, "rows without pixels");
        const auto nStride = kel::RowStride(header.biBitCount, header.biWidth);
        for (int y = 0; y < header.biHeight; y++) {
            Require(ppRows[y] == image.m_pBits + y * nStride, "row address");
            for (std::int64_t i = 0; i < nStride; i++)
                nSum = nSum * 31 + ppRows[y][i];
        }
        // Built, so that it is compared from now on after every operation.
        const BITMAPINFO* pBlock = image.GetBitmapInfo();
        // (A rejected header leaves its block as it is beside a zeroed header.)
        Require(pBlock == nullptr || header.biSize == 0 ||
                    (pBlock->bmiHeader.biWidth == header.biWidth &&
                     pBlock->bmiHeader.biHeight == header.biHeight &&
                     pBlock->bmiHeader.biBitCount == header.biBitCount),
                "header block and header");
    }
    asm volatile("" : : "r"(nSum));  // every byte above was read: the sanitizers have seen it
}

void MakeImage(CKelImage& image, Input& input) {
    constexpr int kDepths[] = {1, 4, 8, 16, 24, 32, 16, 32};
    const int nKind = input.Byte() % 8;
    const int nBits = kDepths[nKind];
    const int nWidth = input.Range(0, kMaxSide), nHeight = input.Range(0, kMaxSide);
    if (image.Create(nWidth, nHeight, nBits) == nullptr)
        return;
    const int nColours = nBits <= 8 ? input.Range(0, 1 << nBits) : nKind >= 6 ? 3 : 0;
    for (int i = 0; i < nColours; i++) {
        const unsigned char r = input.Byte(), g = input.Byte(), b = input.Byte();
        image.AddPaletteEntry(r, g, b, input.Byte());
    }
    if (nKind >= 6)
        image.m_bmih.biCompression = BI_BITFIELDS;
    const std::size_t nSize = image.GetBmpDataSize();
    for (std::size_t i = 0; i < nSize; i++)
        image.m_pBits[i] = input.Noise();
}

void Operate(CKelImage& image, Input& input) {
    static const KelImageFormat kFormats[] = {KEL_IMAGE_BMP, KEL_IMAGE_JPEG, KEL_IMAGE_PNG,
                                              KEL_IMAGE_GIF};
    switch (input.Byte() % 9) {
        case 0:
            image.ZoomImage(input.Range(-1, kMaxSide), input.Range(-1, kMaxSide));
            break;
        case 1: {
            const int nX = input.Range(-1, kMaxSide), nY = input.Range(-1, kMaxSide);
            image.SubImage(nX, nY, input.Range(-1, kMaxSide), input.Range(-1, kMaxSide));
            break;
        }
        case 2:
            image.Mirror(input.Byte() % 2);
            break;
        case 3:
            image.Rotate(0);
            break;
        case 4:
            image.ChangeBitCount(32);
            break;
        case 5: {
            tagKelParameterItem items[] = {{"width", CVamVariant(input.Range(-1, kMaxSide))},
                                           {"height", CVamVariant(input.Range(-1, kMaxSide))},
                                           {"type", CVamVariant(input.Range(0, 5))}};
            tagKelParameters params = {3, items};
            CheckResult(image.ApplyFilter(KEL_FILTER_SCALE, &params));
            break;
        }
        case 6: {
            tagKelParameterItem item = {"quality", CVamVariant(input.Range(-1, 101))};
            tagKelParameters params = {1, &item};
            CVamArchiveMemory archive;
            CheckResult(image.Save(&archive, kFormats[input.Byte() % 4], &params));
            break;
        }
        case 7: {
            Bytes line(static_cast<std::size_t>(kel::RowStride(24, image.GetWidth())));
            for (int y = -1; y <= image.GetHeight(); y++) {
                image.GetLine24AsBGRAt(y, line.data());
                image.GetLine24AsRGBAt(y, line.data());
            }
            break;
        }
        default:
            for (int n = input.Byte() % 20; n > 0; n--)
                image.AddPaletteEntry(1, 2, 3, 4);
    }
    CheckImage(image);
}

}  // namespace fuzz
