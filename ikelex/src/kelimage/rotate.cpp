// Rotate transposes the picture into a new buffer. kelgeometry/transpose.h defines the bytes.
#include "kelbitmap/strides.h"
#include "kelgeometry/transpose.h"
#include "kelimage.h"
#include "picturebuffer.h"

bool CKelImage::Rotate(int) {
    if (m_pBits == nullptr) {
        return false;
    }
    const int nBits = m_bmih.biBitCount;
    const int nWidth = m_bmih.biWidth;
    const int nHeight = m_bmih.biHeight;
    const bool bBits = nBits == 1 || nBits == 2 || nBits == 4;
    std::unique_ptr<unsigned char[]> pNew =
        kel::NewPicture(nBits, nHeight, nWidth, bBits || nBits % 8 == 0);
    if (pNew == nullptr) {
        return false;
    }
    const kel::Transposition work = {m_pBits,    kel::RowStride(nBits, nWidth), nWidth, nHeight,
                                     pNew.get(), kel::RowStride(nBits, nHeight)};
    if (nHeight == 0) {
        // Nothing to move, however many columns the header claims.
    } else if (bBits) {
        kel::TransposeBits(nBits, work);
    } else if (nBits >= 8) {
        kel::TransposePixels(kel::BestLevel(), nBits / 8, work, kel::LeavesCaches(work));
    }
    if (!AdoptBits(pNew.get())) {
        return false;
    }
    static_cast<void>(pNew.release());  // the image owns it now
    kel::SetPictureSize(this, nHeight, nWidth);
    return true;
}
