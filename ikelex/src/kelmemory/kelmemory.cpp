#include "kelmemory.h"

#include <cstdint>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace kel {

namespace {

// From 32 MiB on the C library maps each block afresh, so that the advice reaches fresh pages only.
constexpr std::size_t kHugePageThreshold = std::size_t{32} << 20;

// Asks for huge pages on the whole small pages of a block. A hint: its failure changes nothing.
void AdviseHugePages([[maybe_unused]] unsigned char* pBlock, [[maybe_unused]] std::size_t nSize) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t kPage = 4096;
    const auto nAddress = reinterpret_cast<std::uintptr_t>(pBlock);
    const std::uintptr_t nFirst = (nAddress + kPage - 1) / kPage * kPage;
    const std::uintptr_t nEnd = (nAddress + nSize) / kPage * kPage;
    madvise(reinterpret_cast<void*>(nFirst), nEnd - nFirst, MADV_HUGEPAGE);
#endif
}

}  // namespace

unsigned char* NewPixels(std::size_t nSize) {
    unsigned char* pBlock = new unsigned char[nSize];
    if (nSize >= kHugePageThreshold) {
        AdviseHugePages(pBlock, nSize);
    }
    return pBlock;
}

}  // namespace kel
