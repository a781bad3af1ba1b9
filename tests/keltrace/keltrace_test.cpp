// The fixed texts and levels of trace lines.
#include "keltrace/keltrace.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/recordingtrace.h"
#include "support/securefaults.h"

namespace {

using support::RecordingTrace;

TEST(Trace, InputErrorsAppearFromLevelZeroInBothCalls) {
    struct {
        void (*pfnTrace)(const char* pszName);
        const char* pszLine;
    } const cases[] = {
        {[](auto* p) { kel::TraceNull(p); }, "name is nullptr"},
        {[](auto* p) { kel::TraceInvalid(p, 0xFFFFFFFFu); }, "name is invalid: 4294967295"},
        {[](auto* p) { kel::TraceInvalid(p, -5); }, "name is invalid: -5"},
        {[](auto* p) { kel::TraceMessage(p, p); }, "namename"},
    };
    for (const auto& [pfnTrace, pszLine] : cases) {
        RecordingTrace trace;
        pfnTrace("name");
        zt_trace_set_level(-1);
        pfnTrace(reinterpret_cast<const char*>(16));  // no memory there
        EXPECT_EQ(support::InputError(pszLine), trace.Lines());
    }
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
