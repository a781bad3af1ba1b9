/// What was measured, on standard output and as JSON.
#ifndef BENCH_REPORT_H
#define BENCH_REPORT_H

#include <string>
#include <vector>

#include "suite.h"

namespace bench {

struct Compared {
    Kind eKind;
    std::string strName;
    double dSeconds;  ///< median
    double dRatio;    ///< ours / this, median of the repetitions' ratios
};

struct Result {
    std::string strWork;
    Reach reach;
    double dOurs;  ///< seconds, median
    std::vector<Compared> others;

    /// The fastest of a kind; null when there is none.
    const Compared* Fastest(Kind eKind) const;
};

void PrintHead(int nRepetitions);
void Print(const Result& result);
bool WriteJson(const std::string& strPath, const std::vector<Result>& results);

}  // namespace bench

#endif  // BENCH_REPORT_H
