// Rows between protected pages, by mmap or VirtualAlloc.
#include "support/guardedrows.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace support {

namespace {

// Fresh pages, pages that nobody may touch. A failure ends the program.
void Check(bool bDone) {
    if (!bDone) {
        std::abort();
    }
}

#ifdef _WIN32

std::size_t PageSize() {
    return 4096;
}

unsigned char* MapPages(std::size_t nBytes) {
    void* const p = VirtualAlloc(nullptr, nBytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    Check(p != nullptr);
    return static_cast<unsigned char*>(p);
}

void Protect(unsigned char* pPage, std::size_t nBytes) {
    DWORD nOld = 0;
    Check(VirtualProtect(pPage, nBytes, PAGE_NOACCESS, &nOld) != 0);
}

void UnmapPages(unsigned char* pPages, std::size_t) {
    VirtualFree(pPages, 0, MEM_RELEASE);
}

#else

std::size_t PageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

unsigned char* MapPages(std::size_t nBytes) {
    constexpr int kAccess = PROT_READ | PROT_WRITE;
    void* const p = mmap(nullptr, nBytes, kAccess, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    Check(p != MAP_FAILED);
    return static_cast<unsigned char*>(p);
}

void Protect(unsigned char* pPage, std::size_t nBytes) {
    Check(mprotect(pPage, nBytes, PROT_NONE) == 0);
}

void UnmapPages(unsigned char* pPages, std::size_t nBytes) {
    munmap(pPages, nBytes);
}

#endif

}  // namespace

GuardedRows::GuardedRows(std::size_t nRows, std::size_t nMaxBytes)
    : m_nPage(PageSize()),
      m_nRows(nRows),
      m_nSize((nMaxBytes + m_nPage - 1) / m_nPage * m_nPage),
      m_pMapped(MapPages(m_nPage + m_nRows * Stride())) {
    for (std::size_t y = 0; y <= m_nRows; ++y) {
        Protect(m_pMapped + y * Stride(), m_nPage);
    }
    Fill();
}

GuardedRows::~GuardedRows() {
    UnmapPages(m_pMapped, m_nPage + m_nRows * Stride());
}

void GuardedRows::Fill() {
    for (std::size_t y = 0; y < m_nRows; ++y) {
        std::fill(Begin(y), End(y), kFill);
    }
}

bool GuardedRows::operator==(const GuardedRows& other) const {
    for (std::size_t y = 0; y < m_nRows; ++y) {
        if (std::memcmp(Begin(y), other.Begin(y), m_nSize) != 0) {
            return false;
        }
    }
    return true;
}

}  // namespace support
