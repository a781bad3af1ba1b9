// memcpy_s and memset_s in place of the platform layer's, with a result that a test arms.
#include "support/securefaults.h"

#include <platform/securemem.h>
#include <cstring>

namespace support {

namespace {
thread_local SecureFaults* t_pSecureFaults = nullptr;
thread_local bool t_bIdle = false;

// The checks of the platform's own functions, then the armed result.
int Result(bool bPointers, std::size_t nRoom, std::size_t nCount) {
    if (!bPointers) {
        return 22;
    }
    if (nCount > nRoom) {
        return 34;
    }
    return t_pSecureFaults != nullptr ? t_pSecureFaults->NextResult() : 0;
}
}  // namespace

SecureFaults::SecureFaults(int nCall) : m_nFailing(nCall) {
    t_pSecureFaults = this;
}
SecureFaults::~SecureFaults() {
    t_pSecureFaults = nullptr;
}
IdleMemset::IdleMemset() {
    t_bIdle = true;
}
IdleMemset::~IdleMemset() {
    t_bIdle = false;
}

}  // namespace support

int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count) {
    const bool bPointers = (dest != nullptr && src != nullptr) || count == 0;
    if (bPointers && count > 0 && count <= destMax) {
        std::memcpy(dest, src, count);
    }
    return support::Result(bPointers, destMax, count);
}

int memset_s(void* dest, std::size_t destMax, int value, std::size_t count) {
    if (support::t_bIdle) {
        return 34;
    }
    if (dest != nullptr && count <= destMax) {
        std::memset(dest, value, count);
    }
    return support::Result(dest != nullptr, destMax, count);
}
