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

#ifdef _WIN32
void* AllocateAligned(std::size_t nBytes, std::size_t nAlignment) {
    return _aligned_malloc(nBytes, nAlignment);
}
constexpr auto kFreeAligned = &_aligned_free;
#else
void* AllocateAligned(std::size_t nBytes, std::size_t nAlignment) {
    void* pBlock = nullptr;
    return posix_memalign(&pBlock, nAlignment, nBytes) == 0 ? pBlock : nullptr;
}
constexpr auto kFreeAligned = &std::free;
#endif

void* Allocate(std::size_t nSize, std::size_t nAlignment, long LiveBlocks::*pCounter) noexcept {
    const bool bActive = t_nPauses == 0;
    if (bActive && t_pFaults != nullptr && t_pFaults->NextFails()) {
        return nullptr;
    }
    const std::size_t nBytes = nSize == 0 ? 1 : nSize;
    void* const pBlock =
        nAlignment == 0 ? std::malloc(nBytes) : AllocateAligned(nBytes, nAlignment);
    if (pBlock != nullptr) {
        ++(t_Live.*pCounter);
        if (bActive && t_nFill >= 0) {
            std::memset(pBlock, t_nFill, nBytes);
        }
    }
    return pBlock;
}

void* AllocateOrThrow(std::size_t nSize, std::size_t nAlignment, long LiveBlocks::*pCounter) {
    if (void* pBlock = Allocate(nSize, nAlignment, pCounter)) {
        return pBlock;
    }
    throw std::bad_alloc();
}

void Release(void* pBlock, long LiveBlocks::*pCounter, void (*pfnFree)(void*)) noexcept {
    if (pBlock != nullptr) {
        --(t_Live.*pCounter);
        pfnFree(pBlock);
    }
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

using support::Allocate;
using support::AllocateOrThrow;
using support::kArrays;
using support::kFreeAligned;
using support::kSingles;
using support::Release;
using Size = std::size_t;
using Align = std::align_val_t;
using NoThrow = std::nothrow_t;

// Every form of one kind, written once.
// clang-format off
#define SUPPORT_OPERATORS(KIND, counter)                                                          \
    void* operator new KIND(Size n) { return AllocateOrThrow(n, 0, counter); }                    \
    void* operator new KIND(Size n, Align a) { return AllocateOrThrow(n, Size(a), counter); }     \
    void* operator new KIND(Size n, const NoThrow&) noexcept { return Allocate(n, 0, counter); }  \
    void* operator new KIND(Size n, Align a, const NoThrow&) noexcept {                           \
        return Allocate(n, Size(a), counter);                                                     \
    }                                                                                             \
    void operator delete KIND(void* p) noexcept { Release(p, counter, &std::free); }              \
    void operator delete KIND(void* p, Size) noexcept { Release(p, counter, &std::free); }        \
    void operator delete KIND(void* p, const NoThrow&) noexcept {                                 \
        Release(p, counter, &std::free);                                                          \
    }                                                                                             \
    void operator delete KIND(void* p, Align) noexcept { Release(p, counter, kFreeAligned); }     \
    void operator delete KIND(void* p, Size, Align) noexcept {                                    \
        Release(p, counter, kFreeAligned);                                                        \
    }                                                                                             \
    void operator delete KIND(void* p, Align, const NoThrow&) noexcept {                          \
        Release(p, counter, kFreeAligned);                                                        \
    }
// clang-format on

SUPPORT_OPERATORS(, kSingles)
SUPPORT_OPERATORS([], kArrays)

// The sanitizers' malloc ends the process on a size it cannot serve unless told to return null.
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}
extern "C" const char* __tsan_default_options() {
    return "allocator_may_return_null=1";
}
