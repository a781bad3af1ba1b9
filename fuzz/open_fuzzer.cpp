// Opens any bytes and uses the result through every operation, in an order the last bytes choose;
// or, compiled with a FUZZ_FORMAT of its own, opens files of that kind alone, as many as it can.
#include "fuzz.h"
#include "kelimage/dispatch/formats.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    constexpr bool bAny = FUZZ_FORMAT == KEL_IMAGE_UNKNOWN;
    const kel::Format* pFormat = kel::FormatOfData(pData, nSize);
    if (!bAny && (pFormat == nullptr || pFormat->eFormat != FUZZ_FORMAT)) {
        return 0;
    }
    CVamArchiveMemory archive(pData, nSize);
    CKelImage image;
    fuzz::CheckResult(image.Open(&archive));
    fuzz::Require(archive.GetPosition() == 0, "the stream's position after Open");
    fuzz::CheckImage(image);
    const std::size_t nTail = nSize < 16 ? nSize : 16;
    fuzz::Input input(pData + nSize - nTail, nTail);
    for (int i = 0; i < (bAny ? 6 : 0); ++i) {
        fuzz::Operate(image, input);
    }
    return 0;
}
