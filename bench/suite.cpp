// Measuring. A repetition runs every side of a row, one right after the other and another one first
// each time, so that whatever else the machine does hits all; a ratio is the median of the
// repetitions' ratios.
#include "suite.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "report.h"

namespace bench {

namespace {

// Short work is repeated until a measurement takes this long.
constexpr double kShortest = 1e-3;

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

Result Measure(const Row& row, int nRepetitions) {
    const Sides sides = row.make();
    std::vector<double> ours;
    std::vector<std::vector<double>> times(sides.others.size()), ratios(sides.others.size());
    const std::size_t nSides = sides.others.size() + 1;
    for (int i = -1; i < nRepetitions; ++i) {  // the first one warms caches, pages and the clock
        std::vector<double> seconds(nSides);
        for (std::size_t k = 0; k < nSides; ++k) {
            const std::size_t nSide = (k + static_cast<std::size_t>(i + 1)) % nSides;
            if (nSide == 0) {
                seconds[0] = sides.ours();
            } else if (sides.others[nSide - 1].eKind != Kind::kLoops || i == 0) {
                seconds[nSide] = sides.others[nSide - 1].side();
            }
        }
        if (i < 0) {
            continue;
        }
        ours.push_back(seconds[0]);
        for (std::size_t k = 0; k + 1 < nSides; ++k) {
            if (seconds[k + 1] > 0) {
                times[k].push_back(seconds[k + 1]);
                ratios[k].push_back(seconds[0] / seconds[k + 1]);
            }
        }
    }
    Result result{row.strWork, row.reach, Median(ours), {}};
    for (std::size_t k = 0; k + 1 < nSides; ++k) {
        const Other& other = sides.others[k];
        result.others.push_back({other.eKind, other.strName, Median(times[k]), Median(ratios[k])});
    }
    return result;
}

bool ReadOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string strArgument = argv[i];
        const bool bMore = i + 1 < argc;
        if (strArgument == "--quick") {
            options.bQuick = true;
            options.nRepetitions = 1;
        } else if (strArgument == "--repetitions" && bMore) {
            options.nRepetitions = std::max(1, std::atoi(argv[++i]));
        } else if (strArgument == "--only" && bMore) {
            options.selected.push_back(argv[++i]);
        } else if (strArgument == "--json" && bMore) {
            options.strJson = argv[++i];
        } else {
            return false;
        }
    }
    return true;
}

bool IsSelected(const Row& row, const Options& options) {
    const auto contains = [&row](const std::string& strText) {
        return row.strWork.find(strText) != std::string::npos;
    };
    return options.selected.empty() ||
           std::any_of(options.selected.begin(), options.selected.end(), contains);
}

}  // namespace

Side Timed(const std::function<void()>& work) {
    const auto pCount = std::make_shared<int>(0);
    return [work, pCount] {
        if (*pCount == 0) {
            work();
            *pCount = static_cast<int>(std::clamp(kShortest / Seconds(work), 1.0, 1e5));
        }
        const double dAll = Seconds([&] {
            for (int i = 0; i < *pCount; ++i) {
                work();
            }
        });
        return dAll / *pCount;
    };
}

Side TimedOn(const std::function<Image()>& make, const std::function<void(CKelImage&)>& work) {
    return [make, work] {
        double dAll = 0;
        int nDone = 0;
        while (dAll < kShortest) {
            std::vector<Image> images;  // few, so that small ones stay in the caches
            for (int i = 0; i < (nDone == 0 ? 1 : 8); ++i) {
                images.push_back(make());
            }
            dAll += Seconds([&] {
                for (const Image& pImage : images) {
                    work(*pImage);
                }
            });
            nDone += static_cast<int>(images.size());
        }
        return dAll / nDone;
    };
}

void Check(KelResult nResult) {
    if (nResult != KEL_OK) {
        std::fprintf(stderr, "bench: %s\n", KelResultName(nResult));
        std::exit(1);
    }
}

}  // namespace bench

int main(int argc, char** argv) {
    bench::Options options;
    if (!bench::ReadOptions(argc, argv, options)) {
        std::fprintf(stderr,
                     "usage: %s [--quick] [--repetitions N] [--only TEXT]... [--json FILE]\n",
                     argv[0]);
        return 2;
    }
    std::vector<bench::Row> rows;
    bench::AddScaleRows(rows, options);
    bench::AddGeometryRows(rows, options);
    bench::AddConversionRows(rows, options);
    bench::AddCodecRows(rows, options);
    bench::AddProcessRows(rows, options);
    bench::AddReasonRows(rows, options);

    bench::PrintHead(options.nRepetitions);
    std::vector<bench::Result> results;
    for (const bench::Row& row : rows) {
        if (bench::IsSelected(row, options)) {
            results.push_back(bench::Measure(row, options.nRepetitions));
            bench::Print(results.back());
        }
    }
    std::printf("\n%zu rows%s\n", results.size(),
                options.bQuick ? " (a quick run: its ratios say nothing)" : "");
    if (!options.strJson.empty() && !bench::WriteJson(options.strJson, results)) {
        std::fprintf(stderr, "%s cannot be written\n", options.strJson.c_str());
        return 1;
    }
    return 0;
}
