// The scaler's formulas: kernels, weights of each output pixel, and the two passes.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

#include "support/reference/operations.h"

namespace reference {

namespace {

// The source pixels of one output pixel, from nLeft on.
struct Record {
    int nLeft = 0;
    std::vector<int> weights;
};

constexpr double kPi = std::numbers::pi;

double Bilinear(double x) {
    return 0.64 - std::fabs(x);
}
double Box(double) {
    return 1.0;
}
double Gaussian(double x) {
    return std::exp(-1.0 - x * x / 3.0) / 2.5066282746310002;
}
double Hamming(double x) {
    const double h = 0.46 * std::cos(2 * kPi * x) + 0.54;
    return std::fabs(x) < 0.000001 ? h : h * std::sin(kPi * x) / (kPi * x);
}

// By number, from 1 on: the half-width, and the formula within it. The judge has numbers of its
// own.
struct Kernel {
    double dWidth;
    double (*pfnValue)(double x);

    double At(double x) const { return std::fabs(x) > dWidth ? 0.0 : pfnValue(x); }
};
constexpr Kernel kKernels[] = {{0.64, Bilinear}, {0.5, Box}, {3.0, Gaussian}, {3.0, Hamming}};

std::vector<Record> Table(int nKernel, std::int64_t nOut, std::int64_t nIn) {
    const Kernel& kernel = kKernels[nKernel - 1];
    const double dRatio = static_cast<double>(nOut) / static_cast<double>(nIn);
    const double dFactor = std::min(dRatio, 1.0);
    const double dSupport = kernel.dWidth / dFactor;
    const int nWindow = 2 * static_cast<int>(std::ceil(dSupport)) + 1;
    std::vector<Record> table(static_cast<std::size_t>(nOut));
    int u = 0;
    for (Record& record : table) {
        const double t = (u++ + 0.5) / dRatio - 0.5;
        record.nLeft = std::max(0, static_cast<int>(std::floor(t - dSupport)));
        const int nRight =
            std::min(static_cast<int>(nIn) - 1, static_cast<int>(std::ceil(t + dSupport)));
        if (nRight - record.nLeft >= nWindow) {
            ++record.nLeft;
        }
        int nTotal = 0;
        for (int i = record.nLeft; i <= nRight; ++i) {
            const double dWeight = kernel.At((t - i) * dFactor) * dFactor * 256.0;
            record.weights.push_back(static_cast<int>(dWeight));
            nTotal += record.weights.back();
        }
        int nRest = 256;
        for (std::size_t j = 0; nTotal > 0 && j < record.weights.size(); ++j) {
            int& nWeight = record.weights[j];
            nWeight = j + 1 == record.weights.size() ? nRest : nWeight * 256 / nTotal;
            nRest -= nWeight;
        }
    }
    return table;
}

// The weighted sum of pixels nStep bytes apart.
void Weigh(const Record& record, const unsigned char* pIn, std::size_t nStep, unsigned char* pOut) {
    int b = 0, g = 0, r = 0;
    for (const int nWeight : record.weights) {
        b += pIn[0] * nWeight;
        g += pIn[1] * nWeight;
        r += pIn[2] * nWeight;
        pIn += nStep;
    }
    for (const int nSum : {b, g, r}) {
        *pOut++ = static_cast<unsigned char>((nSum + 128) / 256);
    }
}

}  // namespace

const int kKernelCount = static_cast<int>(std::size(kKernels));

void Scale(int nKernel, unsigned char* const* ppIn, std::int64_t nInWidth, std::int64_t nInHeight,
           unsigned char* const* ppOut, std::int64_t nOutWidth, std::int64_t nOutHeight) {
    Rows temp = support::BlackRows(24, static_cast<int>(nOutWidth), static_cast<int>(nInHeight));
    const std::vector<Record> columns = Table(nKernel, nOutWidth, nInWidth);
    for (int y = 0; y < nInHeight; ++y) {
        unsigned char* pOut = temp.Row(y);
        for (const Record& record : columns) {
            Weigh(record, ppIn[y] + 3 * record.nLeft, 3, pOut);
            pOut += 3;
        }
    }
    for (const Record& record : Table(nKernel, nOutHeight, nInHeight)) {
        unsigned char* const pOut = *ppOut++;
        for (int x = 0; x < nOutWidth; ++x) {
            Weigh(record, temp.Row(record.nLeft) + 3 * x, temp.Stride(), pOut + 3 * x);
        }
    }
}

}  // namespace reference
