// A stream over memory that counts its calls and can fail any one of them.
#ifndef SUPPORT_FAULTYARCHIVE_H
#define SUPPORT_FAULTYARCHIVE_H

#include <platform/vamarchivememory.h>

#include "support/rows.h"

namespace support {

enum class Op { kRead, kWrite, kSeek, kGetPosition, kFlush };
inline constexpr Op kAllOps[] = {Op::kRead, Op::kWrite, Op::kSeek, Op::kGetPosition, Op::kFlush};

// What a failing call does. Read and Write: kZero moves nothing and returns 0; kShort moves and
// returns half; kHuge moves nothing and returns 0x7FFFFFFF; kMinusOne the same with all bits set.
// GetPosition returns 0, half, the largest value, -1. Seek does not move and Flush does nothing;
// both return false. kThrow throws ForeignError, whatever the operation.
enum class Fault { kZero, kShort, kHuge, kMinusOne, kThrow };
inline constexpr Fault kAllFaults[] = {Fault::kZero, Fault::kShort, Fault::kHuge, Fault::kMinusOne,
                                       Fault::kThrow};

// What a host's stream may throw: nothing that derives from std::exception.
struct ForeignError {
    int nCode = 77;
};

class FaultyArchive : public CVamArchiveMemory {
  public:
    FaultyArchive() = default;
    // Reads the caller's bytes in place; they must outlive this object.
    explicit FaultyArchive(const Bytes& bytes);

    // The nCall-th call of eOp from now on (1 is the next) fails, and with bForEver every later
    // one.
    void FailAt(Op eOp, int nCall, Fault eFault, bool bForEver = false);

    // Calls so far, the failing ones included.
    int Calls(Op eOp) const { return m_Calls[static_cast<int>(eOp)]; }
    // The size each Write asked for, in order.
    const std::vector<unsigned int>& WriteSizes() const { return m_WriteSizes; }
    // Whether a fault has happened.
    bool Fired() const { return m_bFired; }

    unsigned int Read(void* pBuffer, unsigned int nCount) override;
    unsigned int Write(const void* pBuffer, unsigned int nCount) override;
    bool Seek(long long nPosition, int nOrigin) override;
    long long GetPosition() override;
    bool Flush() override;

  private:
    bool Fails(Op eOp);  // counts the call; throws for kThrow

    int m_Calls[5] = {};
    std::vector<unsigned int> m_WriteSizes;
    Op m_eOp = Op::kRead;
    int m_nFailingCall = 0;
    Fault m_eFault = Fault::kZero;
    bool m_bForEver = false;
    bool m_bFired = false;
};

}  // namespace support

#endif  // SUPPORT_FAULTYARCHIVE_H
