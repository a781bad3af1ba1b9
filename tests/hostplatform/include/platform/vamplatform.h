// A platform layer as a host of its own kind might have it: other layouts, other return types, more
// virtual functions, strings that share their text until cloned.
#ifndef PLATFORM_VAMPLATFORM_H
#define PLATFORM_VAMPLATFORM_H

#include <cstddef>
#include <string>

// Calls of operations the library does not know.
extern int g_nForeignCalls;

class CVamArchive {
  public:
    CVamArchive();
    virtual const char* GetName() const;
    virtual int Read(void* pBuffer, unsigned int nCount) = 0;
    virtual void Write(const void* pBuffer, unsigned int nCount) = 0;
    virtual void Seek(unsigned int nPosition, int nOrigin) = 0;
    virtual bool IsLoading() const;
    virtual unsigned int GetPosition() = 0;
    virtual void Flush() = 0;
    virtual ~CVamArchive();

  private:
    double m_Reserved[3];
};

// Holds the whole file in memory and writes it when it goes.
class CVamArchiveFile : public CVamArchive {
  public:
    CVamArchiveFile();
    ~CVamArchiveFile();
    int Open(const char* pszPath, const char* pszMode);
    const std::string* GetHandle() const;
    const char* GetName() const override;
    int Read(void* pBuffer, unsigned int nCount) override;
    void Write(const void* pBuffer, unsigned int nCount) override;
    void Seek(unsigned int nPosition, int nOrigin) override;
    unsigned int GetPosition() override;
    void Flush() override;

  private:
    std::string m_strBytes;
    std::string m_strPath;
    unsigned int m_nPosition;
    bool m_bOpen;
    bool m_bWriting;
};

// Assignment shares the text, Clone does not; names match without regard to case.
class CVamString {
  public:
    CVamString();
    explicit CVamString(const char* pszText);
    CVamString(const CVamString& other);
    virtual ~CVamString();
    CVamString& operator=(const CVamString& other);
    void Clone(const CVamString& other);
    bool Match(const char* pszText) const;
    void Overwrite(char c);  // every character, in place, for all that share the text

  private:
    struct Text;
    Text* m_pText;
};

enum { VAM_EMPTY = 0, VAM_INT16 = 4, VAM_UINT16, VAM_INT32, VAM_UINT32, VAM_LONG, VAM_ULONG };
enum { VAM_FLOAT = 10, VAM_DOUBLE = 11 };

class CVamVariant {
  public:
    CVamVariant();
    virtual ~CVamVariant();
    CVamVariant& operator=(const CVamVariant& other);
    void Clone(const CVamVariant& other);

    union {
        short nShort;
        int nInt;
        double dDouble;
    } m_Value;
    int m_nReserved;
    unsigned char m_byType;
};

class ZT_Text_Stream {
  public:
    ZT_Text_Stream(unsigned int nSize, unsigned int nGrow);
    ZT_Text_Stream& operator<<(const char* pszText);
    ZT_Text_Stream& operator<<(int nValue);
    ZT_Text_Stream& operator<<(unsigned int nValue);
    ZT_Text_Stream& operator<<(unsigned long nValue);
    const char* GetText() const;

  private:
    std::string m_strText;
};

extern std::string g_strTrace;  // every line, each with its level and a newline
extern int g_nTraceLevel;
extern int g_nSecureResult;

int zt_trace_level();
void zt_trace_write(int nLevel, const char* pszText, int nReserved);
void zt_trace_input_error_msg(int nReserved, const char* pszText);
void VamTrace(const char* pszFormat, ...);
int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count);
int memset_s(void* dest, std::size_t destMax, int value, std::size_t count);

#endif  // PLATFORM_VAMPLATFORM_H
