/// A row of the table: the library's work, and what it is measured beside, in turn in one run.
#ifndef BENCH_SUITE_H
#define BENCH_SUITE_H

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "pictures.h"

namespace bench {

/// Does its set-up, then its work, and returns the seconds of one piece of work alone. What it
/// keeps in memory between runs lives inside it and goes with it.
using Side = std::function<double()>;

enum class Kind {
    kLimit,  ///< the least that any program would need: memory, a system call, the codec library
    kPeer,   ///< another library that does the same work
    kOwn,    ///< this library's work of another form
    kLoops,  ///< the reference loops, for information
};

struct Other {
    Kind eKind;
    std::string strName;
    Side side;
};

struct Sides {
    Side ours;
    std::vector<Other> others;
};

/// What a row is to reach: ours / the fastest of a kind.
struct Reach {
    Kind eAgainst = Kind::kLimit;
    double dFactor = 0;  ///< 0: nothing
};

struct Row {
    std::string strWork;
    Reach reach;
    std::function<Sides()> make;
};

struct Options {
    bool bQuick = false;                ///< small pictures, one repetition: does it all run?
    int nRepetitions = 9;               ///< of all sides, in turn
    std::vector<std::string> selected;  ///< rows whose work contains one of these texts; none: all
    std::string strJson;                ///< also write the results to this file
    Size Large() const { return bQuick ? Size{400, 300} : Size{4000, 3000}; }
    Size Hd() const { return bQuick ? Size{192, 108} : Size{1920, 1080}; }
    /// A target size, smaller in the quick run.
    Size Target(int nWidth, int nHeight) const {
        return bQuick ? Size{nWidth / 10, nHeight / 10} : Size{nWidth, nHeight};
    }
};

/// Seconds that work() takes.
template <class Work>
double Seconds(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Keeps the compiler from dropping work whose result nobody reads.
inline void Use(const void* p) {
    asm volatile("" : : "g"(p) : "memory");
}

/// Work that can be repeated as it is. Short work is repeated within a measurement.
Side Timed(const std::function<void()>& work);
/// Work that changes its image: each time on a fresh one from make.
Side TimedOn(const std::function<Image()>& make, const std::function<void(CKelImage&)>& work);

/// Ends the program unless the library said KEL_OK.
void Check(KelResult nResult);

// The rows, by kind of work.
void AddScaleRows(std::vector<Row>& rows, const Options& options);
void AddGeometryRows(std::vector<Row>& rows, const Options& options);
void AddConversionRows(std::vector<Row>& rows, const Options& options);
void AddCodecRows(std::vector<Row>& rows, const Options& options);
void AddProcessRows(std::vector<Row>& rows, const Options& options);
void AddReasonRows(std::vector<Row>& rows, const Options& options);

}  // namespace bench

#endif  // BENCH_SUITE_H
