// CVamArchiveMemory: a byte stream over memory.
#ifndef PLATFORM_VAMARCHIVEMEMORY_H
#define PLATFORM_VAMARCHIVEMEMORY_H

#include <platform/vamarchive.h>

#include <cstddef>
#include <vector>

// A growing, seekable byte stream in memory, for hosts that hold a picture's bytes and for tests.
// Two forms: one reads a caller's bytes in place, one owns what is written to it.
class CVamArchiveMemory : public CVamArchive {
  public:
    // An empty stream that owns its bytes and grows as it is written to.
    CVamArchiveMemory();

    // Reads nSize bytes at pData, which stay the caller's and must outlive this object. Writes are
    // refused (0 written).
    CVamArchiveMemory(const void* pData, std::size_t nSize);

    ~CVamArchiveMemory() override;

    // The bytes held and their number; the pointer is valid until the next write.
    const unsigned char* GetData() const;
    std::size_t GetSize() const;

    // True once a write could not be carried out (no memory, or a stream over a caller's bytes).
    bool HasFailed() const;

    unsigned int Read(void* pBuffer, unsigned int nCount) override;
    unsigned int Write(const void* pBuffer, unsigned int nCount) override;
    bool Seek(long long nPosition, int nOrigin) override;
    long long GetPosition() override;
    bool Flush() override;

  private:
    std::vector<unsigned char> m_Owned;
    bool m_bForeign;  // reads the caller's m_nForeignSize bytes at m_pForeign
    const unsigned char* m_pForeign;
    std::size_t m_nForeignSize;
    long long m_nPosition;
    bool m_bFailed;
};

#endif  // PLATFORM_VAMARCHIVEMEMORY_H
