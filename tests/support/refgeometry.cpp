#include "support/refgeometry.h"

#include <algorithm>
#include <cmath>

#include "support/invariants.h"
#include "support/pictures.h"

namespace support {

namespace {

// One single-precision operation each: products and sums of floats are exact, or round alike, in
// double precision, and the return type rounds them once. No compiler can fuse them.
float Mul(float a, float b) {
    return static_cast<float>(double{a} * double{b});
}
float Add(float a, float b) {
    return static_cast<float>(double{a} + double{b});
}

struct Position {
    int nFirst;
    int nSecond;
    float fFraction;
};

Position PositionOf(int i, int nSrc, int nDst) {
    const float fStep =
        nDst == 1 ? 0.0f : static_cast<float>(nSrc - 1) / static_cast<float>(nDst - 1);
    const float f = Mul(static_cast<float>(i), fStep);
    const double dLast = nSrc - 1;
    return {static_cast<int>(std::min(std::trunc(double{f}), dLast)),
            static_cast<int>(std::min(std::trunc(double{Add(f, 0.5f)}), dLast)),
            Add(f, -std::trunc(f))};
}

void SetPixelAt(int nBits, unsigned char* pRow, int nX, std::uint32_t nPixel) {
    if (nBits < 8) {
        const int nShift = 8 - nBits - nX * nBits % 8;
        unsigned char& byte = pRow[nX * nBits / 8];
        const unsigned int nMask = ((1u << nBits) - 1) << nShift;
        byte = static_cast<unsigned char>((byte & ~nMask) | nPixel << nShift);
        return;
    }
    for (int k = 0; k < nBits / 8; ++k) {
        pRow[nX * (nBits / 8) + k] = static_cast<unsigned char>(nPixel >> 8 * k);
    }
}

}  // namespace

std::uint32_t PixelAt(int nBits, const unsigned char* pRow, int nX) {
    std::uint32_t nPixel = 0;
    if (nBits < 8) {
        return static_cast<std::uint32_t>(pRow[nX * nBits / 8] >> (8 - nBits - nX * nBits % 8)) &
               ((1u << nBits) - 1);
    }
    for (int k = nBits / 8 - 1; k >= 0; --k) {
        nPixel = nPixel << 8 | pRow[nX * (nBits / 8) + k];
    }
    return nPixel;
}

std::ostream& operator<<(std::ostream& out, const Rows& rows) {
    return out << rows.nBits << " bits, " << rows.nWidth << "x" << rows.nHeight;
}

Rows BlackRows(int nBits, int nWidth, int nHeight) {
    Rows rows{nBits, nWidth, nHeight, {}};
    rows.bytes.resize(rows.Stride() * static_cast<std::size_t>(nHeight));
    return rows;
}

Rows RandomRows(int nBits, int nWidth, int nHeight, unsigned int nSeed) {
    Rows rows = BlackRows(nBits, nWidth, nHeight);
    Random(nSeed).Fill(rows.bytes.data(), rows.bytes.size());
    return rows;
}

Rows RefZoom(const Rows& src, int nWidth, int nHeight) {
    Rows out = BlackRows(src.nBits, nWidth, nHeight);
    const int nBytes = src.nBits / 8;
    for (int y = 0; y < nHeight; ++y) {
        const Position v = PositionOf(y, src.nHeight, nHeight);
        const unsigned char* const p0 = src.Row(v.nFirst);
        const unsigned char* const p1 = src.Row(v.nSecond);
        for (int x = 0; x < nWidth; ++x) {
            const Position h = PositionOf(x, src.nWidth, nWidth);
            if (src.nBits <= 8) {
                SetPixelAt(src.nBits, out.Row(y), x, PixelAt(src.nBits, p1, h.nSecond));
                continue;
            }
            const float fX0 = Add(1.0f, -h.fFraction);
            const float fY0 = Add(1.0f, -v.fFraction);
            for (int k = 0; k < nBytes; ++k) {
                const int a = h.nFirst * nBytes + k;
                const int b = h.nSecond * nBytes + k;
                float f = Mul(p0[a], Mul(fY0, fX0));
                f = Add(f, Mul(p0[b], Mul(fY0, h.fFraction)));
                f = Add(f, Mul(p1[a], Mul(v.fFraction, fX0)));
                f = Add(f, Mul(p1[b], Mul(v.fFraction, h.fFraction)));
                out.Row(y)[x * nBytes + k] = static_cast<unsigned char>(static_cast<int>(f));
            }
        }
    }
    return out;
}

Rows RefTranspose(const Rows& src) {
    Rows out = BlackRows(src.nBits, src.nHeight, src.nWidth);
    for (int y = 0; y < src.nHeight; ++y) {
        for (int x = 0; x < src.nWidth; ++x) {
            SetPixelAt(src.nBits, out.Row(x), y, PixelAt(src.nBits, src.Row(y), x));
        }
    }
    return out;
}

Rows RefMirror(const Rows& src) {
    Rows out = src;
    for (int y = 0; y < src.nHeight; ++y) {
        std::copy_n(src.Row(y), src.Stride(), out.Row(src.nHeight - 1 - y));
    }
    return out;
}

Rows RefCrop(const Rows& src, int nX, int nY, int nWidth, int nHeight) {
    Rows out = BlackRows(src.nBits, nWidth, nHeight);
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

void FillImage(CKelImage* pImage, const Rows& rows) {
    pImage->Clean();
    pImage->Create(rows.nWidth, rows.nHeight, rows.nBits);
    std::copy(rows.bytes.begin(), rows.bytes.end(), pImage->GetBits());
    pImage->GetBitmapInfo();
}

Rows RowsOf(const CKelImage& image) {
    const BITMAPINFOHEADER& header = image.m_bmih;
    Rows rows = BlackRows(header.biBitCount, header.biWidth, header.biHeight);
    std::copy_n(image.m_pBits, rows.bytes.size(), rows.bytes.begin());
    return rows;
}

testing::AssertionResult Shows(const CKelImage& image, const Rows& rows) {
    if (image.m_ppLineArray == nullptr || !(RowsOf(image) == rows)) {
        return testing::AssertionFailure() << "the image is not the picture of " << rows;
    }
    return Consistent(image);
}

}  // namespace support
