#include "kelmemory.h"

#include <cstdint>
#include <new>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace kel {

namespace {

// From this size on a block holds whole huge pages wherever it starts.
[[maybe_unused]] constexpr std::size_t kHugePageThreshold = std::size_t{4} << 20;
// From this size on the C library maps each block afresh. Smaller ones may have been in use before,
// and then looking for missing pages costs more than it spares.
[[maybe_unused]] constexpr std::size_t kFreshThreshold = std::size_t{32} << 20;

#if defined(__linux__) && defined(MADV_HUGEPAGE)
// Advises the whole small pages between two addresses.
void Advise(std::uintptr_t nBegin, std::uintptr_t nEnd, int nAdvice) {
    constexpr std::uintptr_t kPage = 4096;
    const std::uintptr_t nFirst = (nBegin + kPage - 1) / kPage * kPage;
    const std::uintptr_t nBehind = nEnd / kPage * kPage;
    if (nFirst < nBehind) {
        madvise(reinterpret_cast<void*>(nFirst), nBehind - nFirst, nAdvice);
    }
}
#endif

// Asks for huge pages in a large block. Where all its pages are fresh, those small ones that lie
// before the first huge page and behind the last are fetched at once: one by one, on first use,
// they cost many times as much a byte. Hints: their failure changes nothing.
unsigned char* AdviseHugePages(unsigned char* pBlock, [[maybe_unused]] std::size_t nSize) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (pBlock != nullptr && nSize >= kHugePageThreshold) {
        const auto nBegin = reinterpret_cast<std::uintptr_t>(pBlock);
        const std::uintptr_t nEnd = nBegin + nSize;
        Advise(nBegin, nEnd, MADV_HUGEPAGE);
#ifdef MADV_POPULATE_WRITE
        if (nSize >= kFreshThreshold) {
            constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
            Advise(nBegin, (nBegin + kHugePage - 1) / kHugePage * kHugePage, MADV_POPULATE_WRITE);
            Advise(nEnd / kHugePage * kHugePage, nEnd, MADV_POPULATE_WRITE);
        }
#endif
    }
#endif
    return pBlock;
}

}  // namespace

unsigned char* NewPixels(std::size_t nSize) {
    return AdviseHugePages(new unsigned char[nSize], nSize);
}

unsigned char* TryNewPixels(std::size_t nSize) {
    try {
        return NewPixels(nSize);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

unsigned char* NewPixelsNothrow(std::size_t nSize) noexcept {
    return AdviseHugePages(new (std::nothrow) unsigned char[nSize], nSize);
}

}  // namespace kel
