// Rotate: the picture transposed into a new buffer.
#include "../kelbitmap/strides.h"
#include "geometry.h"
#include "kelimage.h"
#include "transpose.h"

bool CKelImage::Rotate(int) {
    if (m_pBits == nullptr) {
        return false;
    }
    const int nBits = m_bmih.biBitCount;
    const kel::Transposition shape = {m_pBits,        kel::RowStride(nBits, m_bmih.biWidth),
                                      m_bmih.biWidth, m_bmih.biHeight,
                                      nullptr,        kel::RowStride(nBits, m_bmih.biHeight)};
    std::unique_ptr<unsigned char[]> pNew =
        kel::NewPicture(kel::PictureSize(nBits, shape.nHeight, shape.nWidth));
    if (pNew == nullptr) {
        return false;
    }
    kel::Transposition work = shape;
    work.pDst = pNew.get();
    if (nBits >= 8) {
        kel::TransposePixels(kel::BestCpuLevel(), nBits / 8, work);
    } else if (nBits == 1 || nBits == 2 || nBits == 4) {
        kel::TransposeBits(nBits, work);
    }
    if (!ReplaceBits(pNew.get())) {
        return false;
    }
    static_cast<void>(pNew.release());  // the image owns it now
    kel::SetPictureSize(this, work.nHeight, work.nWidth);
    return true;
}
