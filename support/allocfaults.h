// Every operator new and delete of a test program, with allocations that fail on demand.
//
// A program linked with the test support gets these operators instead of the C++ library's. They
// act on the calling thread only and are plain malloc and free unless one of the objects below is
// alive.
#ifndef SUPPORT_ALLOCFAULTS_H
#define SUPPORT_ALLOCFAULTS_H

#include "support/scoped.h"

namespace support {

// While it lives, the nAllocation-th allocation of this thread (1 is the first) fails: the throwing
// forms throw std::bad_alloc, the others return null. With bForEver every later one fails too.
// 0 fails none and only counts. One at a time.
class AllocFaults : Scoped {
  public:
    explicit AllocFaults(long nAllocation, bool bForEver = false);
    ~AllocFaults();

    long Seen() const { return m_nSeen; }  // allocations counted, the failed ones included
    bool Fired() const { return m_bFired; }

    bool NextFails();  // for the operators

  private:
    long m_nFailing;
    bool m_bForEver;
    long m_nSeen = 0;
    bool m_bFired = false;
};

// While it lives, allocations of this thread neither count nor fail nor are filled: for the
// book-keeping of test helpers that the code under test calls.
class AllocPause : Scoped {
  public:
    AllocPause();
    ~AllocPause();
};

// While it lives, fresh memory of this thread is filled with byFill. One at a time.
class AllocFill : Scoped {
  public:
    explicit AllocFill(unsigned char byFill);
    ~AllocFill();
};

// Blocks this thread has taken less those it has released. Equal before and after means: nothing
// leaked, and nothing taken by one form was released by the other.
struct LiveBlocks {
    long nSingles = 0;  // new and delete
    long nArrays = 0;   // new[] and delete[]

    bool operator==(const LiveBlocks&) const = default;
};
LiveBlocks CountLiveBlocks();

}  // namespace support

#endif  // SUPPORT_ALLOCFAULTS_H
