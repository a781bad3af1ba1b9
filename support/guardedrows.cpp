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

// Reserved pages may not be touched until they are opened. A failure ends the program.
#ifdef _WIN32

std::size_t PageSize() {
    return 4096;
}

unsigned char* ReservePages(std::size_t nBytes) {
    void* const pPages = VirtualAlloc(nullptr, nBytes, MEM_RESERVE, PAGE_NOACCESS);
    return pPages != nullptr ? static_cast<unsigned char*>(pPages) : (std::abort(), nullptr);
}

void OpenPages(unsigned char* pPages, std::size_t nBytes) {
    if (nBytes > 0 && VirtualAlloc(pPages, nBytes, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
        std::abort();
    }
}

void ReleasePages(unsigned char* pReserved, std::size_t) {
    VirtualFree(pReserved, 0, MEM_RELEASE);
}

#else

std::size_t PageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

unsigned char* ReservePages(std::size_t nBytes) {
    void* const pPages =
        mmap(nullptr, nBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return pPages != MAP_FAILED ? static_cast<unsigned char*>(pPages) : (std::abort(), nullptr);
}

void OpenPages(unsigned char* pPages, std::size_t nBytes) {
    if (mprotect(pPages, nBytes, PROT_READ | PROT_WRITE) != 0) {
        std::abort();
    }
}

void ReleasePages(unsigned char* pReserved, std::size_t nBytes) {
    munmap(pReserved, nBytes);
}

#endif

}  // namespace

GuardedRows::GuardedRows(std::size_t nRows, std::size_t nMaxBytes)
    : m_nPage(PageSize()),
      m_nRows(nRows),
      m_nSize((nMaxBytes + m_nPage - 1) / m_nPage * m_nPage),
      m_pMapped(ReservePages(m_nPage + m_nRows * Stride())) {
    for (std::size_t y = 0; y < m_nRows; ++y) {
        // Some systems refuse to open no pages.
        if (m_nSize != 0) {
            OpenPages(Begin(y), m_nSize);
        }
    }
    Fill();
}

GuardedRows::~GuardedRows() {
    ReleasePages(m_pMapped, m_nPage + m_nRows * Stride());
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
