#include "geometry.h"

#include <platform/vamplatform.h>

#include <limits>
#include <new>

#include "../kelbitmap/strides.h"
#include "../kelmemory/kelmemory.h"
#include "../keltrace/keltrace.h"
#include "kelimage.h"

namespace kel {

std::unique_ptr<unsigned char[]> NewPicture(std::int64_t nSize) {
    if (nSize <= 0 || nSize > kTracedSizeLimit) {
        TraceInvalid("bufferSize", static_cast<unsigned int>(nSize));
    }
    if (nSize < 0 || nSize > std::numeric_limits<std::uint32_t>::max()) {
        return nullptr;
    }
    const auto nBytes = static_cast<std::size_t>(nSize);
    std::unique_ptr<unsigned char[]> pBits;
    try {
        pBits.reset(NewPixels(nBytes));
    } catch (...) {
        return nullptr;
    }
    CheckSecure(kSourceImage, memset_s(pBits.get(), nBytes, 0, nBytes));
    return pBits;
}

std::unique_ptr<unsigned char[]> NewScratch(std::int64_t nSize) {
    if (nSize < 0 || nSize > kMaxSize) {
        return nullptr;
    }
    return std::unique_ptr<unsigned char[]>(
        new (std::nothrow) unsigned char[static_cast<std::size_t>(nSize)]);
}

void SetPictureSize(CKelImage* pImage, int nWidth, int nHeight) {
    BITMAPINFOHEADER& header = pImage->m_bmih;
    header.biWidth = nWidth;
    header.biHeight = nHeight;
    header.biSizeImage = static_cast<unsigned int>(PictureSize(header.biBitCount, nWidth, nHeight));
    if (pImage->m_pBMI != nullptr) {
        BITMAPINFOHEADER& block = pImage->m_pBMI->bmiHeader;
        block.biWidth = header.biWidth;
        block.biHeight = header.biHeight;
        block.biSizeImage = header.biSizeImage;
    }
    pImage->DeleteLineArray();
    pImage->CreateLineArray();
}

}  // namespace kel
