// The loops: every scenario, with its k-th allocation, stream call or bounded-memory call failing,
// for every k there is.
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "scenarios.h"
#include "support/allocfaults.h"
#include "support/inspect.h"
#include "support/recordingtrace.h"
#include "support/securefaults.h"

using namespace faults;
using support::Fault;
using support::Op;

namespace {

// The calls of malloc on this thread: blocks taken and not given back, calls, and the one that
// fails. libjpeg, libpng and zlib take their memory there.
struct Mallocs {
    long nLive = 0, nCalls = 0, nFailing = 0;
    bool bForEver = false;

    bool Fails() {
        ++nCalls;
        return nFailing > 0 && (nCalls == nFailing || (bForEver && nCalls > nFailing));
    }
    void* Counted(void* p) {
        nLive += p != nullptr;
        return p;
    }
};
[[maybe_unused]] thread_local Mallocs t_Mallocs;

}  // namespace

// This program defines malloc and free itself. Not with sanitizers, which do the same.
#if defined(__GLIBC__) && !defined(FAULTS_SANITIZED)
constexpr bool kMallocs = true;
extern "C" {
void* __libc_malloc(std::size_t nSize);
void* __libc_calloc(std::size_t nCount, std::size_t nSize);
void* __libc_realloc(void* p, std::size_t nSize);
void __libc_free(void* p);

void* malloc(std::size_t nSize) {
    return t_Mallocs.Fails() ? nullptr : t_Mallocs.Counted(__libc_malloc(nSize));
}
void* calloc(std::size_t nCount, std::size_t nSize) {
    return t_Mallocs.Fails() ? nullptr : t_Mallocs.Counted(__libc_calloc(nCount, nSize));
}
void* realloc(void* p, std::size_t nSize) {
    if (p == nullptr) {
        return malloc(nSize);
    }
    return t_Mallocs.Fails() ? nullptr : __libc_realloc(p, nSize);
}
void free(void* p) {
    t_Mallocs.nLive -= p != nullptr;
    __libc_free(p);
}
}
#else
constexpr bool kMallocs = false;
#endif

namespace {

bool IsDocumented(KelResult n) {
    return (n >= 0 && n <= 6) || n == 8 || n == 11 || n == 1000;
}

bool IsEmpty(CKelImage& image) {
    return image.GetWidth() == 0 && image.GetHeight() == 0 && image.GetBits() == nullptr &&
           image.GetLineArray() == nullptr && image.GetPalette() == nullptr;
}

// What a scenario gives without any fault, whatever fresh memory holds.
Outcome Undisturbed(const Scenario& scenario) {
    Outcome outcomes[2];
    for (const int i : {0, 1}) {
        const support::AllocFill fill(i == 0 ? 0xA5 : 0x5A);
        Stage stage;
        scenario.prepare(stage);
        outcomes[i] = OutcomeOf(stage, scenario.run(stage));
    }
    EXPECT_EQ(outcomes[1], outcomes[0]) << scenario.strName;
    return outcomes[0];
}

// What is left of a disturbed run: its result, and a digest of the image and of what was written.
using Disturbed = std::optional<std::pair<KelResult, std::size_t>>;

std::size_t Digest(const Outcome& outcome) {
    const std::string strSeen(outcome.image.begin(), outcome.image.end());
    const std::string strWritten(outcome.written.begin(), outcome.written.end());
    return std::hash<std::string>()(strSeen + strWritten);
}

// One disturbed run, with byFill in fresh memory: what the fault left behind is sound and as
// promised, nothing is lost, and the same object works once the fault is over. disturb(stage,
// result) runs the scenario with the fault in place and tells whether it came to pass; without that
// there is no result.
template <class Disturb>
Disturbed RunDisturbedOnce(unsigned char byFill, const Scenario& scenario,
                           const std::string& strWhere, const Outcome& reference,
                           const Disturb& disturb) {
    const support::AllocFill fill(byFill);
    const support::LiveBlocks before = support::CountLiveBlocks();
    const long nMallocs = t_Mallocs.nLive;
    const bool bUnchanged = scenario.ePromise == Promise::kUnchanged;
    KelResult nResult = KEL_OK;
    std::size_t nDigest = 0;
    bool bFired = false;
    {
        Stage stage;
        scenario.prepare(stage);
        const Bytes was = support::Snapshot(stage.image);
        bFired = disturb(stage, nResult);
        EXPECT_TRUE(IsDocumented(nResult)) << strWhere << ": " << nResult;
        EXPECT_EQ("", support::FaultOf(stage.image)) << strWhere;
        if (nResult != KEL_OK && bUnchanged) {
            EXPECT_EQ(was, support::Snapshot(stage.image)) << strWhere;
        }
        if (nResult == KEL_ERR_MEMORY || nResult == KEL_ERR_FILE) {
            EXPECT_TRUE(bUnchanged || IsEmpty(stage.image)) << strWhere;
        }
        EXPECT_TRUE(nResult == KEL_OK || stage.pMade == nullptr) << strWhere;
        nDigest = Digest(OutcomeOf(stage, KEL_OK));
        DestroyImageObject(stage.pMade);
        stage.pMade = nullptr;
        stage.image.Clean();
        scenario.prepare(stage);
        EXPECT_EQ(reference.nResult, scenario.run(stage)) << strWhere;
        EXPECT_EQ(reference.image, OutcomeOf(stage, KEL_OK).image) << strWhere;
    }
    EXPECT_EQ(before, support::CountLiveBlocks()) << strWhere << " leaks";
    EXPECT_EQ(nMallocs, t_Mallocs.nLive) << strWhere << " leaks";
    return bFired ? Disturbed({nResult, nDigest}) : std::nullopt;
}

// What is in fresh memory makes no difference.
template <class Disturb>
Disturbed RunDisturbed(const Scenario& scenario, const std::string& strWhere,
                       const Outcome& reference, const Disturb& disturb) {
    const Disturbed result = RunDisturbedOnce(0xA5, scenario, strWhere, reference, disturb);
    EXPECT_EQ(result, RunDisturbedOnce(0x5A, scenario, strWhere, reference, disturb)) << strWhere;
    return result;
}

// Whether the k-th failed allocation may end so. No header block (BMP writer) and no new image
// (filter) are answered with "param"; a save goes on without its options (the first two, where it
// has some), and outside the codecs what only hastens the work may be missing.
bool IsExpected(const Scenario& scenario, long k, KelResult nResult) {
    const bool bOpen = scenario.strName.starts_with("open ");
    const bool bSave = scenario.strName.starts_with("save ");
    const bool bBmp = scenario.strName.find("BMP") != std::string::npos;
    const long nOptions = scenario.strName.starts_with("save path ") ? 0 : 3;
    const bool bMayWork = !bOpen && (!bSave || (k <= nOptions && !bBmp));
    const bool bMayRefuse = !bOpen && (!bSave || bBmp);
    return nResult == KEL_ERR_MEMORY || (bMayWork && nResult == KEL_OK) ||
           (bMayRefuse && nResult == KEL_ERR_PARAM);
}

// The same for a failed malloc of a codec library, which now and then goes on without the memory:
// then all of the picture is there, or something was written. A JPEG is one write, which the stream
// may have had no memory for.
bool IsExpectedOfCodec(const Scenario& scenario, bool bForEver, const Disturbed::value_type& result,
                       Outcome reference) {
    const bool bOpen = scenario.strName.starts_with("open ");
    const std::size_t nWhole = Digest(reference);
    reference.written.clear();
    const bool bWritten = !bOpen && (scenario.strName.starts_with("save JPEG ") ||
                                     result.second != Digest(reference));
    const KelResult n = result.first;
    return n == KEL_ERR_MEMORY || n == KEL_ERR_CODEC || n == KEL_ERR_PARAM || n == KEL_ERR_FILE ||
           (n == KEL_OK && !(bOpen && bForEver) && (bWritten || result.second == nWhole));
}

}  // namespace

// Of operator new, and in the readers and writers of malloc, which the codec libraries call.
TEST(FaultLoops, EveryAllocationFailsOnceAndForEver) {
    const support::RecordingTrace silence(-1);
    long aFaults[2] = {};
    for (const Scenario& scenario : AllScenarios()) {
        const Outcome reference = Undisturbed(scenario);
        EXPECT_EQ(KEL_OK, reference.nResult) << scenario.strName;
        const bool bOpen = scenario.strName.starts_with("open ");
        const bool bCodec = (bOpen && !scenario.strName.starts_with("open path ")) ||
                            scenario.strName.starts_with("save ");
        for (const auto& way :
             {std::pair{false, false}, {false, true}, {true, false}, {true, true}}) {
            const bool bMalloc = way.first, bForEver = way.second;
            bool bMore = !bMalloc || (bCodec && kMallocs);
            for (long k = 1; bMore; ++k) {
                const auto disturb = [&](Stage& stage, KelResult& nResult) {
                    if (bMalloc) {
                        t_Mallocs = {t_Mallocs.nLive, 0, k, bForEver};
                        nResult = scenario.run(stage);
                        return std::exchange(t_Mallocs.nFailing, 0) <= t_Mallocs.nCalls;
                    }
                    support::AllocFaults allocations(k, bForEver);
                    nResult = scenario.run(stage);
                    return allocations.Fired();
                };
                const std::string strWhere = scenario.strName + ", allocation " + std::to_string(k);
                const Disturbed result = RunDisturbed(scenario, strWhere, reference, disturb);
                bMore = result.has_value();
                if (bMore) {
                    EXPECT_TRUE(bMalloc ? IsExpectedOfCodec(scenario, bForEver, *result, reference)
                                        : IsExpected(scenario, k, result->first))
                        << strWhere << ": " << result->first;
                    ++aFaults[bMalloc];
                }
                ASSERT_LT(k, 2000) << strWhere;
            }
        }
    }
    EXPECT_GT(aFaults[0], 200);
    EXPECT_GT(aFaults[1], kMallocs ? 300 : -1);
}

namespace {

// Every call of one operation fails in one way. Returns the number of calls.
int FailEachCall(const Scenario& scenario, const Outcome& reference, Op eOp, Fault eFault,
                 bool bForEver) {
    for (int k = 1;; ++k) {
        const std::string strWhere = scenario.strName + ", operation " +
                                     std::to_string(static_cast<int>(eOp)) + " fault " +
                                     std::to_string(static_cast<int>(eFault)) + " call " +
                                     std::to_string(k) + (bForEver ? " for ever" : "");
        const auto disturb = [&](Stage& stage, KelResult& nResult) {
            stage.pIn->FailAt(eOp, k, eFault, bForEver);
            stage.out.FailAt(eOp, k, eFault, bForEver);
            nResult = scenario.run(stage);
            const bool bFired = stage.pIn->Fired() || stage.out.Fired();
            stage.pIn->FailAt(eOp, 0, eFault);
            stage.out.FailAt(eOp, 0, eFault);
            EXPECT_TRUE(eOp != Op::kRead || stage.pIn->GetPosition() == 0) << strWhere;
            return bFired;
        };
        const Disturbed result = RunDisturbed(scenario, strWhere, reference, disturb);
        if (!result) {
            return k - 1;
        }
        EXPECT_TRUE(eFault != Fault::kThrow || result->first == KEL_ERR_FILE) << strWhere;
        EXPECT_TRUE(eFault == Fault::kThrow || eOp != Op::kWrite || result->first == KEL_OK)
            << strWhere;
    }
}

}  // namespace

TEST(FaultLoops, EveryStreamCallFails) {
    const support::RecordingTrace silence(-1);
    int nFaults = 0;
    for (const Scenario& scenario : AllScenarios()) {
        const Outcome reference = Undisturbed(scenario);
        for (const Op eOp : support::kAllOps) {
            for (const Fault eFault : support::kAllFaults) {
                nFaults += FailEachCall(scenario, reference, eOp, eFault, false);
                nFaults += FailEachCall(scenario, reference, eOp, eFault, true);
            }
        }
    }
    EXPECT_GT(nFaults, 500);
}

// The call does its work, so that nothing may differ but one trace line at level 1.
TEST(FaultLoops, EveryBoundedMemoryCallReportsAFailure) {
    int nFaults = 0;
    for (const Scenario& scenario : AllScenarios()) {
        const Outcome reference = Undisturbed(scenario);
        for (int k = 1, bMore = 1; bMore != 0; ++k) {
            for (const int nLevel : {0, 1}) {
                const std::string strWhere = scenario.strName + ", call " + std::to_string(k);
                Stage stage;
                scenario.prepare(stage);
                support::RecordingTrace trace(nLevel);
                support::SecureFaults faults(k);
                const KelResult nResult = scenario.run(stage);
                bMore = faults.Fired();
                EXPECT_EQ(reference, OutcomeOf(stage, nResult)) << strWhere;
                ASSERT_EQ(bMore * nLevel, trace.Lines().size()) << strWhere;
                for (const support::TraceLine& line : trace.Lines()) {
                    ++nFaults;
                    EXPECT_EQ(1, line.nLevel) << strWhere;
                    EXPECT_TRUE(line.strText.starts_with("[ikelex/src/kel") &&
                                line.strText.ends_with("] secure function return=34"))
                        << strWhere << ": " << line.strText;
                }
            }
        }
    }
    EXPECT_GT(nFaults, 20);
}
