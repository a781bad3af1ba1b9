// The BMP reader.
//
// Header block and pixel rows are read into buffers of the final size, which the image then adopts.
// What the header claims is checked before it is allocated. What the stream does not deliver is
// zero, or is cut off where no row lies, so that no old memory reaches a picture.
#include "kelbmpdecoder.h"

#include <platform/vamplatform.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "kelbitmap/bmplayout.h"
#include "kelbitmap/colortable.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelimage/kelimage.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"

namespace {

using Buffer = std::unique_ptr<unsigned char[]>;

// Asks for nCount bytes once and returns how many arrived. A stream that answers -1, or more than
// it was asked for, delivered none.
unsigned int ReadOnce(CVamArchive* pArchive, void* pBuffer, unsigned int nCount) {
    constexpr unsigned int kMinusOne = std::numeric_limits<unsigned int>::max();
    const unsigned int nRead = pArchive->Read(pBuffer, nCount);
    return nRead <= nCount && nRead != kMinusOne ? nRead : 0;
}

// As ReadOnce. What did not arrive is zero.
void ReadOrZero(CVamArchive* pArchive, unsigned char* pBuffer, unsigned int nCount) {
    const unsigned int nRead = ReadOnce(pArchive, pBuffer, nCount);
    std::memset(pBuffer + nRead, 0, nCount - nRead);
}

// The header and its colour table, laid out as a BITMAPINFO, with room for nSize bytes.
struct HeaderBlock {
    Buffer pBytes;
    unsigned int nSize = 0;

    bool Allocate(unsigned int nBytes) {
        pBytes.reset(new (std::nothrow) unsigned char[nBytes]);
        nSize = nBytes;
        return pBytes != nullptr;
    }
    BITMAPINFO* Info() const { return reinterpret_cast<BITMAPINFO*>(pBytes.get()); }
    BITMAPINFOHEADER& Header() const { return Info()->bmiHeader; }
};

// The 40-byte header at nStart with its colour table, in one read. A table of too many entries is
// damage. For a depth that needs none it counts as empty.
KelResult ReadInfoBlock(CVamArchive* pArchive, unsigned int nStart, HeaderBlock& block) {
    BITMAPINFOHEADER header;
    ReadOrZero(pArchive, reinterpret_cast<unsigned char*>(&header), kel::kBmpInfoHeaderSize);
    pArchive->Seek(nStart, 0);
    const bool bTooMany = kel::ColorTableEntries(header) > kel::kMaxColorTableEntries;
    if (bTooMany && header.biBitCount <= 8) {
        return KEL_ERR_PARAM;
    }
    if (bTooMany) {
        header.biClrUsed = 0;
    }
    header.biSize = kel::kBmpInfoHeaderSize;
    if (!block.Allocate(IMG_GetBitmapInfoSize(&header))) {
        return KEL_ERR_MEMORY;
    }
    ReadOrZero(pArchive, block.pBytes.get(), block.nSize);
    if (bTooMany) {
        block.Header().biClrUsed = 0;
    }
    return KEL_OK;
}

// The 12-byte header, converted to a 40-byte one, and its colour table of 3-byte entries.
KelResult ReadCoreBlock(CVamArchive* pArchive, HeaderBlock& block) {
    unsigned char core[kel::kBmpCoreHeaderSize];
    ReadOrZero(pArchive, core, sizeof(core));
    BITMAPINFOHEADER header = {};
    header.biSize = kel::kBmpInfoHeaderSize;
    header.biWidth = kel::Load16(core + kel::kBmpCoreWidthAt);
    header.biHeight = kel::Load16(core + kel::kBmpCoreHeightAt);
    header.biPlanes = kel::Load16(core + kel::kBmpCorePlanesAt);
    header.biBitCount = kel::Load16(core + kel::kBmpCoreBitCountAt);
    if (!block.Allocate(IMG_GetBitmapInfoSize(&header))) {
        return KEL_ERR_MEMORY;
    }
    kel::SecureCopy(kel::kSourceDecoder, block.Info(), &header, sizeof(header));

    const unsigned int nEntries = (block.nSize - kel::kBmpInfoHeaderSize) / kel::kBmpQuadSize;
    if (nEntries > 0) {
        unsigned char triples[256 * kel::kBmpTripleSize];
        ReadOrZero(pArchive, triples, nEntries * kel::kBmpTripleSize);
        unsigned char* pEntry = block.pBytes.get() + kel::kBmpInfoHeaderSize;
        for (unsigned int i = 0; i < nEntries; ++i, pEntry += kel::kBmpQuadSize) {
            std::memcpy(pEntry, triples + i * kel::kBmpTripleSize, kel::kBmpTripleSize);
            pEntry[kel::kBmpTripleSize] = 0;
        }
    }
    return KEL_OK;
}

// Whether the sizes a header gives can be computed with and held, and its colour table lies inside
// the block. The block was read after the header that sized it, and a stream may change in between.
bool IsSound(const HeaderBlock& block) {
    const BITMAPINFOHEADER& header = block.Header();
    if (header.biWidth < 0 || header.biHeight == std::numeric_limits<int>::min()) {
        return false;
    }
    const std::int64_t nHeight = std::abs(header.biHeight);
    if (kel::PictureSize(header.biBitCount, header.biWidth, nHeight) > kel::kMaxSize) {
        return false;
    }
    const unsigned int nRoom = (block.nSize - kel::kBmpInfoHeaderSize) / kel::kBmpQuadSize;
    return kel::ColorTableEntries(header) <= nRoom;
}

// Whether OpenAs will take the header.
bool IsSupported(const BITMAPINFOHEADER& header, const CKelImage& image) {
    return image.IsValidPixelDepth(header.biBitCount) &&
           image.IsValidWINCompression(header.biCompression) &&
           header.biSize == kel::kBmpInfoHeaderSize;
}

// nSize bytes of pixel data for a header that will be refused. They are read in growing pieces, so
// that beyond a small first piece no more than twice what arrives is allocated. Null when a piece
// other than the last does not arrive in full. What is missing of the last is zero.
Buffer ReadRefusedPixels(CVamArchive* pArchive, unsigned int nSize) {
    constexpr unsigned int kFirstPiece = 1 << 16;
    Buffer pPixels;
    unsigned int nHeld = 0;
    do {
        const unsigned int nNext =
            std::min(nSize, std::max(kFirstPiece, nHeld > nSize / 2 ? nSize : nHeld * 2));
        Buffer pLarger(new (std::nothrow) unsigned char[nNext]());
        if (!pLarger) {
            return nullptr;
        }
        std::copy_n(pPixels.get(), nHeld, pLarger.get());
        const unsigned int nRead = ReadOnce(pArchive, pLarger.get() + nHeld, nNext - nHeld);
        if (nRead < nNext - nHeld && nNext < nSize) {
            return nullptr;
        }
        pPixels = std::move(pLarger);
        nHeld = nNext;
    } while (nHeld < nSize);
    return pPixels;
}

// The pixel data, header.biSizeImage bytes in one read, in a buffer that covers all nRows bytes of
// rows. Bytes of rows that did not arrive are zero. Beyond the rows biSizeImage is cut to what
// arrived. Null when the buffer cannot be allocated.
Buffer ReadPixels(CVamArchive* pArchive, BITMAPINFOHEADER& header, unsigned int nRows) {
    Buffer pPixels(kel::TryNewPixels(std::max<unsigned int>(header.biSizeImage, nRows)));
    if (pPixels) {
        const unsigned int nRead = ReadOnce(pArchive, pPixels.get(), header.biSizeImage);
        header.biSizeImage = std::min<unsigned int>(header.biSizeImage, std::max(nRead, nRows));
        if (nRead < nRows) {
            std::memset(pPixels.get() + nRead, 0, nRows - nRead);
        }
    }
    return pPixels;
}

// Reverses the order of the rows in place. False when the temporary row cannot be allocated.
bool ReverseRows(unsigned char* pPixels, std::int64_t nStride, int nHeight) {
    const Buffer pRow = kel::NewScratch(nStride);
    if (!pRow) {
        return false;
    }
    unsigned char* pUpper = pPixels;
    unsigned char* pLower = pPixels + nStride * (nHeight - 1);
    for (; pUpper < pLower; pUpper += nStride, pLower -= nStride) {
        kel::SecureCopy(kel::kSourceDecoder, pRow.get(), pUpper, nStride);
        kel::SecureCopy(kel::kSourceDecoder, pUpper, pLower, nStride);
        kel::SecureCopy(kel::kSourceDecoder, pLower, pRow.get(), nStride);
    }
    return true;
}

// The header block. On success its sizes can be computed with, and its colour table lies inside it.
KelResult ReadHeaderBlock(CVamArchive* pArchive, HeaderBlock& block) {
    const auto nStart = kel::Low32(pArchive->GetPosition());
    unsigned char headerSize[4];
    ReadOrZero(pArchive, headerSize, sizeof(headerSize));
    pArchive->Seek(nStart, 0);
    const KelResult nResult = kel::Load32(headerSize) == kel::kBmpInfoHeaderSize
                                  ? ReadInfoBlock(pArchive, nStart, block)
                                  : ReadCoreBlock(pArchive, block);
    return nResult == KEL_OK && !IsSound(block) ? KEL_ERR_PARAM : nResult;
}

// The rows that the header describes, from where the stream stands, in top-down order. The header
// then describes what was read. KEL_OK without pixels is for a header that will be refused.
KelResult ReadRows(CVamArchive* pArchive, BITMAPINFOHEADER& header, bool bSupported,
                   Buffer& pPixels) {
    const int nHeight = std::abs(header.biHeight);
    const std::int64_t nStride = kel::RowStride(header.biBitCount, header.biWidth);
    const auto nRows = kel::Low32(nStride * nHeight);
    const bool bUncompressed =
        header.biCompression == BI_RGB || header.biCompression == BI_BITFIELDS;
    if (header.biSizeImage == 0 || (bUncompressed && header.biSizeImage < nRows)) {
        header.biSizeImage = nRows;
    }
    if (bSupported) {
        if (std::int64_t{nHeight} * std::int64_t{sizeof(unsigned char*)} > kel::kMaxSize) {
            kel::TraceNull("m_ppLineArray");  // no row array is as long
            return KEL_ERR_MEMORY;
        }
        pPixels = ReadPixels(pArchive, header, nRows);
        if (!pPixels) {
            return KEL_ERR_MEMORY;
        }
    } else {
        pPixels = ReadRefusedPixels(pArchive, std::max<unsigned int>(header.biSizeImage, nRows));
    }
    if (pPixels && header.biHeight > 1 && bUncompressed && nStride > 0 &&
        !ReverseRows(pPixels.get(), nStride, nHeight)) {
        return KEL_ERR_MEMORY;
    }
    header.biHeight = nHeight;
    return KEL_OK;
}

// Everything up to the two buffers the image adopts.
KelResult ReadBitmap(CVamArchive* pArchive, const CKelImage& image, HeaderBlock& block,
                     Buffer& pPixels) {
    unsigned char fileHeader[kel::kBmpFileHeaderSize];
    ReadOrZero(pArchive, fileHeader, sizeof(fileHeader));
    if (const KelResult nResult = ReadHeaderBlock(pArchive, block); nResult != KEL_OK) {
        return nResult;
    }
    pArchive->Seek(kel::Load32(fileHeader + kel::kBmpFileOffBitsAt), 0);
    BITMAPINFOHEADER& header = block.Header();
    return ReadRows(pArchive, header, IsSupported(header, image), pPixels);
}

}  // namespace

CKelBMPDecoder::CKelBMPDecoder() = default;
CKelBMPDecoder::~CKelBMPDecoder() = default;

KelResult CKelBMPDecoder::Do(CVamArchive* pArchive, CKelImage* pImage) {
    HeaderBlock block;
    Buffer pPixels;
    KelResult nResult = ReadBitmap(pArchive, *pImage, block, pPixels);
    pImage->Clean();
    if (nResult != KEL_OK) {
        return nResult;
    }
    const bool bTable = kel::ColorTableEntries(block.Header()) > 0;
    nResult =
        pImage->OpenAs(reinterpret_cast<BITMAPINFO*>(block.pBytes.release()), pPixels.release(), 1);
    if (nResult == KEL_OK && (!pImage->GetLineArray() || (bTable && !pImage->GetPalette()))) {
        pImage->Clean();
        return KEL_ERR_MEMORY;
    }
    return nResult;
}
