/// @file
/// The bounded memory functions, with the published bounds-checked signatures.
#ifndef PLATFORM_SECUREMEM_H
#define PLATFORM_SECUREMEM_H

#include <cstddef>

#ifdef _WIN32
// The C library of Windows has a memcpy_s that ends the process where this one returns a code. Its
// declarations come first. Then the two names mean the functions below, which have names of their
// own for the linker.
#include <memory.h>
#include <string.h>
#define memcpy_s vam_memcpy_s
#define memset_s vam_memset_s
#endif

extern "C" {

/// Copies count bytes from src to dest, which has room for destMax. Returns 0 on success. A null
/// pointer gives 22 (EINVAL) and a count above destMax 34 (ERANGE), with nothing copied. A count of
/// 0 succeeds whatever the pointers are. The areas must not overlap.
int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count);

/// Sets count bytes of dest, which has room for destMax, to value. Returns 0 on success, 22 for a
/// null pointer and 34 for a count above destMax, with nothing written.
int memset_s(void* dest, std::size_t destMax, int value, std::size_t count);

}  // extern "C"

#endif  // PLATFORM_SECUREMEM_H
