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

// One dimension: each result of a line is a weighted sum of that line's samples.
template <class Sample, class Result>
void Pass(const std::vector<Record>& table, std::size_t nLines, Sample sample, Result result) {
    for (std::size_t n = 0; n < nLines; ++n) {
        for (std::size_t u = 0; u < table.size(); ++u) {
            auto i = static_cast<std::size_t>(table[u].nLeft);
            int nSum = 0;
            for (const int nWeight : table[u].weights) {
                nSum += sample(n, i++) * nWeight;
            }
            result(n, u) = static_cast<unsigned char>(((nSum + 128) / 256) & 255);
        }
    }
}

}  // namespace

void RefScale(KelScaleType eType, const unsigned char* const* ppIn, unsigned int nInWidth,
              unsigned int nInHeight, unsigned char* const* ppOut, unsigned int nOutWidth,
              unsigned int nOutHeight) {
    const std::size_t nStride = std::size_t{3} * nOutWidth;
    std::vector<unsigned char> temp(nStride * nInHeight);
    // Lines of the first pass: each row's channels; of the second: each byte's column.
    Pass(
        Contributions(eType, static_cast<int>(nOutWidth), static_cast<int>(nInWidth)),
        std::size_t{3} * nInHeight,
        [&](std::size_t n, std::size_t x) { return ppIn[n / 3][3 * x + n % 3]; },
        [&](std::size_t n, std::size_t u) -> unsigned char& {
            return temp[n / 3 * nStride + 3 * u + n % 3];
        });
    Pass(
        Contributions(eType, static_cast<int>(nOutHeight), static_cast<int>(nInHeight)), nStride,
        [&](std::size_t n, std::size_t y) { return temp[y * nStride + n]; },
        [&](std::size_t n, std::size_t u) -> unsigned char& { return ppOut[u][n]; });
}

}  // namespace support
