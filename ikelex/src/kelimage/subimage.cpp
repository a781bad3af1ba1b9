// SubImage moves the rectangle's rows to the front of the pixel buffer.
//
// A destination row starts at or before its source row and is never longer, so the rows can be
// moved in place from the top. Each passes through a scratch row, since it may overlap its source.
#include <algorithm>

#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"
#include "picturebuffer.h"

namespace {

struct Rectangle {
    int nX, nY, nWidth, nHeight;
};

// Moves the bits of pLine nShift places (below 8) towards its start. The free places at its end
// take the top bits of byNext.
void ShiftLeft(unsigned char* pLine, std::int64_t nBytes, int nShift, unsigned char byNext) {
    for (std::int64_t i = 0; i < nBytes; ++i) {
        const unsigned int nHigh = pLine[i], nNext = i + 1 < nBytes ? pLine[i + 1] : byNext;
        pLine[i] = kel::LowByte((nHigh << 8 | nNext) << nShift >> 8);
    }
}

// The work of CopyBytes. Without memory for the scratch row the result is false, traced, and
// nothing moves. A rectangle that is larger than the source or has a negative position gives true,
// and nothing moves.
bool MoveRectangle(int nBits, unsigned char* pBuffer, int nSrcWidth, int nSrcHeight,
                   const Rectangle& rect) {
    if (rect.nWidth > nSrcWidth || rect.nHeight > nSrcHeight || rect.nX < 0 || rect.nY < 0) {
        return true;
    }
    const std::int64_t nSrcStride = kel::RowStride(nBits, nSrcWidth);
    const std::int64_t nLine = kel::RowStride(nBits, rect.nWidth);
    const std::unique_ptr<unsigned char[]> pScratch = kel::NewScratch(nLine);
    if (pScratch == nullptr) {
        kel::TraceNull("lpLine");
        return false;
    }
    unsigned char* const lpLine = pScratch.get();

    // Depths below 8 bits may start inside a byte. The others count whole bytes.
    const std::int64_t nOffset =
        nBits < 8 ? std::int64_t{nBits} * rect.nX / 8 : std::int64_t{nBits / 8} * rect.nX;
    const int nShift = nBits < 8 ? nBits * (rect.nX % 8) % 8 : 0;
    const std::int64_t nEnd = nSrcStride * nSrcHeight;
    for (int nRow = 0; nRow < rect.nHeight; ++nRow) {
        // The row's padding comes from the bytes after the rectangle while the buffer has any.
        const std::int64_t nFrom =
            std::min((std::int64_t{rect.nY} + nRow) * nSrcStride + nOffset, nEnd);
        const std::int64_t nCopy = std::min(nEnd - nFrom, nLine);
        unsigned char* const pTo = pBuffer + nRow * nLine;
        kel::SecureCopy(kel::kSourceImage, lpLine, pBuffer + nFrom, nCopy);
        std::fill(lpLine + nCopy, lpLine + nLine, std::uint8_t{0});
        if (nShift != 0) {
            ShiftLeft(lpLine, nLine, nShift, nFrom + nLine < nEnd ? pBuffer[nFrom + nLine] : 0);
        }
        kel::SecureCopy(kel::kSourceImage, pTo, lpLine, nLine);
    }
    return true;
}

}  // namespace

void CKelImage::SubImage(int nX, int nY, int nWidth, int nHeight) {
    // The differences cannot overflow once the signs are known.
    if (m_pBits == nullptr || nX < 0 || nY < 0 || nWidth < 0 || nHeight < 0 ||
        nWidth > m_bmih.biWidth || nX > m_bmih.biWidth - nWidth || nHeight > m_bmih.biHeight ||
        nY > m_bmih.biHeight - nHeight) {
        return;
    }
    if (MoveRectangle(m_bmih.biBitCount, m_pBits, m_bmih.biWidth, m_bmih.biHeight,
                      {nX, nY, nWidth, nHeight})) {
        kel::SetPictureSize(this, nWidth, nHeight);
    }
}

void CKelImage::CopyBytes(int nBits, unsigned char* pBuffer, int nSrcWidth, int nSrcHeight, int nX,
                          int nY, int nWidth, int nHeight) const {
    MoveRectangle(nBits, pBuffer, nSrcWidth, nSrcHeight, {nX, nY, nWidth, nHeight});
}
