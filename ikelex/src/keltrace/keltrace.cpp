#include "keltrace.h"

#include <platform/vamplatform.h>

namespace kel {

namespace {

// What every line's stream is constructed with.
constexpr unsigned int kStreamSize = 1024;
constexpr unsigned int kStreamGrow = 32;

template <typename Value>
void TraceInvalidValue(const char* pszName, Value value) {
    ZT_Text_Stream stream(kStreamSize, kStreamGrow);
    TraceInputError((stream << pszName << " is invalid: " << value).GetText());
}

}  // namespace

void TraceInputError(const char* pszText) {
    if (zt_trace_level() < 0) {
        return;
    }
    zt_trace_write(0, pszText, 0);
    zt_trace_input_error_msg(0, pszText);
}

void TraceNull(const char* pszName) {
    ZT_Text_Stream stream(kStreamSize, kStreamGrow);
    TraceInputError((stream << pszName << " is nullptr").GetText());
}

void TraceInvalid(const char* pszName, unsigned int nValue) {
    TraceInvalidValue(pszName, nValue);
}

void TraceInvalid(const char* pszName, int nValue) {
    TraceInvalidValue(pszName, nValue);
}

void CheckSecure(const char* pszSource, int nResult, int nLine) {
    if (nResult == 0 || zt_trace_level() < 1) {
        return;
    }
    ZT_Text_Stream stream(kStreamSize, kStreamGrow);
    stream << "[" << pszSource << ";" << nLine << "] secure function return=" << nResult;
    zt_trace_write(1, stream.GetText(), 0);
}

}  // namespace kel
