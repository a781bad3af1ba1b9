// hoststream: reads through a stream class of the host's own, and receives the library's trace.
//
//   hoststream IN
#include <ikelex/handle.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <fstream>

#include "utf8.h"

namespace {

// Five operations make a stream. This one reads a C++ stream and counts what passes through.
class HostStream : public CVamArchive {
  public:
    explicit HostStream(const std::string& strPath) : m_Stream(PathOf(strPath), std::ios::binary) {}

    unsigned int Read(void* pBuffer, unsigned int nCount) override {
        m_Stream.read(static_cast<char*>(pBuffer), nCount);
        const auto nRead = static_cast<unsigned int>(m_Stream.gcount());
        m_nBytes += nRead;
        ++m_nReads;
        return nRead;
    }
    unsigned int Write(const void*, unsigned int) override { return 0; }  // for reading alone
    bool Seek(long long nPosition, int nOrigin) override {
        m_Stream.clear();  // the end may have been reached
        m_Stream.seekg(nPosition, nOrigin == 0   ? std::ios::beg
                                  : nOrigin == 1 ? std::ios::cur
                                                 : std::ios::end);
        return m_Stream.good();
    }
    long long GetPosition() override { return m_Stream.tellg(); }
    bool Flush() override { return true; }

    bool IsOpen() const { return m_Stream.is_open(); }
    unsigned long long Bytes() const { return m_nBytes; }
    unsigned int Reads() const { return m_nReads; }

  private:
    std::ifstream m_Stream;
    unsigned long long m_nBytes = 0;
    unsigned int m_nReads = 0;
};

// Receives every line that the library traces. An input error arrives by two calls.
void Receive(void* pContext, ZT_TraceCall eCall, int nLevel, const char* pszText) {
    if (eCall != ZT_TRACE_INPUT_ERROR) {
        std::printf("%s, level %d: %s\n", static_cast<const char*>(pContext), nLevel, pszText);
    }
}

}  // namespace

int main(int nCount, char** ppArguments) {
    TakeUtf8Arguments(nCount, ppArguments);
    if (nCount != 2) {
        std::fputs("usage: hoststream IN\n", stderr);
        return 2;
    }
    char szName[] = "trace";
    zt_trace_set_sink(&Receive, szName);
    zt_trace_set_level(2);  // detail lines too

    HostStream stream(ppArguments[1]);
    const KelImagePtr image = KelNewImage();
    const KelStatus status = !stream.IsOpen() ? KEL_ERR_FILE
                             : image          ? image->Open(&stream)
                                              : KEL_ERR_MEMORY;
    std::printf("%s\n", status.ToString().c_str());
    if (!status) {
        return 1;
    }
    std::printf("%d x %d pixels from %llu bytes in %u reads\n", image->GetWidth(),
                image->GetHeight(), stream.Bytes(), stream.Reads());
    return 0;
}
