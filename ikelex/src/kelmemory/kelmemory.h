// Pixel buffers, taken with array new and released with array delete.
#ifndef KELMEMORY_KELMEMORY_H
#define KELMEMORY_KELMEMORY_H

#include <cstdint>
#include <memory>

namespace kel {

// A new uninitialised buffer of nSize bytes from the throwing array new. Large blocks ask the
// system for huge pages, since touching fresh small pages costs more than most work on them. Throws
// std::bad_alloc, also for a negative size.
unsigned char* NewPixels(std::int64_t nSize);

// The same with std::bad_alloc caught. Null for a failure. Whatever else a host's operator new
// throws passes on.
unsigned char* TryNewPixels(std::int64_t nSize);

// The same from the non-throwing array new, with null instead of an exception. No size is too large
// in itself.
unsigned char* NewPixelsNothrow(std::int64_t nSize) noexcept;

// A scratch buffer of nSize bytes, uninitialised, from the non-throwing array new. Null when it
// cannot be allocated, or when nSize is below 0 or above 2^31 - 1.
std::unique_ptr<unsigned char[]> NewScratch(std::int64_t nSize);

}  // namespace kel

#endif  // KELMEMORY_KELMEMORY_H
