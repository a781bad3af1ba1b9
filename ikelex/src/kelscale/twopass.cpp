// The members of C2PassScale. Tables, passes and kernels decide the bytes.
#include <algorithm>
#include <cstdint>

#include "bandedscale.h"
#include "contributions.h"
#include "passes.h"

namespace {

using Pixel = CDataRGB_UBYTE::PixelClass;

unsigned char* const* AsBytes(Pixel** ppRows) {
    return reinterpret_cast<unsigned char* const*>(ppRows);
}

// The span of memory that rows lie in. Rows without bytes give an empty one.
struct Span {
    std::uintptr_t nBegin = UINTPTR_MAX;
    std::uintptr_t nEnd = 0;

    Span(Pixel** ppRows, unsigned int nWidth, unsigned int nHeight) {
        for (unsigned int y = 0; y < nHeight && nWidth != 0; ++y) {
            const auto nRow = reinterpret_cast<std::uintptr_t>(ppRows[y]);
            nBegin = std::min(nBegin, nRow);
            nEnd = std::max(nEnd, nRow + std::uintptr_t{3} * nWidth);
        }
    }
    bool Overlaps(const Span& other) const { return nBegin < other.nEnd && other.nBegin < nEnd; }
};

}  // namespace

template <class DataClass>
C2PassScale<DataClass>::C2PassScale(PLContribDef* pContribDef, ScaleProgressFunc pfnProgress)
    : m_pfnProgress(pfnProgress), m_bCancelled(false), m_pContribDef(pContribDef) {}

template <class DataClass>
C2PassScale<DataClass>::~C2PassScale() = default;

template <class DataClass>
typename C2PassScale<DataClass>::PixelClass** C2PassScale<DataClass>::Scale(
    PixelClass** ppIn, unsigned int nInWidth, unsigned int nInHeight, PixelClass** ppOut,
    unsigned int nOutWidth, unsigned int nOutHeight) {
    m_bCancelled = false;
    // Everything that can fail comes before the first write.
    kel::TablePair tables;
    if (!tables.Calc(*m_pContribDef, nOutWidth, nInWidth, nOutHeight, nInHeight)) {
        return nullptr;
    }
    const bool bApart = !Span(ppIn, nInWidth, nInHeight).Overlaps({ppOut, nOutWidth, nOutHeight});
    kel::BandedScale banded;
    banded.Prepare(tables.Horizontal(), nInWidth, tables.Vertical(), nInHeight,
                   kel::BestScaleFunctions());
    if (m_pfnProgress == nullptr && bApart) {
        return banded.Run(AsBytes(ppIn), AsBytes(ppOut)) ? ppOut : nullptr;
    }
    using Outcome = kel::BandedScale::Outcome;
    const Outcome eOutcome = banded.RunPasses(AsBytes(ppIn), AsBytes(ppOut), m_pfnProgress);
    m_bCancelled = eOutcome == Outcome::kCancelled;
    return eOutcome == Outcome::kDone ? ppOut : nullptr;
}

template <class DataClass>
void C2PassScale<DataClass>::HorizScale(PixelClass** ppIn, unsigned int nInWidth, unsigned int,
                                        PixelClass** ppOut, unsigned int nOutWidth,
                                        unsigned int nOutHeight) {
    const kel::Contributions table = kel::CalcContributions(*m_pContribDef, nOutWidth, nInWidth);
    for (unsigned int y = 0; table != nullptr && y < nOutHeight; ++y) {
        if (!kel::Report(m_pfnProgress, kel::Percent(y, nOutHeight))) {
            m_bCancelled = true;
            return;
        }
        ScaleRow(ppIn, nInWidth, ppOut, nOutWidth, y, table.get());
    }
}

template <class DataClass>
void C2PassScale<DataClass>::VertScale(PixelClass** ppIn, unsigned int, unsigned int nInHeight,
                                       PixelClass** ppOut, unsigned int nOutWidth,
                                       unsigned int nOutHeight) {
    const kel::Contributions table = kel::CalcContributions(*m_pContribDef, nOutHeight, nInHeight);
    for (unsigned int y = 0; table != nullptr && y < nOutHeight; ++y) {
        if (!kel::Report(m_pfnProgress, kel::Percent(y, nOutHeight) + 50)) {
            m_bCancelled = true;
            return;
        }
        if (nOutWidth != 0) {
            kel::ScaleColumnsPlain(AsBytes(ppIn), *ppOut[y], std::size_t{3} * nOutWidth,
                                   table->pPixels[y]);
        }
    }
}

template <class DataClass>
void C2PassScale<DataClass>::ScaleRow(PixelClass** ppIn, unsigned int, PixelClass** ppOut,
                                      unsigned int nOutWidth, unsigned int nRow,
                                      LineContribType* pTable) const {
    if (ppIn == nullptr || ppOut == nullptr || nOutWidth == 0 || pTable == nullptr) {
        return;
    }
    kel::ScaleRowPlain(*ppIn[nRow], *ppOut[nRow], nOutWidth, *pTable);
}

template <class DataClass>
LineContribType* C2PassScale<DataClass>::CalcContributions(unsigned int nOutLength,
                                                           unsigned int nInLength,
                                                           double dRatio) const {
    return kel::CalcContributions(*m_pContribDef, nOutLength, nInLength, dRatio).release();
}

template <class DataClass>
LineContribType* C2PassScale<DataClass>::AllocContributions(unsigned int nRecords,
                                                            unsigned int nWeights) const {
    return kel::AllocContributions(nRecords, nWeights);
}

template <class DataClass>
void C2PassScale<DataClass>::FreeContributions(LineContribType* pTable) const {
    kel::FreeContributions(pTable);
}

template class C2PassScale<CDataRGB_UBYTE>;
