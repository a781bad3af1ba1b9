#include <platform/vamarchivememory.h>

#include <cstring>
#include <exception>

CVamArchiveMemory::CVamArchiveMemory()
    : m_bForeign(false), m_pForeign(nullptr), m_nForeignSize(0), m_nPosition(0), m_bFailed(false) {}

CVamArchiveMemory::CVamArchiveMemory(const void* pData, std::size_t nSize)
    : m_bForeign(true),
      m_pForeign(static_cast<const unsigned char*>(pData)),
      m_nForeignSize(nSize),
      m_nPosition(0),
      m_bFailed(false) {}

CVamArchiveMemory::~CVamArchiveMemory() = default;

const unsigned char* CVamArchiveMemory::GetData() const {
    return m_bForeign ? m_pForeign : m_Owned.data();
}

std::size_t CVamArchiveMemory::GetSize() const {
    return m_bForeign ? m_nForeignSize : m_Owned.size();
}

unsigned int CVamArchiveMemory::Read(void* pBuffer, unsigned int nCount) {
    const unsigned long long nSize = GetSize();
    const unsigned long long nFrom = static_cast<unsigned long long>(m_nPosition);
    if (nFrom >= nSize || nCount == 0 || pBuffer == nullptr) {
        return 0;
    }
    const unsigned long long nLeft = nSize - nFrom;
    const unsigned int nGot = nLeft < nCount ? static_cast<unsigned int>(nLeft) : nCount;
    std::memcpy(pBuffer, GetData() + nFrom, nGot);
    m_nPosition += nGot;
    return nGot;
}

unsigned int CVamArchiveMemory::Write(const void* pBuffer, unsigned int nCount) {
    if (nCount == 0) {
        return 0;
    }
    const unsigned long long nFrom = static_cast<unsigned long long>(m_nPosition);
    const unsigned long long nEnd = nFrom + nCount;
    if (m_bForeign || pBuffer == nullptr || nEnd > m_Owned.max_size()) {
        m_bFailed = true;
        return 0;
    }
    try {
        if (nEnd > m_Owned.size()) {
            m_Owned.resize(static_cast<std::size_t>(nEnd));
        }
    } catch (const std::exception&) {
        m_bFailed = true;
        return 0;
    }
    std::memcpy(m_Owned.data() + nFrom, pBuffer, nCount);
    m_nPosition += nCount;
    return nCount;
}

bool CVamArchiveMemory::Seek(long long nPosition, int nOrigin) {
    long long nBase = 0;
    if (nOrigin == 1) {
        nBase = m_nPosition;
    } else if (nOrigin == 2) {
        nBase = static_cast<long long>(GetSize());
    } else if (nOrigin != 0) {
        return false;
    }
    long long nTarget = 0;
    if (__builtin_add_overflow(nBase, nPosition, &nTarget) || nTarget < 0) {
        return false;
    }
    m_nPosition = nTarget;
    return true;
}

long long CVamArchiveMemory::GetPosition() {
    return m_nPosition;
}

bool CVamArchiveMemory::HasFailed() const {
    return m_bFailed;
}

bool CVamArchiveMemory::Flush() {
    return true;
}
