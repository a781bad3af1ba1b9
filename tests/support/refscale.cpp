#include "support/refscale.h"

#include <algorithm>
#include <cmath>

namespace support {

namespace {

constexpr double kPi = 3.141592653589793;

double Box(double x) {
    return std::abs(x) <= 0.5 ? 1.0 : 0.0;
}

double Bilinear(double x) {
    return std::abs(x) < 0.64 ? 0.64 - std::abs(x) : 0.0;
}

double Gaussian(double x) {
    return std::abs(x) <= 3.0 ? std::exp(-1.0 - x * x / 3.0) / 2.5066282746310002 : 0.0;
}

double Hamming(double x) {
    if (std::abs(x) > 3.0) {
        return 0.0;
    }
    const double dWindow = 0.46 * std::cos(6.283185307179586 * x) + 0.54;
    return std::abs(x) < 0.000001 ? dWindow : dWindow * std::sin(kPi * x) / (kPi * x);
}

unsigned char Byte(int nSum) {
    return static_cast<unsigned char>(((nSum + 128) / 256) & 255);
}

}  // namespace

RefKernel MakeRefKernel(KelScaleType eType) {
    switch (eType) {
        case KEL_SCALE_BOX:
            return {0.5, Box};
        case KEL_SCALE_GAUSSIAN:
            return {3.0, Gaussian};
        case KEL_SCALE_HAMMING:
            return {3.0, Hamming};
        default:
            return {0.64, Bilinear};
    }
}

std::vector<RefRecord> RefContributions(const RefKernel& kernel, int nOut, int nIn) {
    const double dRatio = static_cast<double>(nOut) / nIn;
    const double dSupport = dRatio < 1.0 ? kernel.dWidth / dRatio : kernel.dWidth;
    const double dScale = std::min(dRatio, 1.0);
    const int nWindow = 2 * static_cast<int>(std::ceil(dSupport)) + 1;
    std::vector<RefRecord> table;
    for (int u = 0; u < nOut; ++u) {
        const double t = (u + 0.5) / dRatio - 0.5;
        int nLeft = std::max(0, static_cast<int>(std::floor(t - dSupport)));
        const int nRight = std::min(nIn - 1, static_cast<int>(std::ceil(t + dSupport)));
        if (nRight - nLeft >= nWindow) {
            ++nLeft;
        }
        RefRecord record{nLeft, {}};
        int nTotal = 0;
        for (int i = nLeft; i <= nRight; ++i) {
            record.weights.push_back(
                static_cast<int>(kernel.fnFilter((t - i) * dScale) * dScale * 256.0));
            nTotal += record.weights.back();
        }
        if (nTotal > 0) {
            int nSum = 0;
            for (int& nWeight : record.weights) {
                nWeight = nWeight * 256 / nTotal;
                nSum += nWeight;
            }
            nSum -= record.weights.back();
            record.weights.back() = 256 - nSum;
        }
        table.push_back(record);
    }
    return table;
}

void RefHorizontal(const std::vector<RefRecord>& table, const unsigned char* const* ppIn,
                   unsigned char* const* ppOut, int nRows) {
    for (int y = 0; y < nRows; ++y) {
        unsigned char* pOut = ppOut[y];
        for (const RefRecord& record : table) {
            const unsigned char* pIn = ppIn[y] + 3 * static_cast<std::ptrdiff_t>(record.nLeft);
            int nSum0 = 0, nSum1 = 0, nSum2 = 0;
            for (const int nWeight : record.weights) {
                nSum0 += pIn[0] * nWeight;
                nSum1 += pIn[1] * nWeight;
                nSum2 += pIn[2] * nWeight;
                pIn += 3;
            }
            pOut[0] = Byte(nSum0);
            pOut[1] = Byte(nSum1);
            pOut[2] = Byte(nSum2);
            pOut += 3;
        }
    }
}

void RefVertical(const std::vector<RefRecord>& table, const unsigned char* const* ppIn,
                 unsigned char* const* ppOut, int nWidth) {
    for (const RefRecord& record : table) {
        unsigned char* pOut = *ppOut++;
        const unsigned char* const* ppRows = ppIn + record.nLeft;
        for (std::ptrdiff_t x = 0; x < 3 * static_cast<std::ptrdiff_t>(nWidth); x += 3) {
            int nSum0 = 0, nSum1 = 0, nSum2 = 0;
            for (std::size_t j = 0; j < record.weights.size(); ++j) {
                const unsigned char* pIn = ppRows[j] + x;
                nSum0 += pIn[0] * record.weights[j];
                nSum1 += pIn[1] * record.weights[j];
                nSum2 += pIn[2] * record.weights[j];
            }
            pOut[x] = Byte(nSum0);
            pOut[x + 1] = Byte(nSum1);
            pOut[x + 2] = Byte(nSum2);
        }
    }
}

void RefScale(const RefKernel& kernel, const unsigned char* const* ppIn, int nInWidth,
              int nInHeight, unsigned char* const* ppOut, int nOutWidth, int nOutHeight) {
    const std::size_t nStride = 3 * static_cast<std::size_t>(nOutWidth);
    std::vector<unsigned char> temp(nStride * static_cast<std::size_t>(nInHeight));
    std::vector<unsigned char*> rows;
    for (int y = 0; y < nInHeight; ++y) {
        rows.push_back(temp.data() + nStride * static_cast<std::size_t>(y));
    }
    RefHorizontal(RefContributions(kernel, nOutWidth, nInWidth), ppIn, rows.data(), nInHeight);
    RefVertical(RefContributions(kernel, nOutHeight, nInHeight), rows.data(), ppOut, nOutWidth);
}

}  // namespace support
