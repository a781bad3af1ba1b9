// memcpy_s and memset_s of a test program, which report a failure on demand.
//
// These definitions take the place of the platform library's at link time. They always do their
// work.
#ifndef SUPPORT_SECUREFAULTS_H
#define SUPPORT_SECUREFAULTS_H

#include "support/scoped.h"

namespace support {

// While it lives, the nCall-th call of either function on this thread (1 is the first) does its
// work and returns 34 all the same; 0 only counts. With bIdle memset_s does nothing instead. One at
// a time.
class SecureFaults : Scoped {
  public:
    explicit SecureFaults(int nCall, bool bIdle = false);
    ~SecureFaults();

    int Seen() const { return m_nSeen; }
    bool Fired() const { return m_nFailing > 0 && m_nSeen >= m_nFailing; }

    bool Idle() const { return m_bIdle; }
    int NextResult() { return ++m_nSeen == m_nFailing ? 34 : 0; }  // for the functions

  private:
    int m_nFailing;
    bool m_bIdle;
    int m_nSeen = 0;
};

}  // namespace support

#endif  // SUPPORT_SECUREFAULTS_H
