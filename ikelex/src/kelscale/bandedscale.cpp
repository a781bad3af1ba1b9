// The loops over the bands and rows of both passes. The passes decide the bytes.
#include "bandedscale.h"

#include <algorithm>
#include <cstring>

#include "contributions.h"
#include "kelbitmap/integers.h"

namespace kel {

void BandedScale::Prepare(const LineContribType& horizontal, unsigned int nInWidth,
                          const LineContribType& vertical, unsigned int nInHeight,
                          const ScaleFunctions& functions) {
    m_nInBytes = std::size_t{3} * nInWidth;
    m_nOutBytes = 3 * AsSize(horizontal.nLineLength);
    m_nInHeight = nInHeight;
    m_nOutHeight = Low32(vertical.nLineLength);
    m_bCopyRows = IsCopy(horizontal, nInWidth);
    m_bCopyColumns = IsCopy(vertical, nInHeight);
    if (!m_bCopyRows) {
        m_Horizontal.Prepare(horizontal, nInWidth, functions);
    }
    m_Vertical.Prepare(vertical, m_nOutBytes, functions);
}

// The size of the ring of rows between the passes. At most this many rows lie between the first one
// that an output row or a later one needs, and the last one that was scaled for it.
unsigned int BandedScale::HeldRows() const {
    const unsigned int nBand = BandRows();
    unsigned int nHeld = std::min(nBand, m_nInHeight);
    unsigned int nNeeded = m_nInHeight;  // the first row that a later output row needs
    // From the last output row backwards, since a later one may reach further back.
    for (unsigned int y = m_nOutHeight; y-- > 0;) {
        const VerticalPass::Needs needs = m_Vertical.RowsFor(y);
        if (needs.nEnd == 0) {
            continue;
        }
        nNeeded = std::min(nNeeded, needs.nFirst);
        const unsigned int nScaled =
            std::min((needs.nEnd + nBand - 1) / nBand * nBand, m_nInHeight);
        nHeld = std::max(nHeld, nScaled - nNeeded);
    }
    return nHeld;
}

bool BandedScale::AllocateRows(unsigned int nHeld) {
    return m_nInHeight == 0 || m_Temp.Allocate(m_nInHeight, nHeld, m_nOutBytes);
}

// Scales a band horizontally.
void BandedScale::ScaleBand(const Input& input, unsigned int nFirst, unsigned int nRows,
                            unsigned char* const* ppTemp) const {
    const unsigned char* const* ppIn =
        input.pSource != nullptr ? input.pSource->Rows(nFirst, nRows) : input.ppRows + nFirst;
    if (m_bCopyRows) {
        for (unsigned int i = 0; i < nRows; ++i) {
            std::memcpy(ppTemp[nFirst + i], ppIn[i], m_nOutBytes);
        }
        return;
    }
    const unsigned int nEnd = nFirst + nRows;
    const NextRows next = input.pSource != nullptr
                              ? input.pSource->MadeFrom(nEnd)
                              : NextRows{ppIn + nRows, m_nInHeight - nEnd, m_nInBytes};
    m_Horizontal.Run(ppIn, ppTemp + nFirst, nRows, next);
}

bool BandedScale::Run(const unsigned char* const* ppIn, unsigned char* const* ppOut) {
    return RunBands({ppIn, nullptr}, ppOut);
}

bool BandedScale::Run(RowSource& source, unsigned char* const* ppOut) {
    return source.Prepare(BandRows()) && RunBands({nullptr, &source}, ppOut);
}

bool BandedScale::RunBands(const Input& input, unsigned char* const* ppOut) {
    // Where a pass changes nothing, its rows are those of the other one.
    const bool bDirect = m_bCopyRows && input.pSource == nullptr;
    if (!bDirect && !m_bCopyColumns && !AllocateRows(HeldRows())) {
        return false;
    }
    if (m_nOutBytes == 0) {
        return true;  // rows without columns may be null
    }
    unsigned char* const* ppTemp = m_bCopyColumns ? ppOut : m_Temp.Rows();
    unsigned int nScaled = 0;
    const auto fnScaleTo = [&](unsigned int nEnd) {
        while (nScaled < nEnd) {
            const unsigned int nRows = std::min(BandRows(), m_nInHeight - nScaled);
            ScaleBand(input, nScaled, nRows, ppTemp);
            nScaled += nRows;
        }
    };
    if (m_bCopyColumns) {
        fnScaleTo(m_nInHeight);
        return true;
    }
    for (unsigned int y = 0; y < m_nOutHeight; ++y) {
        if (!bDirect) {
            fnScaleTo(m_Vertical.RowsFor(y).nEnd);
        }
        m_Vertical.Run(y, bDirect ? input.ppRows : ppTemp, ppOut[y]);
    }
    return true;
}

BandedScale::Outcome BandedScale::RunPasses(const unsigned char* const* ppIn,
                                            unsigned char* const* ppOut,
                                            const ScaleProgressFunc& pfnProgress) {
    if (!AllocateRows(m_nInHeight)) {
        return Outcome::kNoMemory;
    }
    unsigned int nScaled = 0;
    for (unsigned int y = 0; y < m_nInHeight; ++y) {
        if (!Report(pfnProgress, Percent(y, m_nInHeight))) {
            return Outcome::kCancelled;
        }
        // A band is scaled when its last row has been asked for.
        const unsigned int nRows = y + 1 - nScaled;
        if ((nRows == BandRows() || y + 1 == m_nInHeight) && m_nOutBytes != 0) {
            ScaleBand({ppIn, nullptr}, nScaled, nRows, m_Temp.Rows());
            nScaled += nRows;
        }
    }
    for (unsigned int y = 0; y < m_nOutHeight; ++y) {
        if (!Report(pfnProgress, Percent(y, m_nOutHeight) + 50)) {
            return Outcome::kCancelled;
        }
        if (m_nOutBytes != 0) {
            m_Vertical.Run(y, m_Temp.Rows(), ppOut[y]);
        }
    }
    return Outcome::kDone;
}

bool ScaleRows(const PLContribDef& kernel, RowSource& source, unsigned int nInWidth,
               unsigned int nInHeight, unsigned char* const* ppOut, unsigned int nOutWidth,
               unsigned int nOutHeight) {
    TablePair tables;
    if (!tables.Calc(kernel, nOutWidth, nInWidth, nOutHeight, nInHeight)) {
        return false;
    }
    BandedScale banded;
    banded.Prepare(tables.Horizontal(), nInWidth, tables.Vertical(), nInHeight,
                   BestScaleFunctions());
    return banded.Run(source, ppOut);
}

}  // namespace kel
