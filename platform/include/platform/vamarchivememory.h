/// @file
/// CVamArchiveMemory, a byte stream over memory.
#ifndef PLATFORM_VAMARCHIVEMEMORY_H
#define PLATFORM_VAMARCHIVEMEMORY_H

#include <platform/vamarchive.h>

#include <cstddef>

/// A growing, seekable byte stream in memory, for hosts that hold a picture's bytes and for tests.
/// One form reads a caller's bytes in place, the other owns what is written to it. Not copyable.
class CVamArchiveMemory : public CVamArchive {
  public:
    /// An empty stream that owns its bytes and grows as it is written to. Both constructors throw
    /// std::bad_alloc when there is no memory for the private parts.
    CVamArchiveMemory();

    /// Reads nSize bytes at pData, which stay the caller's and must outlive this object. Writes are
    /// refused (0 written).
    CVamArchiveMemory(const void* pData, std::size_t nSize);

    ~CVamArchiveMemory() override;

    CVamArchiveMemory(const CVamArchiveMemory&) = delete;
    CVamArchiveMemory& operator=(const CVamArchiveMemory&) = delete;

    /// The bytes held. The pointer is valid until the next write.
    const unsigned char* GetData() const;
    /// The number of bytes held.
    std::size_t GetSize() const;

    /// True once a write could not be carried out (no memory, or a stream over a caller's bytes).
    bool HasFailed() const;

    unsigned int Read(void* pBuffer, unsigned int nCount) override;
    unsigned int Write(const void* pBuffer, unsigned int nCount) override;
    bool Seek(long long nPosition, int nOrigin) override;
    long long GetPosition() override;
    bool Flush() override;

  private:
    struct State;
    State* m_pState;  // never null
};

#endif  // PLATFORM_VAMARCHIVEMEMORY_H
