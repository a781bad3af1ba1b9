#include "keltrace/keltrace.h"

#include <gtest/gtest.h>
#include <platform/securemem.h>

#include "support/recordingtrace.h"
#include "support/securefaults.h"

namespace {

using support::InputError;
using support::RecordingTrace;

TEST(Trace, InputErrorsAppearFromLevelZeroInBothCalls) {
    RecordingTrace trace;
    kel::TraceNull("p");
    EXPECT_EQ(InputError("p is nullptr"), trace.Lines());
    trace.Clear();
    kel::TraceInvalid("dwSize", 0xFFFFFFFFu);
    EXPECT_EQ(InputError("dwSize is invalid: 4294967295"), trace.Lines());
    trace.Clear();
    kel::TraceInvalid("nDstWidth", -5);
    EXPECT_EQ(InputError("nDstWidth is invalid: -5"), trace.Lines());
    trace.Clear();
    zt_trace_set_level(-1);
    kel::TraceNull("p");
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(Trace, SecureFailureNamesTheLineOfTheCallFromLevelOne) {
    char bytes[4] = {1, 1, 1, 1};
    for (int nLevel : {-1, 0, 1, 2}) {
        RecordingTrace trace(nLevel);
        support::SecureFaults faults(2);
        kel::CheckSecure(kel::kSourceScale, memcpy_s(bytes, 1, bytes + 1, 1));
        kel::CheckSecure(kel::kSourceScale, memset_s(bytes, 4, 0, 4));
        const int nLine = __LINE__ - 1;
        kel::CheckSecure(kel::kSourceScale, memset_s(bytes, 4, 0, 4));
        ASSERT_EQ(nLevel >= 1 ? 1u : 0u, trace.Lines().size());
        EXPECT_EQ(3, faults.Seen());
        if (nLevel >= 1) {
            EXPECT_EQ((support::TraceLine{ZT_TRACE_WRITE, 1,
                                          "[ikelex/src/kelscale;" + std::to_string(nLine) +
                                              "] secure function return=34"}),
                      trace.Lines()[0]);
        }
    }
    EXPECT_EQ(0, bytes[3]);
}

}  // namespace
