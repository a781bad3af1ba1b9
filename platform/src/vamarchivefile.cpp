#include <platform/vamarchivefile.h>

#include <cerrno>
#include <sys/stat.h>

CVamArchiveFile::CVamArchiveFile() : m_pFile(nullptr), m_bFailed(false) {}

CVamArchiveFile::~CVamArchiveFile() { Close(); }

bool CVamArchiveFile::Open(const char* pszPath, const char* pszMode) {
    Close();
    m_bFailed = false;
    if (pszPath == nullptr || pszMode == nullptr) {
        return false;
    }
    m_pFile = std::fopen(pszPath, pszMode);
    if (m_pFile == nullptr) {
        return false;
    }
    // fopen opens a directory for reading; only its first read would fail.
    struct stat status;
    if (fstat(fileno(m_pFile), &status) != 0 || S_ISDIR(status.st_mode)) {
        std::fclose(m_pFile);
        m_pFile = nullptr;
        return false;
    }
    return true;
}

bool CVamArchiveFile::Close() {
    if (m_pFile != nullptr) {
        if (std::fclose(m_pFile) != 0) {
            m_bFailed = true;
        }
        m_pFile = nullptr;
    }
    return !m_bFailed;
}

unsigned int CVamArchiveFile::Read(void* pBuffer, unsigned int nCount) {
    if (m_pFile == nullptr || pBuffer == nullptr) {
        return 0;
    }
    unsigned char* pNext = static_cast<unsigned char*>(pBuffer);
    unsigned int nDone = 0;
    while (nDone < nCount) {
        errno = 0;
        const std::size_t nGot = std::fread(pNext + nDone, 1, nCount - nDone, m_pFile);
        nDone += static_cast<unsigned int>(nGot);
        if (nDone < nCount) {
            const bool bInterrupted = std::ferror(m_pFile) && errno == EINTR;
            std::clearerr(m_pFile);
            if (!bInterrupted) {
                break;
            }
        }
    }
    return nDone;
}

unsigned int CVamArchiveFile::Write(const void* pBuffer, unsigned int nCount) {
    if (nCount == 0) {
        return 0;
    }
    if (m_pFile == nullptr || pBuffer == nullptr) {
        m_bFailed = true;
        return 0;
    }
    const unsigned char* pNext = static_cast<const unsigned char*>(pBuffer);
    unsigned int nDone = 0;
    while (nDone < nCount) {
        errno = 0;
        const std::size_t nPut = std::fwrite(pNext + nDone, 1, nCount - nDone, m_pFile);
        nDone += static_cast<unsigned int>(nPut);
        if (nDone < nCount) {
            const bool bInterrupted = errno == EINTR;
            std::clearerr(m_pFile);
            if (!bInterrupted) {
                m_bFailed = true;
                break;
            }
        }
    }
    return nDone;
}

bool CVamArchiveFile::Seek(long long nPosition, int nOrigin) {
    static const int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (m_pFile == nullptr || nOrigin < 0 || nOrigin > 2) {
        return false;
    }
    // Moving flushes what is buffered; a full disk may show here first. Whether anything was waiting
    // cannot be asked, so a failed move that is not a bad position counts as a failed write.
    errno = 0;
    if (fseeko(m_pFile, static_cast<off_t>(nPosition), kOrigins[nOrigin]) != 0) {
        if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO) {
            m_bFailed = true;
        }
        return false;
    }
    return true;
}

long long CVamArchiveFile::GetPosition() {
    return m_pFile == nullptr ? -1 : static_cast<long long>(ftello(m_pFile));
}

bool CVamArchiveFile::Flush() {
    if (m_pFile == nullptr) {
        return false;
    }
    int nResult = std::fflush(m_pFile);
    while (nResult != 0 && errno == EINTR) {
        std::clearerr(m_pFile);
        nResult = std::fflush(m_pFile);
    }
    if (nResult != 0) {
        m_bFailed = true;
    }
    return nResult == 0;
}
