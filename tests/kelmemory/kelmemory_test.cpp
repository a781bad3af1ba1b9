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
    EXPECT_EQ(nullptr, kel::NewScratch(-1));
    EXPECT_EQ(nullptr, kel::NewScratch(std::int64_t{1} << 31));
    EXPECT_NE(kel::NewScratch(0), nullptr);
}

#if defined(__linux__) && defined(MADV_HUGEPAGE)

constexpr std::uintptr_t kPage = 4096;
constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;

struct Advice {
    std::uintptr_t nBegin, nEnd;
    int nAdvice;

    bool operator==(const Advice&) const = default;
};
std::vector<Advice> g_Advices;

// Whole pages of the block alone, since other blocks share its first and last page.
TEST(Pixels, LargeBlocksAskForHugePages) {
    for (auto* const pfnNew : {kel::TryNewPixels, kel::NewPixels,
                               static_cast<decltype(&kel::NewPixels)>(kel::NewPixelsNothrow)}) {
        for (const int nMegabytes : {1, 4, 33}) {
            const std::int64_t nBytes = (std::int64_t{nMegabytes} << 20) + 100;
            g_Advices.clear();
            const std::unique_ptr<unsigned char[]> pBlock(pfnNew(nBytes));
            const std::vector<Advice> advices = g_Advices;
            const auto nBlock = reinterpret_cast<std::uintptr_t>(pBlock.get());
            const std::uintptr_t nEnd = nBlock + static_cast<std::uintptr_t>(nBytes);
            const auto up = [](std::uintptr_t n, std::uintptr_t nSize) {
                return (n + nSize - 1) / nSize * nSize;
            };
            const std::uintptr_t nFirst = up(nBlock, kPage), nFirstHuge = up(nBlock, kHugePage);
            const std::uintptr_t nLast = nEnd / kPage * kPage,
                                 nLastHuge = nEnd / kHugePage * kHugePage;
            std::vector<Advice> expected;
            if (nMegabytes >= 4) {
                expected.push_back({nFirst, nLast, MADV_HUGEPAGE});
            }
#ifdef MADV_POPULATE_WRITE
            if (nMegabytes > 32 && nFirst < nFirstHuge) {
                expected.push_back({nFirst, nFirstHuge, MADV_POPULATE_WRITE});
            }
            if (nMegabytes > 32 && nLastHuge < nLast) {
                expected.push_back({nLastHuge, nLast, MADV_POPULATE_WRITE});
            }
#endif
            EXPECT_TRUE(expected == advices) << nMegabytes;
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
