#include <algorithm>
#include <cstdint>

#include "bandedscale.h"
#include "contributions.h"
#include "passes.h"

namespace {

using Pixel = CDataRGB_UBYTE::PixelClass;

kel::Contributions MakeTable(const PLContribDef& kernel, unsigned int nOutLength,
                             unsigned int nInLength) {
    const double dRatio = static_cast<double>(nOutLength) / static_cast<double>(nInLength);
    return kel::CalcContributions(kernel, nOutLength, nInLength, dRatio);
}

// How far the rows of a pass have come, 0 to 49.
int Percent(unsigned int nRow, unsigned int nRows) {
    return static_cast<int>(static_cast<double>(nRow) / static_cast<double>(nRows) * 50.0);
}

// Tells the callback, if any, how far the scale has come; false when it wants to stop.
bool Report(ScaleProgressFunc pfnProgress, int nPercent) {
    return pfnProgress == nullptr || pfnProgress(static_cast<unsigned char>(nPercent));
}

unsigned char* const* AsBytes(Pixel** ppRows) {
    return reinterpret_cast<unsigned char* const*>(ppRows);
}

// The span of memory that rows lie in; empty when there is nothing in them.
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

// The passes row by row, asking the callback before each. False when it stopped them.
bool RunHorizontal(Pixel** ppIn, Pixel** ppOut, unsigned int nOutWidth, unsigned int nOutHeight,
                   const LineContribType& table, ScaleProgressFunc pfnProgress) {
    for (unsigned int y = 0; y < nOutHeight; ++y) {
        if (!Report(pfnProgress, Percent(y, nOutHeight))) {
            return false;
        }
        kel::ScaleRowPlain(*ppIn[y], *ppOut[y], nOutWidth, table);
    }
    return true;
}

bool RunVertical(Pixel** ppIn, Pixel** ppOut, unsigned int nOutWidth, unsigned int nOutHeight,
                 const LineContribType& table, ScaleProgressFunc pfnProgress) {
    const std::size_t nRowBytes = std::size_t{3} * nOutWidth;
    for (unsigned int y = 0; y < nOutHeight; ++y) {
        if (!Report(pfnProgress, Percent(y, nOutHeight) + 50)) {
            return false;
        }
        kel::ScaleColumnsPlain(AsBytes(ppIn), *ppOut[y], nRowBytes, table.pPixels[y]);
    }
    return true;
}

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
    const kel::Contributions horizontal = MakeTable(*m_pContribDef, nOutWidth, nInWidth);
    const kel::Contributions vertical = MakeTable(*m_pContribDef, nOutHeight, nInHeight);
    if (horizontal == nullptr || vertical == nullptr) {
        return nullptr;
    }
    const bool bApart = !Span(ppIn, nInWidth, nInHeight).Overlaps({ppOut, nOutWidth, nOutHeight});
    kel::BandedScale banded;
    if (m_pfnProgress == nullptr && bApart &&
        banded.Prepare(*horizontal, nInWidth, *vertical, nInHeight, kel::BestCpuLevel())) {
        if (!banded.AllocateRows()) {
            return nullptr;
        }
        banded.Run(AsBytes(ppIn), AsBytes(ppOut));
        return ppOut;
    }
    kel::RowBlock rows;
    if (!rows.Allocate(nInHeight, nInHeight, std::size_t{3} * nOutWidth)) {
        return nullptr;
    }
    Pixel** ppTemp = reinterpret_cast<Pixel**>(rows.Rows());
    m_bCancelled = !RunHorizontal(ppIn, ppTemp, nOutWidth, nInHeight, *horizontal, m_pfnProgress) ||
                   !RunVertical(ppTemp, ppOut, nOutWidth, nOutHeight, *vertical, m_pfnProgress);
    return m_bCancelled ? nullptr : ppOut;
}

template <class DataClass>
void C2PassScale<DataClass>::HorizScale(PixelClass** ppIn, unsigned int nInWidth, unsigned int,
                                        PixelClass** ppOut, unsigned int nOutWidth,
                                        unsigned int nOutHeight) {
    const kel::Contributions table = MakeTable(*m_pContribDef, nOutWidth, nInWidth);
    if (table != nullptr &&
        !RunHorizontal(ppIn, ppOut, nOutWidth, nOutHeight, *table, m_pfnProgress)) {
        m_bCancelled = true;
    }
}

template <class DataClass>
void C2PassScale<DataClass>::VertScale(PixelClass** ppIn, unsigned int, unsigned int nInHeight,
                                       PixelClass** ppOut, unsigned int nOutWidth,
                                       unsigned int nOutHeight) {
    const kel::Contributions table = MakeTable(*m_pContribDef, nOutHeight, nInHeight);
    if (table != nullptr &&
        !RunVertical(ppIn, ppOut, nOutWidth, nOutHeight, *table, m_pfnProgress)) {
        m_bCancelled = true;
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
