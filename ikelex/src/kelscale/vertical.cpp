#include "vertical.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "passes.h"

namespace kel {

namespace {

// The sums of so many columns stay in the nearest cache.
constexpr std::size_t kChunk = 2048;

// In 16 bits: see SumPixel16 of horizontal.cpp for why they suffice.
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

}  // namespace

void ScaleColumns_Portable(const VerticalRow& row) {
    const auto pfnSweep = row.bUnsigned16 ? SweepColumns16 : SweepColumns32;
    for (std::size_t nAt = 0; nAt < row.nBytes; nAt += kChunk) {
        pfnSweep(row, nAt, std::min(kChunk, row.nBytes - nAt));
    }
}

bool VerticalPass::Prepare(const LineContribType& table, std::size_t nRowBytes, CpuLevel eLevel) {
    m_nRowBytes = nRowBytes;
    bool bPlanned = false;
    // One choice per pass, the best level first.
    switch (eLevel) {
#if defined(__x86_64__)
        case CpuLevel::kAvx512:
            m_pfnColumns = ScaleColumns_Avx512;
            bPlanned = PlanColumns(table, kNoPairLimit, m_Plan);
            break;
        case CpuLevel::kAvx2:
            m_pfnColumns = ScaleColumns_Avx2;
            bPlanned = PlanColumns(table, kPairLimit, m_Plan);
            break;
#endif
        default:
            m_pfnColumns = ScaleColumns_Portable;
            bPlanned = PlanTaps(table, m_Plan);
    }
    if (bPlanned) {
        m_ppSources.reset(new (std::nothrow) const unsigned char*[m_Plan.nMostSteps]);
    }
    return m_ppSources != nullptr;
}

// The steps of a record are in the order of their rows.
unsigned int VerticalPass::FirstRow(unsigned int y) const {
    const unsigned int nStart = m_Plan.pStart[y];
    return nStart == m_Plan.pStart[y + 1] ? 0u
                                          : static_cast<unsigned int>(m_Plan.pSteps[nStart].nIndex);
}

unsigned int VerticalPass::EndRow(unsigned int y) const {
    const unsigned int nEnd = m_Plan.pStart[y + 1];
    return nEnd == m_Plan.pStart[y] ? 0u
                                    : static_cast<unsigned int>(m_Plan.pSteps[nEnd - 1].nIndex) + 1;
}

void VerticalPass::Run(unsigned int y, const unsigned char* const* ppIn,
                       unsigned char* pOut) const {
    const PlanStep* pSteps = &m_Plan.pSteps[m_Plan.pStart[y]];
    const unsigned int nSteps = m_Plan.pStart[y + 1] - m_Plan.pStart[y];
    int nWeights = 0;
    for (unsigned int s = 0; s < nSteps; ++s) {
        m_ppSources[s] = ppIn[pSteps[s].nIndex];
        nWeights += pSteps[s].nWeights;
    }
    m_pfnColumns(
        {m_ppSources.get(), pSteps, nSteps, nWeights, m_Plan.bUnsigned16, pOut, m_nRowBytes});
}

}  // namespace kel
