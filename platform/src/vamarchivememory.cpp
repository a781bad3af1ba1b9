// The byte stream over memory. A position beyond the end is legal, as in a file. Reads deliver
// nothing there, and a write fills the gap with zeros.
#include <platform/vamarchivememory.h>

#include <cstring>
#include <exception>
#include <vector>

struct CVamArchiveMemory::State {
    // The caller's bytes, or those of Owned.
    const unsigned char* pData = nullptr;
    std::size_t nSize = 0;
    unsigned long long nPosition = 0;
    bool bForeign = false;
    bool bFailed = false;
    std::vector<unsigned char> Owned;
};

CVamArchiveMemory::CVamArchiveMemory() : m_pState(new State) {}

CVamArchiveMemory::CVamArchiveMemory(const void* pData, std::size_t nSize) : CVamArchiveMemory() {
    m_pState->pData = static_cast<const unsigned char*>(pData);
    m_pState->nSize = nSize;
    m_pState->bForeign = true;
}

CVamArchiveMemory::~CVamArchiveMemory() {
    delete m_pState;
}

const unsigned char* CVamArchiveMemory::GetData() const {
    return m_pState->pData;
}

std::size_t CVamArchiveMemory::GetSize() const {
    return m_pState->nSize;
}

unsigned int CVamArchiveMemory::Read(void* pBuffer, unsigned int nCount) {
    if (pBuffer == nullptr || nCount == 0 || m_pState->nPosition >= m_pState->nSize) {
        return 0;
    }
    const unsigned long long nLeft = m_pState->nSize - m_pState->nPosition;
    const unsigned int nGot = nLeft < nCount ? static_cast<unsigned int>(nLeft) : nCount;
    std::memcpy(pBuffer, m_pState->pData + m_pState->nPosition, nGot);
    m_pState->nPosition += nGot;
    return nGot;
}

unsigned int CVamArchiveMemory::Write(const void* pBuffer, unsigned int nCount) {
    if (nCount == 0) {
        return 0;
    }
    State& state = *m_pState;
    const unsigned long long nEnd = state.nPosition + nCount;
    if (state.bForeign || pBuffer == nullptr || nEnd > state.Owned.max_size()) {
        state.bFailed = true;
        return 0;
    }
    try {
        if (nEnd > state.nSize) {
            state.Owned.resize(static_cast<std::size_t>(nEnd));
        }
    } catch (const std::exception&) {
        state.bFailed = true;
        return 0;
    }
    std::memcpy(state.Owned.data() + state.nPosition, pBuffer, nCount);
    state.pData = state.Owned.data();
    state.nSize = state.Owned.size();
    state.nPosition = nEnd;
    return nCount;
}

bool CVamArchiveMemory::Seek(long long nPosition, int nOrigin) {
    if (nOrigin < 0 || nOrigin > 2) {
        return false;
    }
    const unsigned long long nBase = nOrigin == 0   ? 0
                                     : nOrigin == 1 ? m_pState->nPosition
                                                    : m_pState->nSize;
    // A sum beyond the range of positions, on either side, has the highest bit set.
    const unsigned long long nTarget = nBase + static_cast<unsigned long long>(nPosition);
    if (nTarget >> 63 != 0) {
        return false;
    }
    m_pState->nPosition = nTarget;
    return true;
}

long long CVamArchiveMemory::GetPosition() {
    return static_cast<long long>(m_pState->nPosition);
}

bool CVamArchiveMemory::HasFailed() const {
    return m_pState->bFailed;
}

bool CVamArchiveMemory::Flush() {
    return true;
}
