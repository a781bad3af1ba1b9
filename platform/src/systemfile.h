// What the file stream needs of the system, below any buffering. posix/systemfile.cpp and
// windows/systemfile.cpp implement it. std::fclose closes on both.
#ifndef SRC_SYSTEMFILE_H
#define SRC_SYSTEMFILE_H

#include <cstdio>

namespace vam {

// Opens a UTF-8 path in the usual stream-open notation. Null when that fails, and for a directory
// or a device that is no file. Others may read the file meanwhile, and child processes do not
// inherit it. bWritable receives whether the mode allows writing.
std::FILE* OpenSystemFile(const char* pszPath, const char* pszMode, bool& bWritable);

// The number of bytes one read delivers, from 1 to nCount. 0 at the end of the data and for an
// error.
unsigned int ReadSystemFile(std::FILE* pFile, unsigned char* pBuffer, unsigned int nCount);

// Writes until all is written or the system reports an error. Returns how much was written.
unsigned int WriteSystemFile(std::FILE* pFile, const unsigned char* pBuffer, unsigned int nCount);

// Moves the position and returns it. Origin 0 counts from the start, 1 from the current position, 2
// from the end. -1 when it did not move, or for a file without positions.
long long SeekSystemFile(std::FILE* pFile, long long nPosition, int nOrigin);

}  // namespace vam

#endif  // SRC_SYSTEMFILE_H
