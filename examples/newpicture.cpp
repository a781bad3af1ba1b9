// Makes a picture from a header block and a pixel buffer that the image allocates.
#include "newpicture.h"

#include <cstddef>
#include <utility>

KelImagePtr NewPicture(int nWidth, int nHeight, int nBits, int nColours) {
    KelImagePtr image = KelNewImage();
    const long long nStride = (1LL * nWidth * nBits + 31) / 32 * 4;
    if (image == nullptr || nStride * nHeight > 0x7FFFFFFF) {
        return nullptr;
    }
    const auto nColourBytes = sizeof(RGBQUAD) * static_cast<std::size_t>(nColours);
    BITMAPINFO* pInfo =
        image->AllocateBMI(static_cast<unsigned int>(sizeof(BITMAPINFOHEADER) + nColourBytes));
    if (pInfo == nullptr ||
        image->AllocateBits(static_cast<unsigned int>(nStride * nHeight)) == nullptr) {
        return nullptr;
    }
    pInfo->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    pInfo->bmiHeader.biWidth = nWidth;
    pInfo->bmiHeader.biHeight = nHeight;
    pInfo->bmiHeader.biPlanes = 1;
    pInfo->bmiHeader.biBitCount = static_cast<unsigned short>(nBits);
    pInfo->bmiHeader.biClrUsed = static_cast<unsigned int>(nColours);
    return image->Open() == KEL_OK ? std::move(image) : nullptr;
}
