// The levels against what the system says about the processor, and the cap of the build.
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "kelcpu/kelcpu.h"

namespace {

using kel::CpuLevel;

// The processor's first "flags" or "Features" line, each word between spaces.
std::string CpuFlags() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string strLine; std::getline(file, strLine);) {
        if (strLine.rfind("flags", 0) == 0 || strLine.rfind("Features", 0) == 0) {
            return strLine + " ";
        }
    }
    return "";
}

TEST(Levels, AreThoseOfTheProcessorUpToTheCap) {
    const std::string strFlags = CpuFlags();
    if (strFlags.empty()) {
        GTEST_SKIP() << "the system does not describe its processor";
    }
    const std::string strCap = CPU_CAP;
    std::vector<CpuLevel> expected = {CpuLevel::kPortable};
#if defined(__x86_64__)
    const auto has = [&](const char* pszFlag) {
        return strFlags.find(std::string(" ").append(pszFlag).append(" ")) != std::string::npos;
    };
    if (strCap != "portable" && has("avx2")) {
        expected.insert(expected.begin(), CpuLevel::kAvx2);
    }
    bool bAvx512 = strCap != "portable" && strCap != "avx2";
    for (const char* pszFlag :
         {"avx512f", "avx512bw", "avx512vl", "avx512dq", "avx512vbmi", "avx512_vnni"}) {
        bAvx512 = bAvx512 && has(pszFlag);
    }
    if (bAvx512) {
        expected.insert(expected.begin(), CpuLevel::kAvx512);
    }
#elif defined(__aarch64__)
    if (strCap != "portable") {
        expected.insert(expected.begin(), CpuLevel::kNeon);
    }
#endif
    EXPECT_EQ(expected, std::vector<CpuLevel>(kel::Levels().begin(), kel::Levels().end()));
    EXPECT_EQ(expected.front(), kel::BestLevel());
}

}  // namespace
