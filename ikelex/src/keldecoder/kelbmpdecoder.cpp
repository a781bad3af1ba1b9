// The BMP reader.
//
// Header block and pixel rows are read into buffers of the final size, which the image then adopts.
// What the file claims is checked before it is allocated or used; what the stream does not deliver
// of header, colour table and rows is zero, so that no old memory reaches a picture.
#include "kelbmpdecoder.h"

#include <platform/vamplatform.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "../kelbitmap/bmplayout.h"
#include "../kelbitmap/colortable.h"
#include "../kelbitmap/strides.h"
#include "../kelimage/kelimage.h"
#include "../kelmemory/kelmemory.h"
#include "../keltrace/keltrace.h"

namespace {

using Buffer = std::unique_ptr<unsigned char[]>;

// Asks for nCount bytes once and returns how many arrived; a count above that is none.
unsigned int ReadOnce(CVamArchive* pArchive, void* pBuffer, unsigned int nCount) {
    const unsigned int nRead = pArchive->Read(pBuffer, nCount);
    return nRead <= nCount ? nRead : 0;
}

// As ReadOnce; what did not arrive is zero.
void ReadOrZero(CVamArchive* pArchive, unsigned char* pBuffer, unsigned int nCount) {
    const unsigned int nRead = ReadOnce(pArchive, pBuffer, nCount);
    std::memset(pBuffer + nRead, 0, nCount - nRead);
}

// The header and its colour table, laid out as a BITMAPINFO, with room for nSize bytes.
struct HeaderBlock {
    Buffer pBytes;
    unsigned int nSize = 0;

    bool Allocate(unsigned int nBytes) {
        pBytes.reset(new (std::nothrow) unsigned char[nBytes]());
        nSize = nBytes;
        return pBytes != nullptr;
    }
    BITMAPINFO* Info() const { return reinterpret_cast<BITMAPINFO*>(pBytes.get()); }
    BITMAPINFOHEADER& Header() const { return Info()->bmiHeader; }
};

// The 40-byte header at nStart with its colour table, in one read.
KelResult ReadInfoBlock(CVamArchive* pArchive, unsigned int nStart, HeaderBlock& block) {
    BITMAPINFOHEADER header;
    ReadOrZero(pArchive, reinterpret_cast<unsigned char*>(&header), kel::kBmpInfoHeaderSize);
    pArchive->Seek(nStart, 0);
    if (kel::ColorTableEntries(header) > kel::kMaxColorTableEntries) {
        return KEL_ERR_PARAM;
    }
    header.biSize = kel::kBmpInfoHeaderSize;
    if (!block.Allocate(IMG_GetBitmapInfoSize(&header))) {
        return KEL_ERR_MEMORY;
    }
    ReadOrZero(pArchive, block.pBytes.get(), block.nSize);
    return KEL_OK;
}

// The 12-byte header, turned into a 40-byte one, and its colour table of 3-byte entries.
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
    constexpr std::size_t nSize = sizeof(header);
    kel::CheckSecure(kel::kSourceDecoder, memcpy_s(block.Info(), nSize, &header, nSize));

    const unsigned int nEntries = (block.nSize - kel::kBmpInfoHeaderSize) / kel::kBmpQuadSize;
    if (nEntries > 0) {
        unsigned char triples[256 * kel::kBmpTripleSize];
        ReadOrZero(pArchive, triples, nEntries * kel::kBmpTripleSize);
        unsigned char* pEntry = block.pBytes.get() + kel::kBmpInfoHeaderSize;
        for (unsigned int i = 0; i < nEntries; ++i, pEntry += kel::kBmpQuadSize) {
            std::memcpy(pEntry, triples + i * kel::kBmpTripleSize, kel::kBmpTripleSize);
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

bool IsUncompressed(const BITMAPINFOHEADER& header) {
    return header.biCompression == BI_RGB || header.biCompression == BI_BITFIELDS;
}

// Whether the image will find memory for its row array beside the pixels. Asked before time is
// spent on reading and turning the rows, and only for heights at which that time counts.
bool HasRoomForRowArray(int nHeight) {
    constexpr std::int64_t kManyRows = 1 << 20;
    const std::int64_t nRows = std::abs(nHeight);
    const std::int64_t nBytes = nRows * std::int64_t{sizeof(unsigned char*)};
    if (nRows < kManyRows || (nBytes <= kel::kMaxSize &&
                              Buffer(kel::NewPixelsNothrow(static_cast<std::size_t>(nBytes))))) {
        return true;
    }
    kel::TraceNull("m_ppLineArray");
    return false;
}

// The pixel data, biSizeImage bytes in one read; biSizeImage is settled first when it is 0 or, for
// uncompressed rows, too small. The buffer covers every row, and bytes of rows that did not arrive
// are zero. Null when it cannot be had.
Buffer ReadPixels(CVamArchive* pArchive, BITMAPINFOHEADER& header) {
    const auto nRows = static_cast<unsigned int>(
        kel::PictureSize(header.biBitCount, header.biWidth, std::abs(header.biHeight)));
    if (header.biSizeImage == 0 || (IsUncompressed(header) && header.biSizeImage < nRows)) {
        header.biSizeImage = nRows;
    }
    Buffer pPixels(kel::TryNewPixels(std::max(header.biSizeImage, nRows)));
    if (!pPixels || !HasRoomForRowArray(header.biHeight)) {
        return nullptr;
    }
    const unsigned int nRead = ReadOnce(pArchive, pPixels.get(), header.biSizeImage);
    if (nRead < nRows) {
        std::memset(pPixels.get() + nRead, 0, nRows - nRead);
    }
    return pPixels;
}

// Turns bottom-up rows into top-down ones, in place. False when the temporary row cannot be had.
bool ReverseRows(unsigned char* pPixels, std::size_t nStride, int nHeight) {
    const Buffer pRow(new (std::nothrow) unsigned char[nStride]);
    if (!pRow) {
        return false;
    }
    unsigned char* pUpper = pPixels;
    unsigned char* pLower = pPixels + nStride * static_cast<std::size_t>(nHeight - 1);
    for (; pUpper < pLower; pUpper += nStride, pLower -= nStride) {
        kel::CheckSecure(kel::kSourceDecoder, memcpy_s(pRow.get(), nStride, pUpper, nStride));
        kel::CheckSecure(kel::kSourceDecoder, memcpy_s(pUpper, nStride, pLower, nStride));
        kel::CheckSecure(kel::kSourceDecoder, memcpy_s(pLower, nStride, pRow.get(), nStride));
    }
    return true;
}

// Everything up to the two buffers the image adopts.
KelResult ReadBitmap(CVamArchive* pArchive, HeaderBlock& block, Buffer& pPixels) {
    unsigned char fileHeader[kel::kBmpFileHeaderSize];
    ReadOrZero(pArchive, fileHeader, sizeof(fileHeader));

    const auto nStart = static_cast<unsigned int>(pArchive->GetPosition());
    unsigned char headerSize[4];
    ReadOrZero(pArchive, headerSize, sizeof(headerSize));
    pArchive->Seek(nStart, 0);
    const KelResult nResult = kel::Load32(headerSize) == kel::kBmpInfoHeaderSize
                                  ? ReadInfoBlock(pArchive, nStart, block)
                                  : ReadCoreBlock(pArchive, block);
    if (nResult != KEL_OK) {
        return nResult;
    }
    if (!IsSound(block)) {
        return KEL_ERR_PARAM;
    }

    pArchive->Seek(kel::Load32(fileHeader + kel::kBmpFileOffBitsAt), 0);
    BITMAPINFOHEADER& header = block.Header();
    pPixels = ReadPixels(pArchive, header);
    if (!pPixels) {
        return KEL_ERR_MEMORY;
    }
    const auto nStride =
        static_cast<std::size_t>(kel::RowStride(header.biBitCount, header.biWidth));
    if (header.biHeight > 1 && IsUncompressed(header) && nStride > 0 &&
        !ReverseRows(pPixels.get(), nStride, header.biHeight)) {
        return KEL_ERR_MEMORY;
    }
    header.biHeight = std::abs(header.biHeight);
    return KEL_OK;
}

}  // namespace

CKelBMPDecoder::CKelBMPDecoder() = default;
CKelBMPDecoder::~CKelBMPDecoder() = default;

KelResult CKelBMPDecoder::Do(CVamArchive* pArchive, CKelImage* pImage) {
    HeaderBlock block;
    Buffer pPixels;
    KelResult nResult = ReadBitmap(pArchive, block, pPixels);
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
