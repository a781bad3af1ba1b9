// The library's tracing conventions, and the bounded memory functions that follow them.
//
// Level 0 carries input errors (each written, then recorded as input error), level 1 failures of
// the bounded memory functions, level 2 detail lines. A line of level L is composed only when
// zt_trace_level() is at least L. A failed copy or fill is traced with source, line and code, and
// the caller goes on as if it had succeeded.
#ifndef KELTRACE_KELTRACE_H
#define KELTRACE_KELTRACE_H

#include <cstdint>

namespace kel {

// The source names in lines of the bounded memory functions, one for each room that calls them.
inline constexpr const char* kSourceImage = "ikelex/src/kelimage";
inline constexpr const char* kSourceDecoder = "ikelex/src/keldecoder";
inline constexpr const char* kSourceEncoder = "ikelex/src/kelencoder";

// The size of a pixel buffer above which an input error is traced (and the work still done).
inline constexpr unsigned int kTracedSizeLimit = 50u * 1024 * 1024;

// An input error of pszName and " is nullptr".
void TraceNull(const char* pszName);

// An input error of pszName, " is invalid: " and the value in decimal.
void TraceInvalid(const char* pszName, unsigned int nValue);
void TraceInvalid(const char* pszName, int nValue);

// An input error of pszPrefix and a foreign library's message.
void TraceMessage(const char* pszPrefix, const char* pszMessage);

// memcpy_s and memset_s with value 0, into a target with room for exactly nBytes. The
// line in the trace is the caller's.
void SecureCopy(const char* pszSource, void* pDst, const void* pSrc, std::int64_t nBytes,
                int nLine = __builtin_LINE());
void SecureZero(const char* pszSource, void* pDst, std::int64_t nBytes,
                int nLine = __builtin_LINE());

// The same for a copy into a larger target of nRoom bytes.
void SecureCopyInto(const char* pszSource, void* pDst, std::int64_t nRoom, const void* pSrc,
                    std::int64_t nBytes, int nLine = __builtin_LINE());

}  // namespace kel

#endif  // KELTRACE_KELTRACE_H
