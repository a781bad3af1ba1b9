// Where every trace call ends.
#ifndef SRC_TRACESINK_H
#define SRC_TRACESINK_H

#include <platform/vamtrace.h>

namespace vam {

// Hands one line to the process's sink, or prints it.
void Deliver(ZT_TraceCall eCall, int nLevel, const char* pszText);

}  // namespace vam

#endif  // SRC_TRACESINK_H
