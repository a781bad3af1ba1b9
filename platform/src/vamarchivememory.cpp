#include <platform/vamarchivememory.h>

#include <cstring>
#include <exception>

CVamArchiveMemory::CVamArchiveMemory()
    : m_pForeign(nullptr), m_nForeignSize(0), m_nPosition(0), m_bFailed(false) {}

CVamArchiveMemory::CVamArchiveMemory(const void* pData, std::size_t nSize)
    : m_pForeign(static_cast<const unsigned char*>(pData)),
      m_nForeignSize(nSize),
      m_nPosition(0),
      m_bFailed(false) {}

CVamArchiveMemory::~CVamArchiveMemory() = default;

const unsigned char* CVamArchiveMemory::GetData() const {
    return m_pForeign != nullptr ? m_pForeign : m_Owned.data();
}

std::size_t CVamArchiveMemory::GetSize() const {
    return m_pForeign != nullptr ? m_nForeignSize : m_Owned.size();
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
    if (m_pForeign != nullptr || pBuffer == nullptr) {
        m_bFailed = true;
        return 0;
    }
    const std::size_t nFrom = static_cast<std::size_t>(m_nPosition);
    const std::size_t nEnd = nFrom + nCount;
    try {
        if (nEnd > m_Owned.size()) {
            m_Owned.resize(nEnd);
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

long long CVamArchiveMemory::GetPosition() { return m_nPosition; }

bool CVamArchiveMemory::Flush() { return true; }
