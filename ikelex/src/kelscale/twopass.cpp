#include <memory>
#include <new>

#include "../kelbitmap/strides.h"
#include "contributions.h"
#include "passes.h"

namespace {

using Pixel = CDataRGB_UBYTE::PixelClass;

struct FreeTable {
    void operator()(LineContribType* pTable) const { kel::FreeContributions(pTable); }
};
using Table = std::unique_ptr<LineContribType, FreeTable>;

Table MakeTable(const PLContribDef& kernel, unsigned int nOutLength, unsigned int nInLength) {
    const double dRatio = static_cast<double>(nOutLength) / static_cast<double>(nInLength);
    return Table(kel::CalcContributions(kernel, nOutLength, nInLength, dRatio));
}

// How far the rows of a pass have come, 0 to 49.
int Percent(unsigned int nRow, unsigned int nRows) {
    return static_cast<int>(static_cast<double>(nRow) / static_cast<double>(nRows) * 50.0);
}

// Tells the callback, if any, how far the scale has come; false when it wants to stop.
bool Report(ScaleProgressFunc pfnProgress, int nPercent) {
    return pfnProgress == nullptr || pfnProgress(static_cast<unsigned char>(nPercent));
}

// Rows of equal size in one block, with the array of pointers to them.
class RowBlock {
  public:
    // False when the rows cannot be had.
    bool Allocate(std::size_t nRows, std::size_t nRowBytes) {
        std::size_t nSize = 0;
        if (__builtin_mul_overflow(nRows, nRowBytes, &nSize)) {
            return false;
        }
        m_pBytes.reset(new (std::nothrow) unsigned char[nSize]);
        m_ppRows.reset(new (std::nothrow) Pixel*[nRows]);
        if (m_pBytes == nullptr || m_ppRows == nullptr) {
            return false;
        }
        for (std::size_t i = 0; i < nRows; ++i) {
            m_ppRows[i] = reinterpret_cast<Pixel*>(m_pBytes.get() + i * nRowBytes);
        }
        return true;
    }

    Pixel** Rows() const { return m_ppRows.get(); }

  private:
    std::unique_ptr<unsigned char[]> m_pBytes;
    std::unique_ptr<Pixel*[]> m_ppRows;
};

const unsigned char* const* AsBytes(Pixel** ppRows) {
    return reinterpret_cast<const unsigned char* const*>(ppRows);
}

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
    const Table horizontal = MakeTable(*m_pContribDef, nOutWidth, nInWidth);
    const Table vertical = MakeTable(*m_pContribDef, nOutHeight, nInHeight);
    RowBlock temp;
    if (horizontal == nullptr || vertical == nullptr ||
        !temp.Allocate(nInHeight, std::size_t{3} * nOutWidth)) {
        return nullptr;
    }
    m_bCancelled =
        !RunHorizontal(ppIn, temp.Rows(), nOutWidth, nInHeight, *horizontal, m_pfnProgress) ||
        !RunVertical(temp.Rows(), ppOut, nOutWidth, nOutHeight, *vertical, m_pfnProgress);
    return m_bCancelled ? nullptr : ppOut;
}

template <class DataClass>
void C2PassScale<DataClass>::HorizScale(PixelClass** ppIn, unsigned int nInWidth, unsigned int,
                                        PixelClass** ppOut, unsigned int nOutWidth,
                                        unsigned int nOutHeight) {
    const Table table = MakeTable(*m_pContribDef, nOutWidth, nInWidth);
    if (table != nullptr &&
        !RunHorizontal(ppIn, ppOut, nOutWidth, nOutHeight, *table, m_pfnProgress)) {
        m_bCancelled = true;
    }
}

template <class DataClass>
void C2PassScale<DataClass>::VertScale(PixelClass** ppIn, unsigned int, unsigned int nInHeight,
                                       PixelClass** ppOut, unsigned int nOutWidth,
                                       unsigned int nOutHeight) {
    const Table table = MakeTable(*m_pContribDef, nOutHeight, nInHeight);
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
    return kel::CalcContributions(*m_pContribDef, nOutLength, nInLength, dRatio);
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
