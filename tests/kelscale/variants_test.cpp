// Every form of the two passes that this machine can run, against the plain loops: small widths,
// misaligned rows with guard bytes, weights of every kind.
#include <gtest/gtest.h>

#include <algorithm>

#include "kelscale/bandedscale.h"
#include "kelscale/contributions.h"
#include "kelscale/passes.h"
#include "rowpicture.h"

namespace {

using kel::CpuLevel;

std::vector<CpuLevel> Levels() {
    std::vector<CpuLevel> levels;
    for (const CpuLevel eLevel : {CpuLevel::kPortable, CpuLevel::kAvx2, CpuLevel::kAvx512}) {
        if (eLevel <= kel::BestCpuLevel()) {
            levels.push_back(eLevel);
        }
    }
    return levels;
}

enum class Weights { kUnit, kSumTo256, kWild, kNarrow };

// Records of random place and length, 0 included. Wild weights take both signs and any size a plan
// accepts; their sums wrap round the byte. Narrow records are short, of small weights.
kel::Contributions RandomTable(unsigned int nOut, unsigned int nIn, Weights eWeights,
                               std::mt19937& random) {
    kel::Contributions table(kel::AllocContributions(nOut, nIn));
    for (unsigned int u = 0; u < nOut; ++u) {
        PixelContribType& record = table->pPixels[u];
        record.nLeft = static_cast<int>(random() % nIn);
        const bool bNarrow = eWeights == Weights::kNarrow;
        const int nMost = static_cast<int>(
            std::min(nIn - static_cast<unsigned>(record.nLeft), bNarrow ? 16u : 23u));
        const int nCount = static_cast<int>(random() % static_cast<unsigned>(nMost + 1));
        record.nRight = record.nLeft + nCount - 1;
        int nLeft = 256;
        for (int j = 0; j < nCount; ++j) {
            const int nRandom = static_cast<int>(random() % 1000);
            int nWeight = (nRandom < 20 ? 32 : 1) * (nRandom - 500) % 30000;
            if (eWeights != Weights::kWild) {
                const int nMiddle = eWeights == Weights::kUnit ? 0 : std::min(nRandom % 150, nLeft);
                nWeight = j == nCount - 1 ? nLeft : nMiddle;
                if (bNarrow) {  // in some tables too much for a window, or for a byte
                    nWeight = nOut % 16 == 3 ? 31 : nWeight % (nOut % 16 == 7 ? 128 : 32);
                }
                nLeft -= nWeight;
            }
            record.pWeights[j] = nWeight;
        }
    }
    return table;
}

TEST(ScaleVariants, HorizontalEqualsThePlainRow) {
    std::mt19937 random(5);
    for (const CpuLevel eLevel : Levels()) {
        for (unsigned int n = 1; n <= 70; ++n) {
            const auto eWeights = static_cast<Weights>(n % 4);
            const bool bShrinks = eWeights == Weights::kNarrow || n % 8 == 5;
            const unsigned int nIn = bShrinks ? 8 * n : n;
            const unsigned int nOut = bShrinks ? n : 1 + static_cast<unsigned>(random() % 70);
            const kel::Contributions table = RandomTable(nOut, nIn, eWeights, random);
            kel::HorizontalPass pass;
            ASSERT_TRUE(pass.Prepare(*table, nIn, eLevel));
            for (const unsigned int nRows : {1u, std::min(7u, pass.BandRows()), pass.BandRows()}) {
                const std::size_t nSkew = random() % 64;
                RowPicture in(nIn, nRows, nSkew);
                in.Fill(nIn);
                RowPicture expected(nOut, nRows, nSkew), result(nOut, nRows, nSkew);
                for (std::size_t y = 0; y < nRows; ++y) {
                    kel::ScaleRowPlain(in.Rows()[y], expected.Rows()[y], nOut, *table);
                }
                pass.Run(in.Rows(), result.Rows(), nRows, 0);
                ASSERT_TRUE(expected.Bytes() == result.Bytes())
                    << "level " << static_cast<int>(eLevel) << ", " << nIn << " to " << nOut
                    << " pixels, " << nRows << " rows";
            }
        }
    }
}

TEST(ScaleVariants, VerticalEqualsThePlainColumns) {
    std::mt19937 random(6);
    for (const CpuLevel eLevel : Levels()) {
        for (unsigned int nWidth = 1; nWidth <= 75; ++nWidth) {
            const unsigned int nWide = nWidth == 75 ? 1500 : nWidth;  // more than one chunk
            const std::size_t nSkew = random() % 64;
            RowPicture in(nWide, 33, nSkew), expected(nWide, 9, nSkew), result(nWide, 9, nSkew);
            in.Fill(nWidth);
            const kel::Contributions table =
                RandomTable(9, 33, static_cast<Weights>(nWidth % 3), random);
            kel::VerticalPass pass;
            ASSERT_TRUE(pass.Prepare(*table, 3 * std::size_t{nWide}, eLevel));
            for (unsigned int y = 0; y < 9; ++y) {
                kel::ScaleColumnsPlain(in.Rows(), expected.Rows()[y], 3 * std::size_t{nWide},
                                       table->pPixels[y]);
                pass.Run(y, in.Rows(), result.Rows()[y]);
            }
            ASSERT_TRUE(expected.Bytes() == result.Bytes())
                << "level " << static_cast<int>(eLevel) << ", " << nWide << " pixels";
        }
    }
}

// Both passes over a ring of rows, with records that jump back and forth.
TEST(ScaleVariants, BandsEqualThePlainPasses) {
    std::mt19937 random(7);
    for (const CpuLevel eLevel : Levels()) {
        for (unsigned int nHeight = 1; nHeight <= 160; nHeight += 1 + nHeight / 4) {
            const unsigned int nOutHeight = 1 + static_cast<unsigned>(random() % 80);
            const kel::Contributions horizontal = RandomTable(20, 30, Weights::kWild, random);
            const kel::Contributions vertical =
                RandomTable(nOutHeight, nHeight, Weights::kSumTo256, random);
            RowPicture in(30, nHeight), temp(20, nHeight);
            RowPicture expected(20, nOutHeight), result(20, nOutHeight);
            in.Fill(nHeight);
            for (unsigned int y = 0; y < nHeight; ++y) {
                kel::ScaleRowPlain(in.Rows()[y], temp.Rows()[y], 20, *horizontal);
            }
            for (unsigned int y = 0; y < nOutHeight; ++y) {
                kel::ScaleColumnsPlain(temp.Rows(), expected.Rows()[y], 60, vertical->pPixels[y]);
            }
            kel::BandedScale banded;
            ASSERT_TRUE(banded.Prepare(*horizontal, 30, *vertical, nHeight, eLevel));
            ASSERT_TRUE(banded.AllocateRows());
            banded.Run(in.Rows(), result.Rows());
            ASSERT_TRUE(expected.Bytes() == result.Bytes())
                << "level " << static_cast<int>(eLevel) << ", " << nHeight << " to " << nOutHeight;
        }
    }
}

}  // namespace
