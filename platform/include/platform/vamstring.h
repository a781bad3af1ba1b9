// CVamString: the string class of parameter names.
#ifndef PLATFORM_VAMSTRING_H
#define PLATFORM_VAMSTRING_H

#include <string>

// A text. Copies share no storage.
class CVamString {
  public:
    // The empty string, a text (null gives the empty string), or a copy.
    CVamString();
    CVamString(const char* pszText);
    CVamString(const CVamString& other);
    ~CVamString();

    // Becomes a copy of other.
    CVamString& operator=(const CVamString& other);

    // Makes this string a copy of other that shares no storage with it.
    void Clone(const CVamString& other);

    // True when the string equals pszText exactly, case included; false for null.
    bool Match(const char* pszText) const;

    // The text, null-terminated, valid until the string changes.
    const char* GetText() const;

  private:
    std::string m_strText;
};

#endif  // PLATFORM_VAMSTRING_H
