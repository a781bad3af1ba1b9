// Keeps what the library traces, for the message of a failure.
#ifndef EXAMPLES_TRACELINES_H
#define EXAMPLES_TRACELINES_H

#include <platform/vamplatform.h>

#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

// Receives the library's trace from any thread while it lives. One object at a time.
class TraceLines {
  public:
    TraceLines() { zt_trace_set_sink(&Keep, this); }
    ~TraceLines() { zt_trace_set_sink(nullptr, nullptr); }
    TraceLines(const TraceLines&) = delete;
    TraceLines& operator=(const TraceLines&) = delete;

    // The lines since the last call.
    std::vector<std::string> Take() {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        return std::exchange(m_Lines, {});
    }

  private:
    static void Keep(void* pThis, ZT_TraceCall eCall, int, const char* pszText) {
        if (eCall == ZT_TRACE_INPUT_ERROR) {
            return;  // the text came before through ZT_TRACE_WRITE
        }
        auto* pLines = static_cast<TraceLines*>(pThis);
        const std::lock_guard<std::mutex> lock(pLines->m_Mutex);
        try {
            pLines->m_Lines.emplace_back(pszText);
        } catch (const std::bad_alloc&) {
            // The line is lost. A sink must not throw.
        }
    }

    std::mutex m_Mutex;
    std::vector<std::string> m_Lines;
};

#endif  // EXAMPLES_TRACELINES_H
