// The handle is a FILE so that the C library reads the mode and a host can look at it, but the
// bytes go through its descriptor: a stdio buffer is thrown away when the system call behind it is
// interrupted, and this one is not.
#include <platform/vamarchivefile.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

namespace {

// A size every system takes in one call.
constexpr unsigned int kMostAtOnce = 1u << 30;

constexpr unsigned int kLargeBuffer = 512 * 1024;

// What one read brings, at least a byte; 0 at the end of the data and for an error.
unsigned int ReadSome(int nDescriptor, unsigned char* pBuffer, unsigned int nCount) {
    ssize_t nGot = 0;
    do {
        nGot = read(nDescriptor, pBuffer, std::min(nCount, kMostAtOnce));
    } while (nGot < 0 && errno == EINTR);
    return nGot > 0 ? static_cast<unsigned int>(nGot) : 0;
}

// How much of the buffer could be written; less than nCount means an error.
unsigned int WriteAll(int nDescriptor, const unsigned char* pBuffer, unsigned int nCount) {
    unsigned int nDone = 0;
    while (nDone < nCount) {
        const ssize_t nPut =
            write(nDescriptor, pBuffer + nDone, std::min(nCount - nDone, kMostAtOnce));
        if (nPut > 0) {
            nDone += static_cast<unsigned int>(nPut);
        } else if (nPut == 0 || errno != EINTR) {
            break;
        }
    }
    return nDone;
}

}  // namespace

CVamArchiveFile::CVamArchiveFile()
    : m_pFile(nullptr),
      m_bWritable(false),
      m_bFailed(false),
      m_bWriting(false),
      m_nNext(0),
      m_nEnd(0),
      m_pBuffer(m_Small),
      m_nRoom(sizeof m_Small) {}

CVamArchiveFile::~CVamArchiveFile() {
    Close();
}

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
    if (fstat(Descriptor(), &status) != 0 || S_ISDIR(status.st_mode)) {
        std::fclose(m_pFile);
        m_pFile = nullptr;
        return false;
    }
    m_bWritable = (fcntl(Descriptor(), F_GETFL) & O_ACCMODE) != O_RDONLY;
    return true;
}

bool CVamArchiveFile::Close() {
    if (m_pFile != nullptr) {
        WritePending();
        if (std::fclose(m_pFile) != 0) {
            m_bFailed = true;
        }
        m_pFile = nullptr;
        m_bWriting = false;
        m_nNext = m_nEnd = 0;
        if (m_pBuffer != m_Small) {
            delete[] m_pBuffer;
            m_pBuffer = m_Small;
            m_nRoom = sizeof m_Small;
        }
    }
    return !m_bFailed;
}

std::FILE* CVamArchiveFile::GetHandle() const {
    return m_pFile;
}

bool CVamArchiveFile::HasFailed() const {
    return m_bFailed;
}

unsigned int CVamArchiveFile::Read(void* pBuffer, unsigned int nCount) {
    if (m_pFile == nullptr || pBuffer == nullptr || !StartReading()) {
        return 0;
    }
    unsigned char* const pOut = static_cast<unsigned char*>(pBuffer);
    unsigned int nDone = 0;
    while (nDone < nCount) {
        const unsigned int nLeft = nCount - nDone;
        if (m_nNext < m_nEnd) {
            const unsigned int nTaken = std::min(nLeft, m_nEnd - m_nNext);
            std::memcpy(pOut + nDone, m_pBuffer + m_nNext, nTaken);
            m_nNext += nTaken;
            nDone += nTaken;
        } else if (nLeft >= m_nRoom) {
            const unsigned int nGot = ReadSome(Descriptor(), pOut + nDone, nLeft);
            if (nGot == 0) {
                break;
            }
            nDone += nGot;
        } else {
            m_nNext = 0;
            m_nEnd = ReadSome(Descriptor(), m_pBuffer, m_nRoom);
            if (m_nEnd == 0) {
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
    if (m_pFile == nullptr || pBuffer == nullptr || !m_bWritable || !StartWriting()) {
        m_bFailed = true;
        return 0;
    }
    const unsigned char* const pIn = static_cast<const unsigned char*>(pBuffer);
    unsigned int nDone = 0;
    while (nDone < nCount) {
        const unsigned int nLeft = nCount - nDone;
        if (m_nEnd == 0 && nLeft >= kLargeBuffer) {
            const unsigned int nPut = WriteAll(Descriptor(), pIn + nDone, nLeft);
            m_bFailed = m_bFailed || nPut < nLeft;
            return nDone + nPut;
        }
        // Filled to the brim, so that the system gets whole pages.
        if (nLeft > m_nRoom - m_nEnd) {
            GrowBuffer();
        }
        const unsigned int nTaken = std::min(nLeft, m_nRoom - m_nEnd);
        std::memcpy(m_pBuffer + m_nEnd, pIn + nDone, nTaken);
        m_nEnd += nTaken;
        if (m_nEnd == m_nRoom && !WritePending()) {
            return nDone;
        }
        nDone += nTaken;
    }
    return nDone;
}

bool CVamArchiveFile::Seek(long long nPosition, int nOrigin) {
    static const int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (m_pFile == nullptr || nOrigin < 0 || nOrigin > 2 || !WritePending()) {
        return false;
    }
    if (nOrigin == 1 &&
        __builtin_sub_overflow(nPosition, static_cast<long long>(m_nEnd - m_nNext), &nPosition)) {
        return false;
    }
    if (lseek(Descriptor(), static_cast<off_t>(nPosition), kOrigins[nOrigin]) < 0) {
        return false;
    }
    m_nNext = m_nEnd = 0;
    return true;
}

long long CVamArchiveFile::GetPosition() {
    if (m_pFile == nullptr) {
        return -1;
    }
    const long long nReached = lseek(Descriptor(), 0, SEEK_CUR);
    const long long nBetween = m_nEnd - m_nNext;
    return nReached < 0 ? -1 : m_bWriting ? nReached + nBetween : nReached - nBetween;
}

bool CVamArchiveFile::Flush() {
    return m_pFile != nullptr && WritePending();
}

int CVamArchiveFile::Descriptor() const {
    return fileno(m_pFile);
}

bool CVamArchiveFile::StartReading() {
    const bool bWritten = WritePending();
    m_bWriting = false;
    return bWritten;
}

// Moves the descriptor back over what was read ahead.
bool CVamArchiveFile::StartWriting() {
    if (!m_bWriting) {
        const long long nAhead = m_nEnd - m_nNext;
        if (nAhead > 0 && lseek(Descriptor(), static_cast<off_t>(-nAhead), SEEK_CUR) < 0) {
            return false;
        }
        m_nNext = m_nEnd = 0;
        m_bWriting = true;
    }
    return true;
}

bool CVamArchiveFile::WritePending() {
    if (!m_bWriting || m_nNext == m_nEnd) {
        return true;
    }
    const unsigned int nPending = m_nEnd - m_nNext;
    const bool bWritten = WriteAll(Descriptor(), m_pBuffer + m_nNext, nPending) == nPending;
    m_nNext = m_nEnd = 0;
    m_bFailed = m_bFailed || !bWritten;
    return bWritten;
}

// Without memory for it the small buffer goes on serving.
void CVamArchiveFile::GrowBuffer() {
    if (m_pBuffer != m_Small) {
        return;
    }
    if (unsigned char* const pLarge = new (std::nothrow) unsigned char[kLargeBuffer]) {
        std::memcpy(pLarge, m_Small, m_nEnd);
        m_pBuffer = pLarge;
        m_nRoom = kLargeBuffer;
    }
}
