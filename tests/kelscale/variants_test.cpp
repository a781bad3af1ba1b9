// Every form of the two passes that this machine can run, against the plain loops: weights of every
// kind, small and wide rows that touch protected pages.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "kelscale/bandedscale.h"
#include "kelscale/contributions.h"
#include "kelscale/passes.h"
#include "rowpicture.h"

namespace {

using kel::CpuLevel;
using Form = kel::HorizontalPass::Form;
using support::Random;

// The weights of a record lie in a range. Where there is a sum, none exceeds what is left of it and
// the last one completes it.
struct Weights {
    int nLow, nHigh, nSum;
};
constexpr Weights kSum256 = {0, 149, 256}, kWild = {-500, 500, 0};
constexpr Weights kKinds[] = {{0, 0, 256},  kSum256,        {0, 149, 257}, {0, 10, 0},
                              {-10, 10, 0}, {-120, 120, 0}, kWild,         {-30000, 30000, 0}};

// Records of up to nMost pixels, empty ones too, that follow the ratio; wild ones lie anywhere.
kel::Contributions RandomTable(int nOut, int nIn, const Weights& weights, int nMost,
                               Random& random) {
    kel::Contributions table(
        kel::AllocContributions(static_cast<unsigned int>(nOut), static_cast<unsigned int>(nIn)));
    for (int u = 0; u < nOut; ++u) {
        PixelContribType& record = table->pPixels[u];
        const long long nAt = static_cast<long long>(u) * nIn / nOut + random.Below(3);
        record.nLeft = weights.nLow <= kWild.nLow
                           ? random.Below(nIn)
                           : static_cast<int>(std::min<long long>(nAt, nIn - 1));
        const int nCount = random.Below(std::min(nIn - record.nLeft, nMost) + 1);
        record.nRight = record.nLeft + nCount - 1;
        int nRest = weights.nSum;
        for (int j = 0; j < nCount; ++j) {
            int& nWeight = record.pWeights[j];
            nWeight = weights.nLow + random.Below(weights.nHigh - weights.nLow + 1);
            if (weights.nSum != 0) {
                nWeight = j == nCount - 1 ? nRest : std::min(nWeight, nRest);
                nRest -= nWeight;
            }
        }
    }
    return table;
}

// One horizontal pass at one level, its rows at both ends of their pages. The form that ran.
Form ExpectHorizontal(CpuLevel eLevel, int nIn, int nOut, const LineContribType& table) {
    kel::HorizontalPass pass;
    pass.Prepare(table, static_cast<unsigned int>(nIn), kel::ScaleFunctionsFor(eLevel));
    for (const unsigned int nRows : {1u, std::min(3u, pass.BandRows()), pass.BandRows()}) {
        for (const bool bAtEnd : {false, true}) {
            RowPicture in(nIn, nRows, bAtEnd);
            in.Fill(static_cast<unsigned int>(nIn) + nRows);
            RowPicture expected(nOut, nRows, bAtEnd), result(nOut, nRows, bAtEnd);
            for (std::size_t y = 0; y < nRows; ++y) {
                kel::ScaleRowPlain(in.Rows()[y], expected.Rows()[y],
                                   static_cast<unsigned int>(nOut), table);
            }
            // Rows to prefetch, or none.
            const kel::NextRows next = {in.Rows(), bAtEnd ? 0 : nRows, in.RowBytes()};
            pass.Run(in.Rows(), result.Rows(), nRows, next);
            EXPECT_TRUE(expected == result) << "level " << static_cast<int>(eLevel) << ", form "
                                            << static_cast<int>(pass.GetForm()) << ", " << nIn
                                            << " to " << nOut << " pixels, " << nRows << " rows";
        }
    }
    return pass.GetForm();
}

// Not every level has forms of the scaler.
bool HasForms(CpuLevel eLevel) {
    return eLevel == CpuLevel::kAvx2 || eLevel == CpuLevel::kAvx512;
}

TEST(ScaleVariants, HorizontalEqualsThePlainRow) {
    for (const CpuLevel eLevel : kel::Levels()) {
        Random random(5);
        std::set<Form> seen;
        for (int n = 1; n <= 70 && !HasFailure(); ++n) {
            for (const Weights& weights : kKinds) {
                // Enlarging, near 1, reducing, and as far as windows of 1 to 4 chunks need.
                const int sizes[][3] = {{n, 2 * n, 5},
                                        {n, n, 4},
                                        {2 * n, n, 9},
                                        {7 * n, n, 16},
                                        {6 * (1 + n % 4) * n + n, n, 16 * (1 + n % 4)}};
                const auto& [nIn, nOut, nMost] = sizes[random.Below(5)];
                const kel::Contributions table = RandomTable(nOut, nIn, weights, nMost, random);
                seen.insert(ExpectHorizontal(eLevel, nIn, nOut, *table));
            }
        }
        // More than one strip, and rows that fit into no scratch.
        const auto strips = RandomTable(10005, 40000, kSum256, 23, random);
        seen.insert(ExpectHorizontal(eLevel, 40000, 10005, *strips));
        const auto scattered = RandomTable(40, 800000, kWild, 23, random);
        seen.insert(ExpectHorizontal(eLevel, 800000, 40, *scattered));
        const std::set<Form> all = {Form::kPlain, Form::kBands, Form::kWindows, Form::kShuffles};
        EXPECT_EQ(HasForms(eLevel) ? all : (std::set{Form::kPlain, Form::kBands}), seen);
    }
}

TEST(ScaleVariants, VerticalEqualsThePlainColumns) {
    Random random(6);
    for (const CpuLevel eLevel : kel::Levels()) {
        for (unsigned int nWidth = 1; nWidth <= 75; ++nWidth) {
            const bool bAtEnd = nWidth % 2 != 0;
            const std::size_t nWide = nWidth == 75 ? 1500 : nWidth;  // more than one chunk
            RowPicture in(nWide, 33, bAtEnd), expected(nWide, 9, bAtEnd), result(nWide, 9, bAtEnd);
            in.Fill(nWidth);
            const kel::Contributions table =
                RandomTable(9, 33, kKinds[nWidth % std::size(kKinds)], 23, random);
            kel::VerticalPass pass;
            pass.Prepare(*table, in.RowBytes(), kel::ScaleFunctionsFor(eLevel));
            for (unsigned int y = 0; y < 9; ++y) {
                kel::ScaleColumnsPlain(in.Rows(), expected.Rows()[y], in.RowBytes(),
                                       table->pPixels[y]);
                pass.Run(y, in.Rows(), result.Rows()[y]);
            }
            ASSERT_TRUE(expected == result)
                << "level " << static_cast<int>(eLevel) << ", " << nWide << " pixels";
        }
    }
}

// A source of rows that exist only while they are asked for.
class FleetingRows : public kel::RowSource {
  public:
    explicit FleetingRows(RowPicture& rows) : m_Rows(rows) {}
    bool Prepare(unsigned int nMostRows) override {
        m_pHeld = std::make_unique<RowPicture>(m_Rows.RowBytes() / 3, nMostRows);
        return true;
    }
    const unsigned char* const* Rows(unsigned int nFirst, unsigned int nRows) override {
        for (unsigned int i = 0; i < nRows; ++i) {
            std::copy_n(m_Rows.Rows()[nFirst + i], m_Rows.RowBytes(), m_pHeld->Rows()[i]);
        }
        return m_pHeld->Rows();
    }

    kel::NextRows MadeFrom(unsigned int nFirst) const override {
        return {m_Rows.Rows() + nFirst, 0, m_Rows.RowBytes()};
    }

  private:
    RowPicture& m_Rows;
    std::unique_ptr<RowPicture> m_pHeld;
};

// A table of copies: each record is its own position.
kel::Contributions CopyTable(unsigned int nLength) {
    kel::Contributions table(kel::AllocContributions(nLength, 3));
    for (int i = 0; i < table->nLineLength; ++i) {
        table->pPixels[i].nLeft = table->pPixels[i].nRight = i;
        table->pPixels[i].pWeights[0] = 256;
    }
    return table;
}

// Both passes, in bands and pass by pass, from rows in memory and from a source, with records that
// jump back and forth and with passes that copy.
TEST(ScaleVariants, BandsEqualThePlainPasses) {
    Random random(7);
    for (const CpuLevel eLevel : kel::Levels()) {
        for (unsigned int nHeight = 1; nHeight <= 160; nHeight += 1 + nHeight / 4) {
            const bool bCopyRows = random.Below(2) == 0, bCopyColumns = random.Below(2) == 0;
            const int nWidth = bCopyRows ? 30 : 20;
            const unsigned int nOutHeight =
                bCopyColumns ? nHeight : 1 + static_cast<unsigned>(random.Below(80));
            const kel::Contributions horizontal =
                bCopyRows ? CopyTable(30) : RandomTable(20, 30, kWild, 23, random);
            const kel::Contributions vertical =
                bCopyColumns ? CopyTable(nHeight)
                             : RandomTable(static_cast<int>(nOutHeight), static_cast<int>(nHeight),
                                           nHeight % 2 == 0 ? kSum256 : kWild, 23, random);
            RowPicture in(30, nHeight), temp(nWidth, nHeight), expected(nWidth, nOutHeight);
            in.Fill(nHeight);
            for (unsigned int y = 0; y < nHeight; ++y) {
                kel::ScaleRowPlain(in.Rows()[y], temp.Rows()[y], static_cast<unsigned>(nWidth),
                                   *horizontal);
            }
            for (unsigned int y = 0; y < nOutHeight; ++y) {
                kel::ScaleColumnsPlain(temp.Rows(), expected.Rows()[y], temp.RowBytes(),
                                       vertical->pPixels[y]);
            }
            for (int nRun = 0; nRun < 3; ++nRun) {
                RowPicture result(nWidth, nOutHeight);
                kel::BandedScale banded;
                banded.Prepare(*horizontal, 30, *vertical, nHeight, kel::ScaleFunctionsFor(eLevel));
                FleetingRows source(in);
                const ScaleProgressFunc pfnNone = nullptr;
                ASSERT_TRUE(nRun == 0   ? banded.Run(in.Rows(), result.Rows())
                            : nRun == 1 ? banded.Run(source, result.Rows())
                                        : banded.RunPasses(in.Rows(), result.Rows(), pfnNone) ==
                                              kel::BandedScale::Outcome::kDone);
                ASSERT_TRUE(expected == result)
                    << "level " << static_cast<int>(eLevel) << ", " << nHeight << " to "
                    << nOutHeight << ", run " << nRun;
            }
        }
    }
}

TEST(ScaleVariants, CopiesAreRecognised) {
    EXPECT_TRUE(kel::IsCopy(*CopyTable(5), 5));
    EXPECT_FALSE(kel::IsCopy(*CopyTable(5), 6));
    void (*const changes[])(PixelContribType&) = {
        [](PixelContribType& r) { r.pWeights[0] = 255; },
        [](PixelContribType& r) { r.nLeft = r.nRight = 3; },
        [](PixelContribType& r) { r.nRight = r.nLeft - 1; },
        [](PixelContribType& r) { r.nRight = 4, r.pWeights[1] = 0, r.pWeights[2] = 1; },
        [](PixelContribType& r) { r.nLeft = 3, r.nRight = 2; },
    };
    for (const auto pfnChange : changes) {
        const kel::Contributions table = CopyTable(5);
        pfnChange(table->pPixels[2]);
        EXPECT_FALSE(kel::IsCopy(*table, 5));
    }
}

TEST(ScaleVariants, EveryLevelHasItsTableAndTheBestOneRuns) {
    for (const CpuLevel eLevel : kel::Levels()) {
        EXPECT_EQ(eLevel == kel::Levels().front() || !HasForms(kel::Levels().front()),
                  &kel::ScaleFunctionsFor(eLevel) == &kel::BestScaleFunctions());
    }
}

}  // namespace
