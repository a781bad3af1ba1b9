// The JPEG writer, and the destination manager that passes libjpeg's output on.
//
// libjpeg's defaults and the quality decide the bytes.
#include "keljpegencoder.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include <platform/vamplatform.h>

#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelimage/kelimage.h"
#include "kelimage/line24.h"
#include "kelparameters/variantvalue.h"
#include "keltrace/keltrace.h"

namespace {

constexpr unsigned int kBlockSize = 4096;
constexpr int kDefaultQuality = 75;

// What jpeg_error_exit throws and Do catches.
struct WriteError {};

// A compressor that is destroyed on every way out, exceptions included. It starts zeroed, so that
// destroying it is harmless even when libjpeg refused to create it.
struct Compressor {
    Compressor() : info() {}
    Compressor(const Compressor&) = delete;
    Compressor& operator=(const Compressor&) = delete;
    ~Compressor() { jpeg_destroy_compress(&info); }

    jpeg_compress_struct info;
};

// Asks libjpeg to take blue, green, red where it can and the image stores them. These are the same
// samples in another order.
bool AskForBgr([[maybe_unused]] jpeg_compress_struct* pInfo, [[maybe_unused]] CKelImage* pImage) {
#if defined(JCS_EXTENSIONS)
    if (pImage->GetBitsPerPixel() == 24 && pImage->GetHeight() > 0) {
        pInfo->in_color_space = JCS_EXT_BGR;
        return true;
    }
#endif
    return false;
}

// Passes the image's own rows to libjpeg, as many at a time as it takes.
void WriteStoredRows(jpeg_compress_struct* pInfo, CKelImage* pImage) {
    while (pInfo->next_scanline < pInfo->image_height) {
        jpeg_write_scanlines(pInfo, pImage->GetLineArray() + pInfo->next_scanline,
                             pInfo->image_height - pInfo->next_scanline);
    }
}

// Passes every row to libjpeg, converted, top row first. A row the image cannot convert is black.
// When the height is negative, all are.
KelResult WriteRows(jpeg_compress_struct* pInfo, CKelImage* pImage) {
    const std::unique_ptr<unsigned char[]> pRow(pImage->CreateLine24());
    if (pRow == nullptr) {
        return KEL_ERR_MEMORY;
    }
    std::fill_n(pRow.get(), kel::RowStride(24, pImage->GetWidth()), std::uint8_t{0});
    const kel::Line24Reader reader(pImage, kel::kOrderRGB);
    for (JDIMENSION i = 0; i < pInfo->image_height; ++i) {
        reader.Read(static_cast<int>(i), pRow.get());
        JSAMPROW pScanline = pRow.get();
        jpeg_write_scanlines(pInfo, &pScanline, 1);
    }
    return KEL_OK;
}

CKelJpegDestMgr* DestinationOf(jpeg_compress_struct* pInfo) {
    return static_cast<CKelJpegDestMgr*>(pInfo->dest);
}

KelResult Encode(jpeg_compress_struct* pInfo, int nQuality, CKelImage* pImage) {
    const JDIMENSION nHeight = kel::Low32(pImage->GetHeight());
    pInfo->image_width = kel::Low32(pImage->GetWidth());
    pInfo->image_height = pImage->GetHeight() < 0 ? 0u - nHeight : nHeight;
    pInfo->input_components = 3;
    pInfo->in_color_space = JCS_RGB;
    const bool bStored = AskForBgr(pInfo, pImage);
    jpeg_set_defaults(pInfo);
    jpeg_set_quality(pInfo, nQuality, TRUE);
    jpeg_start_compress(pInfo, TRUE);
    if (bStored) {
        WriteStoredRows(pInfo, pImage);
    } else if (const KelResult nResult = WriteRows(pInfo, pImage); nResult != KEL_OK) {
        return nResult;
    }
    jpeg_finish_compress(pInfo);
    return KEL_OK;
}

}  // namespace

CKelJpegEncoder::CKelJpegEncoder() = default;

CKelJpegEncoder::~CKelJpegEncoder() = default;

KelResult CKelJpegEncoder::Do(CVamArchive* pArchive, CKelImage* pImage) {
    CKelJpegDestMgr destination(pArchive);
    const bool bRowsMissing = pImage->GetHeight() > 0 && pImage->GetLineArray() == nullptr;
    if (destination.m_pBuffer == nullptr || bRowsMissing) {
        return KEL_ERR_MEMORY;
    }
    jpeg_error_mgr errors;
    Compressor compressor;
    compressor.info.err = jpeg_std_error(&errors);
    errors.error_exit = &jpeg_error_exit;
    try {
        jpeg_create_compress(&compressor.info);
        compressor.info.dest = &destination;
        return Encode(&compressor.info, GetQualityParameter(), pImage);
    } catch (const WriteError&) {
        return KEL_ERR_CODEC;  // traced where it was thrown
    }
}

int CKelJpegEncoder::GetQualityParameter() {
    const CVamVariant* pValue = GetParameter("quality");
    return pValue == nullptr ? kDefaultQuality : kel::IntegerOf(*pValue).value_or(kDefaultQuality);
}

void CKelJpegEncoder::jpeg_error_exit(jpeg_common_struct* pInfo) {
    char szMessage[JMSG_LENGTH_MAX];
    pInfo->err->format_message(pInfo, szMessage);
    kel::TraceMessage("CKelJpegEncoder::jpeg_error_exit, err msg: ", szMessage);
    throw WriteError();
}

CKelJpegDestMgr::CKelJpegDestMgr(CVamArchive* pArchive)
    : jpeg_destination_mgr(),
      m_pBuffer(new (std::nothrow) unsigned char[kBlockSize]),
      m_pArchive(pArchive) {
    init_destination = &InitDestination;
    empty_output_buffer = &EmptyOutputBuffer;
    term_destination = &TermDestination;
}

CKelJpegDestMgr::~CKelJpegDestMgr() {
    m_pArchive = nullptr;
    delete[] m_pBuffer;
}

void CKelJpegDestMgr::InitDestination(jpeg_compress_struct* pInfo) {
    CKelJpegDestMgr* const pDestination = DestinationOf(pInfo);
    pDestination->next_output_byte = pDestination->m_pBuffer;
    pDestination->free_in_buffer = kBlockSize;
}

boolean CKelJpegDestMgr::EmptyOutputBuffer(jpeg_compress_struct* pInfo) {
    // libjpeg calls this when the block is full. Its own count of free bytes may be out of date
    // then.
    CKelJpegDestMgr* const pDestination = DestinationOf(pInfo);
    pDestination->m_pArchive->Write(pDestination->m_pBuffer, kBlockSize);
    InitDestination(pInfo);
    return TRUE;
}

void CKelJpegDestMgr::TermDestination(jpeg_compress_struct* pInfo) {
    CKelJpegDestMgr* const pDestination = DestinationOf(pInfo);
    const unsigned int nRest = kel::Low32(kBlockSize - pDestination->free_in_buffer);
    if (nRest != 0) {
        pDestination->m_pArchive->Write(pDestination->m_pBuffer, nRest);
    }
    pDestination->m_pArchive->Flush();
}
