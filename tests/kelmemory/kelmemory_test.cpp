// What pixel buffers ask of the system, and the sizes of scratch. madvise below takes the place of
// the C library's.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "kelmemory/kelmemory.h"

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace {

TEST(Scratch, SizesOutside31BitsAreRefused) {
    EXPECT_EQ(kel::NewScratch(-1), nullptr);
    EXPECT_EQ(kel::NewScratch(std::int64_t{1} << 31), nullptr);
    EXPECT_NE(kel::NewScratch(0), nullptr);
}

#if defined(__linux__) && defined(MADV_HUGEPAGE)

constexpr std::uintptr_t kPage = 4096;
constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;

struct Advice {
    std::uintptr_t nBegin, nEnd;
    int nAdvice;
};
std::vector<Advice> g_Advices;

// Whole pages of the block alone, since other blocks share its first and last page.
TEST(Pixels, LargeBlocksAskForHugePages) {
    for (auto* const pfnNew : {kel::TryNewPixels, kel::NewPixels,
                               static_cast<decltype(&kel::NewPixels)>(kel::NewPixelsNothrow)}) {
        for (const int nMegabytes : {1, 4, 33}) {
            const std::int64_t nSize = (std::int64_t{nMegabytes} << 20) + 100;
            g_Advices.clear();
            const std::unique_ptr<unsigned char[]> pBlock(pfnNew(nSize));
            const std::vector<Advice> advices = g_Advices;
            const auto nBlock = reinterpret_cast<std::uintptr_t>(pBlock.get());
            const std::uintptr_t nEnd = nBlock + static_cast<std::uintptr_t>(nSize);
            const std::uintptr_t nFirstPage = (nBlock + kPage - 1) / kPage * kPage;
            const std::uintptr_t nLastPage = nEnd / kPage * kPage;
            ASSERT_EQ(advices.empty(), nMegabytes < 4);
            EXPECT_TRUE(advices.empty() || advices.front().nAdvice == MADV_HUGEPAGE);
            for (const Advice& advice : advices) {
                if (advice.nAdvice == MADV_HUGEPAGE) {
                    EXPECT_EQ(advice.nBegin, nFirstPage);
                    EXPECT_EQ(advice.nEnd, nLastPage);
                    continue;
                }
#ifdef MADV_POPULATE_WRITE
                // The small pages before the first huge page, or those after the last.
                EXPECT_EQ(advice.nAdvice, MADV_POPULATE_WRITE);
                EXPECT_GT(nMegabytes, 32);
                EXPECT_LT(advice.nEnd - advice.nBegin, kHugePage);
                EXPECT_TRUE((advice.nBegin == nFirstPage && advice.nEnd % kHugePage == 0) ||
                            (advice.nBegin % kHugePage == 0 && advice.nEnd == nLastPage));
#else
                ADD_FAILURE() << advice.nAdvice;
#endif
            }
        }
    }
}

#endif

}  // namespace

#if defined(__linux__) && defined(MADV_HUGEPAGE)
extern "C" int madvise(void* pBlock, std::size_t nSize, int nAdvice) noexcept {
    const auto nBegin = reinterpret_cast<std::uintptr_t>(pBlock);
    g_Advices.push_back({nBegin, nBegin + nSize, nAdvice});
    return 0;
}
#endif
