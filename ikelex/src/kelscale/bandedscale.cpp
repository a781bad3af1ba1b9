#include "bandedscale.h"

#include <algorithm>
#include <cstring>

namespace kel {

bool BandedScale::Prepare(const LineContribType& horizontal, unsigned int nInWidth,
                          const LineContribType& vertical, unsigned int nInHeight,
                          CpuLevel eLevel) {
    m_nOutBytes = std::size_t{3} * static_cast<unsigned int>(horizontal.nLineLength);
    m_nInHeight = nInHeight;
    m_nOutHeight = static_cast<unsigned int>(vertical.nLineLength);
    m_bCopyRows = IsCopy(horizontal, nInWidth);
    m_bCopyColumns = IsCopy(vertical, nInHeight);
    if (!m_bCopyRows) {
        m_Horizontal.Prepare(horizontal, nInWidth, eLevel);  // it has its own way without a plan
    }
    return m_bCopyColumns || m_Vertical.Prepare(vertical, m_nOutBytes, eLevel);
}

// How many rows there are at most between the first one that this or a later output row needs and
// the last one that bands have brought.
unsigned int BandedScale::HeldRows() const {
    const unsigned int nBand = m_Horizontal.BandRows();
    unsigned int nHeld = std::min(nBand, m_nInHeight);
    unsigned int nNeeded = m_nInHeight;  // the first row that a later output row needs
    // From the last output row backwards, since a later one may reach further back.
    for (unsigned int y = m_nOutHeight; y-- > 0;) {
        const unsigned int nEnd = m_Vertical.EndRow(y);
        if (nEnd == 0) {
            continue;
        }
        nNeeded = std::min(nNeeded, m_Vertical.FirstRow(y));
        const unsigned int nBrought = std::min((nEnd + nBand - 1) / nBand * nBand, m_nInHeight);
        nHeld = std::max(nHeld, nBrought - nNeeded);
    }
    return nHeld;
}

bool BandedScale::AllocateRows() {
    return m_bCopyRows || m_bCopyColumns || m_nInHeight == 0 ||
           m_Temp.Allocate(m_nInHeight, HeldRows(), m_nOutBytes);
}

void BandedScale::Run(const unsigned char* const* ppIn, unsigned char* const* ppOut) {
    if (m_nOutBytes == 0) {
        return;  // rows without columns may be null
    }
    if (m_bCopyRows && m_bCopyColumns) {
        for (unsigned int y = 0; y < m_nOutHeight; ++y) {
            std::memcpy(ppOut[y], ppIn[y], m_nOutBytes);
        }
        return;
    }
    unsigned char* const* ppTemp = m_bCopyColumns ? ppOut : m_Temp.Rows();
    unsigned int nBrought = m_bCopyRows ? m_nInHeight : 0;
    const auto fnBring = [&](unsigned int nEnd) {
        while (nBrought < nEnd) {
            const unsigned int nRows = std::min(m_Horizontal.BandRows(), m_nInHeight - nBrought);
            m_Horizontal.Run(ppIn + nBrought, ppTemp + nBrought, nRows,
                             m_nInHeight - nBrought - nRows);
            nBrought += nRows;
        }
    };
    if (m_bCopyColumns) {
        fnBring(m_nInHeight);
        return;
    }
    for (unsigned int y = 0; y < m_nOutHeight; ++y) {
        fnBring(m_Vertical.EndRow(y));
        m_Vertical.Run(y, m_bCopyRows ? ppIn : ppTemp, ppOut[y]);
    }
}

}  // namespace kel
