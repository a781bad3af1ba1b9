// The strings of parameter names. Each object owns its text, a block from array new.
#include <platform/vamstring.h>

#include <cstring>

namespace {

// A new copy of the text. Null for null and for the empty text.
char* Duplicate(const char* pszText) {
    if (pszText == nullptr || *pszText == '\0') {
        return nullptr;
    }
    const std::size_t nSize = std::strlen(pszText) + 1;
    return static_cast<char*>(std::memcpy(new char[nSize], pszText, nSize));
}

}  // namespace

CVamString::CVamString() : m_pszText(nullptr) {}
CVamString::CVamString(const char* pszText) : m_pszText(Duplicate(pszText)) {}
CVamString::CVamString(const CVamString& other) : m_pszText(Duplicate(other.m_pszText)) {}
CVamString::~CVamString() {
    delete[] m_pszText;
}

// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): Clone allows it
CVamString& CVamString::operator=(const CVamString& other) {
    Clone(other);
    return *this;
}

void CVamString::Clone(const CVamString& other) {
    // Copied before the old text goes, because other may be this string.
    char* const pszCopy = Duplicate(other.m_pszText);
    delete[] m_pszText;
    m_pszText = pszCopy;
}

bool CVamString::Match(const char* pszText) const {
    return pszText != nullptr && std::strcmp(GetText(), pszText) == 0;
}

const char* CVamString::GetText() const {
    return m_pszText == nullptr ? "" : m_pszText;
}
