// A call counts first; then it fails or goes to the memory archive.
#include "support/faultyarchive.h"

#include <limits>

#include "support/allocfaults.h"

namespace support {

FaultyArchive::FaultyArchive(const Bytes& bytes) : CVamArchiveMemory(bytes.data(), bytes.size()) {}

void FaultyArchive::FailAt(Op eOp, int nCall, Fault eFault, bool bForEver) {
    m_eOp = eOp;
    m_nFailingCall = Calls(eOp) + nCall;
    m_eFault = eFault;
    m_bForEver = bForEver;
    m_bFired = false;
}

bool FaultyArchive::Fails(Op eOp) {
    const int nCall = ++m_Calls[static_cast<int>(eOp)];
    if (m_nFailingCall == 0 || eOp != m_eOp || nCall < m_nFailingCall ||
        (nCall > m_nFailingCall && !m_bForEver)) {
        return false;
    }
    m_bFired = true;
    if (m_eFault == Fault::kThrow) {
        throw ForeignError();
    }
    return true;
}

// The value a failing Read or Write of nCount returns after nHalf bytes were moved for kShort.
static unsigned int FailedCount(Fault eFault, unsigned int nHalf) {
    switch (eFault) {
        case Fault::kShort:
            return nHalf;
        case Fault::kHuge:
            return 0x7FFFFFFFu;
        case Fault::kMinusOne:
            return ~0u;
        default:
            return 0;
    }
}

unsigned int FaultyArchive::Read(void* pBuffer, unsigned int nCount) {
    if (!Fails(Op::kRead)) {
        return CVamArchiveMemory::Read(pBuffer, nCount);
    }
    const bool bShort = m_eFault == Fault::kShort;
    return FailedCount(m_eFault, bShort ? CVamArchiveMemory::Read(pBuffer, nCount / 2) : 0);
}

unsigned int FaultyArchive::Write(const void* pBuffer, unsigned int nCount) {
    const AllocPause pause;
    m_WriteSizes.push_back(nCount);
    if (!Fails(Op::kWrite)) {
        return CVamArchiveMemory::Write(pBuffer, nCount);
    }
    const bool bShort = m_eFault == Fault::kShort;
    return FailedCount(m_eFault, bShort ? CVamArchiveMemory::Write(pBuffer, nCount / 2) : 0);
}

bool FaultyArchive::Seek(long long nPosition, int nOrigin) {
    return !Fails(Op::kSeek) && CVamArchiveMemory::Seek(nPosition, nOrigin);
}

long long FaultyArchive::GetPosition() {
    const long long nPosition = CVamArchiveMemory::GetPosition();
    if (!Fails(Op::kGetPosition)) {
        return nPosition;
    }
    switch (m_eFault) {
        case Fault::kShort:
            return nPosition / 2;
        case Fault::kHuge:
            return std::numeric_limits<long long>::max();
        case Fault::kMinusOne:
            return -1;
        default:
            return 0;
    }
}

bool FaultyArchive::Flush() {
    return !Fails(Op::kFlush) && CVamArchiveMemory::Flush();
}

}  // namespace support
