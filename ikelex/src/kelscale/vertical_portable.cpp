// The vertical pass, portable. It sweeps over the rows of the steps, a piece of the row at a time.
//
// Sums of 16 bits begin at 128, half of 256. They cannot overflow, as in horizontal_portable.cpp.
#include <algorithm>
#include <cstdint>

#include "passes.h"
#include "variants.h"

namespace kel {

namespace {

// The sums of so many columns stay in the nearest cache.
constexpr std::size_t kChunk = 2048;

void SweepColumns16(const VerticalRow& row, std::size_t nAt, std::size_t nBytes) {
    std::uint16_t sums[kChunk];
    std::fill_n(sums, nBytes, std::uint16_t{128});
    for (unsigned int s = 0; s < row.nSteps; ++s) {
        const auto nWeight = static_cast<std::uint16_t>(row.pSteps[s].nWeights);
        const unsigned char* pIn = row.ppIn[s] + nAt;
        for (std::size_t i = 0; i < nBytes; ++i) {
            sums[i] = static_cast<std::uint16_t>(sums[i] + pIn[i] * nWeight);
        }
    }
    for (std::size_t i = 0; i < nBytes; ++i) {
        row.pOut[nAt + i] = static_cast<unsigned char>(sums[i] >> 8);
    }
}

void SweepColumns32(const VerticalRow& row, std::size_t nAt, std::size_t nBytes) {
    std::int32_t sums[kChunk];
    std::fill_n(sums, nBytes, 0);
    for (unsigned int s = 0; s < row.nSteps; ++s) {
        const auto nWeight = static_cast<std::int16_t>(row.pSteps[s].nWeights);
        const unsigned char* pIn = row.ppIn[s] + nAt;
        for (std::size_t i = 0; i < nBytes; ++i) {
            sums[i] += static_cast<std::int16_t>(pIn[i]) * nWeight;
        }
    }
    for (std::size_t i = 0; i < nBytes; ++i) {
        row.pOut[nAt + i] = ByteOfSum(sums[i]);
    }
}

void ScaleColumns(const VerticalRow& row) {
    const auto pfnSweep = row.bUnsigned16 ? SweepColumns16 : SweepColumns32;
    for (std::size_t nAt = 0; nAt < row.nBytes; nAt += kChunk) {
        pfnSweep(row, nAt, std::min(kChunk, row.nBytes - nAt));
    }
}

}  // namespace

const VerticalFunctions kVerticalPortable = {0, ScaleColumns};

}  // namespace kel
