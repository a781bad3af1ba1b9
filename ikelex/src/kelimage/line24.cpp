// Any stored depth as rows of 24 bits.
//
// What a conversion needs besides the pixels (colours in output order, channel fields) is gathered
// once per row, on the stack.
#include <platform/vamplatform.h>

#include <algorithm>
#include <bit>
#include <new>

#include "../kelbitmap/rows.h"
#include "../kelbitmap/strides.h"
#include "../keltrace/keltrace.h"
#include "kelimage.h"

namespace {

constexpr int kOrderRGB = 1;
constexpr int kOrderBGR = 2;

// 5-5-5: each channel's five bits become the top five of the byte, the low three stay 0.
constexpr kel::ChannelField kRed555 = {0x7C00, 10, 3};
constexpr kel::ChannelField kGreen555 = {0x03E0, 5, 3};
constexpr kel::ChannelField kBlue555 = {0x001F, 0, 3};

const kel::RowFunctions& Rows() {
    return kel::RowFunctionsFor(kel::BestCpuLevel());
}

kel::PixelFields InOrder(int nOrder, kel::ChannelField red, kel::ChannelField green,
                         kel::ChannelField blue) {
    return nOrder == kOrderRGB ? kel::PixelFields{{red, green, blue}}
                               : kel::PixelFields{{blue, green, red}};
}

// The fields of the masks that a bit-field image holds in place of a palette.
kel::PixelFields FieldsOfMasks(int nOrder, const tagKelRGBQUAD* pMasks) {
    return InOrder(nOrder, kel::FieldOfMask(std::bit_cast<std::uint32_t>(pMasks[0])),
                   kel::FieldOfMask(std::bit_cast<std::uint32_t>(pMasks[1])),
                   kel::FieldOfMask(std::bit_cast<std::uint32_t>(pMasks[2])));
}

std::size_t PixelCount(const BITMAPINFOHEADER& header) {
    return static_cast<std::size_t>(std::max(header.biWidth, 0));
}

std::size_t StrideAt(int nBits, const BITMAPINFOHEADER& header) {
    return static_cast<std::size_t>(kel::RowStride(nBits, std::max(header.biWidth, 0)));
}

unsigned char* NewLine(int nBits, const BITMAPINFOHEADER& header) {
    unsigned char* p = nullptr;
    const std::int64_t nStride = kel::RowStride(nBits, header.biWidth);
    if (header.biWidth >= 0 && nStride <= kel::kMaxSize) {
        p = new (std::nothrow) unsigned char[static_cast<std::size_t>(nStride)];
    }
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

unsigned char* CKelImage::GetLine24At(int nOrder, int nRow, unsigned char* pOut) {
    if (nRow < 0 || nRow >= m_bmih.biHeight || m_ppLineArray == nullptr) {
        return nullptr;
    }
    unsigned char* pRow = m_ppLineArray[nRow];
    switch (m_bmih.biBitCount) {
        case 1:
            Convert1BitTo24Bit(nOrder, pRow, pOut);
            break;
        case 4:
            Convert4BitTo24Bit(nOrder, pRow, pOut);
            break;
        case 8:
            Convert8BitTo24Bit(nOrder, pRow, pOut);
            break;
        case 16:
            Convert16BitTo24Bit(nOrder, pRow, pOut);
            break;
        case 24:
            Convert24BitTo24Bit(nOrder, pRow, pOut);
            break;
        case 32:
            Convert32BitTo24Bit(nOrder, pRow, pOut);
            break;
        default:
            break;
    }
    return pOut;
}

unsigned char* CKelImage::GetLine24AsBGRAt(int nRow, unsigned char* pOut) {
    return GetLine24At(kOrderBGR, nRow, pOut);
}

unsigned char* CKelImage::GetLine24AsRGBAt(int nRow, unsigned char* pOut) {
    return GetLine24At(kOrderRGB, nRow, pOut);
}

bool CKelImage::ConvertTo24Bit(int nOrder, unsigned char* pOut) {
    const std::size_t nStride = StrideAt(24, m_bmih);
    for (int nRow = 0; nRow < m_bmih.biHeight; ++nRow) {
        GetLine24At(nOrder, nRow, pOut + static_cast<std::size_t>(nRow) * nStride);
    }
    return true;
}

void CKelImage::Convert1BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    const tagKelRGBQUAD* pPalette = GetPalette();
    const int nCount = GetPaletteNum();
    if (pPalette == nullptr) {
        const std::size_t nStride = StrideAt(1, m_bmih);
        kel::CheckSecure(kel::kSourceImage, memcpy_s(pOut, nStride, pRow, nStride));
        return;
    }
    if (nCount <= 0) {
        return;
    }
    // The index is not clamped to the count: the slot behind a single entry is black until somebody
    // fills it, and so is what has no slot.
    const int nSlots = pPalette == m_pPalette ? m_nPaletteSize : nCount;
    std::uint32_t aWords[2];
    kel::FillColorWords(pPalette, nSlots, nOrder == kOrderRGB, aWords, 2);
    if (nSlots == 1) {
        aWords[1] = 0;
    }
    Rows().pfnPalette1(pRow, aWords, pOut, PixelCount(m_bmih));
}

void CKelImage::Convert4BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    const tagKelRGBQUAD* pPalette = GetPalette();
    const int nCount = GetPaletteNum();
    if (pPalette == nullptr || nCount <= 0) {
        return;
    }
    std::uint32_t aWords[16];
    kel::FillColorWords(pPalette, nCount, nOrder == kOrderRGB, aWords, 16);
    Rows().pfnPalette4(pRow, aWords, pOut, PixelCount(m_bmih));
}

void CKelImage::Convert8BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    const tagKelRGBQUAD* pPalette = GetPalette();
    const int nCount = GetPaletteNum();
    if (pPalette == nullptr || nCount <= 0) {
        return;
    }
    std::uint32_t aWords[256];
    kel::FillColorWords(pPalette, nCount, nOrder == kOrderRGB, aWords, 256);
    Rows().pfnPalette8(pRow, aWords, pOut, PixelCount(m_bmih));
}

void CKelImage::Convert16BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    if (m_bmih.biCompression == BI_RGB) {
        const kel::PixelFields fields = InOrder(nOrder, kRed555, kGreen555, kBlue555);
        Rows().pfnFields16(pRow, fields, pOut, PixelCount(m_bmih));
    } else if (m_bmih.biCompression == BI_BITFIELDS) {
        const tagKelRGBQUAD* pMasks = GetPalette();
        if (pMasks != nullptr && GetPaletteNum() == 3) {
            Rows().pfnFields16(pRow, FieldsOfMasks(nOrder, pMasks), pOut, PixelCount(m_bmih));
        }
    }
}

void CKelImage::Convert24BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) const {
    if (nOrder == kOrderRGB) {
        Rows().pfnReverse24(pRow, pOut, PixelCount(m_bmih));
    } else {
        const std::size_t nStride = StrideAt(24, m_bmih);
        kel::CheckSecure(kel::kSourceImage, memcpy_s(pOut, nStride, pRow, nStride));
    }
}

void CKelImage::Convert32BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) {
    if (m_bmih.biCompression == BI_RGB) {
        const auto pfnRow = nOrder == kOrderRGB ? Rows().pfnReverse32 : Rows().pfnPack32;
        pfnRow(pRow, pOut, PixelCount(m_bmih));
    } else if (m_bmih.biCompression == BI_BITFIELDS) {
        const tagKelRGBQUAD* pMasks = GetPalette();
        if (pMasks != nullptr && GetPaletteNum() == 3) {
            Rows().pfnFields32(pRow, FieldsOfMasks(nOrder, pMasks), pOut, PixelCount(m_bmih));
        }
    }
}
