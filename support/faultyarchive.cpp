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

// What a failing call returns, by its fault.
template <typename T>
static T Failed(Fault eFault, T nHalf, T nHuge) {
    const T values[] = {0, nHalf, nHuge, static_cast<T>(-1)};
    return values[static_cast<int>(eFault)];
}

unsigned int FaultyArchive::Read(void* pBuffer, unsigned int nCount) {
    if (!Fails(Op::kRead)) {
        return CVamArchiveMemory::Read(pBuffer, nCount);
    }
    const unsigned int nMoved = m_eFault == Fault::kShort ? nCount / 2 : 0;
    return Failed(m_eFault, CVamArchiveMemory::Read(pBuffer, nMoved), 0x7FFFFFFFu);
}

unsigned int FaultyArchive::Write(const void* pBuffer, unsigned int nCount) {
    const AllocPause pause;
    m_WriteSizes.push_back(nCount);
    if (!Fails(Op::kWrite)) {
        return CVamArchiveMemory::Write(pBuffer, nCount);
    }
    const unsigned int nMoved = m_eFault == Fault::kShort ? nCount / 2 : 0;
    return Failed(m_eFault, CVamArchiveMemory::Write(pBuffer, nMoved), 0x7FFFFFFFu);
}

bool FaultyArchive::Seek(long long nPosition, int nOrigin) {
    return !Fails(Op::kSeek) && CVamArchiveMemory::Seek(nPosition, nOrigin);
}

long long FaultyArchive::GetPosition() {
    const long long nPosition = CVamArchiveMemory::GetPosition();
    return Fails(Op::kGetPosition)
               ? Failed(m_eFault, nPosition / 2, std::numeric_limits<long long>::max())
               : nPosition;
}

bool FaultyArchive::Flush() {
    return !Fails(Op::kFlush) && CVamArchiveMemory::Flush();
}

}  // namespace support
