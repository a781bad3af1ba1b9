// Looks at an image through its public members, the way a host can.
#include "support/inspect.h"

#include <algorithm>

namespace support {

std::string FaultOf(const CKelImage& image) {
    const BITMAPINFOHEADER& header = image.m_bmih;
    if (image.m_nPaletteNum < 0 || image.m_nPaletteNum > image.m_nPaletteSize ||
        (image.m_pPalette == nullptr) != (image.m_nPaletteSize == 0)) {
        return "the palette's counts";
    }
    if (image.m_ppLineArray != nullptr && header.biHeight > 0) {
        if (image.m_pBits == nullptr) {
            return "rows without pixels";
        }
        const std::int64_t nStride = kel::RowStride(header.biBitCount, header.biWidth);
        for (std::int64_t i = 0; i < header.biHeight; ++i) {
            volatile unsigned char* pRow = image.m_ppLineArray[i];
            if (pRow != image.m_pBits + i * nStride) {
                return "row " + std::to_string(i) + " is not at its place";
            }
            if (nStride > 0) {
                static_cast<void>(pRow[0] + pRow[nStride - 1]);
            }
        }
    }
    if (image.m_pBMI != nullptr && image.m_pBMI->bmiHeader.biSize == 40 && header.biSize == 40) {
        const BITMAPINFOHEADER& block = image.m_pBMI->bmiHeader;
        if (block.biWidth != header.biWidth || block.biHeight != header.biHeight ||
            block.biBitCount != header.biBitCount || block.biSizeImage != header.biSizeImage) {
            return "header block and header disagree";
        }
    }
    return "";
}

Bytes Snapshot(const CKelImage& image) {
    Bytes all;
    const auto Append = [&all](const void* p, std::size_t nSize) {
        const auto* pBytes = static_cast<const unsigned char*>(p);
        all.insert(all.end(), pBytes, pBytes + nSize);
    };
    Append(&image.m_bmih, sizeof image.m_bmih);
    Append(image.m_pPalette, static_cast<std::size_t>(image.m_nPaletteNum) * 4);
    if (image.m_ppLineArray != nullptr) {
        const Rows rows = RowsOf(image);
        Append(rows.bytes.data(), rows.bytes.size());
    }
    return all;
}

void FillImage(CKelImage* pImage, const Rows& rows) {
    pImage->Clean();
    pImage->Create(rows.nWidth, rows.nHeight, rows.nBits);
    std::copy(rows.bytes.begin(), rows.bytes.end(), pImage->GetBits());
    pImage->GetBitmapInfo();
}

Rows RowsOf(const CKelImage& image) {
    const BITMAPINFOHEADER& header = image.m_bmih;
    Rows rows = BlackRows(header.biBitCount, header.biWidth, header.biHeight);
    std::copy_n(image.m_pBits, rows.bytes.size(), rows.bytes.begin());
    return rows;
}

bool Shows(const CKelImage& image, const Rows& rows) {
    return image.m_ppLineArray != nullptr && RowsOf(image) == rows && FaultOf(image).empty();
}

}  // namespace support
