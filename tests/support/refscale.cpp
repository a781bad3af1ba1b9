#include "support/refscale.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

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

// The kernel functions and their half-widths, by number.
constexpr struct {
    double dWidth;
    double (*pfnFilter)(double);
} kKernels[] = {{0, nullptr}, {0.64, Bilinear}, {0.5, Box}, {3.0, Gaussian}, {3.0, Hamming}};

// The weights of one output position: entry j belongs to source position nLeft + j.
struct Record {
    int nLeft;
    std::vector<int> weights;
};

std::vector<Record> Contributions(KelScaleType eType, int nOut, int nIn) {
    const auto& kernel = kKernels[eType];
    const double dRatio = static_cast<double>(nOut) / nIn;
    const double dSupport = dRatio < 1.0 ? kernel.dWidth / dRatio : kernel.dWidth;
    const double dScale = std::min(dRatio, 1.0);
    const int nWindow = 2 * static_cast<int>(std::ceil(dSupport)) + 1;
    std::vector<Record> table;
    for (int u = 0; u < nOut; ++u) {
        const double t = (u + 0.5) / dRatio - 0.5;
        int nLeft = std::max(0, static_cast<int>(std::floor(t - dSupport)));
        const int nRight = std::min(nIn - 1, static_cast<int>(std::ceil(t + dSupport)));
        if (nRight - nLeft >= nWindow) {
            ++nLeft;
        }
        Record record{nLeft, {}};
        int nTotal = 0;
        for (int i = nLeft; i <= nRight; ++i) {
            record.weights.push_back(
                static_cast<int>(kernel.pfnFilter((t - i) * dScale) * dScale * 256.0));
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

void Horizontal(const std::vector<Record>& table, const unsigned char* const* ppIn,
                unsigned char* const* ppOut, std::size_t nRows) {
    for (std::size_t y = 0; y < nRows; ++y) {
        unsigned char* pOut = ppOut[y];
        for (const Record& record : table) {
            for (std::ptrdiff_t k = 0; k < 3; ++k) {
                const unsigned char* pIn = ppIn[y] + 3 * std::ptrdiff_t{record.nLeft} + k;
                int nSum = 0;
                for (const int nWeight : record.weights) {
                    nSum += *pIn * nWeight;
                    pIn += 3;
                }
                *pOut++ = Byte(nSum);
            }
        }
    }
}

void Vertical(const std::vector<Record>& table, const unsigned char* const* ppIn,
              unsigned char* const* ppOut, std::size_t nBytes) {
    for (const Record& record : table) {
        unsigned char* pOut = *ppOut++;
        for (std::size_t x = 0; x < nBytes; ++x) {
            const unsigned char* const* ppRow = ppIn + record.nLeft;
            int nSum = 0;
            for (const int nWeight : record.weights) {
                nSum += (*ppRow++)[x] * nWeight;
            }
            pOut[x] = Byte(nSum);
        }
    }
}

}  // namespace

void RefScale(KelScaleType eType, const unsigned char* const* ppIn, unsigned int nInWidth,
              unsigned int nInHeight, unsigned char* const* ppOut, unsigned int nOutWidth,
              unsigned int nOutHeight) {
    const std::size_t nStride = std::size_t{3} * nOutWidth;
    std::vector<unsigned char> temp(nStride * nInHeight);
    std::vector<unsigned char*> rows;
    for (std::size_t y = 0; y < nInHeight; ++y) {
        rows.push_back(temp.data() + nStride * y);
    }
    Horizontal(Contributions(eType, static_cast<int>(nOutWidth), static_cast<int>(nInWidth)), ppIn,
               rows.data(), rows.size());
    Vertical(Contributions(eType, static_cast<int>(nOutHeight), static_cast<int>(nInHeight)),
             rows.data(), ppOut, nStride);
}

}  // namespace support
