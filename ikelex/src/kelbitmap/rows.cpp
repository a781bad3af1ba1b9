// The channel fields and colour words, which are computed once before the rows.
#include "rows.h"

#include <algorithm>
#include <bit>

#include "kelbitmap.h"

namespace kel {

ChannelField FieldOfMask(std::uint32_t nMask) {
    const int nRight = MaskToRShift(nMask);
    const int nLeft = MaskToLShift(nMask);
    // A negative left shift is a further right shift. Start and run together span at most 32 bits,
    // so the sum is below 25.
    return nLeft >= 0 ? ChannelField{nMask, nRight, nLeft} : ChannelField{nMask, nRight - nLeft, 0};
}

void FillColorWords(const tagKelRGBQUAD* pPalette, int nCount, bool bReverse, std::uint32_t* pWords,
                    int nEntries) {
    const int nValid = std::min(nCount, nEntries);
    for (int i = 0; i < nValid; ++i) {
        const auto nEntry = std::bit_cast<std::uint32_t>(pPalette[i]);
        pWords[i] = bReverse ? __builtin_bswap32(nEntry) >> 8 : nEntry & 0xFFFFFF;
    }
    std::fill(pWords + nValid, pWords + nEntries, pWords[nValid - 1]);
}

}  // namespace kel
