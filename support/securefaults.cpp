// memcpy_s and memset_s in place of the platform layer's, with a result that a test arms.
#include "support/securefaults.h"

#include <platform/securemem.h>
#include <cstring>

namespace support {

namespace {
thread_local SecureFaults* t_pSecureFaults = nullptr;

int NextResult() {
    return t_pSecureFaults != nullptr ? t_pSecureFaults->NextResult() : 0;
}
}  // namespace

SecureFaults::SecureFaults(int nCall, bool bIdle) : m_nFailing(nCall), m_bIdle(bIdle) {
    t_pSecureFaults = this;
}
SecureFaults::~SecureFaults() {
    t_pSecureFaults = nullptr;
}

}  // namespace support

// The checks of the platform's own functions, then the work and the armed result.
int memcpy_s(void* dest, std::size_t destMax, const void* src, std::size_t count) {
    if (count > 0 && (dest == nullptr || src == nullptr)) {
        return 22;
    }
    if (count > destMax) {
        return 34;
    }
    if (count > 0) {
        std::memcpy(dest, src, count);
    }
    return support::NextResult();
}

int memset_s(void* dest, std::size_t destMax, int value, std::size_t count) {
    if (dest == nullptr) {
        return 22;
    }
    if (count > destMax) {
        return 34;
    }
    if (support::t_pSecureFaults == nullptr || !support::t_pSecureFaults->Idle()) {
        std::memset(dest, value, count);
    }
    return support::NextResult();
}
