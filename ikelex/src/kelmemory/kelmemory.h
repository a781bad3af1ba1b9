// Pixel buffers: taken with array new, released with array delete.
#ifndef KELMEMORY_KELMEMORY_H
#define KELMEMORY_KELMEMORY_H

#include <cstddef>

namespace kel {

// A new uninitialised buffer of nSize bytes from the throwing array new. Large blocks ask the
// system for huge pages, since touching fresh small pages costs more than most work on them. Throws
// std::bad_alloc.
unsigned char* NewPixels(std::size_t nSize);

// The same with std::bad_alloc caught: null for a failure. Whatever else a host's operator new
// throws passes on.
unsigned char* TryNewPixels(std::size_t nSize);

// The same from the non-throwing array new: null instead of an exception.
unsigned char* NewPixelsNothrow(std::size_t nSize) noexcept;

}  // namespace kel

#endif  // KELMEMORY_KELMEMORY_H
