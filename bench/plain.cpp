#include "plain.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace plain {

namespace {

struct Record {
    int nLeft = 0;
    int nRight = -1;
    std::vector<int> weights;
};

double Width(int nKernel) {
    return nKernel == 1 ? 0.64 : nKernel == 2 ? 0.5 : 3.0;
}

double Kernel(int nKernel, double x) {
    constexpr double kPi = std::numbers::pi;
    const double dWidth = Width(nKernel);
    if (std::fabs(x) > dWidth)
        return 0.0;
    switch (nKernel) {
        case 1:
            return dWidth - std::fabs(x);
        case 2:
            return 1.0;
        case 3:
            return std::exp(-1.0 - x * x / dWidth) / 2.5066282746310002;
        default: {
            const double h = 0.46 * std::cos(2 * kPi * x) + 0.54;
            return std::fabs(x) < 0.000001 ? h : h * std::sin(kPi * x) / (kPi * x);
        }
    }
}

std::vector<Record> Table(int nKernel, int nOut, int nIn) {
    const double dRatio = static_cast<double>(nOut) / nIn;
    const double dFactor = std::min(dRatio, 1.0);
    const double dSupport = Width(nKernel) / dFactor;
    const int nWindow = 2 * static_cast<int>(std::ceil(dSupport)) + 1;
    std::vector<Record> table(static_cast<std::size_t>(nOut));
    for (int u = 0; u < nOut; u++) {
        Record& record = table[static_cast<std::size_t>(u)];
        const double t = (u + 0.5) / dRatio - 0.5;
        int nLeft = std::max(0, static_cast<int>(std::floor(t - dSupport)));
        const int nRight = std::min(nIn - 1, static_cast<int>(std::ceil(t + dSupport)));
        if (nRight - nLeft >= nWindow)
            nLeft++;
        int nTotal = 0;
        for (int i = nLeft; i <= nRight; i++) {
            const int nWeight =
                static_cast<int>(Kernel(nKernel, (t - i) * dFactor) * dFactor * 256.0);
            record.weights.push_back(nWeight);
            nTotal += nWeight;
        }
        int nRest = 256;
        for (std::size_t j = 0; nTotal > 0 && j < record.weights.size(); j++) {
            int& nWeight = record.weights[j];
            nWeight = j + 1 == record.weights.size() ? nRest : nWeight * 256 / nTotal;
            nRest -= nWeight;
        }
        record.nLeft = nLeft;
        record.nRight = nRight;
    }
    return table;
}

unsigned char Rounded(int nSum) {
    return static_cast<unsigned char>((nSum + 128) / 256);
}

}  // namespace

std::vector<unsigned char*> Rows(unsigned char* pBits, int nStride, int nHeight) {
    std::vector<unsigned char*> rows;
    for (int y = 0; y < nHeight; y++)
        rows.push_back(pBits + static_cast<std::ptrdiff_t>(y) * nStride);
    return rows;
}

void Scale(int nKernel, unsigned char** ppIn, int nInWidth, int nInHeight, unsigned char** ppOut,
           int nOutWidth, int nOutHeight) {
    Bytes temp(static_cast<std::size_t>(nOutWidth) * 3 * static_cast<std::size_t>(nInHeight));
    const std::vector<unsigned char*> tempRows = Rows(temp.data(), nOutWidth * 3, nInHeight);
    const std::vector<Record> columns = Table(nKernel, nOutWidth, nInWidth);
    for (int y = 0; y < nInHeight; y++) {
        const unsigned char* pIn = ppIn[y];
        unsigned char* pOut = tempRows[static_cast<std::size_t>(y)];
        for (int x = 0; x < nOutWidth; x++) {
            const Record& record = columns[static_cast<std::size_t>(x)];
            int b = 0, g = 0, r = 0;
            for (int i = record.nLeft; i <= record.nRight; i++) {
                const int w = record.weights[static_cast<std::size_t>(i - record.nLeft)];
                b += pIn[3 * i] * w;
                g += pIn[3 * i + 1] * w;
                r += pIn[3 * i + 2] * w;
            }
            pOut[3 * x] = Rounded(b);
            pOut[3 * x + 1] = Rounded(g);
            pOut[3 * x + 2] = Rounded(r);
        }
    }
    const std::vector<Record> rows = Table(nKernel, nOutHeight, nInHeight);
    for (int y = 0; y < nOutHeight; y++) {
        const Record& record = rows[static_cast<std::size_t>(y)];
        for (int x = 0; x < nOutWidth; x++) {
            int b = 0, g = 0, r = 0;
            for (int i = record.nLeft; i <= record.nRight; i++) {
                const int w = record.weights[static_cast<std::size_t>(i - record.nLeft)];
                const unsigned char* pIn = tempRows[static_cast<std::size_t>(i)] + 3 * x;
                b += pIn[0] * w;
                g += pIn[1] * w;
                r += pIn[2] * w;
            }
            ppOut[y][3 * x] = Rounded(b);
            ppOut[y][3 * x + 1] = Rounded(g);
            ppOut[y][3 * x + 2] = Rounded(r);
        }
    }
}

void Zoom(const unsigned char* pSrc, int nSrcWidth, int nSrcHeight, unsigned char* pDst,
          int nDstWidth, int nDstHeight) {
    const std::ptrdiff_t nSrcStride = (24 * nSrcWidth + 31) / 32 * 4;
    const std::ptrdiff_t nDstStride = (24 * nDstWidth + 31) / 32 * 4;
    const float xs = static_cast<float>(nSrcWidth - 1) / static_cast<float>(nDstWidth - 1);
    const float ys = static_cast<float>(nSrcHeight - 1) / static_cast<float>(nDstHeight - 1);
    std::vector<int> left, right;
    std::vector<float> fraction;
    for (int i = 0; i < nDstWidth; i++) {
        const float f = static_cast<float>(i) * xs;
        left.push_back(static_cast<int>(f));
        right.push_back(std::min(nSrcWidth - 1, static_cast<int>(f + 0.5f)));
        fraction.push_back(f - static_cast<float>(left.back()));
    }
    for (int j = 0; j < nDstHeight; j++) {
        const float g = static_cast<float>(j) * ys;
        const int nTop = static_cast<int>(g);
        const unsigned char* pTop = pSrc + nTop * nSrcStride;
        const unsigned char* pBottom =
            pSrc + std::min(nSrcHeight - 1, static_cast<int>(g + 0.5f)) * nSrcStride;
        const float wy = g - static_cast<float>(nTop);
        unsigned char* pOut = pDst + j * nDstStride;
        for (std::size_t i = 0; i < left.size(); i++) {
            const float wx = fraction[i];
            const float w00 = (1 - wy) * (1 - wx), w01 = (1 - wy) * wx, w10 = wy * (1 - wx),
                        w11 = wy * wx;
            const unsigned char* p00 = pTop + left[i] * 3;
            const unsigned char* p01 = pTop + right[i] * 3;
            const unsigned char* p10 = pBottom + left[i] * 3;
            const unsigned char* p11 = pBottom + right[i] * 3;
            for (int k = 0; k < 3; k++) {
                const float v = p00[k] * w00 + p01[k] * w01 + p10[k] * w10 + p11[k] * w11;
                *pOut++ = static_cast<unsigned char>(static_cast<int>(v));
            }
        }
    }
}

void Transpose(int nBytes, const unsigned char* pSrc, int nWidth, int nHeight,
               unsigned char* pDst) {
    const std::ptrdiff_t nSrcStride = (nBytes * 8 * nWidth + 31) / 32 * 4;
    const std::ptrdiff_t nDstStride = (nBytes * 8 * nHeight + 31) / 32 * 4;
    for (int x = 0; x < nWidth; x++) {
        for (int y = 0; y < nHeight; y++) {
            for (int k = 0; k < nBytes; k++) {
                pDst[x * nDstStride + y * nBytes + k] = pSrc[y * nSrcStride + x * nBytes + k];
            }
        }
    }
}

void Row24(const unsigned char* pRow, int nWidth, unsigned char* pOut) {
    for (int x = 0; x < nWidth; x++) {
        pOut[3 * x] = pRow[3 * x + 2];
        pOut[3 * x + 1] = pRow[3 * x + 1];
        pOut[3 * x + 2] = pRow[3 * x];
    }
}

void Row32(const unsigned char* pRow, int nWidth, unsigned char* pOut) {
    for (int x = 0; x < nWidth; x++) {
        pOut[3 * x] = pRow[4 * x + 2];
        pOut[3 * x + 1] = pRow[4 * x + 1];
        pOut[3 * x + 2] = pRow[4 * x];
    }
}

void Row16(const unsigned char* pRow, int nWidth, unsigned char* pOut) {
    for (int x = 0; x < nWidth; x++) {
        const unsigned int p = pRow[2 * x] | static_cast<unsigned int>(pRow[2 * x + 1] << 8);
        pOut[3 * x] = static_cast<unsigned char>((p >> 7) & 0xF8);
        pOut[3 * x + 1] = static_cast<unsigned char>((p >> 2) & 0xF8);
        pOut[3 * x + 2] = static_cast<unsigned char>(p << 3);
    }
}

void Row8(const unsigned char* pRow, int nWidth, const unsigned char* pPalette, int nCount,
          unsigned char* pOut) {
    for (int x = 0; x < nWidth; x++) {
        const unsigned char* pEntry = pPalette + 4 * std::min<int>(pRow[x], nCount - 1);
        pOut[3 * x] = pEntry[2];
        pOut[3 * x + 1] = pEntry[1];
        pOut[3 * x + 2] = pEntry[0];
    }
}

void Row1(const unsigned char* pRow, int nWidth, const unsigned char* pPalette,
          unsigned char* pOut) {
    for (int x = 0; x < nWidth; x++) {
        const unsigned char* pEntry = pPalette + 4 * ((pRow[x / 8] >> (7 - x % 8)) & 1);
        pOut[3 * x] = pEntry[2];
        pOut[3 * x + 1] = pEntry[1];
        pOut[3 * x + 2] = pEntry[0];
    }
}

}  // namespace plain
