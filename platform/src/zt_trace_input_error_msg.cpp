// Input errors, alone in a file so that a program can replace the function at link time.
#include "tracesink.h"

void zt_trace_input_error_msg(int /*nReserved*/, const char* pszText) {
    if (pszText != nullptr && zt_trace_level() >= 0) {
        vam::Deliver(ZT_TRACE_INPUT_ERROR, 0, pszText);
    }
}
