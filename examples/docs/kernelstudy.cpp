// kernelstudy: the limits of the kernels, as docs/kernels.md shows them.
//
//   kernelstudy PICTURE OUT.png
//
// Prints the tables and writes the picture page: reductions until the weights vanish, the overshoot
// of the Hamming kernel, the blur of the Gaussian one. Reads the weights from the scaler itself.
#include <ikelex/handle.h>

#include <kelscale.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "sheet.h"

namespace {

using Scaler = C2PassScale<CDataRGB_UBYTE>;

struct Kernel {
    KelScaleType eType;
    const char* pszName;
    std::shared_ptr<PLContribDef> contribDef;
};

// The kernels of the scale filter.
std::vector<Kernel> AllKernels() {
    int nCount = 0;
    const tagKelScaleKernel* pKernels = GetScaleKernels(&nCount);
    std::vector<Kernel> kernels;
    for (int i = 0; i < nCount; ++i) {
        kernels.push_back(
            {pKernels[i].eType, pKernels[i].pszName,
             std::shared_ptr<PLContribDef>(pKernels[i].pfnCreate(pKernels[i].dWidth))});
    }
    return kernels;
}

// What the weights of one reduction are like, over all output positions away from the border.
struct Weights {
    int nUsed = 0;         // most source pixels with a weight that is not 0
    int nStray = 0;        // largest share of the last pixel, which takes what division left over
    bool bVanish = false;  // some position has no weight at all
};

Weights WeightsAt(const Kernel& kernel, unsigned int nReduction) {
    constexpr unsigned int kOut = 40;
    const Scaler scaler(kernel.contribDef.get());
    LineContribType* pTable =
        scaler.CalcContributions(kOut, kOut * nReduction, 1.0 / static_cast<double>(nReduction));
    Weights weights;
    if (pTable == nullptr) {
        std::fprintf(stderr, "kernelstudy: no memory\n");
        std::exit(1);
    }
    for (unsigned int u = kOut / 4; u < kOut * 3 / 4; ++u) {
        const PixelContribType& pixel = pTable->pPixels[u];
        const int nCount = pixel.nRight - pixel.nLeft + 1;
        const int nUsed = static_cast<int>(
            std::count_if(pixel.pWeights, pixel.pWeights + nCount, [](int n) { return n != 0; }));
        weights.nUsed = std::max(weights.nUsed, nUsed);
        weights.bVanish = weights.bVanish || nUsed == 0;
        weights.nStray = std::max(weights.nStray, pixel.pWeights[nCount - 1] * 100 / 256);
    }
    scaler.FreeContributions(pTable);
    return weights;
}

void PrintReductions(const std::vector<Kernel>& kernels) {
    std::string strRule = "|---:|";
    std::printf("| reduction |");
    for (const Kernel& kernel : kernels) {
        std::printf(" %s |", kernel.pszName);
        strRule += "---|";
    }
    std::printf("\n%s\n", strRule.c_str());
    for (const unsigned int nReduction : {1u, 2u, 4u, 8u, 12u, 16u, 24u, 32u, 37u, 38u, 64u, 100u,
                                          128u, 163u, 164u, 200u, 256u, 257u}) {
        std::printf("| %u |", nReduction);
        for (const Kernel& kernel : kernels) {
            const Weights weights = WeightsAt(kernel, nReduction);
            if (weights.bVanish) {
                std::printf(" black |");
            } else {
                std::printf(" %d pixels, last %d %% |", weights.nUsed, weights.nStray);
            }
        }
        std::printf("\n");
    }
    for (const Kernel& kernel : kernels) {
        unsigned int nLast = 1;
        while (nLast < 1000 && !WeightsAt(kernel, nLast + 1).bVanish) {
            ++nLast;
        }
        std::printf("%s: black from reduction %u on\n", kernel.pszName, nLast + 1);
    }
}

// A 24-bit picture whose pixel (x, y) is the grey pfnGrey(x, y).
template <class Grey>
KelImagePtr Painted(int nWidth, int nHeight, Grey pfnGrey) {
    KelImagePtr pImage = NewPicture(nWidth, nHeight, 24);
    if (pImage == nullptr) {
        std::fprintf(stderr, "kernelstudy: no memory\n");
        std::exit(1);
    }
    for (int y = 0; y < nHeight; ++y) {
        for (int x = 0; x < nWidth; ++x) {
            std::fill_n(pImage->GetLineArray()[y] + 3 * x, 3,
                        static_cast<unsigned char>(pfnGrey(x, y)));
        }
    }
    return pImage;
}

// A vertical edge between two greys, reduced three times in each direction.
KelImagePtr ReducedEdge(int nDark, int nBright) {
    KelImagePtr pEdge = Painted(300, 30, [&](int x, int) { return x < 151 ? nDark : nBright; });
    return Scaled(pEdge, 100, 10, KEL_SCALE_HAMMING);
}

void PrintOvershoot() {
    std::printf("\n| edge | darkest | brightest | |\n|---|---:|---:|---|\n");
    const int kEdges[][2] = {{64, 192}, {16, 240}, {12, 243}, {8, 247}, {4, 251}, {0, 255}};
    for (const auto& edge : kEdges) {
        KelImagePtr pEdge = ReducedEdge(edge[0], edge[1]);
        const unsigned char* pRow = pEdge->GetLineArray()[5];
        // Left of the edge all is dark and right of it bright: what is not has wrapped.
        const int nMiddle = (edge[0] + edge[1]) / 2;
        const int nRise = static_cast<int>(
            std::find_if(pRow, pRow + 300, [&](int n) { return n > edge[0] + 16 && n < edge[1]; }) -
            pRow);
        const bool bWrapped =
            std::any_of(pRow, pRow + nRise, [&](int n) { return n > nMiddle; }) ||
            std::any_of(pRow + nRise + 3, pRow + 300, [&](int n) { return n < nMiddle; });
        std::printf("| %d to %d | %d | %d | %s |\n", edge[0], edge[1],
                    *std::min_element(pRow, pRow + 300), *std::max_element(pRow, pRow + 300),
                    bWrapped ? "wraps" : "");
    }
}

void PrintBlur() {
    std::printf("\n| stripes of period | contrast left |\n|---:|---:|\n");
    for (const int nPeriod : {2, 4, 6, 8, 12, 16, 32}) {
        KelImagePtr pStripes =
            Painted(192, 8, [&](int x, int) { return x % nPeriod < nPeriod / 2 ? 0 : 200; });
        KelImagePtr pBlurred = Scaled(pStripes, 192, 8, KEL_SCALE_GAUSSIAN);
        const unsigned char* pRow = pBlurred->GetLineArray()[4];
        const auto range = std::minmax_element(pRow + 3 * 32, pRow + 3 * 160);
        std::printf("| %d | %d %% |\n", nPeriod, (*range.second - *range.first) * 100 / 200);
    }
}

KelStatus SavePage(const std::vector<Kernel>& kernels, const KelImagePtr& source,
                   const std::string& strPath) {
    constexpr int kPanel = 200;
    constexpr int kPitch = kPanel + 16;
    Sheet sheet(100 + 5 * kPitch, 1180);
    sheet.Write(16, 16, "one picture reduced, then enlarged to one size", 2);
    const int kReductions[] = {20, 40, 100, 200, 250};
    for (std::size_t k = 0; k < kernels.size(); ++k) {
        const int nY = 70 + static_cast<int>(k) * (kPanel * 3 / 4 + 16);
        sheet.Write(16, nY + 60, kernels[k].pszName);
        for (int i = 0; i < 5; ++i) {
            const int nWidth = std::max(source->GetWidth() / kReductions[i], 1);
            const int nHeight = std::max(source->GetHeight() / kReductions[i], 1);
            if (k == 0) {
                sheet.Write(84 + i * kPitch, 52, "1/" + std::to_string(kReductions[i]));
            }
            KelImagePtr pSmall = Scaled(source, nWidth, nHeight, kernels[k].eType);
            const int nFactor = std::max(kPanel / nWidth, 1);
            const Area part = {0, 0, std::min(nWidth, kPanel / nFactor),
                               std::min(nHeight, kPanel * 3 / 4 / nFactor)};
            if (pSmall == nullptr || !sheet.Place(84 + i * kPitch, nY, *pSmall, nFactor, &part)) {
                return KEL_ERR_MEMORY;
            }
        }
    }
    sheet.Write(16, 760, "hamming: black to white, and 16 to 240, reduced 3 times and enlarged", 2);
    const Area around = {38, 0, 24, 8};
    sheet.Place(16, 790, *ReducedEdge(0, 255), 20, &around);
    sheet.Place(16 + 520, 790, *ReducedEdge(16, 240), 20, &around);

    sheet.Write(16, 970, "gaussian at equal size: before and after, enlarged", 2);
    KelImagePtr pSharp = Scaled(source, 320, 240, KEL_SCALE_BOX);
    KelImagePtr pSoft = pSharp == nullptr ? nullptr : Scaled(pSharp, 320, 240, KEL_SCALE_GAUSSIAN);
    const Area middle = {40, 85, 120, 42};
    if (pSoft == nullptr || !sheet.Place(16, 1000, *pSharp, 4, &middle) ||
        !sheet.Place(16 + 520, 1000, *pSoft, 4, &middle)) {
        return KEL_ERR_MEMORY;
    }
    return sheet.Save(strPath);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: kernelstudy PICTURE OUT.png\n");
        return 2;
    }
    const std::vector<Kernel> kernels = AllKernels();
    KelImagePtr pSource = KelNewImage();
    KelStatus status = pSource == nullptr ? KEL_ERR_MEMORY : pSource->Open(argv[1]);
    if (status) {
        PrintReductions(kernels);
        PrintOvershoot();
        PrintBlur();
        status = SavePage(kernels, pSource, argv[2]);
    }
    if (!status) {
        std::fprintf(stderr, "kernelstudy: %s\n", status.ToString().c_str());
        return 1;
    }
    return 0;
}
