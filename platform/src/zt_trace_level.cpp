// The level of the process, alone in a file so that a program can replace it at link time.
#include <platform/vamtrace.h>

#include <atomic>

static std::atomic<int> g_nLevel{0};

int zt_trace_level() {
    return g_nLevel.load(std::memory_order_relaxed);
}

void zt_trace_set_level(int nLevel) {
    g_nLevel.store(nLevel, std::memory_order_relaxed);
}
