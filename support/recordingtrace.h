// A trace sink that keeps what it receives.
#ifndef SUPPORT_RECORDINGTRACE_H
#define SUPPORT_RECORDINGTRACE_H

#include <platform/vamtrace.h>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

#include "support/scoped.h"

namespace support {

struct TraceLine {
    ZT_TraceCall eCall;
    int nLevel;
    std::string strText;

    bool operator==(const TraceLine&) const = default;
};

std::ostream& operator<<(std::ostream& out, const TraceLine& line);

// The two lines of one input error.
std::vector<TraceLine> InputError(const std::string& strText);

// From construction to destruction the process traces at nLevel into this object; afterwards the
// level is the old one again and the sink the default. One at a time; any thread may trace into it.
class RecordingTrace : Scoped {
  public:
    explicit RecordingTrace(int nLevel = 0);
    ~RecordingTrace();

    const std::vector<TraceLine>& Lines() const { return m_Lines; }
    void Clear();

  private:
    static void Receive(void* pContext, ZT_TraceCall eCall, int nLevel, const char* pszText);

    int m_nOldLevel;
    std::mutex m_Mutex;
    std::vector<TraceLine> m_Lines;
};

}  // namespace support

#endif  // SUPPORT_RECORDINGTRACE_H
