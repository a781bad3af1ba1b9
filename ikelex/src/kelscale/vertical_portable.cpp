// The vertical pass, portable. It sweeps over the rows of the steps, a piece of the row at a time.
#include <algorithm>
#include <cstdint>

#include "sums.h"
#include "variants.h"

namespace kel {

namespace {

// The sums of so many columns stay in the nearest cache.
constexpr std::size_t kChunk = 2048;

template <typename Sum, Sum kStart>
void SweepColumns(const VerticalRow& row, std::size_t nAt, std::size_t nBytes) {
    Sum sums[kChunk];
    std::fill_n(sums, nBytes, kStart);
    for (unsigned int s = 0; s < row.nSteps; ++s) {
        AddWeighted(row.ppIn[s] + nAt, row.pSteps[s].nWeights, sums, nBytes);
    }
    StoreSums(sums, row.pOut + nAt, nBytes);
}

void ScaleColumns(const VerticalRow& row) {
    const auto pfnSweep =
        row.bUnsigned16 ? SweepColumns<std::uint16_t, 128> : SweepColumns<std::int32_t, 0>;
    for (std::size_t nAt = 0; nAt < row.nBytes; nAt += kChunk) {
        pfnSweep(row, nAt, std::min(kChunk, row.nBytes - nAt));
    }
}

}  // namespace

const VerticalFunctions kVerticalPortable = {0, ScaleColumns};

}  // namespace kel
