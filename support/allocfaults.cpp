// The replaced operators: malloc and free, with the faults of the calling thread before them.
#include "support/allocfaults.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace support {

namespace {

// Constant-initialised: the operators run before any constructor does.
thread_local AllocFaults* t_pFaults = nullptr;
thread_local int t_nPauses = 0;
thread_local int t_nFill = -1;
thread_local LiveBlocks t_Live;

void* Allocate(std::size_t nSize, long LiveBlocks::*pCounter) noexcept {
    const bool bActive = t_nPauses == 0;
    if (bActive && t_pFaults != nullptr && t_pFaults->NextFails()) {
        return nullptr;
    }
    void* const pBlock = std::malloc(nSize == 0 ? 1 : nSize);
    if (pBlock != nullptr) {
        ++(t_Live.*pCounter);
        if (bActive && t_nFill >= 0) {
            std::memset(pBlock, t_nFill, nSize);
        }
    }
    return pBlock;
}

void* AllocateOrThrow(std::size_t nSize, long LiveBlocks::*pCounter) {
    if (void* pBlock = Allocate(nSize, pCounter)) {
        return pBlock;
    }
    throw std::bad_alloc();
}

void Release(void* pBlock, long LiveBlocks::*pCounter) noexcept {
    t_Live.*pCounter -= pBlock != nullptr ? 1 : 0;
    std::free(pBlock);
}

constexpr auto kSingles = &LiveBlocks::nSingles;
constexpr auto kArrays = &LiveBlocks::nArrays;

}  // namespace

AllocFaults::AllocFaults(long nAllocation, bool bForEver)
    : m_nFailing(nAllocation), m_bForEver(bForEver) {
    t_pFaults = this;
}

AllocFaults::~AllocFaults() {
    t_pFaults = nullptr;
}

bool AllocFaults::NextFails() {
    ++m_nSeen;
    const bool bFails =
        m_nFailing > 0 && (m_nSeen == m_nFailing || (m_bForEver && m_nSeen > m_nFailing));
    m_bFired = m_bFired || bFails;
    return bFails;
}

AllocPause::AllocPause() {
    ++t_nPauses;
}
AllocPause::~AllocPause() {
    --t_nPauses;
}

AllocFill::AllocFill(unsigned char byFill) {
    t_nFill = byFill;
}
AllocFill::~AllocFill() {
    t_nFill = -1;
}

LiveBlocks CountLiveBlocks() {
    return t_Live;
}

}  // namespace support

// Every form of one kind, written once. Nothing here is aligned more than malloc aligns.
// clang-format off
#define SUPPORT_OPERATORS(KIND, counter)                                                           \
    void* operator new KIND(std::size_t n) { return support::AllocateOrThrow(n, counter); }        \
    void* operator new KIND(std::size_t n, const std::nothrow_t&) noexcept {                       \
        return support::Allocate(n, counter);                                                      \
    }                                                                                              \
    void operator delete KIND(void* p) noexcept { support::Release(p, counter); }                  \
    void operator delete KIND(void* p, std::size_t) noexcept { support::Release(p, counter); }     \
    void operator delete KIND(void* p, const std::nothrow_t&) noexcept {                           \
        support::Release(p, counter);                                                              \
    }
// clang-format on

SUPPORT_OPERATORS(, support::kSingles)
SUPPORT_OPERATORS([], support::kArrays)

// The sanitizers' malloc ends the process on a size it cannot serve unless told to return null.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
extern "C" const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}
