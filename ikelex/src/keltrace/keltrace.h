// The library's tracing conventions, written once.
//
// Level 0 carries input errors, level 1 failures of the bounded memory functions, level 2 detail
// lines. A line of level L is produced only when zt_trace_level() is at least L. Nothing here
// changes a result, allocates or throws.
#ifndef KELTRACE_KELTRACE_H
#define KELTRACE_KELTRACE_H

namespace kel {

// The source names of secure-function lines: one per room that copies or fills.
inline constexpr const char* kSourceImage = "ikelex/src/kelimage";
inline constexpr const char* kSourceDecoder = "ikelex/src/keldecoder";
inline constexpr const char* kSourceEncoder = "ikelex/src/kelencoder";
inline constexpr const char* kSourceScale = "ikelex/src/kelscale";

// The size of a pixel buffer above which an input error is traced (and the work still done).
inline constexpr unsigned int kTracedSizeLimit = 50u * 1024 * 1024;

// Input error: pszName and " is nullptr".
void TraceNull(const char* pszName);

// Input error: pszName, " is invalid: " and the value in decimal.
void TraceInvalid(const char* pszName, unsigned int nValue);
void TraceInvalid(const char* pszName, int nValue);

// Input error with a ready text: written at level 0, then recorded as input error.
void TraceInputError(const char* pszText);

// Takes the result of memcpy_s or memset_s. When it is not 0, writes
// "[" pszSource ";" line "] secure function return=" nResult at level 1. The line is the caller's,
// so the call stands on the line of the bounded memory function itself:
//     kel::CheckSecure(kel::kSourceImage, memset_s(p, n, 0, n));
void CheckSecure(const char* pszSource, int nResult, int nLine = __builtin_LINE());

}  // namespace kel

#endif  // KELTRACE_KELTRACE_H
