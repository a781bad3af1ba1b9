// What the processor has. The variants it can run, as a list, and the size of its largest cache.
#ifndef KELCPU_KELCPU_H
#define KELCPU_KELCPU_H

#include <cstdint>
#include <span>

namespace kel {

// Names of instruction sets. They have no order. A family of functions has a table for some of
// them. Every variant is byte-equal to the portable one.
enum class CpuLevel {
    kPortable,
    kAvx2,    // AVX2
    kAvx512,  // AVX-512 F, BW, VL, DQ, VBMI and VNNI (Ice Lake, Zen 4 and later)
    kNeon,    // NEON, in the base set of 64-bit ARM
};

// The levels this machine can run, the best first and kPortable last, without those above the cap
// of the build (IKELEX_CPU_CAP). Cheap enough to ask once per operation. Keeps no state.
std::span<const CpuLevel> Levels();

// The first of them.
inline CpuLevel BestLevel() {
    return Levels().front();
}

// Bytes of the processor's largest cache, or a guess of 16 MiB where the system does not know.
std::int64_t LastLevelCacheSize();

}  // namespace kel

#endif  // KELCPU_KELCPU_H
