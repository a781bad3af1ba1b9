// Every row function of every processor level this machine runs against the portable one, on rows
// that end where their memory ends, at any offset from an aligned address.
#include <memory>

#include "fuzz.h"
#include "kelbitmap/rows.h"

namespace {

using Function = void (*)(const kel::RowFunctions&, const unsigned char*, unsigned char*,
                          std::size_t, const std::uint32_t*, const kel::PixelFields&);

// Source bits per pixel, destination bytes per pixel, and the call.
struct Case {
    std::size_t nSourceBits, nTargetBytes;
    Function pfn;
};

#define ROW                                                                                 \
    [](const kel::RowFunctions& f, const unsigned char* s, unsigned char* d, std::size_t n, \
       [[maybe_unused]] const std::uint32_t* w, [[maybe_unused]] const kel::PixelFields& m)
const Case kCases[] = {{24, 3, ROW{f.pfnReverse24(s, d, n);
}  // namespace
}
, {32, 3, ROW{f.pfnPack32(s, d, n);
}
}
, {32, 3, ROW{f.pfnReverse32(s, d, n);
}
}
, {24, 4, ROW{f.pfnExpand24(s, d, n);
}
}
, {8, 3, ROW{f.pfnPalette8(s, w, d, n);
}
}
, {4, 3, ROW{f.pfnPalette4(s, w, d, n);
}
}
, {1, 3, ROW{f.pfnPalette1(s, w, d, n);
}
}
, {16, 3, ROW{f.pfnFields16(s, m, d, n);
}
}
, {32, 3, ROW{f.pfnFields32(s, m, d, n);
}
}
,
}
;
#undef ROW

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    const Case& item = kCases[input.Byte() % std::size(kCases)];
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
    for (tagKelRGBQUAD& entry : palette)
        entry = {input.Byte(), input.Byte(), input.Byte(), 0};
    kel::FillColorWords(palette.data(), static_cast<int>(palette.size()), nShift % 2 == 0,
                        words.data(), 256);

    const std::size_t nSource = (item.nSourceBits * nPixels + 7) / 8;
    const std::size_t nTarget = item.nTargetBytes * nPixels;
    const std::unique_ptr<unsigned char[]> source(new unsigned char[nShift + nSource]);
    input.Fill(source.get(), nShift + nSource);
    fuzz::Bytes expected(nTarget);
    item.pfn(kel::kRowsPortable, source.get() + nShift, expected.data(), nPixels, words.data(),
             fields);
    for (int nLevel = 0; nLevel <= static_cast<int>(kel::BestCpuLevel()); nLevel++) {
        const auto& functions = kel::RowFunctionsFor(static_cast<kel::CpuLevel>(nLevel));
        const std::unique_ptr<unsigned char[]> target(new unsigned char[nShift + nTarget]());
        item.pfn(functions, source.get() + nShift, target.get() + nShift, nPixels, words.data(),
                 fields);
        for (std::size_t i = 0; i < nTarget; i++) {
            fuzz::Require(target[nShift + i] == expected[i], "a row differs from the portable one");
        }
        for (std::size_t i = 0; i < nShift; i++)
            fuzz::Require(target[i] == 0, "a byte before the row");
    }
    return 0;
}
