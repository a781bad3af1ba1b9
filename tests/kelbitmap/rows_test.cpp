// Every variant of every row function against the portable one. Buffers are exactly as long as the
// row, so that an address sanitizer sees a read behind it; bytes around the output are guarded.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "kelbitmap/rows.h"
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
        {"pack32", 32, 3, [](auto& f, auto* s, auto* d, auto n) { f.pfnPack32(s, d, n); }},
        {"reverse32", 32, 3, [](auto& f, auto* s, auto* d, auto n) { f.pfnReverse32(s, d, n); }},
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
        const std::string mask = std::to_string(masks[0]);
        cases.push_back({"fields16_" + mask, 16, 3, [fields](auto& f, auto* s, auto* d, auto n) {
                             f.pfnFields16(s, fields, d, n);
                         }});
        cases.push_back({"fields32_" + mask, 32, 3, [fields](auto& f, auto* s, auto* d, auto n) {
                             f.pfnFields32(s, fields, d, n);
                         }});
    }
    return cases;
}

constexpr std::size_t kGuard = 70;

void CheckRow(const Case& row, const RowFunctions& variant, std::size_t nPixels,
              std::size_t nMisalign) {
    const std::size_t nIn = (static_cast<std::size_t>(row.nInBits) * nPixels + 7) / 8;
    const std::size_t nOut = static_cast<std::size_t>(row.nOutBytes) * nPixels;
    support::Random random(static_cast<std::uint32_t>(nPixels));
    std::vector<unsigned char> in(nMisalign + nIn);
    random.Fill(in.data(), in.size());
    std::vector<unsigned char> expected(nMisalign + nOut + kGuard, 0xA5);
    std::vector<unsigned char> actual = expected;
    row.run(kel::kRowsPortable, in.data() + nMisalign, expected.data() + nMisalign, nPixels);
    row.run(variant, in.data() + nMisalign, actual.data() + nMisalign, nPixels);
    ASSERT_EQ(actual, expected) << row.name << ", " << nPixels << " pixels at " << nMisalign;
    // No byte behind the row is written even when that is where the allocation ends.
    std::vector<unsigned char> exact(nMisalign + nOut);
    row.run(variant, in.data() + nMisalign, exact.data() + nMisalign, nPixels);
}

// 24-bit rows may be reversed in place.
void CheckInPlace(const RowFunctions& variant, std::size_t nPixels) {
    std::vector<unsigned char> row(3 * nPixels), expected(3 * nPixels);
    support::Random(static_cast<std::uint32_t>(nPixels)).Fill(row.data(), row.size());
    kel::kRowsPortable.pfnReverse24(row.data(), expected.data(), nPixels);
    variant.pfnReverse24(row.data(), row.data(), nPixels);
    ASSERT_EQ(row, expected) << nPixels;
}

TEST(RowVariants, EqualThePortableOne) {
    for (int nLevel = 0; nLevel <= static_cast<int>(kel::BestCpuLevel()); ++nLevel) {
        SCOPED_TRACE("level " + std::to_string(nLevel));
        const RowFunctions& variant = kel::RowFunctionsFor(static_cast<CpuLevel>(nLevel));
        ASSERT_EQ(&variant == &kel::kRowsPortable, nLevel == 0);
        for (std::size_t nPixels = 0; nPixels <= 300; ++nPixels) {
            CheckInPlace(variant, nPixels);
        }
        for (const Case& row : AllCases()) {
            for (std::size_t nPixels = 0; nPixels <= 200; ++nPixels) {
                CheckRow(row, variant, nPixels, nPixels % 5);
            }
            for (std::size_t nMisalign = 0; nMisalign < 64; ++nMisalign) {
                CheckRow(row, variant, 150, nMisalign);
            }
            CheckRow(row, variant, 4001, 1);
        }
    }
}

}  // namespace
