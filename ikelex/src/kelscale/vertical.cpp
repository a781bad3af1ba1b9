// The plan of the vertical pass, and the road of one row.
#include "vertical.h"

#include <algorithm>
#include <new>

#include "kelbitmap/integers.h"
#include "passes.h"

namespace kel {

void VerticalPass::Prepare(const LineContribType& table, std::size_t nRowBytes,
                           const ScaleFunctions& functions) {
    m_pTable = &table;
    m_nRowBytes = nRowBytes;
    m_pFunctions = &functions.vertical;
    const int nPairLimit = functions.vertical.nPairLimit;
    if (nPairLimit != 0 ? PlanColumns(table, nPairLimit, m_Plan) : PlanTaps(table, m_Plan)) {
        m_ppSources.reset(new (std::nothrow) const unsigned char*[m_Plan.nMostSteps]);
    }
}

VerticalPass::Needs VerticalPass::RowsFor(unsigned int y) const {
    int nFirst = m_pTable->pPixels[y].nLeft;
    int nLast = m_pTable->pPixels[y].nRight;
    if (m_ppSources != nullptr) {
        // The steps of a record are in the order of their rows.
        const PlanStep* pBegin = &m_Plan.pSteps[m_Plan.pStart[y]];
        const PlanStep* pEnd = &m_Plan.pSteps[m_Plan.pStart[y + 1]];
        nFirst = pBegin == pEnd ? 0 : pBegin->nIndex;
        nLast = pBegin == pEnd ? -1 : pEnd[-1].nIndex;
    }
    if (nLast < nFirst) {
        return {0, 0};
    }
    return {Low32(nFirst), Low32(nLast) + 1};
}

void VerticalPass::Run(unsigned int y, const unsigned char* const* ppIn,
                       unsigned char* pOut) const {
    if (m_ppSources == nullptr) {
        ScaleColumnsPlain(ppIn, pOut, m_nRowBytes, m_pTable->pPixels[y]);
        return;
    }
    const PlanStep* pSteps = &m_Plan.pSteps[m_Plan.pStart[y]];
    const unsigned int nSteps = m_Plan.pStart[y + 1] - m_Plan.pStart[y];
    int nWeights = 0;
    for (unsigned int s = 0; s < nSteps; ++s) {
        m_ppSources[s] = ppIn[pSteps[s].nIndex];
        nWeights += pSteps[s].nWeights;
    }
    if (nWeights == 256 && pSteps[0].nIndex == pSteps[nSteps - 1].nIndex) {
        std::copy_n(m_ppSources[0], m_nRowBytes, pOut);  // one row with the whole weight
        return;
    }
    m_pFunctions->pfnColumns(
        {m_ppSources.get(), pSteps, nSteps, nWeights, m_Plan.bUnsigned16, pOut, m_nRowBytes});
}

}  // namespace kel
