// The scaler against the plain loops, on rows that end where their memory ends.
#include <cstring>
#include <memory>

#include "fuzz.h"
#include "kelscale.h"
#include "plain.h"

namespace {

// Rows of a width each in a block of its own, so that a byte too far is seen.
struct Rows {
    Rows(int nWidth, int nHeight) {
        for (int y = 0; y < nHeight; y++) {
            rows.emplace_back(new unsigned char[static_cast<std::size_t>(nWidth)][3]());
            pointers.push_back(rows.back().get());
        }
    }
    unsigned char** Bytes() { return reinterpret_cast<unsigned char**>(pointers.data()); }
    std::vector<std::unique_ptr<unsigned char[][3]>> rows;
    std::vector<unsigned char (*)[3]> pointers;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    const int nKernel = input.Range(1, 4);
    const int nInWidth = input.Range(1, 300), nInHeight = input.Range(1, 80);
    const int nOutWidth = input.Range(1, 300), nOutHeight = input.Range(1, 80);
    const std::size_t nInBytes = 3 * static_cast<std::size_t>(nInWidth);
    const std::size_t nOutBytes = 3 * static_cast<std::size_t>(nOutWidth);
    Rows in(nInWidth, nInHeight), out(nOutWidth, nOutHeight), expected(nOutWidth, nOutHeight);
    for (auto& row : in.rows) {
        for (std::size_t i = 0; i < nInBytes; i++)
            row[i / 3][i % 3] = input.Noise();
    }
    PLBilinearContribDef bilinear(0.64);
    PLBoxContribDef box(0.5);
    PLGaussianContribDef gaussian(3.0);
    PLHammingContribDef hamming(3.0);
    PLContribDef* kernels[] = {&bilinear, &box, &gaussian, &hamming};
    C2PassScale<CDataRGB_UBYTE> scaler(kernels[nKernel - 1]);
    const auto u = [](int n) { return static_cast<unsigned int>(n); };
    fuzz::Require(scaler.Scale(in.pointers.data(), u(nInWidth), u(nInHeight), out.pointers.data(),
                               u(nOutWidth), u(nOutHeight)) == out.pointers.data(),
                  "Scale failed");
    plain::Scale(nKernel, in.Bytes(), nInWidth, nInHeight, expected.Bytes(), nOutWidth, nOutHeight);
    for (std::size_t k = 0; k < out.rows.size(); k++) {
        fuzz::Require(std::memcmp(out.rows[k].get(), expected.rows[k].get(), nOutBytes) == 0,
                      "a scaled row differs from the plain loop's");
    }
    return 0;
}
