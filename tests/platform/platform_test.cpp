// Strings, memory streams, trace lines and the sink.
#include <gtest/gtest.h>
#include <platform/vamplatform.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/allocfaults.h"
#include "support/recordingtrace.h"

namespace {

using support::RecordingTrace;
using support::TraceLine;

TEST(String, CopiesHoldTheirOwnText) {
    CVamString text("quality"), assigned("old"), cloned("old");
    {
        const CVamString source(text);
        assigned = source;
        cloned.Clone(source);
        EXPECT_STREQ("quality", CVamString(source).GetText());
        EXPECT_NE(source.GetText(), assigned.GetText());
        EXPECT_NE(source.GetText(), cloned.GetText());
    }
    CVamString& self = text;
    text = self;
    text.Clone(self);
    for (const CVamString* pText : {&text, &assigned, &cloned}) {
        EXPECT_STREQ("quality", pText->GetText());
        EXPECT_TRUE(pText->Match("quality"));
        for (const char* pszOther :
             {"Quality", "qualit", "quality ", "", static_cast<const char*>(nullptr)}) {
            EXPECT_FALSE(pText->Match(pszOther));
        }
    }
    text = CVamString();
    for (const CVamString& empty : {text, CVamString(""), CVamString(nullptr)}) {
        EXPECT_STREQ("", empty.GetText());
        EXPECT_TRUE(empty.Match(""));
        EXPECT_FALSE(empty.Match(nullptr));
    }
    // A copy that fails for want of memory leaves the old text.
    const support::AllocFaults faults(1);
    EXPECT_THROW(assigned = CVamString(cloned), std::bad_alloc);
    EXPECT_STREQ("quality", assigned.GetText());
}

// The type, and a field of 8 bytes that begins with the value's own.
TEST(Variant, HoldsTypeAndBytes) {
    const std::pair<CVamVariant, std::pair<int, unsigned long long>> cases[] = {
        {static_cast<short>(-2), {VAM_INT16, 0xFFFE}},
        {static_cast<unsigned short>(65535), {VAM_UINT16, 0xFFFF}},
        {-3, {VAM_INT32, 0xFFFFFFFD}},
        {4000000000u, {VAM_UINT32, 4000000000}},
        {1.5f, {VAM_FLOAT, 0x3FC00000}},
        {1.5, {VAM_DOUBLE, 0x3FF8000000000000}}};
    for (const auto& [value, expected] : cases) {
        CVamVariant copies[2];
        copies[0].Clone(value);
        copies[1].Set(value.m_byType, value.m_Value);
        for (const CVamVariant& one : {value, copies[0], copies[1]}) {
            EXPECT_EQ(expected, std::pair(int{one.m_byType}, one.m_Value));
        }
    }
}

TEST(ArchiveMemory, RefusesWritesIntoACallersBytesAndWithoutMemory) {
    const unsigned char bytes[3] = {1, 2, 3};
    CVamArchiveMemory foreign(bytes, 3);
    EXPECT_EQ(0u, foreign.Write(bytes, 1));
    EXPECT_TRUE(foreign.HasFailed());
    EXPECT_EQ(3u, foreign.GetSize());
    const char pszLong[900] = {};
    CVamArchiveMemory owned;
    EXPECT_EQ(3u, owned.Write(bytes, 3));
    {
        support::AllocFaults faults(1);
        EXPECT_EQ(0u, owned.Write(pszLong, 900));
    }
    EXPECT_TRUE(owned.HasFailed());
    EXPECT_TRUE(owned.Seek(0x7FFFFFFFFFFFFFFF, 0));
    EXPECT_EQ(0u, owned.Write(bytes, 3));
    EXPECT_FALSE(owned.Seek(1, 1));
    EXPECT_TRUE(owned.Seek(0, 0));
    EXPECT_EQ(0u, owned.Write(nullptr, 3));
    EXPECT_FALSE(owned.Seek(0, 3));
    EXPECT_EQ(3u, owned.GetSize());
}

TEST(TextStream, CutsWhatDoesNotFitAndTakesNoMemory) {
    const std::string strLong(700, 'x');
    const std::string strNumbers = "-21474836484294967295" + std::to_string(~0ul);
    const support::AllocFaults faults(1, true);
    ZT_Text_Stream stream(1024, 32);
    stream << strLong.c_str() << -2147483647 - 1 << 4294967295u << ~0ul
           << static_cast<const char*>(nullptr);
    EXPECT_EQ(strNumbers, stream.GetText() + 700);
    stream << strLong.c_str() << 5;
    EXPECT_EQ(1023u, std::strlen(stream.GetText()));
    EXPECT_FALSE(faults.Fired());
}

TEST(VamTrace, UnderstandsDollarStringsAndCutsLongFormatsBetweenConversions) {
    RecordingTrace trace;
    const char* const pszForeign = "%s%n%d";
    VamTrace("png: %$s, %s, %%$s %5d%%", pszForeign, "two", 42);
    const std::string strFormat = std::string(1000, 'a') + "%$s" + std::string(19, 'b') + "%d%d";
    VamTrace(strFormat.c_str(), "", 1, 2);
    VamTrace((std::string(1022, 'a') + "%d").c_str(), 7);
    VamTrace("open %-08.3l");
    VamTrace(nullptr);
    zt_trace_write(0, nullptr, 0);
    zt_trace_input_error_msg(0, nullptr);
    EXPECT_EQ((std::vector<TraceLine>{
                  {ZT_TRACE_VAM, 0, "png: %s%n%d, two, %$s    42%"},
                  {ZT_TRACE_VAM, 0, std::string(1000, 'a') + std::string(19, 'b') + "1"},
                  {ZT_TRACE_VAM, 0, std::string(1022, 'a')},
                  {ZT_TRACE_VAM, 0, "open "}}),
              trace.Lines());
}

TEST(TraceSink, PrintsEachLineOnceByDefault) {
    {
        const RecordingTrace off(-1);
        zt_trace_input_error_msg(0, "hidden");
        EXPECT_TRUE(off.Lines().empty());
    }
    zt_trace_set_level(0);
    testing::internal::CaptureStderr();
    zt_trace_write(0, "p is nullptr", 0);
    zt_trace_input_error_msg(0, "p is nullptr");
    zt_trace_write(1, "hidden", 0);
    VamTrace("100%% ended\n");
    zt_trace_write(0, &"\n"[1], 0);  // an empty text after a newline
    zt_trace_set_level(-1);
    zt_trace_write(0, "hidden", 0);
    VamTrace("hidden");
    zt_trace_set_level(0);
    EXPECT_EQ("p is nullptr\n100% ended\n\n", testing::internal::GetCapturedStderr());
}

// Under ThreadSanitizer this also shows that setting and using the sink do not race.
TEST(TraceSink, MayBeSetWhileOthersTrace) {
    static std::atomic<int> nMixed = 0;
    static int nContexts[2] = {0, 1};
    const ZT_TraceSink sinks[2] = {
        [](void* p, ZT_TraceCall, int, const char*) { nMixed += p != &nContexts[0]; },
        [](void* p, ZT_TraceCall, int, const char*) { nMixed += p != &nContexts[1]; }};
    zt_trace_set_sink(sinks[0], &nContexts[0]);
    std::thread other([] {
        for (int i = 0; i < 4000; ++i) {
            zt_trace_write(0, "line", 0);
        }
    });
    for (int i = 0; i < 4000; ++i) {
        zt_trace_set_sink(sinks[i % 2], &nContexts[i % 2]);
        zt_trace_set_level(i % 3 - 1);
    }
    other.join();
    zt_trace_set_sink(nullptr, nullptr);
    zt_trace_set_level(0);
    EXPECT_EQ(0, nMixed);
}

}  // namespace
