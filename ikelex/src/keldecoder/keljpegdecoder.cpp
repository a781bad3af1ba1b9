// The JPEG reader, its libjpeg error handler, and the source manager that feeds libjpeg.
//
// libjpeg's defaults decide the samples. Rows are decoded into the image's own rows, blue first.
#include "keljpegdecoder.h"

#include <algorithm>
#include <cstdint>
#include <new>

#include <jerror.h>
#include <platform/vamplatform.h>

#include "kelbitmap/integers.h"
#include "kelbitmap/rows.h"
#include "kelbitmap/strides.h"
#include "kelimage/kelimage.h"
#include "keltrace/keltrace.h"

namespace {

constexpr unsigned int kBlockSize = 4096;

// A decompressor that is destroyed on every way out, exceptions included. It starts zeroed, so that
// destroying it is harmless even when libjpeg refused to create it.
struct Decompressor {
    Decompressor() : info() {}
    Decompressor(const Decompressor&) = delete;
    Decompressor& operator=(const Decompressor&) = delete;
    ~Decompressor() { jpeg_destroy_decompress(&info); }

    jpeg_decompress_struct info;
};

// Writes the detail line of a decode.
void TraceDecode() {
    if (zt_trace_level() > 1) {
        ZT_Text_Stream stream(1024, 32);
        constexpr unsigned int nSize = sizeof(jpeg_decompress_struct);
        stream << "CKelJpegDecoder::Do, jpeg_decompress_struct:" << nSize;
        zt_trace_write(2, stream.GetText(), 0);
    }
}

// Asks for blue, green, red where libjpeg can deliver it. These are the same samples in the order
// the image stores them. Elsewhere the rows are reversed after they are read.
bool AskForBgr([[maybe_unused]] jpeg_decompress_struct* pInfo) {
#if defined(JCS_EXTENSIONS)
    if (pInfo->out_color_space == JCS_RGB) {
        pInfo->out_color_space = JCS_EXT_BGR;
        return true;
    }
#endif
    return false;
}

// Zeroes the rows that libjpeg did not reach, however it is left.
class UnreadRows {
  public:
    UnreadRows(const jpeg_decompress_struct* pInfo, CKelImage* pImage)
        : m_pInfo(pInfo), m_pImage(pImage) {}
    UnreadRows(const UnreadRows&) = delete;
    UnreadRows& operator=(const UnreadRows&) = delete;
    ~UnreadRows() { m_pImage->ClearRowsFrom(static_cast<int>(m_pInfo->output_scanline)); }

  private:
    const jpeg_decompress_struct* m_pInfo;
    CKelImage* m_pImage;
};

// Where libjpeg writes the next few rows of a small picture. Rows that start on a 32-byte boundary
// are decoded beside the picture and copied. libjpeg's vector loops write such rows past the
// caches, which is slow for a picture that the caches could hold.
class RowTargets {
  public:
    static constexpr JDIMENSION kRows = 4;  // libjpeg delivers no more at a time
    static constexpr std::int64_t kSmallPicture = 4 << 20;
    static constexpr std::int64_t kSmallRow = 4096;

    unsigned char** Of(unsigned char** ppRows, JDIMENSION nRows) {
        for (JDIMENSION i = 0; i < nRows; ++i) {
            const bool bBeside = reinterpret_cast<std::uintptr_t>(ppRows[i]) % kBoundary == 0;
            m_aTargets[i] = bBeside ? m_aScratch[i] + kBoundary / 2 : ppRows[i];
        }
        return m_aTargets;
    }
    void Store(unsigned char** ppRows, JDIMENSION nRows, std::int64_t nBytes) const {
        for (JDIMENSION i = 0; i < nRows; ++i) {
            if (m_aTargets[i] != ppRows[i]) {
                std::copy_n(m_aTargets[i], nBytes, ppRows[i]);
            }
        }
    }

  private:
    static constexpr std::size_t kBoundary = 32;
    alignas(kBoundary) unsigned char m_aScratch[kRows][kSmallRow + kBoundary];
    unsigned char* m_aTargets[kRows];
};

// Decodes all scanlines into the image's rows, as many at a time as libjpeg has ready.
void ReadRows(jpeg_decompress_struct* pInfo, CKelImage* pImage, bool bReverse) {
    const UnreadRows unread(pInfo, pImage);
    const int nDepth = pImage->GetBitsPerPixel();
    const std::int64_t nRowBytes = std::int64_t{nDepth / 8} * pInfo->output_width;
    const bool bSmall = nRowBytes <= RowTargets::kSmallRow &&
                        nRowBytes * pInfo->output_height < RowTargets::kSmallPicture;
    kel::RowMove* const pfnReverse = kel::RowFunctionsFor(kel::BestLevel()).pfnReverse24;
    RowTargets targets;
    while (pInfo->output_scanline < pInfo->output_height) {
        unsigned char** ppNext = pImage->GetLineArray() + pInfo->output_scanline;
        const JDIMENSION nLeft = pInfo->output_height - pInfo->output_scanline;
        JDIMENSION nRead = 0;
        if (bSmall) {
            const JDIMENSION nRows = std::min(nLeft, RowTargets::kRows);
            nRead = jpeg_read_scanlines(pInfo, targets.Of(ppNext, nRows), nRows);
            targets.Store(ppNext, nRead, nRowBytes);
        } else {
            nRead = jpeg_read_scanlines(pInfo, ppNext, nLeft);
        }
        for (JDIMENSION i = 0; bReverse && i < nRead; ++i) {
            pfnReverse(ppNext[i], ppNext[i], pInfo->image_width);
        }
    }
}

KelResult Decode(jpeg_decompress_struct* pInfo, CKelImage* pImage) {
    jpeg_read_header(pInfo, TRUE);
    const int nComponents = pInfo->num_components;
    if (nComponents > 4) {
        return KEL_ERR_CODEC;
    }
    bool bReverse = false;
    if (nComponents < 3) {  // three equal samples of grey; libjpeg refuses two components
        pInfo->out_color_space = JCS_RGB;
    } else if (nComponents == 3) {
        bReverse = !AskForBgr(pInfo);
    }
    // A picture too large for any image is refused before libjpeg spends memory and time on it.
    const int nDepth = nComponents == 4 ? 32 : 24;
    if (kel::PictureSize(nDepth, pInfo->image_width, pInfo->image_height) > kel::kMaxSize) {
        return KEL_ERR_MEMORY;
    }
    jpeg_start_decompress(pInfo);

    pImage->CreateUncleared(static_cast<int>(pInfo->image_width),
                            static_cast<int>(pInfo->image_height), nDepth);
    if (pImage->GetLineArray() == nullptr || pImage->GetBits() == nullptr) {
        pImage->Clean();
        return KEL_ERR_MEMORY;
    }
    ReadRows(pInfo, pImage, bReverse);
    jpeg_finish_decompress(pInfo);
    return KEL_OK;
}

}  // namespace

CKelJpegDecoder::CKelJpegDecoder() = default;

CKelJpegDecoder::~CKelJpegDecoder() = default;

KelResult CKelJpegDecoder::Do(CVamArchive* pArchive, CKelImage* pImage) {
    pImage->Clean();
    TraceDecode();

    CKelJpegSrcMgr source(pArchive);
    if (source.m_pBuffer == nullptr) {
        return KEL_ERR_MEMORY;
    }
    jpeg_error_mgr errors;
    Decompressor decompressor;
    decompressor.info.err = jpeg_std_error(&errors);
    errors.error_exit = &jpeg_error_exit;
    try {
        jpeg_create_decompress(&decompressor.info);
        decompressor.info.src = &source;
        return Decode(&decompressor.info, pImage);
    } catch (const MyJpegException&) {
        return KEL_ERR_CODEC;  // traced where it was thrown
    }
}

void CKelJpegDecoder::jpeg_error_exit(jpeg_common_struct* pInfo) {
    char szMessage[JMSG_LENGTH_MAX];
    pInfo->err->format_message(pInfo, szMessage);
    kel::TraceMessage("CKelJpegDecoder::jpeg_error_exit, err msg: ", szMessage);
    throw MyJpegException(pInfo->err->msg_code);
}

CKelJpegSrcMgr::CKelJpegSrcMgr(CVamArchive* pArchive)
    : jpeg_source_mgr(),
      m_pBuffer(new (std::nothrow) unsigned char[kBlockSize]()),
      m_pArchive(pArchive) {
    init_source = &InitSource;
    fill_input_buffer = &FillInputBuffer;
    skip_input_data = &SkipInputData;
    resync_to_restart = &jpeg_resync_to_restart;
    term_source = &TermSource;
}

CKelJpegSrcMgr::~CKelJpegSrcMgr() {
    m_pArchive = nullptr;
    delete[] m_pBuffer;
}

void CKelJpegSrcMgr::InitSource(jpeg_decompress_struct*) {}

boolean CKelJpegSrcMgr::FillInputBuffer(jpeg_decompress_struct* pInfo) {
    auto* pSource = static_cast<CKelJpegSrcMgr*>(pInfo->src);
    unsigned int nCount = pSource->m_pArchive->Read(pSource->m_pBuffer, kBlockSize);
    if (nCount == 0 || nCount > kBlockSize) {  // the end, or a failed read
        pSource->m_pBuffer[0] = 0xFF;
        pSource->m_pBuffer[1] = JPEG_EOI;
        nCount = 2;
    }
    pSource->next_input_byte = pSource->m_pBuffer;
    pSource->bytes_in_buffer = nCount;
    return TRUE;
}

void CKelJpegSrcMgr::SkipInputData(jpeg_decompress_struct* pInfo, long nBytes) {
    if (nBytes <= 0) {
        return;
    }
    std::size_t nLeft = kel::AsSize(nBytes);
    while (nLeft > pInfo->src->bytes_in_buffer) {
        nLeft -= pInfo->src->bytes_in_buffer;
        FillInputBuffer(pInfo);
    }
    pInfo->src->next_input_byte += nLeft;
    pInfo->src->bytes_in_buffer -= nLeft;
}

void CKelJpegSrcMgr::TermSource(jpeg_decompress_struct*) {}
