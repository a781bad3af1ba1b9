// The pixel buffer and the size of a picture whose shape changes.
#include "picturebuffer.h"

#include <limits>

#include "kelbitmap/integers.h"
#include "kelbitmap/padding.h"
#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"

namespace kel {

std::unique_ptr<unsigned char[]> NewPicture(int nBits, int nWidth, int nHeight, bool bOverwritten) {
    const std::int64_t nSize = PictureSize(nBits, nWidth, nHeight);
    if (nSize <= 0 || nSize > kTracedSizeLimit) {
        TraceInvalid("bufferSize", Low32(nSize));
    }
    std::unique_ptr<unsigned char[]> pBits;
    if (nWidth < 0 || nHeight < 0 || nSize > std::numeric_limits<std::uint32_t>::max()) {
        return pBits;
    }
    try {
        pBits.reset(NewPixels(nSize));
    } catch (...) {
        return pBits;
    }
    // The last row is zeroed whole, so that the bounded memory function is asked, and traced, once.
    const std::int64_t nCleared = bOverwritten && nHeight > 0 ? RowStride(nBits, nWidth) : nSize;
    SecureZero(kSourceImage, pBits.get() + nSize - nCleared, nCleared);
    if (bOverwritten) {
        ClearPadding(pBits.get(), nBits, nWidth, nHeight);
    }
    return pBits;
}

void SetPictureSize(CKelImage* pImage, int nWidth, int nHeight) {
    BITMAPINFOHEADER& header = pImage->m_bmih;
    header.biWidth = nWidth;
    header.biHeight = nHeight;
    header.biSizeImage = Low32(PictureSize(header.biBitCount, nWidth, nHeight));
    // A block that Open() refused, the image's header being zero, may be shorter than a header.
    if (pImage->m_pBMI != nullptr && header.biSize != 0) {
        BITMAPINFOHEADER& block = pImage->m_pBMI->bmiHeader;
        block.biWidth = header.biWidth;
        block.biHeight = header.biHeight;
        block.biSizeImage = header.biSizeImage;
    }
    pImage->CreateLineArray();
}

}  // namespace kel
