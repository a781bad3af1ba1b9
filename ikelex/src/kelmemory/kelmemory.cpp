#include "kelmemory.h"

#include <cstdint>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace kel {

namespace {

// From 32 MiB on the C library maps each block afresh, so that the advice reaches fresh pages only.
[[maybe_unused]] constexpr std::size_t kHugePageThreshold = std::size_t{32} << 20;

// Asks for huge pages on the whole small pages of a large block. A hint: its failure changes
// nothing.
unsigned char* AdviseHugePages(unsigned char* pBlock, [[maybe_unused]] std::size_t nSize) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (pBlock != nullptr && nSize >= kHugePageThreshold) {
        constexpr std::uintptr_t kPage = 4096;
        const auto nAddress = reinterpret_cast<std::uintptr_t>(pBlock);
        const std::uintptr_t nFirst = (nAddress + kPage - 1) / kPage * kPage;
        const std::uintptr_t nEnd = (nAddress + nSize) / kPage * kPage;
        madvise(reinterpret_cast<void*>(nFirst), nEnd - nFirst, MADV_HUGEPAGE);
    }
#endif
    return pBlock;
}

}  // namespace

unsigned char* NewPixels(std::size_t nSize) {
    return AdviseHugePages(new unsigned char[nSize], nSize);
}

unsigned char* NewPixelsNothrow(std::size_t nSize) noexcept {
    return AdviseHugePages(new (std::nothrow) unsigned char[nSize], nSize);
}

}  // namespace kel
