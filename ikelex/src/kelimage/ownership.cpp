// Who owns the pixel buffer and the header block, the image or a caller who lent both.
//
// An image with lent buffers that needs one of its own takes ownership of both. It copies what it
// keeps of the caller's. The caller's memory stays as it was.
#include <algorithm>

#include "headerblock.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"

namespace {

// A run of bytes, up to the end of the address space. A run of 0 bytes or less counts as 1, because
// its address is in use.
struct Run {
    Run(const void* p, std::int64_t nBytes)
        : nBegin(reinterpret_cast<std::uintptr_t>(p)),
          nEnd(nBegin + static_cast<std::uintptr_t>(
                            std::min(static_cast<std::uint64_t>(std::max<std::int64_t>(nBytes, 1)),
                                     std::uint64_t{UINTPTR_MAX - nBegin}))) {}

    bool Meets(const Run& other) const { return nBegin < other.nEnd && other.nBegin < nEnd; }

    std::uintptr_t nBegin, nEnd;
};

std::int64_t PixelBytes(const BITMAPINFOHEADER& header) {
    return std::max(kel::RowBytes(header), kel::DataBytes(header));
}

}  // namespace

bool CKelImage::Owns(const void* p, std::int64_t nBytes) const {
    const Run asked(p, nBytes);
    const auto owns = [&](const void* pOwned, std::int64_t nOwned) {
        return pOwned != nullptr && asked.Meets(Run(pOwned, nOwned));
    };
    if (owns(this, sizeof *this) || owns(m_pPalette, std::int64_t{m_nPaletteSize} * 4) ||
        owns(m_ppLineArray, std::int64_t{m_bmih.biHeight} * std::int64_t{sizeof(void*)})) {
        return true;
    }
    // Before Open() the block describes the pixels, after it the image's header does.
    const bool bBlock = m_pBMI != nullptr && kel::IsSupportedHeader(m_pBMI->bmiHeader);
    const BITMAPINFOHEADER& block = bBlock ? m_pBMI->bmiHeader : m_bmih;
    return m_bOwnBuffers != 0 && (owns(m_pBits, std::max(PixelBytes(m_bmih), PixelBytes(block))) ||
                                  owns(m_pBMI, kel::HeaderBlockSize(block)));
}

bool CKelImage::AdoptBits(unsigned char* pNewBits) {
    if (m_bOwnBuffers != 0) {
        delete[] m_pBits;
    } else {
        BITMAPINFO* pCopy = nullptr;
        if (!kel::CopyHeaderBlock(m_pBMI, &pCopy)) {
            return false;
        }
        m_pBMI = pCopy;
        m_bOwnBuffers = 1;
    }
    m_pBits = pNewBits;
    return true;
}

bool CKelImage::CopyLentBits() {
    if (m_bOwnBuffers != 0) {
        return true;
    }
    // Without a header, and of run-length codes without biSizeImage, the length is unknown.
    const bool bRunLength = kel::IsRunLength(m_bmih);
    unsigned char* pCopy = nullptr;
    if (m_pBits != nullptr && m_bmih.biSize != 0 && (!bRunLength || m_bmih.biSizeImage != 0)) {
        const std::int64_t nRows = kel::RowBytes(m_bmih);
        const std::int64_t nData = bRunLength ? kel::DataBytes(m_bmih) : nRows;
        const std::int64_t nSize = std::max(nData, nRows);
        pCopy = kel::TryNewPixels(nSize);
        if (pCopy == nullptr) {
            return false;
        }
        kel::SecureCopy(kel::kSourceImage, pCopy, m_pBits, nData);
        std::fill(pCopy + nData, pCopy + nSize, std::uint8_t{0});
        PointRowsInto(pCopy);
        // Whoever opens the copy by this header reads so many bytes.
        m_bmih.biSizeImage = kel::Low32(std::min<std::int64_t>(m_bmih.biSizeImage, nSize));
    } else {
        DeleteLineArray();
    }
    m_pBits = pCopy;
    m_bOwnBuffers = 1;
    return true;
}
