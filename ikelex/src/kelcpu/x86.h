// The intrinsics, the attributes of functions, and loads and stores, for files of x86 variants.
//
// A function carries the attribute of its level, so nothing else in the file is compiled for a
// newer processor, inline functions of other headers included. Write the attribute first, as in
// `KEL_AVX2 void Sum(...)` and `KEL_AVX2 KEL_INLINE __m256i Load(...)`.
#ifndef KELCPU_X86_H
#define KELCPU_X86_H

#if defined(__x86_64__)

#include <cstdint>

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

namespace kel {

// 16 and 32 bytes at any address.
KEL_INLINE __m128i Load128(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}
KEL_INLINE void Store128(void* p, __m128i v) {
    _mm_storeu_si128(static_cast<__m128i*>(p), v);
}
KEL_AVX2 KEL_INLINE __m256i Load256(const void* p) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(p));
}
KEL_AVX2 KEL_INLINE void Store256(void* p, __m256i v) {
    _mm256_storeu_si256(static_cast<__m256i*>(p), v);
}

// The low 16 or 32 bits of n in every lane.
KEL_AVX2 KEL_INLINE __m256i Repeat16(std::int64_t n) {
    return _mm256_set1_epi16(static_cast<short>(n));
}
KEL_AVX2 KEL_INLINE __m256i Repeat32(std::int64_t n) {
    return _mm256_set1_epi32(static_cast<int>(n));
}
KEL_AVX512 KEL_INLINE __m512i Repeat16Wide(std::int64_t n) {
    return _mm512_set1_epi16(static_cast<short>(n));
}
KEL_AVX512 KEL_INLINE __m512i Repeat32Wide(std::int64_t n) {
    return _mm512_set1_epi32(static_cast<int>(n));
}

// 16 bytes in each half.
KEL_AVX2 KEL_INLINE __m256i LoadHalves(const void* pLow, const void* pHigh) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(Load128(pLow)), Load128(pHigh), 1);
}

}  // namespace kel

#endif

#endif  // KELCPU_X86_H
