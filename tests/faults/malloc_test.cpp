// Allocation faults inside libjpeg, libpng and zlib, which take their memory from malloc: this
// program defines malloc and free itself. Not with sanitizers, which do the same.
#include <gtest/gtest.h>

#include "scenarios.h"
#include "support/inspect.h"
#include "support/recordingtrace.h"

#if defined(__GLIBC__) && !defined(FAULTS_SANITIZED)

extern "C" {
void* __libc_malloc(std::size_t nSize);
void* __libc_calloc(std::size_t nCount, std::size_t nSize);
void* __libc_realloc(void* p, std::size_t nSize);
void __libc_free(void* p);
}

namespace {

// Of this thread, while counting: blocks taken and not given back, calls, and the call that fails.
thread_local bool t_bCounting = false;
thread_local long t_nLive = 0, t_nCalls = 0, t_nFailing = 0;
thread_local bool t_bForEver = false;

bool Fails() {
    if (!t_bCounting)
        return false;
    ++t_nCalls;
    return t_nCalls == t_nFailing || (t_bForEver && t_nCalls > t_nFailing);
}

void* Counted(void* p) {
    if (t_bCounting && p != nullptr)
        ++t_nLive;
    return p;
}

}  // namespace

extern "C" {
void* malloc(std::size_t nSize) {
    return Fails() ? nullptr : Counted(__libc_malloc(nSize));
}
void* calloc(std::size_t nCount, std::size_t nSize) {
    return Fails() ? nullptr : Counted(__libc_calloc(nCount, nSize));
}
void* realloc(void* p, std::size_t nSize) {
    if (p == nullptr)
        return malloc(nSize);
    return Fails() ? nullptr : __libc_realloc(p, nSize);
}
void free(void* p) {
    if (t_bCounting && p != nullptr)
        --t_nLive;
    __libc_free(p);
}
}

TEST(FaultLoops, EveryMallocInsideTheCodecsFails) {
    const support::RecordingTrace silence(-1);
    long nFaults = 0;
    for (const faults::Scenario& scenario : faults::AllScenarios()) {
        const bool bCodec =
            scenario.strName.starts_with("open ") || scenario.strName.starts_with("save ");
        for (const bool bForEver : {false, true}) {
            bool bFired = bCodec;
            for (long k = 1; bFired; ++k) {
                const std::string strWhere = scenario.strName + ", malloc " + std::to_string(k);
                t_nLive = t_nFailing = 0;
                t_bCounting = true;
                {
                    faults::Stage stage;
                    scenario.prepare(stage);
                    const faults::Bytes was = support::Snapshot(stage.image);
                    t_nCalls = 0;
                    t_nFailing = k;
                    t_bForEver = bForEver;
                    const KelResult nResult = scenario.run(stage);
                    bFired = t_nCalls >= k;
                    t_nFailing = 0;
                    t_bForEver = false;
                    const bool bKnown = nResult == KEL_OK || nResult == KEL_ERR_MEMORY ||
                                        nResult == KEL_ERR_PARAM || nResult == KEL_ERR_CODEC ||
                                        nResult == KEL_ERR_FILE;
                    EXPECT_TRUE(bKnown) << strWhere << ": " << nResult;
                    const bool bOpen = scenario.strName.starts_with("open ");
                    EXPECT_FALSE(bOpen && bFired && bForEver && nResult == KEL_OK) << strWhere;
                    faults::ExpectSound(stage.image, strWhere);
                    if (nResult != KEL_OK && scenario.ePromise == faults::Promise::kUnchanged) {
                        EXPECT_EQ(support::Snapshot(stage.image), was) << strWhere;
                    }
                }
                t_bCounting = false;
                EXPECT_EQ(t_nLive, 0) << strWhere << " leaks";
                ASSERT_LT(k, 2000) << strWhere;
                nFaults += bFired;
            }
        }
    }
    EXPECT_GT(nFaults, 300);
}

#endif
