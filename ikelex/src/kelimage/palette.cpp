// The palette table. It has m_nPaletteSize entries, of which the first m_nPaletteNum are valid.
#include <platform/vamplatform.h>

#include <cstdint>
#include <cstring>
#include <new>

#include "kelbitmap/colortable.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelimage.h"
#include "keltrace/keltrace.h"

namespace {

constexpr std::int64_t kEntrySize = sizeof(tagKelRGBQUAD);
constexpr int kGrowth = 16;
constexpr int kDeepCapacity = 256;

// A zeroed table, or null. Entries that are not yet valid must not show old memory.
tagKelRGBQUAD* NewTable(std::int64_t nEntries) {
    if (nEntries * kEntrySize > kel::kMaxSize) {
        return nullptr;
    }
    return new (std::nothrow) tagKelRGBQUAD[kel::AsSize(nEntries)]();
}

}  // namespace

void CKelImage::DestroyPaletteTable() {
    delete[] m_pPalette;
    m_pPalette = nullptr;
    m_nPaletteNum = 0;
    m_nPaletteSize = 0;
}

tagKelRGBQUAD* CKelImage::CreatePalette(BITMAPINFO* pBMI) {
    DestroyPaletteTable();
    const unsigned int nEntries = kel::ColorTableEntries(pBMI->bmiHeader);
    if (nEntries == 0) {
        return nullptr;
    }
    tagKelRGBQUAD* pNewPalette = NewTable(nEntries);
    if (pNewPalette == nullptr) {
        kel::TraceNull("pNewPalette");
        return nullptr;
    }
    const unsigned char* pTable = reinterpret_cast<unsigned char*>(pBMI) + pBMI->bmiHeader.biSize;
    std::memcpy(pNewPalette, pTable, std::size_t{nEntries} * sizeof *pNewPalette);
    m_nPaletteSize = static_cast<int>(nEntries);
    m_nPaletteNum = m_nPaletteSize;
    m_pPalette = pNewPalette;
    return m_pPalette;
}

bool CKelImage::ExpandPaletteTable() {
    if (m_pPalette == nullptr) {
        m_nPaletteNum = 0;
        m_nPaletteSize = 0;
        const int nCapacity = m_bmih.biBitCount < 9 ? 2 * m_bmih.biBitCount : kDeepCapacity;
        if (nCapacity == 0) {
            return false;
        }
        m_pPalette = NewTable(nCapacity);
        if (m_pPalette == nullptr) {
            kel::TraceNull("m_pPalette");
            return false;
        }
        m_nPaletteSize = nCapacity;
        return true;
    }
    if (m_nPaletteNum < m_nPaletteSize) {
        return true;
    }
    tagKelRGBQUAD* pNewPalette = NewTable(std::int64_t{m_nPaletteSize} + kGrowth);
    if (pNewPalette == nullptr) {
        kel::TraceNull("pNewPalette");
        return false;
    }
    const std::int64_t nOld = std::int64_t{m_nPaletteSize} * kEntrySize;
    const std::int64_t nNew = nOld + kGrowth * kEntrySize;
    kel::SecureCopyInto(kel::kSourceImage, pNewPalette, nNew, m_pPalette, nOld);
    delete[] m_pPalette;
    m_pPalette = pNewPalette;
    m_nPaletteSize += kGrowth;
    return true;
}

int CKelImage::AddPaletteEntry(unsigned char byRed, unsigned char byGreen, unsigned char byBlue,
                               unsigned char byReserved) {
    if (ExpandPaletteTable()) {
        m_pPalette[m_nPaletteNum++] = {byBlue, byGreen, byRed, byReserved};
    }
    return m_nPaletteNum;
}
