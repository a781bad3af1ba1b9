// Validation and sizes of header blocks. The header of 40 bytes decides both.
#include "headerblock.h"

#include <algorithm>

#include "kelbitmap/colortable.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"

namespace kel {

bool IsSupportedDepth(int nBitCount) {
    return nBitCount == 1 || nBitCount == 4 || nBitCount == 8 || nBitCount == 16 ||
           nBitCount == 24 || nBitCount == 32;
}

bool IsSupportedHeader(const BITMAPINFOHEADER& header) {
    return header.biSize == sizeof header && IsSupportedDepth(header.biBitCount) &&
           header.biCompression <= BI_BITFIELDS && header.biWidth >= 0 && header.biHeight >= 0;
}

std::size_t PixelsOfRow(const BITMAPINFOHEADER& header) {
    return AsSize(std::max<int>(header.biWidth, 0));
}

std::int64_t HeaderBlockSize(const BITMAPINFOHEADER& header) {
    return std::int64_t{ColorTableEntries(header)} * 4 + std::int64_t{sizeof header};
}

bool IsRunLength(const BITMAPINFOHEADER& header) {
    return header.biCompression == BI_RLE8 || header.biCompression == BI_RLE4;
}

std::int64_t RowBytes(const BITMAPINFOHEADER& header) {
    return PictureSize(header.biBitCount, header.biWidth, header.biHeight);
}

std::int64_t DataBytes(const BITMAPINFOHEADER& header) {
    return header.biSizeImage != 0 || IsRunLength(header) ? header.biSizeImage : RowBytes(header);
}

bool CopyHeaderBlock(const BITMAPINFO* pBlock, BITMAPINFO** ppCopy) {
    if (pBlock == nullptr || !IsSupportedHeader(pBlock->bmiHeader)) {
        *ppCopy = nullptr;
        return true;
    }
    const std::int64_t nSize = HeaderBlockSize(pBlock->bmiHeader);
    unsigned char* const pCopy = NewScratch(nSize).release();
    if (pCopy == nullptr) {
        return false;
    }
    SecureCopy(kSourceImage, pCopy, pBlock, nSize);
    *ppCopy = reinterpret_cast<BITMAPINFO*>(pCopy);
    return true;
}

}  // namespace kel
