// Lines with a level, alone in a file so that a program can replace the function at link time.
#include "tracesink.h"

void zt_trace_write(int nLevel, const char* pszText, int /*nReserved*/) {
    if (pszText != nullptr && zt_trace_level() >= nLevel) {
        vam::Deliver(ZT_TRACE_WRITE, nLevel, pszText);
    }
}
