// A row of the table: the library's work and its yardstick, measured in turn.
#ifndef BENCH_SUITE_H
#define BENCH_SUITE_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "pictures.h"

namespace bench {

// Does its set-up, then its work once, and returns the seconds the work alone took.
using Side = std::function<double()>;

struct Pair {
    Side ours;
    Side yardstick;
    // What the two keep in memory between runs lives inside them and goes with them.
};

struct Row {
    std::string strWork;
    std::string strYardstick;
    double dTarget;  // ours / yardstick; 0 where there is only something to compare
    std::function<Pair()> make;
};

struct Options {
    bool bQuick = false;    // small pictures and few repetitions: does everything still run?
    int nRepetitions = 15;  // of both sides, in turn
    std::string strOnly;    // rows whose work contains this text
    std::string strJson;    // also write the results to this file
    Size Large() const { return bQuick ? Size{400, 300} : Size{4000, 3000}; }
    Size Hd() const { return bQuick ? Size{192, 108} : Size{1920, 1080}; }
    // A target size, smaller in the quick run.
    Size Target(int nWidth, int nHeight) const {
        return bQuick ? Size{nWidth / 10, nHeight / 10} : Size{nWidth, nHeight};
    }
};

// Seconds that work() takes.
template <class Work>
double Seconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Keeps the compiler from dropping work whose result nobody reads.
inline void Use(const void* p) {
    asm volatile("" : : "g"(p) : "memory");
}

// The rows, by kind of work.
void AddCodecRows(std::vector<Row>& rows, const Options& options);
void AddScaleRows(std::vector<Row>& rows, const Options& options);
void AddPixelRows(std::vector<Row>& rows, const Options& options);
void AddProcessRows(std::vector<Row>& rows, const Options& options);

// Reads the command line, measures every row, prints the table; returns the exit code.
int Run(int argc, char** argv, const char* pszTitle,
        const std::function<void(std::vector<Row>&, const Options&)>& addRows);

}  // namespace bench

#endif  // BENCH_SUITE_H
