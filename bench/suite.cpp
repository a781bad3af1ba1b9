// Measuring and printing. Each row's two sides run in random turn (Google Benchmark's
// interleaving), once per repetition, so that whatever else the machine does hits both; the medians
// are compared.
#include "suite.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace bench {

namespace {

// Collects the seconds of each repetition, by benchmark name.
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<::benchmark::BenchmarkReporter::Run>& runs) override {
        for (const auto& run : runs) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const bool bOurs = run.benchmark_name().find("/ours/") != std::string::npos;
            (bOurs ? ours : yardstick).push_back(run.real_accumulated_time);
        }
    }

    std::vector<double> ours;
    std::vector<double> yardstick;
};

// The value at a share of the sorted values.
double Quantile(std::vector<double> values, double dShare) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(dShare * static_cast<double>(values.size() - 1) + 0.5)];
}

struct Measured {
    const Row* pRow;
    double dOurs, dYardstick, dRatio, dLow, dHigh;  // seconds; ratio and its quartiles
    bool Met() const { return pRow->dTarget == 0 || dRatio <= pRow->dTarget; }
};

void Register(const std::string& strName, const Side& side, int nRepetitions) {
    benchmark::RegisterBenchmark(strName.c_str(),
                                 [side](benchmark::State& state) {
                                     for (auto _ : state)
                                         state.SetIterationTime(side());
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(nRepetitions);
}

Measured Measure(const Row& row, int nRepetitions) {
    Collector collector;
    {
        const Pair pair = row.make();
        pair.ours();  // once unmeasured: caches, pages, the processor's clock
        pair.yardstick();
        Register("row/ours", pair.ours, nRepetitions);
        Register("row/yardstick", pair.yardstick, nRepetitions);
        benchmark::RunSpecifiedBenchmarks(&collector, std::string("row/"));
        benchmark::ClearRegisteredBenchmarks();
    }
    const double dYardstick = Quantile(collector.yardstick, 0.5);
    return {&row,
            Quantile(collector.ours, 0.5),
            dYardstick,
            Quantile(collector.ours, 0.5) / dYardstick,
            Quantile(collector.ours, 0.25) / dYardstick,
            Quantile(collector.ours, 0.75) / dYardstick};
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
    char szInterleave[] = "--benchmark_enable_random_interleaving=true";
    char* arguments[] = {argv[0], szInterleave, nullptr};
    int nArguments = 2;
    benchmark::Initialize(&nArguments, arguments);

    std::vector<Row> rows;
    addRows(rows, options);
    std::printf("%s; medians of %d runs of each side in random turn\n\n", pszTitle,
                options.nRepetitions);
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
