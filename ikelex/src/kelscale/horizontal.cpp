// The choice of a form for the horizontal pass, and the loop of the banded form.
#include "horizontal.h"

#include <algorithm>
#include <new>

#include "passes.h"

namespace kel {

namespace {

constexpr unsigned int kMostBandRows = 32;

// From this many source pixels for each output pixel and chunk on, windows are faster than bands.
constexpr std::size_t kWindowRatio = 6;

// The shuffles of wider rows would stay in no cache.
constexpr std::size_t kMostShuffled = 32768;

// A strip takes more output pixels as long as its transposed pixels stay within the second level
// cache.
constexpr std::size_t kStripBytes = std::size_t{256} << 10;

// The limit of the scratch. Kernels of other makers may scatter the pixels that 16 records need
// over a whole row.
constexpr std::size_t kMostScratch = std::size_t{16} << 20;

std::size_t RoundUp(std::size_t nValue, std::size_t nMultiple) {
    return (nValue + nMultiple - 1) / nMultiple * nMultiple;
}

// One block of the last, incomplete pixels of each row. It is summed into copies, because no byte
// after a row may be written.
void SumTail(const BandFunctions& functions, const Band& band, std::size_t x, std::size_t nPixels,
             unsigned char* const* ppOut) {
    unsigned char tail[kMostBandRows][3 * kBlockPixels];
    unsigned char* rows[kMostBandRows];
    for (unsigned int r = 0; r < functions.nRows; ++r) {
        rows[r] = tail[r];
    }
    functions.pfnSum(band, x, rows);
    for (unsigned int r = 0; r < functions.nRows; ++r) {
        std::copy_n(tail[r], 3 * nPixels, ppOut[r]);
    }
}

}  // namespace

RowsAhead::RowsAhead(const NextRows& rows, std::size_t nShares)
    : m_ppRow(rows.ppRows),
      m_ppEnd(rows.ppRows + rows.nRows),
      m_nRowBytes(rows.nRowBytes),
      m_nLines((RoundUp(rows.nRowBytes, kLine) / kLine * rows.nRows + nShares - 1) / nShares) {}

void HorizontalPass::Prepare(const LineContribType& table, unsigned int nInWidth,
                             const ScaleFunctions& functions) {
    m_pTable = &table;
    m_nInWidth = nInWidth;
    m_nOutWidth = AsSize(table.nLineLength);
    m_pFunctions = &functions;
    m_eForm = PrepareForm();
    if (m_eForm == Form::kBands) {
        m_nBandRows = functions.band.nRows;
    } else if (m_eForm == Form::kShuffles) {
        m_nBandRows = functions.pShuffles->nRows;
    }
}

HorizontalPass::Form HorizontalPass::PrepareForm() {
    if (m_nOutWidth == 0) {
        return Form::kPlain;
    }
    if (PrepareWindows()) {
        return Form::kWindows;
    }
    if (PrepareShuffles()) {
        return Form::kShuffles;
    }
    return PrepareBands() ? Form::kBands : Form::kPlain;
}

bool HorizontalPass::PrepareWindows() {
    const WindowFunctions* pFunctions = m_pFunctions->pWindows;
    const std::size_t nMostChunks = m_nInWidth / m_nOutWidth / kWindowRatio;
    return pFunctions != nullptr && nMostChunks != 0 &&
           PlanWindows(*m_pTable, m_nInWidth,
                       static_cast<int>(std::min<std::size_t>(nMostChunks, kMostChunks)),
                       pFunctions->nLaneLimit, m_Windows);
}

bool HorizontalPass::PrepareShuffles() {
    const ShuffleFunctions* pFunctions = m_pFunctions->pShuffles;
    return pFunctions != nullptr && m_nOutWidth <= kMostShuffled &&
           PlanShuffles(*m_pTable, m_nInWidth, pFunctions->shape, pFunctions->nMostSteps,
                        m_Shuffles);
}

bool HorizontalPass::PrepareBands() {
    const int nPairLimit = m_pFunctions->band.nPairLimit;
    const bool bPlanned =
        nPairLimit != 0 ? PlanGroups(*m_pTable, nPairLimit, m_Plan) : PlanTaps(*m_pTable, m_Plan);
    return bPlanned && CutStrips();
}

// The source pixels that the block of output pixels from x on needs. nUnit is the number of pixels
// of an index of the plan.
HorizontalPass::Strip HorizontalPass::BlockStrip(std::size_t x, std::size_t nUnit) const {
    const std::size_t nOutEnd = std::min(x + kBlockPixels, m_nOutWidth);
    Strip block = {x, nOutEnd, m_nInWidth, 0};
    for (std::size_t i = m_Plan.pStart[x]; i < m_Plan.pStart[nOutEnd]; ++i) {
        const std::size_t nAt = AsSize(m_Plan.pSteps[i].nIndex) * nUnit;
        block.nInBegin = std::min(block.nInBegin, nAt);
        block.nInEnd = std::max(block.nInEnd, std::min(nAt + nUnit, m_nInWidth));
    }
    return block;
}

// Cuts the output into strips, and makes the indices of the plan relative to the strips.
bool HorizontalPass::CutStrips() {
    const BandFunctions& functions = m_pFunctions->band;
    const std::size_t nPixelBytes = std::size_t{3} * functions.nRows;
    const std::size_t nUnit = functions.nPairLimit != 0 ? 4 : 1;
    m_pStrips.reset(new (std::nothrow) Strip[RoundUp(m_nOutWidth, kBlockPixels) / kBlockPixels]);
    if (m_pStrips == nullptr) {
        return false;
    }
    std::size_t nWidest = 0;
    for (std::size_t x = 0; x < m_nOutWidth;) {
        Strip strip = BlockStrip(x, nUnit);
        for (x = strip.nOutEnd; x < m_nOutWidth; x = strip.nOutEnd) {
            const Strip block = BlockStrip(x, nUnit);
            const Strip both = {strip.nOutBegin, block.nOutEnd,
                                std::min(strip.nInBegin, block.nInBegin),
                                std::max(strip.nInEnd, block.nInEnd)};
            if (both.Width() * nPixelBytes > kStripBytes) {
                break;
            }
            strip = both;
        }
        for (std::size_t i = m_Plan.pStart[strip.nOutBegin]; i < m_Plan.pStart[x]; ++i) {
            m_Plan.pSteps[i].nIndex -= static_cast<int>(strip.nInBegin / nUnit);
        }
        nWidest = std::max(nWidest, strip.Width());
        m_pStrips[m_nStrips++] = strip;
    }
    const std::size_t nScratch = RoundUp(nWidest, kBlockPixels) * nPixelBytes;
    if (nScratch <= kMostScratch) {
        m_pScratch.reset(new (std::nothrow) unsigned char[nScratch]);
    }
    return m_pScratch != nullptr;
}

void HorizontalPass::Run(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                         unsigned int nRows, NextRows next) const {
    // The processor foresees a few rows that lie in memory, but not those that others are made of.
    const bool bForeseen = m_eForm != Form::kBands && next.ppRows == ppIn + nRows;
    next.nRows = bForeseen ? 0 : std::min(next.nRows, m_nBandRows);
    switch (m_eForm) {
        case Form::kPlain:
            ScaleRowPlain(*ppIn, *ppOut, m_nOutWidth, *m_pTable);
            break;
        case Form::kBands:
            RunBand(ppIn, ppOut, nRows, next);
            break;
        case Form::kWindows: {
            RowsAhead ahead(next, RoundUp(m_nOutWidth, kSharePixels) / kSharePixels);
            m_pFunctions->pWindows->pfnRow(*ppIn, *ppOut, m_nOutWidth, m_Windows, ahead);
            break;
        }
        case Form::kShuffles:
            RunShuffles(ppIn, ppOut, nRows, next);
            break;
    }
}

void HorizontalPass::RunShuffles(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                                 unsigned int nRows, const NextRows& next) const {
    RowsAhead ahead(next, RoundUp(m_nOutWidth, kSharePixels) / kSharePixels);
    const unsigned char* in[kMostBandRows];
    unsigned char* out[kMostBandRows];
    // The last rows, when they are fewer, repeat the last one.
    for (unsigned int r = 0; r < m_nBandRows; ++r) {
        in[r] = ppIn[std::min(r, nRows - 1)];
        out[r] = ppOut[std::min(r, nRows - 1)];
    }
    m_pFunctions->pShuffles->pfnRows(in, out, m_nOutWidth, m_Shuffles, ahead);
}

void HorizontalPass::RunBand(const unsigned char* const* ppIn, unsigned char* const* ppOut,
                             unsigned int nRows, const NextRows& next) const {
    const BandFunctions& functions = m_pFunctions->band;
    const unsigned char* in[kMostBandRows];
    unsigned char* out[kMostBandRows];
    RowsAhead ahead(next, RoundUp(m_nOutWidth, kBlockPixels) / 4);
    const Band band = {m_Plan.pStart.get(), m_Plan.pSteps.get(), m_Plan.bUnsigned16,
                       m_pScratch.get(), &ahead};
    for (const Strip* p = m_pStrips.get(); p != m_pStrips.get() + m_nStrips; ++p) {
        // A last band of fewer rows repeats the last one.
        for (unsigned int r = 0; r < m_nBandRows; ++r) {
            in[r] = ppIn[std::min(r, nRows - 1)] + 3 * p->nInBegin;
            out[r] = ppOut[std::min(r, nRows - 1)] + 3 * p->nOutBegin;
        }
        functions.pfnTranspose(in, p->Width(), m_pScratch.get());
        for (std::size_t x = p->nOutBegin; x < p->nOutEnd; x += kBlockPixels) {
            if (x + kBlockPixels > m_nOutWidth) {
                SumTail(functions, band, x, m_nOutWidth - x, out);
                break;
            }
            functions.pfnSum(band, x, out);
            for (unsigned int r = 0; r < m_nBandRows; ++r) {
                out[r] += 3 * kBlockPixels;
            }
        }
    }
}

}  // namespace kel
