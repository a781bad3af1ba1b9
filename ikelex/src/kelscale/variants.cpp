// The choice of the functions of a level.
#include "variants.h"

namespace kel {

namespace {

constexpr ScaleFunctions kPortable = {kBandPortable, nullptr, nullptr, kVerticalPortable};
#if defined(__x86_64__)
constexpr ScaleFunctions kAvx2 = {kBandAvx2, &kWindowsAvx2, &kShufflesAvx2, kVerticalAvx2};
constexpr ScaleFunctions kAvx512 = {kBandAvx512, &kWindowsAvx512, &kShufflesAvx512,
                                    kVerticalAvx512};
#endif

}  // namespace

const ScaleFunctions& ScaleFunctionsFor(CpuLevel eLevel) {
    switch (eLevel) {
#if defined(__x86_64__)
        case CpuLevel::kAvx512:
            return kAvx512;
        case CpuLevel::kAvx2:
            return kAvx2;
#endif
        default:
            return kPortable;
    }
}

}  // namespace kel
