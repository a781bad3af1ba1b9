#include "support/refgeometry.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "kelbitmap/strides.h"

namespace support {

namespace {

std::size_t Stride(int nBits, int nWidth) {
    return static_cast<std::size_t>(kel::RowStride(nBits, nWidth));
}

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

Bytes RandomRows(int nBits, int nWidth, int nHeight, unsigned int nSeed) {
    std::mt19937 random(nSeed);
    Bytes rows(Stride(nBits, nWidth) * static_cast<std::size_t>(nHeight));
    std::generate(rows.begin(), rows.end(),
                  [&] { return static_cast<unsigned char>(random() >> 11); });
    return rows;
}

Bytes RefZoom(int nBits, const Bytes& src, int nSrcWidth, int nSrcHeight, int nWidth, int nHeight) {
    const std::size_t nFrom = Stride(nBits, nSrcWidth);
    const std::size_t nTo = Stride(nBits, nWidth);
    Bytes out(nTo * static_cast<std::size_t>(nHeight));
    for (int y = 0; y < nHeight; ++y) {
        const Position v = PositionOf(y, nSrcHeight, nHeight);
        const unsigned char* const p0 = &src[static_cast<std::size_t>(v.nFirst) * nFrom];
        const unsigned char* const p1 = &src[static_cast<std::size_t>(v.nSecond) * nFrom];
        unsigned char* const pOut = &out[static_cast<std::size_t>(y) * nTo];
        for (int x = 0; x < nWidth; ++x) {
            const Position h = PositionOf(x, nSrcWidth, nWidth);
            if (nBits <= 8) {
                SetPixelAt(nBits, pOut, x, PixelAt(nBits, p1, h.nSecond));
                continue;
            }
            const float fX0 = Add(1.0f, -h.fFraction);
            const float fY0 = Add(1.0f, -v.fFraction);
            for (int k = 0; k < nBits / 8; ++k) {
                const int a = h.nFirst * (nBits / 8) + k;
                const int b = h.nSecond * (nBits / 8) + k;
                float f = Mul(p0[a], Mul(fY0, fX0));
                f = Add(f, Mul(p0[b], Mul(fY0, h.fFraction)));
                f = Add(f, Mul(p1[a], Mul(v.fFraction, fX0)));
                f = Add(f, Mul(p1[b], Mul(v.fFraction, h.fFraction)));
                pOut[x * (nBits / 8) + k] = static_cast<unsigned char>(static_cast<int>(f));
            }
        }
    }
    return out;
}

Bytes RefTranspose(int nBits, const Bytes& src, int nWidth, int nHeight) {
    const std::size_t nFrom = Stride(nBits, nWidth);
    const std::size_t nTo = Stride(nBits, nHeight);
    Bytes out(nTo * static_cast<std::size_t>(nWidth));
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            SetPixelAt(nBits, &out[static_cast<std::size_t>(x) * nTo], y,
                       PixelAt(nBits, &src[static_cast<std::size_t>(y) * nFrom], x));
        }
    }
    return out;
}

Bytes RefMirror(int nBits, const Bytes& src, int nWidth, int nHeight) {
    const auto nStride = static_cast<std::ptrdiff_t>(Stride(nBits, nWidth));
    Bytes out(src.size());
    for (int y = 0; y < nHeight; ++y) {
        std::copy_n(src.begin() + y * nStride, nStride, out.end() - (y + 1) * nStride);
    }
    return out;
}

Bytes RefCrop(int nBits, const Bytes& src, int nSrcWidth, int nX, int nY, int nWidth, int nHeight) {
    Bytes out;
    const std::size_t nLine = Stride(nBits, nWidth);
    for (int y = nY; y < nY + nHeight; ++y) {
        // Bit by bit from the rectangle's left edge on.
        std::size_t nBit = static_cast<std::size_t>(y) * Stride(nBits, nSrcWidth) * 8 +
                           static_cast<std::size_t>(nX * nBits);
        for (std::size_t i = 0; i < nLine; ++i) {
            unsigned int nByte = 0;
            for (int k = 0; k < 8; ++k, ++nBit) {
                const unsigned int nSrc = nBit / 8 < src.size() ? src[nBit / 8] : 0u;
                nByte = nByte << 1 | (nSrc >> (7 - nBit % 8) & 1u);
            }
            out.push_back(static_cast<unsigned char>(nByte));
        }
    }
    return out;
}

void FillImage(CKelImage* pImage, int nBits, int nWidth, int nHeight, const Bytes& rows,
               bool bBlock) {
    pImage->Clean();
    unsigned char* const pBits = pImage->Create(nWidth, nHeight, nBits);
    std::copy(rows.begin(), rows.end(), pBits);
    if (bBlock) {
        pImage->GetBitmapInfo();
    }
}

Bytes RowsOf(const CKelImage& image) {
    const auto nSize = static_cast<std::size_t>(
        kel::PictureSize(image.m_bmih.biBitCount, image.m_bmih.biWidth, image.m_bmih.biHeight));
    return image.m_pBits == nullptr ? Bytes() : Bytes(image.m_pBits, image.m_pBits + nSize);
}

std::string Disagreement(const CKelImage& image, unsigned int nSizeImage) {
    const BITMAPINFOHEADER& header = image.m_bmih;
    if (header.biSizeImage != nSizeImage) {
        return "biSizeImage is " + std::to_string(header.biSizeImage);
    }
    if (image.m_pBMI != nullptr) {
        const BITMAPINFOHEADER& block = image.m_pBMI->bmiHeader;
        if (block.biWidth != header.biWidth || block.biHeight != header.biHeight ||
            block.biSizeImage != nSizeImage || block.biBitCount != header.biBitCount) {
            return "the header block differs";
        }
    }
    if (image.m_ppLineArray == nullptr) {
        return "no rows";
    }
    for (int y = 0; y < header.biHeight; ++y) {
        if (image.m_ppLineArray[y] !=
            image.m_pBits + y * kel::RowStride(header.biBitCount, header.biWidth)) {
            return "row " + std::to_string(y) + " is elsewhere";
        }
    }
    return "";
}

}  // namespace support
