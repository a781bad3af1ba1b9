// A platform layer as a host of its own kind might have it, all in one header: other layouts, other
// return types, more virtual functions, strings that share their text until cloned.
#ifndef PLATFORM_VAMPLATFORM_H
#define PLATFORM_VAMPLATFORM_H

#include <strings.h>

#include <cstddef>
#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <utility>

inline int g_nForeignCalls = 0;  // calls of operations the library does not know
inline std::string g_strTrace;   // every line, each with its level and a newline
inline int g_nTraceLevel = 0;
inline int g_nSecureResult = 0;
inline bool g_bThrow = false;  // the next value that ends throws

class CVamArchive {
  public:
    virtual const char* GetName() const { return ++g_nForeignCalls, "archive"; }
    virtual int Read(void* pBuffer, unsigned int nCount) = 0;
    virtual void Write(const void* pBuffer, unsigned int nCount) = 0;
    virtual bool IsLoading() const { return ++g_nForeignCalls > 0; }
    virtual void Seek(unsigned int nPosition, int nOrigin) = 0;
    virtual unsigned int GetPosition() = 0;
    virtual void Flush() = 0;
    virtual ~CVamArchive() = default;

  private:
    double m_Reserved[3] = {};
};

class CVamArchiveFile : public CVamArchive {
  public:
    int Open(const char* pszPath, const char* pszMode) {
        const auto how = std::ios::binary | std::ios::in;
        m_File.open(pszPath, pszMode[0] == 'w' ? how | std::ios::out | std::ios::trunc : how);
        return m_File.is_open();
    }
    const std::fstream* GetHandle() const { return m_File.is_open() ? &m_File : nullptr; }
    int Read(void* pBuffer, unsigned int nCount) override {
        m_File.read(static_cast<char*>(pBuffer), nCount);
        m_File.clear();
        return static_cast<int>(m_File.gcount());
    }
    void Write(const void* pBuffer, unsigned int nCount) override {
        m_File.write(static_cast<const char*>(pBuffer), nCount);
    }
    void Seek(unsigned int nPosition, int nOrigin) override {
        g_nForeignCalls += nOrigin != 0;
        m_File.seekg(nPosition);
    }
    unsigned int GetPosition() override { return static_cast<unsigned int>(m_File.tellg()); }
    void Flush() override { m_File.flush(); }

  private:
    std::fstream m_File;
};

// Assignment shares the text, Clone does not; names match without regard to case.
class CVamString {
  public:
    explicit CVamString(const char* pszText = "") : m_pText(new std::string(pszText)) {}
    virtual ~CVamString() = default;
    CVamString(const CVamString&) = default;
    CVamString& operator=(const CVamString&) = default;
    void Clone(const CVamString& other) { m_pText.reset(new std::string(*other.m_pText)); }
    bool Match(const char* pszText) const { return strcasecmp(m_pText->c_str(), pszText) == 0; }
    // Every character, for all that share the text.
    void Overwrite(char c) { m_pText->assign(m_pText->size(), c); }

  private:
    std::shared_ptr<std::string> m_pText;
};

enum { VAM_EMPTY = 0, VAM_INT16 = 4, VAM_UINT16, VAM_INT32, VAM_UINT32, VAM_LONG, VAM_ULONG };
enum { VAM_FLOAT = 10, VAM_DOUBLE = 11 };

class CVamVariant {
  public:
    virtual ~CVamVariant() noexcept(false) {
        if (std::exchange(g_bThrow, false)) {
            throw 1;
        }
    }
    CVamVariant() = default;
    CVamVariant(const CVamVariant&) = default;
    CVamVariant& operator=(const CVamVariant&) = default;
    void Clone(const CVamVariant& other) { *this = other; }

    union {
        short nShort;
        int nInt;
        double dDouble = 0;
    } m_Value;
    int m_nReserved = -1;
    unsigned char m_byType = VAM_EMPTY;
};

class ZT_Text_Stream {
  public:
    ZT_Text_Stream(unsigned int nSize, unsigned int nGrow) {
        g_nForeignCalls += nSize != 1024 || nGrow != 32;
    }
    ZT_Text_Stream& operator<<(const char* pszText) { return m_strText += pszText, *this; }
    ZT_Text_Stream& operator<<(long n) { return m_strText += std::to_string(n), *this; }
    ZT_Text_Stream& operator<<(int n) { return *this << long{n}; }
    ZT_Text_Stream& operator<<(unsigned int n) { return *this << long{n}; }
    ZT_Text_Stream& operator<<(unsigned long n) { return *this << static_cast<long>(n); }
    const char* GetText() const { return m_strText.c_str(); }

  private:
    std::string m_strText;
};

inline int zt_trace_level() {
    return g_nTraceLevel;
}
inline void zt_trace_write(int nLevel, const char* pszText, int) {
    g_strTrace += std::to_string(nLevel) + pszText + "\n";
}
inline void zt_trace_input_error_msg(int, const char* pszText) {
    zt_trace_write(0, pszText, 0);
}
inline void VamTrace(const char* pszFormat, ...) {
    g_strTrace += pszFormat;
}
inline int memcpy_s(void* dest, std::size_t, const void* src, std::size_t count) {
    std::memcpy(dest, src, count);
    return g_nSecureResult;
}
inline int memset_s(void* dest, std::size_t, int value, std::size_t count) {
    std::memset(dest, value, count);
    return g_nSecureResult;
}

#endif  // PLATFORM_VAMPLATFORM_H
