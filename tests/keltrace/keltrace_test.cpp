// The fixed texts and levels of trace lines.
#include "keltrace/keltrace.h"

#include <gtest/gtest.h>

#include <cstring>

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
    kel::TraceMessage("reader: ", "damaged");
    EXPECT_EQ(InputError("reader: damaged"), trace.Lines());
    trace.Clear();
    zt_trace_set_level(-1);
    const auto* const pszUnread = reinterpret_cast<const char*>(16);  // no memory there
    kel::TraceNull(pszUnread);
    kel::TraceInvalid(pszUnread, 1u);
    kel::TraceMessage(pszUnread, pszUnread);
    EXPECT_TRUE(trace.Lines().empty());
}

TEST(Trace, SecureFailureNamesTheLineOfTheCallFromLevelOne) {
    char bytes[4] = {1, 2, 3, 4};
    for (int nLevel : {-1, 0, 1, 2}) {
        RecordingTrace trace(nLevel);
        support::SecureFaults faults(2);
        kel::SecureCopy(kel::kSourceImage, bytes, bytes + 1, 1);
        kel::SecureZero(kel::kSourceEncoder, bytes + 2, 2);
        const int nLine = __LINE__ - 1;
        kel::SecureCopyInto(kel::kSourceImage, bytes, 1, bytes + 1, 2);  // does not fit
        ASSERT_EQ(nLevel >= 1 ? 2u : 0u, trace.Lines().size());
        EXPECT_EQ(2, faults.Seen());
        for (std::size_t i = 0; i < trace.Lines().size(); ++i) {
            const std::string strWhere =
                (i == 0 ? "[ikelex/src/kelencoder;" : "[ikelex/src/kelimage;") +
                std::to_string(nLine + 2 * static_cast<int>(i));
            EXPECT_EQ(
                (support::TraceLine{ZT_TRACE_WRITE, 1, strWhere + "] secure function return=34"}),
                trace.Lines()[i]);
        }
    }
    EXPECT_EQ(0, std::memcmp(bytes, "\2\2\0\0", 4));
}

}  // namespace
