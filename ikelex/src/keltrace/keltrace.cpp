// Composes the trace lines. Their texts are fixed, because hosts match them.
#include "keltrace.h"

#include <cstddef>

#include <platform/vamplatform.h>

namespace kel {

namespace {

// What every line's stream is constructed with.
constexpr unsigned int kStreamSize = 1024;
constexpr unsigned int kStreamGrow = 32;

// Composes an input error and writes it to both trace functions.
template <typename... Parts>
void TraceParts(const Parts... parts) {
    if (zt_trace_level() < 0) {
        return;
    }
    ZT_Text_Stream stream(kStreamSize, kStreamGrow);
    (stream << ... << parts);
    zt_trace_write(0, stream.GetText(), 0);
    zt_trace_input_error_msg(0, stream.GetText());
}

// A count that is not negative.
constexpr std::size_t Size(std::int64_t nBytes) {
    return static_cast<std::size_t>(nBytes);
}

// One line at level 1 for a result of memcpy_s or memset_s that is not 0.
void TraceFailure(const char* pszSource, int nLine, int nResult) {
    if (nResult == 0 || zt_trace_level() < 1) {
        return;
    }
    ZT_Text_Stream stream(kStreamSize, kStreamGrow);
    stream << "[" << pszSource << ";" << nLine << "] secure function return=" << nResult;
    zt_trace_write(1, stream.GetText(), 0);
}

}  // namespace

void TraceNull(const char* pszName) {
    TraceParts(pszName, " is nullptr");
}

void TraceInvalid(const char* pszName, unsigned int nValue) {
    TraceParts(pszName, " is invalid: ", nValue);
}

void TraceInvalid(const char* pszName, int nValue) {
    TraceParts(pszName, " is invalid: ", nValue);
}

void TraceMessage(const char* pszPrefix, const char* pszMessage) {
    TraceParts(pszPrefix, pszMessage);
}

void SecureCopy(const char* pszSource, void* pDst, const void* pSrc, std::int64_t nBytes,
                int nLine) {
    SecureCopyInto(pszSource, pDst, nBytes, pSrc, nBytes, nLine);
}

void SecureCopyInto(const char* pszSource, void* pDst, std::int64_t nRoom, const void* pSrc,
                    std::int64_t nBytes, int nLine) {
    TraceFailure(pszSource, nLine, memcpy_s(pDst, Size(nRoom), pSrc, Size(nBytes)));
}

void SecureZero(const char* pszSource, void* pDst, std::int64_t nBytes, int nLine) {
    TraceFailure(pszSource, nLine, memset_s(pDst, Size(nBytes), 0, Size(nBytes)));
}

}  // namespace kel
