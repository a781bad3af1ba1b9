// Opens any bytes and uses the result through every operation, in an order the last bytes choose.
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    // Of the formats with a reader, only small claims; whatever has no reader is refused anyway.
    const bool bClaims = nSize > 0 && (pData[0] == 0x89 || pData[0] == 0xFF || pData[0] == 'B' ||
                                       pData[0] == 'C' || pData[0] == 'I' || pData[0] == 40);
    if (bClaims && !fuzz::IsSmall(pData, nSize))
        return 0;
    CVamArchiveMemory archive(pData, nSize);
    CKelImage image;
    fuzz::CheckResult(image.Open(&archive));
    fuzz::Require(archive.GetPosition() == 0, "the stream's position after Open");
    fuzz::CheckImage(image);
    const std::size_t nTail = nSize < 16 ? nSize : 16;
    fuzz::Input input(pData + nSize - nTail, nTail);
    for (int i = 0; i < 6; i++)
        fuzz::Operate(image, input);
    return 0;
}
