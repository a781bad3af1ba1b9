// The weighted sums of the portable passes, many at a time.
//
// Sums of 16 bits start at 128, half of 256. They serve plans that are bUnsigned16 and cannot
// overflow, because no weight is below 0 and a record's weights sum to 256 at most.
//
//     255 x 256 + 128 = 65,408 < 65,536
//
// Sums of 32 bits start at 0 and take any weights of a plan, which fit into 16 bits signed.
#ifndef KELSCALE_SUMS_H
#define KELSCALE_SUMS_H

#include <cstddef>
#include <cstdint>

#include "kelbitmap/integers.h"
#include "passes.h"

namespace kel {

inline void AddWeighted(const unsigned char* pIn, int nWeight, std::uint16_t* pSums,
                        std::size_t nCount) {
    const auto nFactor = static_cast<std::uint16_t>(nWeight);
    for (std::size_t i = 0; i < nCount; ++i) {
        pSums[i] = static_cast<std::uint16_t>(pSums[i] + pIn[i] * nFactor);
    }
}

inline void AddWeighted(const unsigned char* pIn, int nWeight, std::int32_t* pSums,
                        std::size_t nCount) {
    const auto nFactor = static_cast<std::int16_t>(nWeight);
    for (std::size_t i = 0; i < nCount; ++i) {
        pSums[i] += std::int16_t{pIn[i]} * nFactor;
    }
}

inline void StoreSums(const std::uint16_t* pSums, unsigned char* pOut, std::size_t nCount) {
    for (std::size_t i = 0; i < nCount; ++i) {
        pOut[i] = LowByte(pSums[i] >> 8);
    }
}

inline void StoreSums(const std::int32_t* pSums, unsigned char* pOut, std::size_t nCount) {
    for (std::size_t i = 0; i < nCount; ++i) {
        pOut[i] = ByteOfSum(pSums[i]);
    }
}

}  // namespace kel

#endif  // KELSCALE_SUMS_H
