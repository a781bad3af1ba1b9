// The buffer of the file stream. One buffer serves both directions. Its content and the system's
// position relative to it decide every byte.
#include <platform/vamarchivefile.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "systemfile.h"

namespace {

constexpr unsigned int kSmallBuffer = 16 * 1024;
constexpr unsigned int kLargeBuffer = 512 * 1024;

}  // namespace

// The bytes from nNext to nEnd of the buffer lie between the system's position and the stream's.
// With bWriting they were taken and are not yet written, otherwise they were read ahead.
struct CVamArchiveFile::State {
    std::FILE* pFile = nullptr;
    bool bWritable = false;
    bool bFailed = false;
    bool bWriting = false;
    unsigned int nNext = 0;
    unsigned int nEnd = 0;
    // The small buffer below, or a large one of its own once a stream has written more than the
    // small one holds. Each call into the system costs as much as copying some 20 KiB.
    unsigned char* pBuffer = Small;
    unsigned int nRoom = kSmallBuffer;
    unsigned char Small[kSmallBuffer];

    bool WritePending();
    bool StartReading();
    bool StartWriting();
    void GrowBuffer();
};

CVamArchiveFile::CVamArchiveFile() : m_pState(new State) {}

CVamArchiveFile::~CVamArchiveFile() {
    Close();
    delete m_pState;
}

bool CVamArchiveFile::Open(const char* pszPath, const char* pszMode) {
    Close();
    m_pState->bFailed = false;
    if (pszPath != nullptr && pszMode != nullptr) {
        m_pState->pFile = vam::OpenSystemFile(pszPath, pszMode, m_pState->bWritable);
    }
    return m_pState->pFile != nullptr;
}

bool CVamArchiveFile::Close() {
    State& state = *m_pState;
    if (state.pFile != nullptr) {
        state.WritePending();
        if (std::fclose(state.pFile) != 0) {
            state.bFailed = true;
        }
        state.pFile = nullptr;
        state.nNext = state.nEnd = 0;
        if (state.pBuffer != state.Small) {
            delete[] state.pBuffer;
            state.pBuffer = state.Small;
            state.nRoom = kSmallBuffer;
        }
    }
    return !state.bFailed;
}

std::FILE* CVamArchiveFile::GetHandle() const {
    return m_pState->pFile;
}

bool CVamArchiveFile::HasFailed() const {
    return m_pState->bFailed;
}

unsigned int CVamArchiveFile::Read(void* pBuffer, unsigned int nCount) {
    State& state = *m_pState;
    if (state.pFile == nullptr || pBuffer == nullptr || !state.StartReading()) {
        return 0;
    }
    unsigned char* const pOut = static_cast<unsigned char*>(pBuffer);
    unsigned int nDone = 0;
    while (nDone < nCount) {
        const unsigned int nLeft = nCount - nDone;
        if (state.nNext < state.nEnd) {
            const unsigned int nTaken = std::min(nLeft, state.nEnd - state.nNext);
            std::memcpy(pOut + nDone, state.pBuffer + state.nNext, nTaken);
            state.nNext += nTaken;
            nDone += nTaken;
        } else if (nLeft >= state.nRoom) {
            const unsigned int nGot = vam::ReadSystemFile(state.pFile, pOut + nDone, nLeft);
            if (nGot == 0) {
                break;
            }
            nDone += nGot;
        } else {
            state.nNext = 0;
            state.nEnd = vam::ReadSystemFile(state.pFile, state.pBuffer, state.nRoom);
            if (state.nEnd == 0) {
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
    State& state = *m_pState;
    if (state.pFile == nullptr || pBuffer == nullptr || !state.bWritable || !state.StartWriting()) {
        state.bFailed = true;
        return 0;
    }
    const unsigned char* const pIn = static_cast<const unsigned char*>(pBuffer);
    unsigned int nDone = 0;
    while (nDone < nCount) {
        const unsigned int nLeft = nCount - nDone;
        if (state.nEnd == 0 && nLeft >= kLargeBuffer) {
            const unsigned int nPut = vam::WriteSystemFile(state.pFile, pIn + nDone, nLeft);
            state.bFailed = state.bFailed || nPut < nLeft;
            return nDone + nPut;
        }
        // Filled to the brim, so that the system gets whole pages.
        if (nLeft > state.nRoom - state.nEnd) {
            state.GrowBuffer();
        }
        const unsigned int nTaken = std::min(nLeft, state.nRoom - state.nEnd);
        std::memcpy(state.pBuffer + state.nEnd, pIn + nDone, nTaken);
        state.nEnd += nTaken;
        if (state.nEnd == state.nRoom && !state.WritePending()) {
            return nDone;
        }
        nDone += nTaken;
    }
    return nDone;
}

bool CVamArchiveFile::Seek(long long nPosition, int nOrigin) {
    State& state = *m_pState;
    if (state.pFile == nullptr || nOrigin < 0 || nOrigin > 2 || !state.WritePending()) {
        return false;
    }
    if (nOrigin == 1 &&
        __builtin_sub_overflow(nPosition, static_cast<long long>(state.nEnd - state.nNext),
                               &nPosition)) {
        return false;
    }
    if (vam::SeekSystemFile(state.pFile, nPosition, nOrigin) < 0) {
        return false;
    }
    state.nNext = state.nEnd = 0;
    return true;
}

long long CVamArchiveFile::GetPosition() {
    if (m_pState->pFile == nullptr) {
        return -1;
    }
    const long long nReached = vam::SeekSystemFile(m_pState->pFile, 0, 1);
    const long long nBetween = m_pState->nEnd - m_pState->nNext;
    return nReached < 0 ? -1 : m_pState->bWriting ? nReached + nBetween : nReached - nBetween;
}

bool CVamArchiveFile::Flush() {
    return m_pState->pFile != nullptr && m_pState->WritePending();
}

bool CVamArchiveFile::State::StartReading() {
    const bool bWritten = WritePending();
    bWriting = false;
    return bWritten;
}

// Moves the system's position back over what was read ahead.
bool CVamArchiveFile::State::StartWriting() {
    if (!bWriting) {
        const long long nAhead = nEnd - nNext;
        if (nAhead > 0 && vam::SeekSystemFile(pFile, -nAhead, 1) < 0) {
            return false;
        }
        nNext = nEnd = 0;
        bWriting = true;
    }
    return true;
}

bool CVamArchiveFile::State::WritePending() {
    if (!bWriting || nEnd == 0) {
        return true;
    }
    const bool bWritten = vam::WriteSystemFile(pFile, pBuffer, nEnd) == nEnd;
    nEnd = 0;
    bFailed = bFailed || !bWritten;
    return bWritten;
}

// Without memory for it the small buffer goes on serving.
void CVamArchiveFile::State::GrowBuffer() {
    if (pBuffer != Small) {
        return;
    }
    if (unsigned char* const pLarge = new (std::nothrow) unsigned char[kLargeBuffer]) {
        std::memcpy(pLarge, Small, nEnd);
        pBuffer = pLarge;
        nRoom = kLargeBuffer;
    }
}
