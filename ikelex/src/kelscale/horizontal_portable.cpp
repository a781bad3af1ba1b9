// The horizontal pass over a band of 32 rows, portable.
//
// The scratch holds byte b of row r at b * 32 + r.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "kelcpu/shuffle.h"
#include "sums.h"
#include "variants.h"

namespace kel {

namespace {

constexpr std::size_t kRows = 32;
constexpr std::size_t kPixelBytes = 3 * kRows;  // one pixel of all rows

using Bytes = std::uint8_t __attribute__((vector_size(16)));
using Halves = std::uint16_t __attribute__((vector_size(16)));
using Quarters = std::uint32_t __attribute__((vector_size(16)));

// Interleave the lower or the upper elements of two vectors.
inline Halves InterleaveLow(Bytes a, Bytes b) {
    return reinterpret_cast<Halves>(
        KEL_SHUFFLE(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
inline Quarters InterleaveLow(Halves a, Halves b) {
    return reinterpret_cast<Quarters>(KEL_SHUFFLE(a, b, 0, 8, 1, 9, 2, 10, 3, 11));
}
inline Quarters InterleaveHigh(Halves a, Halves b) {
    return reinterpret_cast<Quarters>(KEL_SHUFFLE(a, b, 4, 12, 5, 13, 6, 14, 7, 15));
}
inline Quarters InterleaveLow(Quarters a, Quarters b) {
    return KEL_SHUFFLE(a, b, 0, 4, 1, 5);
}
inline Quarters InterleaveHigh(Quarters a, Quarters b) {
    return KEL_SHUFFLE(a, b, 2, 6, 3, 7);
}

inline Bytes LoadEight(const std::uint64_t& nEight) {
    using Pair = std::uint64_t __attribute__((vector_size(16)));
    return reinterpret_cast<Bytes>(Pair{nEight, 0});
}

// Transposes 8 x 8 bytes, so that byte j of element i becomes byte i of element j.
inline void Transpose(std::uint64_t (&eights)[8]) {
    const Halves a = InterleaveLow(LoadEight(eights[0]), LoadEight(eights[1]));
    const Halves b = InterleaveLow(LoadEight(eights[2]), LoadEight(eights[3]));
    const Halves c = InterleaveLow(LoadEight(eights[4]), LoadEight(eights[5]));
    const Halves d = InterleaveLow(LoadEight(eights[6]), LoadEight(eights[7]));
    // Columns 0 to 3 and 4 to 7 of elements 0 to 3, and of elements 4 to 7.
    const Quarters abLow = InterleaveLow(a, b);
    const Quarters abHigh = InterleaveHigh(a, b);
    const Quarters cdLow = InterleaveLow(c, d);
    const Quarters cdHigh = InterleaveHigh(c, d);
    const Quarters columns[4] = {InterleaveLow(abLow, cdLow), InterleaveHigh(abLow, cdLow),
                                 InterleaveLow(abHigh, cdHigh), InterleaveHigh(abHigh, cdHigh)};
    std::memcpy(eights, columns, sizeof columns);
}

// Transposes 8 columns of bytes of the rows, of which nPart exist.
inline void TransposeColumns(const unsigned char* const* ppIn, std::size_t nAt, std::size_t nPart,
                             unsigned char* pScratch) {
    for (std::size_t r = 0; r < kRows; r += 8) {
        std::uint64_t eights[8] = {};
        for (std::size_t i = 0; i < 8; ++i) {
            std::memcpy(&eights[i], ppIn[r + i] + nAt, nPart);
        }
        Transpose(eights);
        for (std::size_t i = 0; i < 8; ++i) {
            std::memcpy(pScratch + (nAt + i) * kRows + r, &eights[i], 8);
        }
    }
}

// The sums of one output pixel of all rows.
template <typename Sum, Sum kStart>
void SumPixel(const Band& band, std::size_t x, unsigned char* pOut) {
    Sum sums[kPixelBytes];
    std::fill_n(sums, kPixelBytes, kStart);
    for (unsigned int s = band.pStart[x]; s < band.pStart[x + 1]; ++s) {
        const unsigned char* pIn =
            band.pScratch + std::ptrdiff_t{kPixelBytes} * band.pSteps[s].nIndex;
        AddWeighted(pIn, band.pSteps[s].nWeights, sums, kPixelBytes);
    }
    StoreSums(sums, pOut, kPixelBytes);
}

void TransposeBand(const unsigned char* const* ppIn, std::size_t nPixels, unsigned char* pScratch) {
    const std::size_t nBytes = 3 * nPixels;
    std::size_t b = 0;
    for (; b + 8 <= nBytes; b += 8) {
        TransposeColumns(ppIn, b, 8, pScratch);
    }
    if (b < nBytes) {
        TransposeColumns(ppIn, b, nBytes - b, pScratch);
    }
}

void SumBlock(const Band& band, std::size_t x, unsigned char* const* ppOut) {
    const auto pfnSum = band.bUnsigned16 ? SumPixel<std::uint16_t, 128> : SumPixel<std::int32_t, 0>;
    unsigned char block[kBlockPixels * kPixelBytes];
    for (std::size_t i = 0; i < kBlockPixels; ++i) {
        if (i % 4 == 0) {
            band.pAhead->FetchShare();
        }
        pfnSum(band, x + i, block + i * kPixelBytes);
    }
    for (std::size_t b = 0; b < 3 * kBlockPixels; b += 8) {
        for (std::size_t r = 0; r < kRows; r += 8) {
            std::uint64_t eights[8];
            for (std::size_t i = 0; i < 8; ++i) {
                std::memcpy(&eights[i], block + (b + i) * kRows + r, 8);
            }
            Transpose(eights);
            for (std::size_t i = 0; i < 8; ++i) {
                std::memcpy(ppOut[r + i] + b, &eights[i], 8);
            }
        }
    }
}

}  // namespace

const BandFunctions kBandPortable = {kRows, 0, TransposeBand, SumBlock};

}  // namespace kel
