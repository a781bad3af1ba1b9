// ZoomImage resizes the picture in place. Each pixel is sampled from up to four of the source.
// kelgeometry/zoom.h defines the bytes.
#include <algorithm>

#include "kelbitmap/strides.h"
#include "kelgeometry/zoom.h"
#include "kelimage.h"
#include "keltrace/keltrace.h"
#include "picturebuffer.h"

namespace {

// The widest destination row that passes the check. Wider ones are traced and still sampled.
constexpr int kTracedWidthLimit = 80 * 1024;

// Whether every pixel of such a depth is written.
bool IsZoomed(int nBits) {
    return nBits == 1 || nBits == 4 || nBits == 8 || nBits == 16 || nBits == 24 || nBits == 32;
}

// The work of ZoomBytes. False when nothing was written.
bool Sample(int nBits, const kel::Zoom& zoom) {
    if (zoom.nDstWidth == 0 || zoom.nDstWidth > kTracedWidthLimit) {
        kel::TraceInvalid("nDstWidth", zoom.nDstWidth);
    }
    if (zoom.nDstWidth <= 0 || zoom.nDstHeight <= 0 || zoom.nSrcWidth <= 0 ||
        zoom.nSrcHeight <= 0) {
        return false;
    }
    try {
        kel::ZoomPicture(kel::BestLevel(), nBits, zoom);
        return true;
    } catch (...) {
        return false;  // no memory for the sampling tables
    }
}

}  // namespace

void CKelImage::ZoomImage(int nWidth, int nHeight) {
    if (nWidth <= 0 || nHeight <= 0 || m_pBits == nullptr || m_bmih.biWidth <= 0 ||
        m_bmih.biHeight <= 0) {
        return;
    }
    const int nBits = m_bmih.biBitCount;
    std::unique_ptr<unsigned char[]> pNew =
        kel::NewPicture(nBits, nWidth, nHeight, IsZoomed(nBits));
    if (pNew == nullptr) {
        return;
    }
    if (!Sample(nBits, {m_pBits, m_bmih.biWidth, m_bmih.biHeight, pNew.get(), nWidth, nHeight})) {
        std::fill_n(pNew.get(), kel::PictureSize(nBits, nWidth, nHeight), std::uint8_t{0});
    }
    if (!AdoptBits(pNew.get())) {
        return;
    }
    static_cast<void>(pNew.release());  // the image owns it now
    kel::SetPictureSize(this, nWidth, nHeight);
}

void CKelImage::ZoomBytes(int nBits, unsigned char* pSrc, int nSrcWidth, int nSrcHeight,
                          unsigned char* pDst, int nDstWidth, int nDstHeight) const {
    Sample(nBits, {pSrc, nSrcWidth, nSrcHeight, pDst, nDstWidth, nDstHeight});
}
