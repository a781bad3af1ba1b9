// One reader alone, without the signature test before it. Compiled once for each (FUZZ_READER).
#include "fuzz.h"
#include "keldecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    if (!fuzz::IsSmall(pData, nSize))
        return 0;
    CVamArchiveMemory archive(pData, nSize);
    CKelImage image;
    fuzz::CheckResult(FUZZ_READER().Do(&archive, &image));
    fuzz::CheckImage(image);
    return 0;
}
