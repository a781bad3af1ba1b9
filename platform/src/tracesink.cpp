// The one sink of the process and its default, which prints to standard error.
#include "tracesink.h"

#include <cstdio>
#include <cstring>
#include <mutex>

namespace {

// The process's one sink. The pair changes and is read as one. The lock is not held while a sink
// runs.
struct Sink {
    ZT_TraceSink pfnSink;
    void* pContext;
};
std::mutex g_SinkMutex;
Sink g_Sink = {nullptr, nullptr};

}  // namespace

void vam::Deliver(ZT_TraceCall eCall, int nLevel, const char* pszText) {
    Sink sink;
    {
        const std::lock_guard<std::mutex> lock(g_SinkMutex);
        sink = g_Sink;
    }
    if (sink.pfnSink != nullptr) {
        sink.pfnSink(sink.pContext, eCall, nLevel, pszText);
        return;
    }
    // An input error's text has just been printed by zt_trace_write.
    if (eCall == ZT_TRACE_INPUT_ERROR) {
        return;
    }
    const std::size_t nLength = std::strlen(pszText);
    const bool bEnded = nLength > 0 && pszText[nLength - 1] == '\n';
    std::fprintf(stderr, "%s%s", pszText, bEnded ? "" : "\n");
}

void zt_trace_set_sink(ZT_TraceSink pfnSink, void* pContext) {
    const std::lock_guard<std::mutex> lock(g_SinkMutex);
    g_Sink = {pfnSink, pContext};
}
