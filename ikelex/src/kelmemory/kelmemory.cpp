// Pixel buffers and scratch, and the advice to the system about large ones.
#include "kelmemory.h"

#include <cstddef>
#include <limits>
#include <new>
#include <utility>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace kel {

namespace {

// From this size on a block holds whole huge pages wherever it starts.
[[maybe_unused]] constexpr std::int64_t kHugePageThreshold = 4 << 20;
// From this size on the C library maps each block afresh. A smaller block may have been in use
// before. Looking for its missing pages costs more than fetching them early saves.
[[maybe_unused]] constexpr std::int64_t kFreshThreshold = 32 << 20;

// A size that is not negative, as operator new takes it.
constexpr std::size_t Bytes(std::int64_t nSize) {
    return static_cast<std::size_t>(nSize);
}

#if defined(__linux__) && defined(MADV_HUGEPAGE)
// Advises the whole small pages between two addresses.
void Advise(std::uintptr_t nBegin, std::uintptr_t nEnd, int nAdvice) {
    constexpr std::uintptr_t kPage = 4096;
    const std::uintptr_t nFirst = (nBegin + kPage - 1) / kPage * kPage;
    const std::uintptr_t nLast = nEnd / kPage * kPage;
    if (nFirst < nLast) {
        madvise(reinterpret_cast<void*>(nFirst), nLast - nFirst, nAdvice);
    }
}
#endif

// Asks for huge pages in a large block. In a fresh block the small pages before the first huge page
// and after the last are fetched here. A page fault for each 4 KiB, on first use, costs several
// times as much per byte. These are hints, and their failure changes nothing.
unsigned char* AdviseHugePages(unsigned char* pBlock, [[maybe_unused]] std::int64_t nSize) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    if (pBlock != nullptr && nSize >= kHugePageThreshold) {
        const auto nBegin = reinterpret_cast<std::uintptr_t>(pBlock);
        const std::uintptr_t nEnd = nBegin + Bytes(nSize);
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

unsigned char* NewPixels(std::int64_t nSize) {
    if (nSize < 0) {
        throw std::bad_alloc();
    }
    return AdviseHugePages(new unsigned char[Bytes(nSize)], nSize);
}

unsigned char* TryNewPixels(std::int64_t nSize) {
    try {
        return NewPixels(nSize);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

unsigned char* NewPixelsNothrow(std::int64_t nSize) noexcept {
    if (nSize < 0 || !std::in_range<std::ptrdiff_t>(nSize)) {
        return nullptr;
    }
    return AdviseHugePages(new (std::nothrow) unsigned char[Bytes(nSize)], nSize);
}

std::unique_ptr<unsigned char[]> NewScratch(std::int64_t nSize) {
    if (nSize < 0 || nSize > std::numeric_limits<std::int32_t>::max()) {
        return nullptr;
    }
    return std::unique_ptr<unsigned char[]>(new (std::nothrow) unsigned char[Bytes(nSize)]);
}

}  // namespace kel
