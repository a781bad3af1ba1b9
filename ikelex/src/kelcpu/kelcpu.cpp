// What the processor and the operating system report about levels and caches.
#include "kelcpu.h"

#include <array>

#ifdef __linux__
#include <unistd.h>
#endif

namespace kel {

namespace {

// All levels of this architecture that the build allows, the best first.
constexpr std::array kLevels = {
#if defined(__x86_64__) && !defined(IKELEX_CPU_CAP_PORTABLE)
#ifndef IKELEX_CPU_CAP_AVX2
    CpuLevel::kAvx512,
#endif
    CpuLevel::kAvx2,
#elif defined(__aarch64__) && !defined(IKELEX_CPU_CAP_PORTABLE)
    CpuLevel::kNeon,
#endif
    CpuLevel::kPortable,
};

// Whether the machine runs a level of the list. Each x86 level includes those after it.
bool Runs(CpuLevel eLevel) {
    switch (eLevel) {
#if defined(__x86_64__)
        case CpuLevel::kAvx512:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                   __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                   __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni");
        case CpuLevel::kAvx2:
            return __builtin_cpu_supports("avx2");
#endif
        default:  // what every processor of the architecture has
            return true;
    }
}

}  // namespace

std::span<const CpuLevel> Levels() {
#if defined(__x86_64__)
    __builtin_cpu_init();
#endif
    std::span<const CpuLevel> levels = kLevels;
    while (!Runs(levels.front())) {
        levels = levels.subspan(1);
    }
    return levels;
}

std::int64_t LastLevelCacheSize() {
    std::int64_t nSize = 0;
#if defined(_SC_LEVEL3_CACHE_SIZE)
    nSize = sysconf(_SC_LEVEL3_CACHE_SIZE);
    if (nSize <= 0) {
        nSize = sysconf(_SC_LEVEL2_CACHE_SIZE);
    }
#endif
    return nSize > 0 ? nSize : std::int64_t{16} << 20;
}

}  // namespace kel
