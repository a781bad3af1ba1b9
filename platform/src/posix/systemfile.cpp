// Files of a POSIX system. The bytes go through the descriptor, because stdio discards its buffer
// when its system call is interrupted.
#include "systemfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace {

// A size every system takes in one call.
constexpr unsigned int kMostAtOnce = 1u << 30;

}  // namespace

std::FILE* vam::OpenSystemFile(const char* pszPath, const char* pszMode, bool& bWritable) {
    std::FILE* const pFile = std::fopen(pszPath, pszMode);
    if (pFile == nullptr) {
        return nullptr;
    }
    // fopen opens a directory for reading. Only its first read would fail.
    struct stat status;
    if (fstat(fileno(pFile), &status) != 0 || S_ISDIR(status.st_mode)) {
        std::fclose(pFile);
        return nullptr;
    }
    fcntl(fileno(pFile), F_SETFD, FD_CLOEXEC);
    bWritable = (fcntl(fileno(pFile), F_GETFL) & O_ACCMODE) != O_RDONLY;
    return pFile;
}

unsigned int vam::ReadSystemFile(std::FILE* pFile, unsigned char* pBuffer, unsigned int nCount) {
    ssize_t nGot = 0;
    do {
        nGot = read(fileno(pFile), pBuffer, std::min(nCount, kMostAtOnce));
    } while (nGot < 0 && errno == EINTR);
    return nGot > 0 ? static_cast<unsigned int>(nGot) : 0;
}

unsigned int vam::WriteSystemFile(std::FILE* pFile, const unsigned char* pBuffer,
                                  unsigned int nCount) {
    unsigned int nDone = 0;
    while (nDone < nCount) {
        const ssize_t nPut =
            write(fileno(pFile), pBuffer + nDone, std::min(nCount - nDone, kMostAtOnce));
        if (nPut > 0) {
            nDone += static_cast<unsigned int>(nPut);
        } else if (nPut == 0 || errno != EINTR) {
            break;
        }
    }
    return nDone;
}

long long vam::SeekSystemFile(std::FILE* pFile, long long nPosition, int nOrigin) {
    static const int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    return lseek(fileno(pFile), nPosition, kOrigins[nOrigin]);
}
