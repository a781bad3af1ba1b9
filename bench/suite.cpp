// Measuring and printing. A repetition runs both sides of a row, one right after the other and in
// turn first, so that whatever else the machine does hits both; the ratio is the median of the
// repetitions' ratios.
#include "suite.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace bench {

namespace {

// Google Benchmark's own lines are not wanted.
class Silence : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>&) override {}
};

// The value at a share of the sorted values.
double Quantile(std::vector<double> values, double dShare) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(dShare * static_cast<double>(values.size() - 1) + 0.5)];
}

struct Measured {
    const Row* pRow;
    double dOurs, dYardstick;    // seconds, medians
    double dRatio, dLow, dHigh;  // median and quartiles
    bool Met() const { return pRow->dTarget == 0 || dRatio <= pRow->dTarget; }
};

Measured Measure(const Row& row, int nRepetitions) {
    std::vector<double> ours, yardstick, ratios;
    {
        const Pair pair = row.make();
        pair.ours();  // once unmeasured: caches, pages, the processor's clock
        pair.yardstick();
        const auto repetition = [&](benchmark::State& state) {
            for (auto _ : state) {
                const bool bOursFirst = ours.size() % 2 == 0;
                const double dFirst = bOursFirst ? pair.ours() : pair.yardstick();
                const double dSecond = bOursFirst ? pair.yardstick() : pair.ours();
                ours.push_back(bOursFirst ? dFirst : dSecond);
                yardstick.push_back(bOursFirst ? dSecond : dFirst);
                ratios.push_back(ours.back() / yardstick.back());
                state.SetIterationTime(ours.back());
            }
        };
        benchmark::RegisterBenchmark("row", repetition)
            ->UseManualTime()
            ->Iterations(1)
            ->Repetitions(nRepetitions);
        Silence silence;
        benchmark::RunSpecifiedBenchmarks(&silence);
        benchmark::ClearRegisteredBenchmarks();
    }
    return {&row,
            Quantile(ours, 0.5),
            Quantile(yardstick, 0.5),
            Quantile(ratios, 0.5),
            Quantile(ratios, 0.25),
            Quantile(ratios, 0.75)};
}

void Print(const Measured& m) {
    char szTarget[32] = "";
    if (m.pRow->dTarget != 0)
        std::snprintf(szTarget, sizeof szTarget, "%.3f", m.pRow->dTarget);
    std::printf("%-46s %9.2f %9.2f  %-28s %6.3f  %-6s %s\n", m.pRow->strWork.c_str(), m.dOurs * 1e3,
                m.dYardstick * 1e3, m.pRow->strYardstick.c_str(), m.dRatio, szTarget,
                m.pRow->dTarget == 0 ? ""
                : m.Met()            ? "met"
                                     : "MISSED");
    std::fflush(stdout);
}

bool WriteJson(const std::string& strPath, const char* pszTitle, const std::vector<Measured>& all) {
    std::FILE* pFile = std::fopen(strPath.c_str(), "w");
    if (pFile == nullptr)
        return false;
    std::fprintf(pFile, "{\"title\": \"%s\", \"rows\": [", pszTitle);
    for (std::size_t i = 0; i < all.size(); i++) {
        const Measured& m = all[i];
        std::fprintf(pFile,
                     "%s\n {\"work\": \"%s\", \"yardstick\": \"%s\", \"ours_ms\": %.4f, "
                     "\"yardstick_ms\": %.4f, \"ratio\": %.4f, \"ratio_q1\": %.4f, "
                     "\"ratio_q3\": %.4f, \"target\": %.4f, \"met\": %s}",
                     i == 0 ? "" : ",", m.pRow->strWork.c_str(), m.pRow->strYardstick.c_str(),
                     m.dOurs * 1e3, m.dYardstick * 1e3, m.dRatio, m.dLow, m.dHigh, m.pRow->dTarget,
                     m.Met() ? "true" : "false");
    }
    std::fputs("\n]}\n", pFile);
    return std::fclose(pFile) == 0;
}

bool ReadOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; i++) {
        const std::string strArgument = argv[i];
        const bool bMore = i + 1 < argc;
        if (strArgument == "--quick") {
            options.bQuick = true;
            options.nRepetitions = 3;
        } else if (strArgument == "--repetitions" && bMore) {
            options.nRepetitions = std::max(1, std::atoi(argv[++i]));
        } else if (strArgument == "--only" && bMore) {
            options.strOnly = argv[++i];
        } else if (strArgument == "--json" && bMore) {
            options.strJson = argv[++i];
        } else {
            return false;
        }
    }
    return true;
}

}  // namespace

int Run(int argc, char** argv, const char* pszTitle,
        const std::function<void(std::vector<Row>&, const Options&)>& addRows) {
    Options options;
    if (!ReadOptions(argc, argv, options)) {
        std::fprintf(stderr, "usage: %s [--quick] [--repetitions N] [--only TEXT] [--json FILE]\n",
                     argv[0]);
        return 2;
    }
    int nArguments = 1;
    benchmark::Initialize(&nArguments, argv);

    std::vector<Row> rows;
    addRows(rows, options);
    std::printf("%s; medians of %d runs of both sides in turn\n\n", pszTitle, options.nRepetitions);
    std::printf("%-46s %9s %9s  %-28s %6s  %-6s\n", "work", "ours ms", "other ms", "other", "ratio",
                "target");
    std::vector<Measured> all;
    for (const Row& row : rows) {
        if (row.strWork.find(options.strOnly) == std::string::npos)
            continue;
        all.push_back(Measure(row, options.nRepetitions));
        Print(all.back());
    }
    const auto nMissed =
        std::count_if(all.begin(), all.end(), [](const Measured& m) { return !m.Met(); });
    std::printf("\n%zu rows, %td over their target%s\n", all.size(), nMissed,
                options.bQuick ? " (a quick run: its ratios say nothing)" : "");
    if (!options.strJson.empty() && !WriteJson(options.strJson, pszTitle, all)) {
        std::fprintf(stderr, "%s cannot be written\n", options.strJson.c_str());
        return 1;
    }
    return 0;
}

}  // namespace bench
