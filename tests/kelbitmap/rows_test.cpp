// Every variant of every row function against the portable one, on rows that touch protected pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "kelbitmap/kelbitmap.h"
#include "kelbitmap/rows.h"
#include "support/guardedrows.h"
#include "support/pictures.h"

namespace {

using kel::CpuLevel;
using kel::RowFunctions;

struct Case {
    std::string name;
    int nInBits;
    int nOutBytes;
    std::function<void(const RowFunctions&, const unsigned char*, unsigned char*, std::size_t)> run;
};

std::vector<Case> AllCases() {
    static std::uint32_t aWords[256];
    support::Random random(7);
    for (std::uint32_t& nWord : aWords) {
        nWord = random.Next() & 0xFFFFFF;
    }
    std::vector<Case> cases = {
        {"reverse24", 24, 3, [](auto& f, auto* s, auto* d, auto n) { f.pfnReverse24(s, d, n); }},
        {"reverse24 in place", 24, 3,
         [](auto& f, auto* s, auto* d, auto n) {
             std::copy_n(s, 3 * n, d);
             f.pfnReverse24(d, d, n);
         }},
        {"pack32", 32, 3, [](auto& f, auto* s, auto* d, auto n) { f.pfnPack32(s, d, n); }},
        {"packReverse32", 32, 3,
         [](auto& f, auto* s, auto* d, auto n) { f.pfnPackReverse32(s, d, n); }},
        {"expand24", 24, 4, [](auto& f, auto* s, auto* d, auto n) { f.pfnExpand24(s, d, n); }},
        {"palette8", 8, 3,
         [](auto& f, auto* s, auto* d, auto n) { f.pfnPalette8(s, aWords, d, n); }},
        {"palette4", 4, 3,
         [](auto& f, auto* s, auto* d, auto n) { f.pfnPalette4(s, aWords, d, n); }},
        {"palette1", 1, 3,
         [](auto& f, auto* s, auto* d, auto n) { f.pfnPalette1(s, aWords, d, n); }},
    };
    const std::uint32_t aMasks[][3] = {{0xF800, 0x07E0, 0x001F},
                                       {0x7C00, 0x03E0, 0x001F},
                                       {0x00FF0000, 0x0000FF00, 0x000000FF},
                                       {0x3FF00000, 0x000FFC00, 0x000003FF},  // runs over 8
                                       {0xFFFFFFFF, 0x80000000, 0},
                                       {0x0000F0F0, 0x00000001, 0xFFF0}};  // a mask with a hole
    for (const auto& masks : aMasks) {
        kel::PixelFields fields;
        for (int c = 0; c < 3; ++c) {
            fields.aChannels[c] = kel::FieldOfMask(masks[c]);
        }
        for (const int nBits : {16, 32}) {
            const auto run = [=](auto& f, auto* s, auto* d, auto n) {
                (nBits == 16 ? f.pfnFields16 : f.pfnFields32)(s, fields, d, n);
            };
            cases.push_back({"fields " + std::to_string(masks[0]), nBits, 3, run});
        }
    }
    return cases;
}

// Rows are placed this far from the pages' start, or (kAtEnd) end where the pages end.
constexpr std::size_t kAtEnd = ~std::size_t{0};

constexpr std::size_t kMaxPixels = 1001;

unsigned char* Place(const support::GuardedRows& rows, std::size_t nBytes, std::size_t nFrom) {
    return nFrom == kAtEnd ? rows.End(0) - nBytes : rows.Begin(0) + nFrom;
}

void Check(const Case& row, const RowFunctions& variant, std::size_t nPixels, std::size_t nFrom) {
    static support::GuardedRows in(1, 4 * kMaxPixels), expected(1, 4 * kMaxPixels),
        actual(1, 4 * kMaxPixels);
    const std::size_t nIn = (static_cast<std::size_t>(row.nInBits) * nPixels + 7) / 8;
    const std::size_t nOut = static_cast<std::size_t>(row.nOutBytes) * nPixels;
    unsigned char* const pIn = Place(in, nIn, nFrom);
    support::Random(static_cast<std::uint32_t>(nPixels)).Fill(pIn, nIn);
    expected.Fill();
    actual.Fill();
    row.run(kel::kRowsPortable, pIn, Place(expected, nOut, nFrom), nPixels);
    row.run(variant, pIn, Place(actual, nOut, nFrom), nPixels);
    ASSERT_TRUE(actual == expected) << row.name << ", " << nPixels << " at " << nFrom;
}

TEST(RowVariants, EqualThePortableOne) {
    for (const CpuLevel eLevel : kel::Levels()) {
        SCOPED_TRACE("level " + std::to_string(static_cast<int>(eLevel)));
        const RowFunctions& variant = kel::RowFunctionsFor(eLevel);
        ASSERT_EQ(eLevel == CpuLevel::kPortable, &variant == &kel::kRowsPortable);
        for (const Case& row : AllCases()) {
            for (std::size_t nPixels = 0; nPixels <= 300; ++nPixels) {
                const std::size_t nWide = nPixels == 300 ? kMaxPixels : nPixels;
                ASSERT_NO_FATAL_FAILURE(Check(row, variant, nWide, 0));
                ASSERT_NO_FATAL_FAILURE(Check(row, variant, nWide, kAtEnd));
                ASSERT_NO_FATAL_FAILURE(Check(row, variant, 150, nPixels % 64));
            }
        }
    }
}

TEST(Bitmap, ReversesAsManyPixelsAsAsked) {
    const std::string expected[] = {"abcdef", "cbadef", "cbafed"};
    for (int nCount = -1; nCount <= 2; ++nCount) {
        unsigned char bytes[] = {'a', 'b', 'c', 'd', 'e', 'f'};
        RGB2BGR(bytes, nCount);
        EXPECT_EQ(expected[std::max(nCount, 0)], std::string(bytes, bytes + 6));
    }
}

}  // namespace
