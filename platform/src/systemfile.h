// What the file stream needs of the system, below any buffering. posix/systemfile.cpp and
// windows/systemfile.cpp implement it; std::fclose closes on both.
#ifndef SRC_SYSTEMFILE_H
#define SRC_SYSTEMFILE_H

#include <cstdio>

namespace vam {

// Opens a UTF-8 path in the usual stream-open notation. Null when that fails, and for a directory
// or a device that is no file. Others may read the file meanwhile; child processes do not inherit
// it. Says whether it may be written.
std::FILE* OpenSystemFile(const char* pszPath, const char* pszMode, bool& bWritable);

// What one read delivers, at least a byte and at most nCount; 0 at the end of the data and for an
// error.
unsigned int ReadSystemFile(std::FILE* pFile, unsigned char* pBuffer, unsigned int nCount);

// Writes until all is written or the system reports an error; returns how much was written.
unsigned int WriteSystemFile(std::FILE* pFile, const unsigned char* pBuffer, unsigned int nCount);

// Moves the position, origin 0 from the start, 1 from the current position, 2 from the end, and
// returns it; -1 when it did not move, or for a file without positions.
long long SeekSystemFile(std::FILE* pFile, long long nPosition, int nOrigin);

}  // namespace vam

#endif  // SRC_SYSTEMFILE_H
