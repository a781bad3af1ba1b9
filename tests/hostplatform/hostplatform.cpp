#include <platform/vamplatform.h>
#include <strings.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

int g_nForeignCalls = 0;
std::string g_strTrace;
int g_nTraceLevel = 0;
int g_nSecureResult = 0;

CVamArchive::CVamArchive() : m_Reserved() {}
CVamArchive::~CVamArchive() = default;
const char* CVamArchive::GetName() const {
    return ++g_nForeignCalls, "archive";
}
bool CVamArchive::IsLoading() const {
    return ++g_nForeignCalls > 0;
}

CVamArchiveFile::CVamArchiveFile() : m_nPosition(0), m_bOpen(false), m_bWriting(false) {}
CVamArchiveFile::~CVamArchiveFile() {
    CVamArchiveFile::Flush();
}

int CVamArchiveFile::Open(const char* pszPath, const char* pszMode) {
    m_strPath = pszPath;
    m_bWriting = pszMode[0] == 'w';
    if (m_bWriting) {
        m_bOpen = std::ofstream(m_strPath, std::ios::binary).is_open();
        return m_bOpen;
    }
    std::ifstream file(m_strPath, std::ios::binary);
    m_bOpen = file.is_open();
    m_strBytes.assign(std::istreambuf_iterator<char>(file), {});
    return m_bOpen;
}

const std::string* CVamArchiveFile::GetHandle() const {
    return m_bOpen ? &m_strPath : nullptr;
}
const char* CVamArchiveFile::GetName() const {
    return ++g_nForeignCalls, m_strPath.c_str();
}

int CVamArchiveFile::Read(void* pBuffer, unsigned int nCount) {
    if (m_nPosition >= m_strBytes.size()) {
        return 0;
    }
    const std::size_t nGot = m_strBytes.copy(static_cast<char*>(pBuffer), nCount, m_nPosition);
    m_nPosition += static_cast<unsigned int>(nGot);
    return static_cast<int>(nGot);
}

void CVamArchiveFile::Write(const void* pBuffer, unsigned int nCount) {
    m_strBytes.resize(std::max<std::size_t>(m_strBytes.size(), m_nPosition + nCount));
    std::memcpy(&m_strBytes[m_nPosition], pBuffer, nCount);
    m_nPosition += nCount;
}

void CVamArchiveFile::Seek(unsigned int nPosition, int nOrigin) {
    g_nForeignCalls += nOrigin != 0;
    m_nPosition = nPosition;
}

unsigned int CVamArchiveFile::GetPosition() {
    return m_nPosition;
}

void CVamArchiveFile::Flush() {
    if (m_bOpen && m_bWriting) {
        std::ofstream(m_strPath, std::ios::binary) << m_strBytes;
    }
}

struct CVamString::Text {
    std::string strText;
    int nOwners;
};

CVamString::CVamString() : CVamString("") {}
CVamString::CVamString(const char* pszText) : m_pText(new Text{pszText, 1}) {}
CVamString::CVamString(const CVamString& other) : m_pText(other.m_pText) {
    ++m_pText->nOwners;
}
CVamString::~CVamString() {
    if (--m_pText->nOwners == 0) {
        delete m_pText;
    }
}

CVamString& CVamString::operator=(const CVamString& other) {
    CVamString copy(other);
    std::swap(m_pText, copy.m_pText);
    return *this;
}

void CVamString::Clone(const CVamString& other) {
    *this = CVamString(other.m_pText->strText.c_str());
}

bool CVamString::Match(const char* pszText) const {
    return strcasecmp(m_pText->strText.c_str(), pszText) == 0;
}

void CVamString::Overwrite(char c) {
    m_pText->strText.assign(m_pText->strText.size(), c);
}

CVamVariant::CVamVariant() : m_Value(), m_nReserved(-1), m_byType(VAM_EMPTY) {}
CVamVariant::~CVamVariant() = default;
CVamVariant& CVamVariant::operator=(const CVamVariant& other) = default;
void CVamVariant::Clone(const CVamVariant& other) {
    *this = other;
}

ZT_Text_Stream::ZT_Text_Stream(unsigned int nSize, unsigned int nGrow) {
    g_nForeignCalls += nSize != 1024 || nGrow != 32;
}
ZT_Text_Stream& ZT_Text_Stream::operator<<(const char* pszText) {
    m_strText += pszText;
    return *this;
}
ZT_Text_Stream& ZT_Text_Stream::operator<<(int n) {
    return *this << std::to_string(n).c_str();
}
ZT_Text_Stream& ZT_Text_Stream::operator<<(unsigned int n) {
    return *this << std::to_string(n).c_str();
}
ZT_Text_Stream& ZT_Text_Stream::operator<<(unsigned long n) {
    return *this << std::to_string(n).c_str();
}
const char* ZT_Text_Stream::GetText() const {
    return m_strText.c_str();
}

int zt_trace_level() {
    return g_nTraceLevel;
}
void zt_trace_write(int nLevel, const char* pszText, int) {
    g_strTrace += std::to_string(nLevel) + pszText + "\n";
}
void zt_trace_input_error_msg(int, const char* pszText) {
    zt_trace_write(0, pszText, 0);
}
void VamTrace(const char* pszFormat, ...) {
    g_strTrace += std::string(pszFormat) + "\n";
}

int memcpy_s(void* dest, std::size_t, const void* src, std::size_t count) {
    std::memcpy(dest, src, count);
    return g_nSecureResult;
}
int memset_s(void* dest, std::size_t, int value, std::size_t count) {
    std::memset(dest, value, count);
    return g_nSecureResult;
}
