// Every row function of every processor level this machine runs against the portable one, on rows
// that end where their memory ends, at any offset from an aligned address.
#include <algorithm>
#include <memory>

#include "fuzz.h"
#include "kelbitmap/rows.h"

namespace {

// Source bits per pixel and destination bytes per pixel of each conversion.
constexpr std::size_t kSizes[][2] = {{24, 3}, {32, 3}, {32, 3}, {24, 4}, {8, 3},
                                     {4, 3},  {1, 3},  {16, 3}, {32, 3}};

void Convert(std::size_t nCase, const kel::RowFunctions& functions, const unsigned char* pSource,
             unsigned char* pTarget, std::size_t nPixels, const std::uint32_t* pWords,
             const kel::PixelFields& fields) {
    const decltype(functions.pfnReverse24) plain[] = {functions.pfnReverse24, functions.pfnPack32,
                                                      functions.pfnPackReverse32,
                                                      functions.pfnExpand24};
    const decltype(functions.pfnPalette8) indexed[] = {functions.pfnPalette8, functions.pfnPalette4,
                                                       functions.pfnPalette1};
    const decltype(functions.pfnFields16) masked[] = {functions.pfnFields16, functions.pfnFields32};
    if (nCase < 4) {
        plain[nCase](pSource, pTarget, nPixels);
    } else if (nCase < 7) {
        indexed[nCase - 4](pSource, pWords, pTarget, nPixels);
    } else {
        masked[nCase - 7](pSource, fields, pTarget, nPixels);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    const std::size_t nCase = input.Byte() % std::size(kSizes);
    const auto [nSourceBits, nTargetBytes] = kSizes[nCase];
    const std::size_t nPixels = static_cast<std::size_t>(input.Range(0, 699));
    const std::size_t nShift = input.Byte() % 64u;
    kel::PixelFields fields;
    for (kel::ChannelField& field : fields.aChannels) {
        std::uint32_t nMask = 0;
        input.Fill(reinterpret_cast<unsigned char*>(&nMask), sizeof nMask);
        field = kel::FieldOfMask(nMask);
    }
    std::vector<std::uint32_t> words(256);
    std::vector<tagKelRGBQUAD> palette(1 + input.Byte());
    for (tagKelRGBQUAD& entry : palette) {
        entry = {input.Byte(), input.Byte(), input.Byte(), 0};
    }
    kel::FillColorWords(palette.data(), static_cast<int>(palette.size()), nShift % 2 == 0,
                        words.data(), 256);

    const std::size_t nSource = (nSourceBits * nPixels + 7) / 8;
    const std::size_t nTarget = nTargetBytes * nPixels;
    const std::unique_ptr<unsigned char[]> source(new unsigned char[nShift + nSource]);
    input.Fill(source.get(), nShift + nSource);
    fuzz::Bytes expected(nShift + nTarget);
    Convert(nCase, kel::kRowsPortable, source.get() + nShift, expected.data() + nShift, nPixels,
            words.data(), fields);
    for (const kel::CpuLevel eLevel : kel::Levels()) {
        const auto& functions = kel::RowFunctionsFor(eLevel);
        const std::unique_ptr<unsigned char[]> target(new unsigned char[nShift + nTarget]());
        Convert(nCase, functions, source.get() + nShift, target.get() + nShift, nPixels,
                words.data(), fields);
        fuzz::Require(std::equal(expected.begin(), expected.end(), target.get()),
                      "a row differs from the portable one, or a byte before it was written");
    }
    return 0;
}
