// Which processor variants a function may choose from.
#ifndef KELCPU_KELCPU_H
#define KELCPU_KELCPU_H

namespace kel {

// Each level includes the ones before it. Every variant is byte-equal to the portable one.
enum class CpuLevel {
    kPortable = 0,
    kAvx2 = 1,    // AVX2
    kAvx512 = 2,  // AVX-512 F, BW, VL, DQ, VBMI and VNNI (Ice Lake, Zen 4 and later)
};

// The highest level this machine can run, not above the level the build is capped at
// (IKELEX_CPU_CAP). Cheap enough to ask once per operation; keeps no state.
CpuLevel BestCpuLevel();

}  // namespace kel

#endif  // KELCPU_KELCPU_H
