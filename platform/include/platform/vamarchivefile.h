// CVamArchiveFile: a byte stream over a file.
#ifndef PLATFORM_VAMARCHIVEFILE_H
#define PLATFORM_VAMARCHIVEFILE_H

#include <platform/vamarchive.h>

#include <cstdio>

// A stream over a file, with 64-bit positions. Reads and writes of any size survive interrupted and
// short system calls. Not copyable.
class CVamArchiveFile : public CVamArchive {
 public:
    // A closed file object: the handle is null.
    CVamArchiveFile();

    // Closes the file if it is open.
    ~CVamArchiveFile() override;

    CVamArchiveFile(const CVamArchiveFile&) = delete;
    CVamArchiveFile& operator=(const CVamArchiveFile&) = delete;

    // Opens pszPath (UTF-8) in the usual stream-open notation: "rb" reads, "w+b" creates or truncates
    // and reads and writes. A file that was open is closed first. On failure, also when the path
    // names a directory, the handle stays null and false is returned.
    bool Open(const char* pszPath, const char* pszMode);

    // Closes the file. Returns true when nothing failed since Open: every write, flush and the close
    // itself reached the medium. Closing a closed file reports the same again.
    bool Close();

    // The open file, or null.
    std::FILE* GetHandle() const { return m_pFile; }

    // True once a write, a flush or the close has failed since Open. It stays set until the next
    // Open, so that a host can save through its own archive object and ask afterwards.
    bool HasFailed() const { return m_bFailed; }

    unsigned int Read(void* pBuffer, unsigned int nCount) override;
    unsigned int Write(const void* pBuffer, unsigned int nCount) override;
    bool Seek(long long nPosition, int nOrigin) override;
    long long GetPosition() override;
    bool Flush() override;

 private:
    std::FILE* m_pFile;
    bool m_bFailed;
};

#endif  // PLATFORM_VAMARCHIVEFILE_H
