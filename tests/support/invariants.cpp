#include "support/invariants.h"

#include "kelbitmap/strides.h"

namespace support {

testing::AssertionResult Consistent(const CKelImage& image) {
    const auto fault = [] { return testing::AssertionFailure(); };
    const BITMAPINFOHEADER& header = image.m_bmih;
    if (image.m_nPaletteNum < 0 || image.m_nPaletteNum > image.m_nPaletteSize ||
        (image.m_pPalette == nullptr) != (image.m_nPaletteSize == 0)) {
        return fault() << "palette " << image.m_nPaletteNum << " of " << image.m_nPaletteSize;
    }
    if (image.m_ppLineArray != nullptr && header.biHeight > 0) {
        if (image.m_pBits == nullptr) {
            return fault() << "rows without pixels";
        }
        const std::int64_t nStride = kel::RowStride(header.biBitCount, header.biWidth);
        for (std::int64_t i = 0; i < header.biHeight; ++i) {
            volatile unsigned char* pRow = image.m_ppLineArray[i];
            if (pRow != image.m_pBits + i * nStride) {
                return fault() << "row " << i << " is not at its place";
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
            return fault() << "the header block says " << block.biWidth << " x " << block.biHeight
                           << ", " << block.biBitCount << " bits; the header " << header.biWidth
                           << " x " << header.biHeight << ", " << header.biBitCount;
        }
    }
    return testing::AssertionSuccess();
}

}  // namespace support
