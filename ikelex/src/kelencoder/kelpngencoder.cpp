// The PNG writer.
//
// libpng is left by exceptions. Its error callback throws PngError, and what the archive throws
// passes through libpng's frames as well. Everything libpng holds hangs on its two structures,
// which PngWriter destroys on every path.
#include "kelpngencoder.h"

#include <platform/vamplatform.h>
#include <png.h>

#include <algorithm>
#include <memory>
#include <new>

#include "kelbitmap/integers.h"
#include "kelimage/kelimage.h"
#include "kelimage/line24.h"

namespace {

using Buffer = std::unique_ptr<unsigned char[]>;

struct PngError {};

// Bits per sample and colour type of a depth. 0 bits for a depth that is not written.
struct PngLayout {
    int nBitDepth;
    int nColorType;
};

PngLayout LayoutOf(int nDepth) {
    switch (nDepth) {
        case 1:
        case 4:
        case 8:
            return {nDepth, PNG_COLOR_TYPE_PALETTE};
        case 16:
        case 24:
            return {8, PNG_COLOR_TYPE_RGB};
        case 32:
            return {8, PNG_COLOR_TYPE_RGB_ALPHA};
        default:
            return {0, 0};
    }
}

// The largest index among the nWidth pixels of a row of 1, 4 or 8 bits.
int LargestIndex(const unsigned char* pRow, int nBits, int nWidth) {
    int nLargest = 0;
    if (nBits == 8) {
        for (int x = 0; x < nWidth; ++x) {
            nLargest = std::max<int>(nLargest, pRow[x]);
        }
        return nLargest;
    }
    const int nMask = (1 << nBits) - 1;
    for (int x = 0; x < nWidth; ++x) {
        const int nBit = x * nBits % 8;  // from the left
        nLargest = std::max(nLargest, pRow[x * nBits / 8] >> (8 - nBits - nBit) & nMask);
    }
    return nLargest;
}

class PngWriter {
  public:
    PngWriter()
        : m_pPng(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr,
                                         CKelPNGEncoder::user_error_fn,
                                         CKelPNGEncoder::user_warning_fn)),
          m_pInfo(m_pPng ? png_create_info_struct(m_pPng) : nullptr) {}
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter() { png_destroy_write_struct(&m_pPng, m_pInfo ? &m_pInfo : nullptr); }

    bool IsReady() const { return m_pInfo != nullptr; }
    KelResult Write(CVamArchive* pArchive, CKelImage* pImage, const PngLayout& layout,
                    const CKelPNGEncoder& encoder);

  private:
    void CheckIndices(CKelImage* pImage);
    bool SetPalette(CKelImage* pImage, const CKelPNGEncoder& encoder);
    bool WriteConvertedRows(CKelImage* pImage);

    png_structp m_pPng;
    png_infop m_pInfo;
};

// Refuses indices beyond the palette as libpng does. Its own check comes after the rows. It misses
// an index equal to the count, and the last byte of a row.
void PngWriter::CheckIndices(CKelImage* pImage) {
    const int nBits = pImage->GetBitsPerPixel();
    const int nColors = pImage->GetPaletteNum();
    for (int nRow = 0; nColors < 1 << nBits && nRow < pImage->GetHeight(); ++nRow) {
        if (LargestIndex(pImage->GetLineArray()[nRow], nBits, pImage->GetWidth()) >= nColors) {
            png_error(m_pPng, "Wrote palette index exceeding num_palette");
        }
    }
}

// False when libpng's form of the palette cannot be allocated. Without a palette none is set, and
// libpng refuses the picture.
bool PngWriter::SetPalette(CKelImage* pImage, const CKelPNGEncoder& encoder) {
    const int nEntries = pImage->GetPaletteNum();
    if (nEntries <= 0 || !pImage->GetPalette()) {
        return true;
    }
    const Buffer pEntries(encoder.CreatePNGPalette(nEntries, pImage->GetPalette()));
    if (!pEntries) {
        return false;
    }
    static_assert(sizeof(png_color) == 3, "an entry is red, green, blue");
    png_set_PLTE(m_pPng, m_pInfo, reinterpret_cast<png_const_colorp>(pEntries.get()), nEntries);
    CheckIndices(pImage);
    return true;
}

// The rows of a 16- or 24-bit image. False when the row buffer cannot be allocated.
bool PngWriter::WriteConvertedRows(CKelImage* pImage) {
    const Buffer pRow(pImage->CreateLine24());
    if (!pRow) {
        return false;
    }
    // A row that cannot be converted comes out black.
    std::fill_n(pRow.get(), std::int64_t{3} * pImage->GetWidth(), std::uint8_t{0});
    const kel::Line24Reader reader(pImage, kel::kOrderRGB);
    for (int nRow = 0; nRow < pImage->GetHeight(); ++nRow) {
        reader.Read(nRow, pRow.get());
        png_write_row(m_pPng, pRow.get());
    }
    return true;
}

KelResult PngWriter::Write(CVamArchive* pArchive, CKelImage* pImage, const PngLayout& layout,
                           const CKelPNGEncoder& encoder) {
    png_set_write_fn(m_pPng, pArchive, CKelPNGEncoder::user_write_data,
                     CKelPNGEncoder::user_flush_data);
    png_set_IHDR(m_pPng, m_pInfo, kel::Low32(pImage->GetWidth()), kel::Low32(pImage->GetHeight()),
                 layout.nBitDepth, layout.nColorType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    if (layout.nColorType == PNG_COLOR_TYPE_PALETTE && !SetPalette(pImage, encoder)) {
        return KEL_ERR_MEMORY;
    }
    png_write_info(m_pPng, m_pInfo);

    if (layout.nColorType == PNG_COLOR_TYPE_RGB) {
        if (!WriteConvertedRows(pImage)) {
            return KEL_ERR_MEMORY;
        }
    } else if (unsigned char** ppLines = pImage->GetLineArray()) {
        if (layout.nColorType == PNG_COLOR_TYPE_RGB_ALPHA) {
            png_set_bgr(m_pPng);  // libpng reverses its own copy of each row
        }
        png_write_image(m_pPng, ppLines);
    }
    png_write_end(m_pPng, m_pInfo);
    return KEL_OK;
}

CVamArchive* ArchiveOf(png_structp pPng) {
    return static_cast<CVamArchive*>(png_get_io_ptr(pPng));
}

}  // namespace

CKelPNGEncoder::CKelPNGEncoder() = default;
CKelPNGEncoder::~CKelPNGEncoder() = default;

KelResult CKelPNGEncoder::Do(CVamArchive* pArchive, CKelImage* pImage) {
    const PngLayout layout = LayoutOf(pImage->GetBitsPerPixel());
    if (layout.nBitDepth == 0) {
        return KEL_ERR_FAIL;
    }
    // At 32 bits libpng is left to say that no rows came.
    if (pImage->GetHeight() > 0 && !pImage->GetLineArray() &&
        layout.nColorType != PNG_COLOR_TYPE_RGB_ALPHA) {
        return KEL_ERR_MEMORY;
    }
    try {
        PngWriter writer;
        return writer.IsReady() ? writer.Write(pArchive, pImage, layout, *this) : KEL_ERR_CODEC;
    } catch (const PngError&) {
        return KEL_ERR_CODEC;
    }
}

unsigned char* CKelPNGEncoder::CreatePNGPalette(int nCount, tagKelRGBQUAD* pPalette) const {
    if (nCount < 1) {
        return nullptr;
    }
    const std::size_t nEntries = kel::AsSize(nCount);
    auto* pEntries = new (std::nothrow) unsigned char[nEntries * 3];
    if (!pEntries) {
        return nullptr;
    }
    for (std::size_t i = 0; i < nEntries; ++i) {
        pEntries[3 * i] = pPalette[i].byRed;
        pEntries[3 * i + 1] = pPalette[i].byGreen;
        pEntries[3 * i + 2] = pPalette[i].byBlue;
    }
    return pEntries;
}

void CKelPNGEncoder::user_error_fn(png_struct_def*, const char* pszMessage) {
    VamTrace("PNG Encoder error msg:%$s\r\n", pszMessage);
    throw PngError();
}

void CKelPNGEncoder::user_warning_fn(png_struct_def*, const char* pszMessage) {
    VamTrace("PNG Encode warning msg:%s\r\n", pszMessage);
}

void CKelPNGEncoder::user_write_data(png_struct_def* pPng, unsigned char* pData, size_t nLength) {
    ArchiveOf(pPng)->Write(pData, kel::Low32(nLength));
}

void CKelPNGEncoder::user_flush_data(png_struct_def* pPng) {
    ArchiveOf(pPng)->Flush();
}
