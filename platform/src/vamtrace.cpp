#include <platform/vamtrace.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>

// The process's one level and one sink.
namespace {

std::atomic<int> g_nLevel{0};
std::atomic<ZT_TraceSink> g_pfnSink{nullptr};
std::atomic<void*> g_pSinkContext{nullptr};

void Deliver(ZT_TraceCall eCall, int nLevel, const char* pszText) {
    if (const ZT_TraceSink pfnSink = g_pfnSink.load(std::memory_order_acquire)) {
        pfnSink(g_pSinkContext.load(std::memory_order_acquire), eCall, nLevel, pszText);
        return;
    }
    // An input error's text has just been printed by zt_trace_write.
    if (eCall == ZT_TRACE_INPUT_ERROR) {
        return;
    }
    const std::size_t nLength = std::strlen(pszText);
    const bool bEnded = nLength > 0 && pszText[nLength - 1] == '\n';
    std::fprintf(stderr, bEnded ? "%s" : "%s\n", pszText);
}

}  // namespace

extern "C" {

int zt_trace_level() { return g_nLevel.load(std::memory_order_relaxed); }

void zt_trace_set_level(int nLevel) { g_nLevel.store(nLevel, std::memory_order_relaxed); }

void zt_trace_set_sink(ZT_TraceSink pfnSink, void* pContext) {
    g_pSinkContext.store(pContext, std::memory_order_release);
    g_pfnSink.store(pfnSink, std::memory_order_release);
}

void zt_trace_write(int nLevel, const char* pszText, int /*nReserved*/) {
    if (pszText != nullptr && zt_trace_level() >= nLevel) {
        Deliver(ZT_TRACE_WRITE, nLevel, pszText);
    }
}

void zt_trace_input_error_msg(int /*nReserved*/, const char* pszText) {
    if (pszText != nullptr && zt_trace_level() >= 0) {
        Deliver(ZT_TRACE_INPUT_ERROR, 0, pszText);
    }
}

void VamTrace(const char* pszFormat, ...) {
    if (pszFormat == nullptr || zt_trace_level() < 0) {
        return;
    }
    // printf would refuse "%$s"; the format is copied with it spelled "%s".
    char szFormat[256];
    std::size_t nLength = 0;
    for (const char* p = pszFormat; *p != '\0' && nLength + 1 < sizeof szFormat; ++p) {
        if (p != pszFormat && p[-1] == '%' && *p == '$' && p[1] == 's') {
            continue;
        }
        szFormat[nLength++] = *p;
    }
    szFormat[nLength] = '\0';

    char szLine[1024];
    va_list arguments;
    va_start(arguments, pszFormat);
    const int nWritten = std::vsnprintf(szLine, sizeof szLine, szFormat, arguments);
    va_end(arguments);
    if (nWritten >= 0) {
        Deliver(ZT_TRACE_VAM, 0, szLine);
    }
}

}  // extern "C"
