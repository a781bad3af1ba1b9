/// @file
/// CVamArchiveFile, a byte stream over a file.
#ifndef PLATFORM_VAMARCHIVEFILE_H
#define PLATFORM_VAMARCHIVEFILE_H

#include <platform/vamarchive.h>

#include <cstdio>

/// A stream over a file, with 64-bit positions. Reads and writes of any size survive interrupted
/// and short system calls, and may follow each other without a Seek between them. Not copyable.
class CVamArchiveFile : public CVamArchive {
  public:
    /// A closed file object, whose handle is null. Throws std::bad_alloc when there is no memory
    /// for its private parts.
    CVamArchiveFile();

    /// Closes the file if it is open.
    ~CVamArchiveFile() override;

    CVamArchiveFile(const CVamArchiveFile&) = delete;
    CVamArchiveFile& operator=(const CVamArchiveFile&) = delete;

    /// Opens pszPath (UTF-8) in the notation of fopen. "rb" reads, "w+b" creates or truncates and
    /// reads and writes. A file that was open is closed first. Others may read the file meanwhile,
    /// and child processes do not inherit it. On failure, also when the path names a directory, the
    /// handle stays null and false is returned.
    bool Open(const char* pszPath, const char* pszMode);

    /// Closes the file. Returns true when every write and flush since Open and the close itself
    /// succeeded. Closing a closed file reports the same again.
    bool Close();

    /// The open file, or null. Its position may be ahead of the object's after a read, and may lag
    /// after a write.
    std::FILE* GetHandle() const;

    /// True once a write, a flush or the close has failed since Open. Written bytes wait in a
    /// buffer, so a failure may show only at a later call. Ask after Flush or Close. It stays set
    /// until the next Open, so that a host can save through its own archive object and ask
    /// afterwards.
    bool HasFailed() const;

    /// After a failure the bytes that waited are gone. Later writes are still tried.
    unsigned int Read(void* pBuffer, unsigned int nCount) override;
    unsigned int Write(const void* pBuffer, unsigned int nCount) override;
    bool Seek(long long nPosition, int nOrigin) override;
    /// -1 for a closed file and for one without positions, such as a pipe.
    long long GetPosition() override;
    bool Flush() override;

  private:
    struct State;
    State* m_pState;  // never null
};

#endif  // PLATFORM_VAMARCHIVEFILE_H
