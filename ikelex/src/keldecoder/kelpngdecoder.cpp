// The PNG reader.
//
// libpng decodes straight into the image's rows. It is left by exceptions. Its error callback
// throws PngError, and what the archive throws passes through its frames as well. Everything libpng
// holds hangs on its two structures, which PngReader destroys on every path.
#include "kelpngdecoder.h"

#include <platform/vamplatform.h>

#include <png.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>

#include "kelbitmap/integers.h"
#include "kelbitmap/rows.h"
#include "kelimage/kelimage.h"

namespace {

struct PngError {};

// Reverses the first three bytes of every four, as words, of which compilers make vectors.
void ReverseInWords(unsigned char* pData, const std::size_t nPixels) {
    for (std::size_t i = 0; i < nPixels; ++i) {
        std::uint32_t nPixel;
        std::memcpy(&nPixel, pData + 4 * i, sizeof nPixel);
        nPixel = (nPixel & 0xFF00FF00) | (nPixel >> 16 & 0xFF) | (nPixel & 0xFF) << 16;
        std::memcpy(pData + 4 * i, &nPixel, sizeof nPixel);
    }
}

// Does what png_set_bgr asks for, on the same rows, because libpng's own loop goes byte by byte.
// The rows have 8 bits a channel by then, or indices of up to 8 bits, which stay.
[[maybe_unused]] void ReverseChannels(png_structp pPng, png_row_infop pRow, png_bytep pData) {
    if (pRow->channels == 3) {
        static_cast<const kel::RowFunctions*>(png_get_user_transform_ptr(pPng))
            ->pfnReverse24(pData, pData, pRow->width);
    } else if (pRow->channels == 4) {
        ReverseInWords(pData, pRow->width);
    }
}

// Chunks of any length that no pixel depends on, each as libpng's type and a 0. iCCP is not among
// them, since libpng itself limits what it inflates of the one profile.
constexpr unsigned char kUnusedChunks[] = "eXIf\0iTXt\0pCAL\0sCAL\0sPLT\0tEXt\0zTXt";
constexpr int kUnusedChunkSize = 5;
constexpr int kUnusedChunkCount = sizeof(kUnusedChunks) / kUnusedChunkSize;

// Limits what libpng spends on such chunks, which it inflates and keeps. Small ones stay with
// libpng, because damage in them is traced. The first one beyond the budget and all later ones are
// skipped. libpng only compares their checksums.
class ChunkBudget {
  public:
    // To be called with each chunk header read, which is 4 bytes of length and 4 of type.
    void Charge(png_structp pPng, const unsigned char* pHeader) {
        if (!IsUnused(pHeader + 4)) {
            return;
        }
        const png_uint_32 nLength = png_get_uint_32(pHeader);
        if (nLength <= m_nLeft) {
            m_nLeft -= nLength;
            return;
        }
        png_set_keep_unknown_chunks(pPng, PNG_HANDLE_CHUNK_NEVER, kUnusedChunks, kUnusedChunkCount);
    }

  private:
    static bool IsUnused(const unsigned char* pType) {
        for (int i = 0; i < kUnusedChunkCount; ++i) {
            if (std::memcmp(kUnusedChunks + i * kUnusedChunkSize, pType, 4) == 0) {
                return true;
            }
        }
        return false;
    }

    // Deflated data grow by a factor of up to 1032.
    png_uint_32 m_nLeft = 4096;
};

// Zeroes the rows that libpng did not reach, however it is left.
class UnreadRows {
  public:
    UnreadRows(png_structp pPng, CKelImage* pImage) : m_pPng(pPng), m_pImage(pImage) {}
    UnreadRows(const UnreadRows&) = delete;
    UnreadRows& operator=(const UnreadRows&) = delete;
    ~UnreadRows() { m_pImage->ClearRowsFrom(static_cast<int>(png_get_current_row_number(m_pPng))); }

  private:
    png_structp m_pPng;
    CKelImage* m_pImage;
};

class PngReader {
  public:
    PngReader()
        : m_pPng(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr,
                                        CKelPNGDecoder::user_error_fn,
                                        CKelPNGDecoder::user_warning_fn)),
          m_pInfo(m_pPng ? png_create_info_struct(m_pPng) : nullptr) {}
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&m_pPng, m_pInfo ? &m_pInfo : nullptr, nullptr); }

    bool IsReady() const { return m_pInfo != nullptr; }
    KelResult Read(CVamArchive* pArchive, CKelImage* pImage);

  private:
    int RequestTransforms(int nBitDepth, int nColorType);
    bool ReadPalette(CKelImage* pImage);

    png_structp m_pPng;
    png_infop m_pInfo;
    ChunkBudget m_Budget;
};

// Asks libpng for rows in the image's layout and returns the image's depth.
int PngReader::RequestTransforms(int nBitDepth, int nColorType) {
    int nDepth = nBitDepth * png_get_channels(m_pPng, m_pInfo);
    if (nBitDepth == 2) {
        png_set_packing(m_pPng);
        nDepth = 8;
    } else if (nBitDepth == 16) {
        png_set_strip_16(m_pPng);
        nDepth /= 2;
    }
    if (nColorType == PNG_COLOR_TYPE_GRAY && nBitDepth < 8) {
        png_set_expand_gray_1_2_4_to_8(m_pPng);
    }
    if (nColorType == PNG_COLOR_TYPE_GRAY) {
        png_set_gray_to_rgb(m_pPng);
        nDepth = 24;
    } else if (nColorType == PNG_COLOR_TYPE_GRAY_ALPHA) {
        png_set_gray_to_rgb(m_pPng);
        nDepth = 32;
    }
    if ((nColorType & PNG_COLOR_MASK_COLOR) != 0) {
#if defined(PNG_READ_USER_TRANSFORM_SUPPORTED)
        png_set_read_user_transform_fn(m_pPng, ReverseChannels);
        auto* const pRows = const_cast<kel::RowFunctions*>(&kel::RowFunctionsFor(kel::BestLevel()));
        png_set_user_transform_info(m_pPng, pRows, 0, 0);
#else
        png_set_bgr(m_pPng);
#endif
    }
    return nDepth;
}

// False when an entry cannot be allocated.
bool PngReader::ReadPalette(CKelImage* pImage) {
    png_colorp pEntries = nullptr;
    int nEntries = 0;
    png_get_PLTE(m_pPng, m_pInfo, &pEntries, &nEntries);
    for (int i = 0; i < nEntries; ++i) {
        const png_color& entry = pEntries[i];
        if (pImage->AddPaletteEntry(entry.red, entry.green, entry.blue, 255) != i + 1) {
            return false;
        }
    }
    return true;
}

KelResult PngReader::Read(CVamArchive* pArchive, CKelImage* pImage) {
    png_set_read_fn(m_pPng, pArchive, CKelPNGDecoder::user_read_data);
    png_set_read_user_chunk_fn(m_pPng, &m_Budget, nullptr);  // for user_read_data
    png_read_info(m_pPng, m_pInfo);
    png_uint_32 nWidth = 0;
    png_uint_32 nHeight = 0;
    int nBitDepth = 0;
    int nColorType = 0;
    int nInterlace = 0;
    png_get_IHDR(m_pPng, m_pInfo, &nWidth, &nHeight, &nBitDepth, &nColorType, &nInterlace, nullptr,
                 nullptr);
    const int nDepth = RequestTransforms(nBitDepth, nColorType);

    // libpng refuses sizes over 31 bits, so both fit into an int.
    const auto nColumns = static_cast<int>(nWidth);
    const auto nRows = static_cast<int>(nHeight);
    const bool bRowByRow = nInterlace == PNG_INTERLACE_NONE;
    if (bRowByRow) {
        pImage->CreateUncleared(nColumns, nRows, nDepth);
    } else {
        pImage->Create(nColumns, nRows, nDepth);
    }
    if (!pImage->GetLineArray() || (nColorType == PNG_COLOR_TYPE_PALETTE && !ReadPalette(pImage))) {
        pImage->Clean();
        return KEL_ERR_MEMORY;
    }
    std::optional<UnreadRows> unread;
    if (bRowByRow) {
        unread.emplace(m_pPng, pImage);
    }
    png_read_image(m_pPng, pImage->GetLineArray());
    png_read_end(m_pPng, m_pInfo);
    return KEL_OK;
}

}  // namespace

CKelPNGDecoder::CKelPNGDecoder() = default;
CKelPNGDecoder::~CKelPNGDecoder() = default;

KelResult CKelPNGDecoder::Do(CVamArchive* pArchive, CKelImage* pImage) {
    pImage->Clean();
    try {
        PngReader reader;
        return reader.IsReady() ? reader.Read(pArchive, pImage) : KEL_ERR_CODEC;
    } catch (const PngError&) {
        return KEL_ERR_CODEC;
    }
}

void CKelPNGDecoder::user_error_fn(png_struct_def*, const char* pszMessage) {
    VamTrace("PNG Decoder error msg:%$s\r\n", pszMessage);
    throw PngError();
}

void CKelPNGDecoder::user_warning_fn(png_struct_def*, const char* pszMessage) {
    VamTrace("PNG Decode warning msg:%s\r\n", pszMessage);
}

void CKelPNGDecoder::user_read_data(png_struct_def* pPng, unsigned char* pData, size_t nLength) {
    auto* pArchive = static_cast<CVamArchive*>(png_get_io_ptr(pPng));
    const unsigned int nCount = kel::Low32(nLength);
    if (pArchive->Read(pData, nCount) != nCount) {
        png_error(pPng, "Read Error");
    }
    auto* pBudget = static_cast<ChunkBudget*>(png_get_user_chunk_ptr(pPng));
    if (pBudget && (png_get_io_state(pPng) & PNG_IO_MASK_LOC) == PNG_IO_CHUNK_HDR) {
        pBudget->Charge(pPng, pData);
    }
}
