/// @file
/// CVamString, the string class of parameter names.
#ifndef PLATFORM_VAMSTRING_H
#define PLATFORM_VAMSTRING_H

/// A text. Copies share no storage. The object is one pointer to memory of the platform library, so
/// that its layout does not depend on the standard library a host is built with.
class CVamString {
  public:
    /// The empty string. It allocates nothing.
    CVamString();
    /// A copy of a text. Null gives the empty string. This and every other copy throws
    /// std::bad_alloc when memory runs out.
    CVamString(const char* pszText);
    /// A copy of other.
    CVamString(const CVamString& other);
    ~CVamString();

    /// Becomes a copy of other. An exception leaves the old text.
    CVamString& operator=(const CVamString& other);

    /// Makes this string a copy of other that shares no storage with it.
    void Clone(const CVamString& other);

    /// True when the string equals pszText exactly, case included. False for null.
    bool Match(const char* pszText) const;

    /// The text, null-terminated, valid until the string changes.
    const char* GetText() const;

  private:
    char* m_pszText;  // null for the empty string
};

#endif  // PLATFORM_VAMSTRING_H
