// One line for each row: our time, and the ratio to its limit, fastest peer or other form.
#include "report.h"

#include <cstdio>

namespace bench {

namespace {

const char* NameOf(Kind eKind) {
    constexpr const char* kNames[] = {"limit", "peer", "own", "loops"};
    return kNames[static_cast<int>(eKind)];
}

// "1.23 x OpenCV", or nothing.
std::string Against(const Compared* pOther) {
    if (pOther == nullptr) {
        return "";
    }
    char szRatio[32];
    std::snprintf(szRatio, sizeof szRatio, "%.2f x ", pOther->dRatio);
    return szRatio + pOther->strName;
}

}  // namespace

const Compared* Result::Fastest(Kind eKind) const {
    const Compared* pFastest = nullptr;
    for (const Compared& other : others) {
        if (other.eKind == eKind && (pFastest == nullptr || other.dSeconds < pFastest->dSeconds)) {
            pFastest = &other;
        }
    }
    return pFastest;
}

void PrintHead(int nRepetitions) {
    std::printf("medians of %d repetitions of all sides in turn; ms a call\n\n", nRepetitions);
    std::printf("%-46s %9s  %-36s %-22s %s\n", "work", "ours", "limit or other form",
                "fastest peer", "to reach");
}

void Print(const Result& result) {
    const Compared* pLimit = result.Fastest(Kind::kLimit);
    if (pLimit == nullptr) {
        pLimit = result.Fastest(Kind::kOwn);
    }
    std::printf("%-46s %9.4f  %-36s %-22s", result.strWork.c_str(), result.dOurs * 1e3,
                Against(pLimit).c_str(), Against(result.Fastest(Kind::kPeer)).c_str());
    const Compared* pAgainst = result.Fastest(result.reach.eAgainst);
    if (result.reach.dFactor > 0 && pAgainst != nullptr) {
        std::printf(" %.2f x %s%s", result.reach.dFactor, NameOf(result.reach.eAgainst),
                    pAgainst->dRatio <= result.reach.dFactor ? "" : ": not reached");
    }
    std::printf("\n");
    std::fflush(stdout);
}

bool WriteJson(const std::string& strPath, const std::vector<Result>& results) {
    std::FILE* pFile = std::fopen(strPath.c_str(), "w");
    if (pFile == nullptr) {
        return false;
    }
    std::fputs("{\"rows\": [", pFile);
    const char* pszComma = "";
    for (const Result& result : results) {
        std::fprintf(pFile,
                     "%s\n {\"work\": \"%s\", \"ours_ms\": %.6f, \"reach\": %.3f, "
                     "\"against\": \"%s\", \"others\": [",
                     pszComma, result.strWork.c_str(), result.dOurs * 1e3, result.reach.dFactor,
                     NameOf(result.reach.eAgainst));
        pszComma = "";
        for (const Compared& other : result.others) {
            std::fprintf(pFile,
                         "%s\n  {\"kind\": \"%s\", \"name\": \"%s\", \"ms\": %.6f, "
                         "\"ratio\": %.4f}",
                         pszComma, NameOf(other.eKind), other.strName.c_str(), other.dSeconds * 1e3,
                         other.dRatio);
            pszComma = ",";
        }
        std::fputs("]}", pFile);
        pszComma = ",";
    }
    std::fputs("\n]}\n", pFile);
    return std::fclose(pFile) == 0;
}

}  // namespace bench
