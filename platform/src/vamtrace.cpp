// VamTrace, which writes a printf-style line and takes "%$s" for "%s".
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "tracesink.h"

namespace {

constexpr std::size_t kLineSize = 1024;

// The length of the conversion that starts at the '%' pszFormat points at, its letter included. 0
// when the format ends before the letter.
std::size_t ConversionLength(const char* pszFormat) {
    const std::size_t nBefore = 1 + std::strspn(pszFormat + 1, "0123456789$#-+ '.*hlLjzt");
    return pszFormat[nBefore] == '\0' ? 0 : nBefore + 1;
}

// Copies the format with "%$s", which printf refuses, spelled "%s". A format that does not fit is
// cut before a conversion, never inside one. An unfinished conversion at its end is left out.
void TranslateFormat(const char* pszFormat, char (&szOut)[kLineSize]) {
    std::size_t nLength = 0;
    while (*pszFormat != '\0') {
        const std::size_t nTaken = *pszFormat == '%' ? ConversionLength(pszFormat) : 1;
        const bool bDollar = std::strncmp(pszFormat, "%$s", 3) == 0;
        const std::size_t nPiece = bDollar ? 2 : nTaken;
        if (nTaken == 0 || nLength + nPiece >= kLineSize) {
            break;
        }
        std::memcpy(szOut + nLength, bDollar ? "%s" : pszFormat, nPiece);
        nLength += nPiece;
        pszFormat += nTaken;
    }
    szOut[nLength] = '\0';
}

}  // namespace

void VamTrace(const char* pszFormat, ...) {
    if (pszFormat == nullptr || zt_trace_level() < 0) {
        return;
    }
    char szFormat[kLineSize];
    TranslateFormat(pszFormat, szFormat);
    char szLine[kLineSize];
    va_list arguments;
    va_start(arguments, pszFormat);
    const int nWritten = std::vsnprintf(szLine, sizeof szLine, szFormat, arguments);
    va_end(arguments);
    if (nWritten >= 0) {
        vam::Deliver(ZT_TRACE_VAM, 0, szLine);
    }
}
