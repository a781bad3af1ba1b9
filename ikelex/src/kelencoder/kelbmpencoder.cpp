// The BMP writer. A file has two headers, no colour table, and every row at 24 bits, the last one
// first. The image's header record and its 24-bit rows decide the bytes.
#include "kelbmpencoder.h"

#include <platform/vamplatform.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "kelbitmap/bmplayout.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/padding.h"
#include "kelbitmap/strides.h"
#include "kelimage/kelimage.h"
#include "kelimage/line24.h"
#include "keltrace/keltrace.h"

namespace {

constexpr int kBits = 24;
constexpr unsigned int kHeadersSize = kel::kBmpFileHeaderSize + kel::kBmpInfoHeaderSize;

// Widths whose rows at 24 bits cannot be counted in 31 bits are not written.
bool HasRows(int nWidth) {
    return nWidth >= 1 &&
           std::int64_t{nWidth} * kBits + 31 <= std::numeric_limits<std::int32_t>::max();
}

// The header of the rows that are written. The image's own stays as it is.
BITMAPINFOHEADER WrittenHeader(const BITMAPINFOHEADER& own, bool bIs24, unsigned int nRowsSize) {
    BITMAPINFOHEADER header = own;
    header.biBitCount = kBits;
    header.biClrUsed = 0;
    header.biClrImportant = 0;
    if (!bIs24 || own.biCompression == BI_RLE8 || own.biCompression == BI_RLE4) {
        header.biCompression = BI_RGB;
        header.biSizeImage = nRowsSize;
    }
    return header;
}

}  // namespace

CKelBMPEncoder::CKelBMPEncoder() = default;
CKelBMPEncoder::~CKelBMPEncoder() = default;

KelResult CKelBMPEncoder::Do(CVamArchive* pArchive, CKelImage* pImage) {
    const BITMAPINFO* pInfo = pImage->GetBitmapInfo();
    if (!pInfo) {
        return KEL_ERR_PARAM;
    }
    const int nHeight = pImage->GetHeight();
    const int nWidth = pImage->GetWidth();
    if (HasRows(nWidth) && nHeight > 0 && !pImage->GetLineArray()) {
        return KEL_ERR_MEMORY;
    }
    // The file's own sizes have 32 bits. Larger products wrap there.
    const auto nStride = kel::Low32(kel::RowStride(kBits, nWidth));
    const unsigned int nRowsSize = nStride * kel::Low32(nHeight);

    unsigned char fileHeader[kel::kBmpFileHeaderSize] = {};  // even when memset_s fails
    kel::SecureZero(kel::kSourceEncoder, fileHeader, sizeof(fileHeader));
    kel::Store16(fileHeader + kel::kBmpFileTypeAt, kel::kBmpFileType);
    kel::Store32(fileHeader + kel::kBmpFileSizeAt, nRowsSize + kHeadersSize);
    kel::Store32(fileHeader + kel::kBmpFileOffBitsAt, kHeadersSize);
    pArchive->Seek(0, 0);
    pArchive->Write(fileHeader, kel::kBmpFileHeaderSize);

    const BITMAPINFOHEADER header =
        WrittenHeader(pInfo->bmiHeader, pImage->GetBitsPerPixel() == kBits, nRowsSize);
    pArchive->Write(&header, kel::kBmpInfoHeaderSize);
    if (!HasRows(nWidth)) {
        return KEL_OK;
    }

    const std::unique_ptr<unsigned char[]> pRow(new (std::nothrow) unsigned char[nStride]());
    if (!pRow) {
        return KEL_ERR_MEMORY;
    }
    const kel::Line24Reader reader(pImage, kel::kOrderBGR);
    for (int nRow = nHeight - 1; nRow >= 0; --nRow) {
        kel::SecureZero(kel::kSourceEncoder, pRow.get(), nStride);
        reader.Read(nRow, pRow.get());
        // A row that was stored at 24 bits came with its own padding.
        kel::ClearPadding(pRow.get(), kBits, nWidth, 1);
        pArchive->Write(pRow.get(), nStride);
    }
    return KEL_OK;
}
