// The scaler against the reference loops.
#include <memory>

#include "fuzz.h"
#include "kelscale/kelscale.h"
#include "support/reference/operations.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    int nKernels = 0;
    const tagKelScaleKernel* pKernels = GetScaleKernels(&nKernels);
    const tagKelScaleKernel& kernel = pKernels[input.Range(0, nKernels - 1)];
    const int nInWidth = input.Range(1, 300), nInHeight = input.Range(1, 80);
    const int nOutWidth = input.Range(1, 300), nOutHeight = input.Range(1, 80);
    support::Rows in = support::RandomRows(24, nInWidth, nInHeight, input.Byte());
    support::Rows out = support::BlackRows(24, nOutWidth, nOutHeight), expected = out;
    const auto inRows = in.Pointers(), outRows = out.Pointers();
    const auto pixels = [](const std::vector<unsigned char*>& rows) {
        return reinterpret_cast<CDataRGB_UBYTE::PixelClass**>(
            const_cast<unsigned char**>(rows.data()));
    };
    const auto u = [](int n) { return static_cast<unsigned int>(n); };
    const std::unique_ptr<PLContribDef> contribDef(kernel.pfnCreate(kernel.dWidth));
    C2PassScale<CDataRGB_UBYTE>(contribDef.get())
        .Scale(pixels(inRows), u(nInWidth), u(nInHeight), pixels(outRows), u(nOutWidth),
               u(nOutHeight));
    reference::Scale(kernel.eType, inRows.data(), nInWidth, nInHeight, expected.Pointers().data(),
                     nOutWidth, nOutHeight);
    fuzz::Require(out == expected, "a scaled picture differs from the reference");
    return 0;
}
