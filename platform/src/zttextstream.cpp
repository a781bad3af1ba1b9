// The text stream of trace lines. It cuts what does not fit, and numbers appear in decimal.
#include <platform/vamtrace.h>

#include <cstdio>
#include <cstring>

ZT_Text_Stream::ZT_Text_Stream(unsigned int /*nSize*/, unsigned int /*nGrow*/) : m_nLength(0) {
    m_szText[0] = '\0';
}

ZT_Text_Stream& ZT_Text_Stream::operator<<(const char* pszText) {
    if (pszText != nullptr) {
        const std::size_t nRoom = sizeof m_szText - 1 - m_nLength;
        const std::size_t nCount = strnlen(pszText, nRoom);
        std::memcpy(m_szText + m_nLength, pszText, nCount);
        m_nLength += nCount;
        m_szText[m_nLength] = '\0';
    }
    return *this;
}

ZT_Text_Stream& ZT_Text_Stream::operator<<(int nValue) {
    char szNumber[32];
    std::snprintf(szNumber, sizeof szNumber, "%d", nValue);
    return *this << szNumber;
}

ZT_Text_Stream& ZT_Text_Stream::operator<<(unsigned int nValue) {
    const unsigned long nWide = nValue;
    return *this << nWide;
}

ZT_Text_Stream& ZT_Text_Stream::operator<<(unsigned long nValue) {
    char szNumber[32];
    std::snprintf(szNumber, sizeof szNumber, "%lu", nValue);
    return *this << szNumber;
}

const char* ZT_Text_Stream::GetText() const {
    return m_szText;
}
