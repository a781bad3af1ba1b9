// The intrinsics and the attributes of functions, for files of x86 variants.
//
// A function carries the attribute of its level, so nothing else in the file is compiled for a
// newer processor, inline functions of other headers included. Write the attribute first, as in
// `KEL_AVX2 void Sum(...)` and `KEL_AVX2 KEL_INLINE __m256i Load(...)`.
#ifndef KELCPU_X86_H
#define KELCPU_X86_H

#if defined(__x86_64__)

#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
// g++ 12 takes the undefined operands inside its own intrinsics for variables of ours. The warnings
// appear where the intrinsics are inlined, so they stay off to the end of the file.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define KEL_AVX2 __attribute__((target("avx2")))
#define KEL_AVX512 \
    __attribute__((target("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi,avx512vnni")))
#define KEL_INLINE __attribute__((always_inline)) inline

#endif

#endif  // KELCPU_X86_H
