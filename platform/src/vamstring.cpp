#include <platform/vamstring.h>

CVamString::CVamString() = default;
CVamString::CVamString(const char* pszText) : m_strText(pszText == nullptr ? "" : pszText) {}
CVamString::CVamString(const CVamString& other) = default;
CVamString::~CVamString() = default;

CVamString& CVamString::operator=(const CVamString& other) = default;

void CVamString::Clone(const CVamString& other) {
    m_strText = other.m_strText;
}

bool CVamString::Match(const char* pszText) const {
    return pszText != nullptr && m_strText == pszText;
}

const char* CVamString::GetText() const {
    return m_strText.c_str();
}
