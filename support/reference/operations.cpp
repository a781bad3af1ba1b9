// The formulas of zoom, transposition, mirror, crop and row conversion. Products and sums of zoom
// are single precision in a fixed order; the build forbids fusing them.
#include "support/reference/operations.h"

#include <algorithm>
#include <cstring>

namespace reference {

namespace {

struct Position {
    int nFirst, nSecond;
    float fFraction;
};

// Where destination pixel i lies in the source.
Position PositionOf(int i, int nSrc, int nDst) {
    const float fStep =
        nDst == 1 ? 0.0f : static_cast<float>(nSrc - 1) / static_cast<float>(nDst - 1);
    const float f = static_cast<float>(i) * fStep;
    const int nFirst = static_cast<int>(f);
    return {std::min(nFirst, nSrc - 1), std::min(static_cast<int>(f + 0.5f), nSrc - 1),
            f - static_cast<float>(nFirst)};
}

// A channel of a pixel under a colour mask, its highest 8 bits or what there are, as 0 to 255.
unsigned char Channel(std::uint32_t nPixel, std::uint32_t nMask) {
    int nRight = 0;
    while (nRight < 31 && (nMask >> nRight & 1) == 0) {
        ++nRight;
    }
    int nRun = 0;
    while (nRight + nRun < 32 && (nMask >> (nRight + nRun) & 1) != 0) {
        ++nRun;
    }
    const std::uint32_t nValue = (nPixel & nMask) >> nRight;
    return static_cast<unsigned char>(nRun > 8 ? nValue >> (nRun - 8) : nValue << (8 - nRun));
}

}  // namespace

Rows Zoom(const Rows& src, int nWidth, int nHeight) {
    Rows out = support::BlackRows(src.nBits, nWidth, nHeight);
    const int nBytes = src.nBits / 8;
    std::vector<Position> columns;
    for (int x = 0; x < nWidth; ++x) {
        columns.push_back(PositionOf(x, src.nWidth, nWidth));
    }
    for (int y = 0; y < nHeight; ++y) {
        const Position v = PositionOf(y, src.nHeight, nHeight);
        const unsigned char* const p0 = src.Row(v.nFirst);
        const unsigned char* const p1 = src.Row(v.nSecond);
        unsigned char* const pOut = out.Row(y);
        for (int x = 0; x < nWidth; ++x) {
            const Position& h = columns[static_cast<std::size_t>(x)];
            if (src.nBits <= 8) {
                support::SetPixelAt(src.nBits, pOut, x, support::PixelAt(src.nBits, p1, h.nSecond));
                continue;
            }
            const float fX0 = 1 - h.fFraction, fY0 = 1 - v.fFraction;
            const float w00 = fY0 * fX0, w01 = fY0 * h.fFraction;
            const float w10 = v.fFraction * fX0, w11 = v.fFraction * h.fFraction;
            for (int k = 0; k < nBytes; ++k) {
                const int a = h.nFirst * nBytes + k, b = h.nSecond * nBytes + k;
                const float f = p0[a] * w00 + p0[b] * w01 + p1[a] * w10 + p1[b] * w11;
                pOut[x * nBytes + k] = static_cast<unsigned char>(static_cast<int>(f));
            }
        }
    }
    return out;
}

Rows Transpose(const Rows& src) {
    Rows out = support::BlackRows(src.nBits, src.nHeight, src.nWidth);
    for (int x = 0; x < src.nWidth; ++x) {
        for (int y = 0; y < src.nHeight; ++y) {
            support::SetPixelAt(src.nBits, out.Row(x), y,
                                support::PixelAt(src.nBits, src.Row(y), x));
        }
    }
    return out;
}

Rows Mirror(const Rows& src) {
    Rows out = src;
    for (int y = 0; y < src.nHeight; ++y) {
        std::copy_n(src.Row(y), src.Stride(), out.Row(src.nHeight - 1 - y));
    }
    return out;
}

Rows Crop(const Rows& src, int nX, int nY, int nWidth, int nHeight) {
    Rows out = support::BlackRows(src.nBits, nWidth, nHeight);
    for (int y = 0; y < nHeight; ++y) {
        // Bit by bit from the rectangle's left edge on.
        std::size_t nBit = static_cast<std::size_t>(nY + y) * src.Stride() * 8 +
                           static_cast<std::size_t>(nX * src.nBits);
        for (std::size_t i = 0; i < 8 * out.Stride(); ++i, ++nBit) {
            const unsigned int nByte = nBit / 8 < src.bytes.size() ? src.bytes[nBit / 8] : 0u;
            unsigned char& byTo = out.Row(y)[i / 8];
            byTo = static_cast<unsigned char>(2u * byTo + (nByte >> (7 - nBit % 8) & 1u));
        }
    }
    return out;
}

void Line24(const BITMAPINFO* pInfo, const unsigned char* pRow, bool bRgb, unsigned char* pOut) {
    const BITMAPINFOHEADER& header = pInfo->bmiHeader;
    const int nBits = header.biBitCount;
    const auto* pTable = reinterpret_cast<const unsigned char*>(pInfo) + sizeof header;
    const int nColors = header.biClrUsed > 0 ? static_cast<int>(header.biClrUsed) : 1 << nBits % 32;
    const bool bFields = header.biCompression == BI_BITFIELDS;
    std::uint32_t masks[3] = {0x7C00, 0x03E0, 0x001F};
    if (bFields) {
        std::memcpy(masks, pTable, sizeof masks);
    }
    if (nBits == 24 && !bRgb) {
        std::copy_n(pRow, kel::RowStride(24, header.biWidth), pOut);
        return;
    }
    for (int x = 0; x < header.biWidth; ++x) {
        const std::uint32_t nPixel = support::PixelAt(nBits, pRow, x);
        for (int c = 0; c < 3; ++c) {  // red, green, blue
            unsigned char by = 0;
            if (nBits <= 8) {
                by = pTable[4 * std::min(static_cast<int>(nPixel), nColors - 1) + 2 - c];
            } else if (nBits == 16 || bFields) {
                by = Channel(nPixel, masks[c]);
            } else {
                by = static_cast<unsigned char>(nPixel >> 8 * (2 - c));
            }
            pOut[3 * x + (bRgb ? c : 2 - c)] = by;
        }
    }
}

}  // namespace reference
