#include "kelcpu.h"

namespace kel {

#if defined(__x86_64__) && !defined(IKELEX_CPU_CAP_PORTABLE)

CpuLevel BestCpuLevel() {
    __builtin_cpu_init();
#ifndef IKELEX_CPU_CAP_AVX2
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni")) {
        return CpuLevel::kAvx512;
    }
#endif
    if (__builtin_cpu_supports("avx2")) {
        return CpuLevel::kAvx2;
    }
    return CpuLevel::kPortable;
}

#else

CpuLevel BestCpuLevel() {
    return CpuLevel::kPortable;
}

#endif

}  // namespace kel
