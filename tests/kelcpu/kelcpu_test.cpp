// The levels against what the system says about the processor, and the cap of the build.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "kelcpu/kelcpu.h"

namespace {

using kel::CpuLevel;

// The words of the processor's first "flags" or "Features" line.
std::set<std::string> CpuFlags() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string strLine; std::getline(file, strLine);) {
        if (strLine.rfind("flags", 0) == 0 || strLine.rfind("Features", 0) == 0) {
            std::istringstream words(strLine);
            return {std::istream_iterator<std::string>(words), {}};
        }
    }
    return {};
}

TEST(Levels, AreThoseOfTheProcessorUpToTheCap) {
    const std::set<std::string> flags = CpuFlags();
    if (flags.empty()) {
        GTEST_SKIP() << "the system does not describe its processor";
    }
    std::vector<CpuLevel> expected;
    const auto add = [&](CpuLevel eLevel, const std::vector<std::string>& needed) {
        for (const std::string& strFlag : needed) {
            if (flags.count(strFlag) == 0) {
                return;
            }
        }
        expected.push_back(eLevel);
    };
    const std::string strCap = CPU_CAP;
#if defined(__x86_64__)
    if (strCap != "portable" && strCap != "avx2") {
        add(CpuLevel::kAvx512,
            {"avx512f", "avx512bw", "avx512vl", "avx512dq", "avx512vbmi", "avx512_vnni"});
    }
    if (strCap != "portable") {
        add(CpuLevel::kAvx2, {"avx2"});
    }
#elif defined(__aarch64__)
    if (strCap != "portable") {
        add(CpuLevel::kNeon, {});
    }
#endif
    add(CpuLevel::kPortable, {});
    EXPECT_EQ(std::vector<CpuLevel>(kel::Levels().begin(), kel::Levels().end()), expected);
    EXPECT_EQ(kel::BestLevel(), expected.front());
}

}  // namespace
