/// VamTrace in place of the platform layer's: keeps the format as it was passed, and its text. To
/// be included by one file of a program.
#ifndef SUPPORT_VAMLINES_H
#define SUPPORT_VAMLINES_H

#include <platform/vamtrace.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "support/allocfaults.h"

namespace support {

/// The calls since construction, as "format|text".
class VamLines : Scoped {
  public:
    VamLines() { s_Lines.clear(); }
    const std::vector<std::string>& Lines() const { return s_Lines; }

    static inline std::vector<std::string> s_Lines;
};

}  // namespace support

void VamTrace(const char* pszFormat, ...) {
    const support::AllocPause pause;
    std::va_list arguments;
    va_start(arguments, pszFormat);
    support::VamLines::s_Lines.push_back(std::string(pszFormat) + "|" +
                                         va_arg(arguments, const char*));
    va_end(arguments);
}

#endif  // SUPPORT_VAMLINES_H
