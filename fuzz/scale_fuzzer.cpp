// The scaler against the reference loops, on rows that end where their memory ends.
#include <algorithm>
#include <memory>

#include "fuzz.h"
#include "kelscale/kelscale.h"
#include "support/reference/operations.h"

namespace {

// Rows of 3-byte pixels, each in a block of its own, so that a byte too far is seen.
struct Rows {
    Rows(int nWidth, int nHeight) : nBytes(static_cast<std::size_t>(nWidth) * 3) {
        for (int y = 0; y < nHeight; ++y) {
            rows.emplace_back(new unsigned char[nBytes]());
            pointers.push_back(rows.back().get());
        }
    }
    CDataRGB_UBYTE::PixelClass** Pixels() {
        return reinterpret_cast<CDataRGB_UBYTE::PixelClass**>(pointers.data());
    }
    std::size_t nBytes;
    std::vector<std::unique_ptr<unsigned char[]>> rows;
    std::vector<unsigned char*> pointers;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    int nKernels = 0;
    const tagKelScaleKernel* pKernels = GetScaleKernels(&nKernels);
    const tagKelScaleKernel& kernel = pKernels[input.Range(0, nKernels - 1)];
    const int nInWidth = input.Range(1, 300), nInHeight = input.Range(1, 80);
    const int nOutWidth = input.Range(1, 300), nOutHeight = input.Range(1, 80);
    Rows in(nInWidth, nInHeight), out(nOutWidth, nOutHeight), expected(nOutWidth, nOutHeight);
    for (unsigned char* pRow : in.pointers) {
        std::generate_n(pRow, in.nBytes, [&input] { return input.Noise(); });
    }
    const std::unique_ptr<PLContribDef> contribDef(kernel.pfnCreate(kernel.dWidth));
    C2PassScale<CDataRGB_UBYTE> scaler(contribDef.get());
    const auto u = [](int n) { return static_cast<unsigned int>(n); };
    fuzz::Require(scaler.Scale(in.Pixels(), u(nInWidth), u(nInHeight), out.Pixels(), u(nOutWidth),
                               u(nOutHeight)) == out.Pixels(),
                  "Scale failed");
    reference::Scale(kernel.eType, in.pointers.data(), nInWidth, nInHeight,
                     expected.pointers.data(), nOutWidth, nOutHeight);
    for (std::size_t k = 0; k < out.pointers.size(); ++k) {
        fuzz::Require(
            std::equal(out.pointers[k], out.pointers[k] + out.nBytes, expected.pointers[k]),
            "a scaled row differs from the reference");
    }
    return 0;
}
