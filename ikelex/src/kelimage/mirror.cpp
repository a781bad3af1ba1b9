// Mirror flips the picture upside down in its own buffer, through one scratch row.
#include <platform/vamplatform.h>

#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"
#include "picturebuffer.h"

namespace {

// Fetches a row ahead. The bottom rows come in descending order, which the processor does not
// foresee.
void PrefetchRow(const unsigned char* pRow, std::int64_t nBytes) {
    constexpr int kLine = 64;
    for (std::int64_t i = 0; i < nBytes; i += kLine) {
        __builtin_prefetch(pRow + i);
    }
}

}  // namespace

void CKelImage::Mirror(int nMode) {
    const std::int64_t nStride = kel::RowStride(m_bmih.biBitCount, m_bmih.biWidth);
    // With a stride over 31 bits there is room for one row only, and nothing to exchange.
    if (nMode != 0 || m_pBits == nullptr || nStride > kel::kMaxSize) {
        return;
    }
    MirrorBytes_V(m_pBits, static_cast<int>(nStride), m_bmih.biHeight);
}

void CKelImage::MirrorBytes_V(unsigned char* pBuffer, int nStride, int nRows) const {
    const std::unique_ptr<unsigned char[]> pScratch = kel::NewScratch(nStride);
    if (pScratch == nullptr) {
        kel::TraceNull("pRowByte");
        return;
    }
    unsigned char* const pRowByte = pScratch.get();
    // The middle row of an odd count stays where it is.
    for (int nTop = 0; nTop < nRows / 2; ++nTop) {
        unsigned char* const pTop = pBuffer + std::int64_t{nTop} * nStride;
        unsigned char* const pBottom = pBuffer + std::int64_t{nRows - 1 - nTop} * nStride;
        PrefetchRow(pBottom - nStride, nStride);
        kel::SecureCopy(kel::kSourceImage, pRowByte, pTop, nStride);
        kel::SecureCopy(kel::kSourceImage, pTop, pBottom, nStride);
        kel::SecureCopy(kel::kSourceImage, pBottom, pRowByte, nStride);
    }
}
