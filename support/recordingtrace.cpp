// The sink may run on any thread; it keeps what it receives under a lock.
#include "support/recordingtrace.h"

#include "support/allocfaults.h"

namespace support {

std::ostream& operator<<(std::ostream& out, const TraceLine& line) {
    static const char* const kCalls[] = {"write", "input error", "VamTrace"};
    return out << kCalls[line.eCall] << "(" << line.nLevel << ", \"" << line.strText << "\")";
}

std::vector<TraceLine> InputError(const std::string& strText) {
    return {{ZT_TRACE_WRITE, 0, strText}, {ZT_TRACE_INPUT_ERROR, 0, strText}};
}

RecordingTrace::RecordingTrace(int nLevel) : m_nOldLevel(zt_trace_level()) {
    zt_trace_set_sink(&Receive, this);
    zt_trace_set_level(nLevel);
}

RecordingTrace::~RecordingTrace() {
    zt_trace_set_sink(nullptr, nullptr);
    zt_trace_set_level(m_nOldLevel);
}

void RecordingTrace::Clear() {
    m_Lines.clear();
}

void RecordingTrace::Receive(void* pContext, ZT_TraceCall eCall, int nLevel, const char* pszText) {
    const AllocPause pause;
    auto* pThis = static_cast<RecordingTrace*>(pContext);
    const std::lock_guard<std::mutex> lock(pThis->m_Mutex);
    pThis->m_Lines.push_back({eCall, nLevel, pszText});
}

}  // namespace support
