// The peak memory of this process, left beside a file for the program that started it.
#ifndef BENCH_PEAK_H
#define BENCH_PEAK_H

#include <cstdio>
#include <cstring>
#include <string>

// Writes the high-water mark of this program's own memory (VmHWM, in KiB) to strPath + ".peak". The
// figure of wait4 would not do: it starts at the size of the program that forked.
inline void LeavePeak(const std::string& strPath) {
    char szLine[256];
    long nPeak = 0;
    if (std::FILE* pStatus = std::fopen("/proc/self/status", "r")) {
        while (std::fgets(szLine, sizeof szLine, pStatus) != nullptr) {
            if (std::strncmp(szLine, "VmHWM:", 6) == 0) {
                std::sscanf(szLine + 6, "%ld", &nPeak);
            }
        }
        std::fclose(pStatus);
    }
    if (std::FILE* pFile = std::fopen((strPath + ".peak").c_str(), "w")) {
        std::fprintf(pFile, "%ld\n", nPeak);
        std::fclose(pFile);
    }
}

#endif  // BENCH_PEAK_H
