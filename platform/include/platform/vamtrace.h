/// @file
/// The trace facility, with levels, lines, input errors, and the text stream that composes a line.
#ifndef PLATFORM_VAMTRACE_H
#define PLATFORM_VAMTRACE_H

#include <cstddef>

/// Composes one trace line. The text lies inside the object, so composing neither allocates nor
/// throws. What does not fit into 1,023 characters is cut off.
class ZT_Text_Stream {
  public:
    /// The two arguments are the initial size and the growth step a host's stream may use. This one
    /// ignores them.
    ZT_Text_Stream(unsigned int nSize, unsigned int nGrow);

    /// Appends a text. Null appends nothing.
    ZT_Text_Stream& operator<<(const char* pszText);
    ZT_Text_Stream& operator<<(int nValue);            ///< Appends a number in decimal.
    ZT_Text_Stream& operator<<(unsigned int nValue);   ///< Appends a number in decimal.
    ZT_Text_Stream& operator<<(unsigned long nValue);  ///< Appends a number in decimal.

    /// The text so far, null-terminated.
    const char* GetText() const;

  private:
    std::size_t m_nLength;
    char m_szText[1024];
};

/// Which of the three trace calls a line came from.
enum ZT_TraceCall {
    ZT_TRACE_WRITE = 0,        ///< zt_trace_write
    ZT_TRACE_INPUT_ERROR = 1,  ///< zt_trace_input_error_msg, with the text just written
    ZT_TRACE_VAM = 2           ///< VamTrace
};

/// Receives the call a line came from, its level and its text. May be called from any thread that
/// uses the library. Must not throw.
typedef void (*ZT_TraceSink)(void* pContext, ZT_TraceCall eCall, int nLevel, const char* pszText);

extern "C" {

/// The current level, 0 at the start. A line of level L is written when this is at least L, so that
/// -1 silences everything.
int zt_trace_level();
/// Sets the level of the process.
void zt_trace_set_level(int nLevel);

/// Sends every line to pfnSink from now on. Null restores the default, which prints each line once
/// to standard error. A thread that is just tracing may still reach the sink that was set before.
void zt_trace_set_sink(ZT_TraceSink pfnSink, void* pContext);

/// Writes one line of the given level. The third argument is reserved. The library passes 0.
void zt_trace_write(int nLevel, const char* pszText, int nReserved);

/// Records an input error whose text has just been written. The library passes 0 and that text.
void zt_trace_input_error_msg(int nReserved, const char* pszText);

/// Writes a line built from a printf-style format, from level 0 up. "%$s" means what "%s" means.
/// The format is the caller's own. Texts of others are arguments, never a format. What does not fit
/// into 1,023 characters is cut off.
void VamTrace(const char* pszFormat, ...);

}  // extern "C"

#endif  // PLATFORM_VAMTRACE_H
