// One reader alone on files of its kind. Compiled once for each (FUZZ_READER, FUZZ_FORMAT).
#include "fuzz.h"
#include "keldecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    CKelImage image;
    // A reader meets other signatures nowhere, and only its own kind's claim bounds what it takes.
    if (!fuzz::IsSmall(pData, nSize) || fuzz::Signature(pData, nSize) != FUZZ_FORMAT)
        return 0;
    CVamArchiveMemory archive(pData, nSize);
    fuzz::CheckResult(FUZZ_READER().Do(&archive, &image));
    fuzz::CheckImage(image);
    return 0;
}
