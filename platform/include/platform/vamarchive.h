/// @file
/// CVamArchive, the byte stream through which the library reads and writes pictures.
#ifndef PLATFORM_VAMARCHIVE_H
#define PLATFORM_VAMARCHIVE_H

#include <cstddef>

/// An abstract byte stream with a current position. The library calls exactly these five
/// operations, on the caller's thread. A host derives its own streams from this class.
class CVamArchive {
  public:
    virtual ~CVamArchive();

    /// Reads up to nCount bytes from the current position into pBuffer and advances the position by
    /// the number of bytes returned. A short count or 0 means the end of the data. A count above
    /// nCount is an error of the stream and is taken as "nothing arrived".
    virtual unsigned int Read(void* pBuffer, unsigned int nCount) = 0;

    /// Writes nCount bytes at the current position, overwriting or appending, and advances the
    /// position. Returns the number of bytes written, which the library ignores.
    virtual unsigned int Write(const void* pBuffer, unsigned int nCount) = 0;

    /// Moves the position. Origin 0 counts from the start, 1 from the current position, 2 from the
    /// end. The library passes only 0, with positions below 2^32. Returns whether it moved, which
    /// the library ignores.
    virtual bool Seek(long long nPosition, int nOrigin) = 0;

    /// The current position from the start. The library keeps the low 32 bits.
    virtual long long GetPosition() = 0;

    /// Pushes buffered output to the medium. Returns whether that worked, which the library
    /// ignores.
    virtual bool Flush() = 0;
};

#endif  // PLATFORM_VAMARCHIVE_H
