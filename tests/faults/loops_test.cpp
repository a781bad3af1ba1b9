// The loops: every scenario, with its k-th allocation, stream call or bounded-memory call failing,
// for every k there is.
#include <gtest/gtest.h>

#include <optional>

#include "scenarios.h"
#include "support/allocfaults.h"
#include "support/inspect.h"
#include "support/recordingtrace.h"
#include "support/securefaults.h"

using namespace faults;
using support::AllocFaults;
using support::Fault;
using support::Op;

namespace {

bool IsDocumented(KelResult n) {
    return (n >= 0 && n <= 6) || n == 8 || n == 11 || n == 1000;
}

bool IsEmpty(CKelImage& image) {
    return image.GetWidth() == 0 && image.GetHeight() == 0 && image.GetBits() == nullptr &&
           image.GetLineArray() == nullptr && image.GetPalette() == nullptr;
}

// Runs a scenario without any fault.
Outcome Undisturbed(const Scenario& scenario) {
    Stage stage;
    scenario.prepare(stage);
    const KelResult nResult = scenario.run(stage);
    return OutcomeOf(stage, nResult);
}

// What is left of a disturbed run: its result, and a digest of the image and of what was written.
struct Disturbed {
    KelResult nResult = KEL_OK;
    std::size_t nDigest = 0;
    bool operator==(const Disturbed&) const = default;
};

std::size_t Digest(Stage& stage) {
    const Outcome outcome = OutcomeOf(stage, KEL_OK);
    const std::string strSeen(outcome.image.begin(), outcome.image.end());
    const std::string strWritten(outcome.written.begin(), outcome.written.end());
    return std::hash<std::string>()(strSeen + strWritten);
}

// One disturbed run: what the fault left behind is sound and as promised, nothing is lost, and the
// same object works once the fault is over. disturb(stage, result) runs the scenario with the fault
// in place and tells whether it came to pass; without that there is no result.
template <class Disturb>
std::optional<Disturbed> RunDisturbed(const Scenario& scenario, const std::string& strWhere,
                                      const Outcome& reference, const Disturb& disturb) {
    const support::LiveBlocks before = support::CountLiveBlocks();
    Disturbed outcome = {};
    bool bFired = false;
    {
        KelResult nResult = KEL_OK;
        Stage stage;
        scenario.prepare(stage);
        const Bytes was = support::Snapshot(stage.image);
        bFired = disturb(stage, nResult);
        EXPECT_TRUE(IsDocumented(nResult)) << strWhere << ": " << nResult;
        ExpectSound(stage.image, strWhere);
        if (nResult != KEL_OK && scenario.ePromise == Promise::kUnchanged) {
            EXPECT_EQ(support::Snapshot(stage.image), was) << strWhere;
        }
        if (nResult == KEL_ERR_MEMORY || nResult == KEL_ERR_FILE) {
            EXPECT_TRUE(scenario.ePromise == Promise::kUnchanged || IsEmpty(stage.image))
                << strWhere;
        }
        EXPECT_TRUE(nResult == KEL_OK || stage.pMade == nullptr) << strWhere;
        outcome = {nResult, Digest(stage)};
        DestroyImageObject(stage.pMade);
        stage.pMade = nullptr;
        stage.image.Clean();
        scenario.prepare(stage);
        EXPECT_EQ(scenario.run(stage), reference.nResult) << strWhere;
        EXPECT_EQ(OutcomeOf(stage, KEL_OK).image, reference.image) << strWhere;
    }
    EXPECT_EQ(support::CountLiveBlocks(), before) << strWhere << " leaks";
    return bFired ? std::optional(outcome) : std::nullopt;
}

}  // namespace

TEST(FaultLoops, EveryAllocationFailsOnceAndForEver) {
    const support::RecordingTrace silence(-1);
    long nFaults = 0;
    for (const Scenario& scenario : AllScenarios()) {
        const Outcome reference = Undisturbed(scenario);
        EXPECT_EQ(reference.nResult, KEL_OK) << scenario.strName;
        for (const bool bForEver : {false, true}) {
            for (long k = 1;; ++k) {
                const auto disturb = [&](Stage& stage, KelResult& nResult) {
                    AllocFaults faults(k, bForEver);
                    nResult = scenario.run(stage);
                    return faults.Fired();
                };
                const std::string strWhere = scenario.strName + ", allocation " + std::to_string(k);
                const auto result = RunDisturbed(scenario, strWhere, reference, disturb);
                if (!result)
                    break;
                ++nFaults;
                // No header block (BMP writer) and no new image (filter) are answered with "param";
                // a save goes on without its options (the first two, where it has some), and
                // outside outside the codecs what only hastens the work may be missing.
                const bool bOpen = scenario.strName.starts_with("open ");
                const bool bSave = scenario.strName.starts_with("save ");
                const bool bBmp = scenario.strName.find("BMP") != std::string::npos;
                const KelResult nResult = result->nResult;
                const long nOptions = scenario.strName.starts_with("save path ") ? 0 : 3;
                const bool bMayWork = !bOpen && (!bSave || (k <= nOptions && !bBmp));
                const bool bMayRefuse = !bOpen && (!bSave || bBmp);
                EXPECT_TRUE(nResult == KEL_ERR_MEMORY || (bMayWork && nResult == KEL_OK) ||
                            (bMayRefuse && nResult == KEL_ERR_PARAM))
                    << strWhere << ": " << nResult;
                ASSERT_LT(k, 2000) << strWhere;
            }
        }
    }
    EXPECT_GT(nFaults, 200);
}

TEST(FaultLoops, EveryStreamCallFails) {
    const support::RecordingTrace silence(-1);
    long nFaults = 0;
    for (const Scenario& scenario : AllScenarios()) {
        const Outcome reference = Undisturbed(scenario);
        for (const Op eOp : support::kAllOps) {
            for (const Fault eFault : support::kAllFaults) {
                for (const bool bForEver : {false, true}) {
                    for (int k = 1;; ++k) {
                        const auto disturb = [&](Stage& stage, KelResult& nResult) {
                            stage.pIn->FailAt(eOp, k, eFault, bForEver);
                            stage.out.FailAt(eOp, k, eFault, bForEver);
                            nResult = scenario.run(stage);
                            const bool bFired = stage.pIn->Fired() || stage.out.Fired();
                            stage.pIn->FailAt(eOp, 0, eFault);
                            stage.out.FailAt(eOp, 0, eFault);
                            if (eOp == Op::kRead) {
                                EXPECT_EQ(stage.pIn->GetPosition(), 0) << scenario.strName;
                            }
                            return bFired;
                        };
                        const std::string strWhere =
                            scenario.strName + ", operation " +
                            std::to_string(static_cast<int>(eOp)) + " fault " +
                            std::to_string(static_cast<int>(eFault)) + " call " +
                            std::to_string(k) + (bForEver ? " for ever" : "");
                        std::optional<Disturbed> results[2];  // with other bytes in fresh memory
                        for (const int i : {0, 1}) {
                            const support::AllocFill fill(i == 0 ? 0xA5 : 0x5A);
                            results[i] = RunDisturbed(scenario, strWhere, reference, disturb);
                        }
                        EXPECT_EQ(results[0], results[1]) << strWhere;
                        if (!results[0])
                            break;
                        ++nFaults;
                        const KelResult nResult = results[0]->nResult;
                        if (eFault == Fault::kThrow) {
                            EXPECT_EQ(nResult, KEL_ERR_FILE) << strWhere;
                        }
                        if (eOp == Op::kWrite && eFault != Fault::kThrow) {
                            EXPECT_EQ(nResult, KEL_OK) << strWhere;
                        }
                    }
                }
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
                EXPECT_EQ(OutcomeOf(stage, nResult), reference) << strWhere;
                const std::size_t nLines = bMore != 0 && nLevel == 1 ? 1 : 0;
                ASSERT_EQ(trace.Lines().size(), nLines) << strWhere;
                if (nLines == 0)
                    continue;
                ++nFaults;
                const support::TraceLine& line = trace.Lines()[0];
                EXPECT_EQ(line.nLevel, 1) << strWhere;
                EXPECT_TRUE(line.strText.starts_with("[ikelex/src/kel") &&
                            line.strText.ends_with("] secure function return=34"))
                    << strWhere << ": " << line.strText;
            }
        }
    }
    EXPECT_GT(nFaults, 20);
}

TEST(FaultLoops, NoOldBytesReachAPictureOrAFile) {
    for (const Scenario& scenario : AllScenarios()) {
        std::optional<Outcome> outcomes[2];
        for (const int i : {0, 1}) {
            const support::AllocFill fill(i == 0 ? 0xA5 : 0x5A);
            outcomes[i] = Undisturbed(scenario);
        }
        EXPECT_EQ(outcomes[0], outcomes[1]) << scenario.strName;
    }
}
