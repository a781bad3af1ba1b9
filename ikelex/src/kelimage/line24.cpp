// Any stored depth as rows of 24 bits. The row functions of kelbitmap define the bytes.
#include "line24.h"

#include <algorithm>
#include <bit>

#include "headerblock.h"
#include "kelbitmap/strides.h"
#include "kelmemory/kelmemory.h"
#include "keltrace/keltrace.h"

namespace {

// 5-5-5. The five bits of a channel become the top five of the byte, the low three stay 0.
constexpr kel::ChannelField kRed555 = {0x7C00, 10, 3};
constexpr kel::ChannelField kGreen555 = {0x03E0, 5, 3};
constexpr kel::ChannelField kBlue555 = {0x001F, 0, 3};

std::int64_t StrideAt(int nBits, const BITMAPINFOHEADER& header) {
    return kel::RowStride(nBits, std::max<int>(header.biWidth, 0));
}

kel::LineColors ColorsOf(CKelImage* pImage) {
    const tagKelRGBQUAD* const pPalette = pImage->GetPalette();
    const int nCount = pImage->GetPaletteNum();
    return {pPalette, nCount, pPalette == pImage->m_pPalette ? pImage->m_nPaletteSize : nCount};
}

// The channel field of a mask in place of a palette entry.
kel::ChannelField FieldOfEntry(const tagKelRGBQUAD& entry) {
    return kel::FieldOfMask(std::bit_cast<std::uint32_t>(entry));
}

unsigned char* NewLine(int nBits, const BITMAPINFOHEADER& header) {
    unsigned char* p =
        kel::NewScratch(header.biWidth < 0 ? -1 : kel::RowStride(nBits, header.biWidth)).release();
    if (p == nullptr) {
        kel::TraceNull("p");
    }
    return p;
}

}  // namespace

unsigned char* CKelImage::CreateLine32() const {
    return NewLine(32, m_bmih);
}
unsigned char* CKelImage::CreateLine24() const {
    return NewLine(24, m_bmih);
}
unsigned char* CKelImage::CreateLine16() const {
    return NewLine(16, m_bmih);
}

namespace kel {

LineConverter::LineConverter(const BITMAPINFOHEADER& header, int nBits, int nOrder,
                             const LineColors& colors)
    : m_bReverse(nOrder == kOrderRGB),
      m_nPixels(kel::PixelsOfRow(header)),
      m_nStride(StrideAt(nBits, header)) {
    const RowFunctions& rows = RowFunctionsFor(BestLevel());
    const bool bRgb = header.biCompression == BI_RGB;
    const bool bFields = header.biCompression == BI_BITFIELDS;
    if (nBits == 1 && colors.pEntries == nullptr) {
        m_bCopy = true;
    } else if (nBits == 1 && colors.nCount > 0) {
        // The index is not clamped to the count. The slot after a single entry is black until
        // somebody fills it, and so is a missing slot.
        m_pfnLookup = rows.pfnPalette1;
        FillColorWords(colors.pEntries, colors.nSlots, m_bReverse, m_aWords, 2);
        m_aWords[1] = colors.nSlots == 1 ? 0 : m_aWords[1];
    } else if ((nBits == 4 || nBits == 8) && colors.pEntries != nullptr && colors.nCount > 0) {
        m_pfnLookup = nBits == 4 ? rows.pfnPalette4 : rows.pfnPalette8;
        FillColorWords(colors.pEntries, colors.nCount, m_bReverse, m_aWords, 1 << nBits);
    } else if (nBits == 24) {
        m_pfnMove = m_bReverse ? rows.pfnReverse24 : nullptr;
        m_bCopy = !m_bReverse;
    } else if (nBits == 32 && bRgb) {
        m_pfnMove = m_bReverse ? rows.pfnPackReverse32 : rows.pfnPack32;
    } else if (nBits == 16 && bRgb) {
        m_pfnFields = rows.pfnFields16;
        SetFields(kRed555, kGreen555, kBlue555);
    } else if ((nBits == 16 || nBits == 32) && bFields && colors.pEntries != nullptr &&
               colors.nCount == 3) {
        m_pfnFields = nBits == 16 ? rows.pfnFields16 : rows.pfnFields32;
        SetFields(FieldOfEntry(colors.pEntries[0]), FieldOfEntry(colors.pEntries[1]),
                  FieldOfEntry(colors.pEntries[2]));
    }
}

void LineConverter::SetFields(const ChannelField& red, const ChannelField& green,
                              const ChannelField& blue) {
    m_Fields = m_bReverse ? PixelFields{{red, green, blue}} : PixelFields{{blue, green, red}};
}

void LineConverter::Convert(const unsigned char* pRow, unsigned char* pOut) const {
    if (m_pfnMove != nullptr) {
        m_pfnMove(pRow, pOut, m_nPixels);
    } else if (m_pfnLookup != nullptr) {
        m_pfnLookup(pRow, m_aWords, pOut, m_nPixels);
    } else if (m_pfnFields != nullptr) {
        m_pfnFields(pRow, m_Fields, pOut, m_nPixels);
    } else if (m_bCopy) {
        SecureCopy(kSourceImage, pOut, pRow, m_nStride);
    }
}

Line24Reader::Line24Reader(CKelImage* pImage, int nOrder)
    : m_pImage(pImage),
      m_Converter(pImage->m_bmih, pImage->m_bmih.biBitCount, nOrder, ColorsOf(pImage)) {}

unsigned char* Line24Reader::Read(int nRow, unsigned char* pOut) const {
    if (nRow < 0 || nRow >= m_pImage->m_bmih.biHeight || m_pImage->m_ppLineArray == nullptr) {
        return nullptr;
    }
    m_Converter.Convert(m_pImage->m_ppLineArray[nRow], pOut);
    return pOut;
}

}  // namespace kel

unsigned char* CKelImage::GetLine24At(int nOrder, int nRow, unsigned char* pOut) {
    return kel::Line24Reader(this, nOrder).Read(nRow, pOut);
}

unsigned char* CKelImage::GetLine24AsBGRAt(int nRow, unsigned char* pOut) {
    return GetLine24At(kel::kOrderBGR, nRow, pOut);
}

unsigned char* CKelImage::GetLine24AsRGBAt(int nRow, unsigned char* pOut) {
    return GetLine24At(kel::kOrderRGB, nRow, pOut);
}

bool CKelImage::ConvertTo24Bit(int nOrder, unsigned char* pOut) {
    const kel::Line24Reader reader(this, nOrder);
    const std::int64_t nStride = StrideAt(24, m_bmih);
    for (int nRow = 0; nRow < m_bmih.biHeight; ++nRow) {
        reader.Read(nRow, pOut + nRow * nStride);
    }
    return true;
}

void CKelImage::Convert1BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    kel::LineConverter(m_bmih, 1, nOrder, ColorsOf(this)).Convert(pRow, pOut);
}

void CKelImage::Convert4BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    kel::LineConverter(m_bmih, 4, nOrder, ColorsOf(this)).Convert(pRow, pOut);
}

void CKelImage::Convert8BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    kel::LineConverter(m_bmih, 8, nOrder, ColorsOf(this)).Convert(pRow, pOut);
}

void CKelImage::Convert16BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    kel::LineConverter(m_bmih, 16, nOrder, ColorsOf(this)).Convert(pRow, pOut);
}

void CKelImage::Convert32BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    kel::LineConverter(m_bmih, 32, nOrder, ColorsOf(this)).Convert(pRow, pOut);
}

void CKelImage::Convert24BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) const {
    kel::LineConverter(m_bmih, 24, nOrder, {}).Convert(pRow, pOut);
}
