// Whole programs, and two threads.
#include <platform/vamarchivememory.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "plaincodecs.h"
#include "suite.h"

extern char** environ;

namespace bench {

namespace {

// The two programs lie beside this one.
std::string Sibling(const char* pszName) {
    return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / pszName).string();
}

double RunProgram(const std::string& strProgram, const std::string& strIn,
                  const std::string& strOut) {
    std::string strings[] = {strProgram, strIn, strOut};
    char* arguments[] = {strings[0].data(), strings[1].data(), strings[2].data(), nullptr};
    int nStatus = 1;
    const double dSeconds = Seconds([&] {
        pid_t nChild = 0;
        if (posix_spawn(&nChild, arguments[0], nullptr, nullptr, arguments, environ) == 0) {
            waitpid(nChild, &nStatus, 0);
        }
    });
    if (nStatus != 0) {
        std::fprintf(stderr, "bench: %s failed\n", arguments[0]);
        std::exit(1);
    }
    return dSeconds;
}

// The peak memory in KiB a program wrote behind its output, as it found it in its own status.
double PeakKiB(const std::string& strOut) {
    double dPeak = 0;
    if (std::FILE* pFile = std::fopen((strOut + ".peak").c_str(), "r")) {
        if (std::fscanf(pFile, "%lf", &dPeak) != 1)
            dPeak = 0;
        std::fclose(pFile);
    }
    return dPeak;
}

struct Files {
    std::string strIn, strOut;
    Files() {
        const auto directory = std::filesystem::temp_directory_path();
        strIn = (directory / "ikelex-bench-in.jpg").string();
        strOut = (directory / "ikelex-bench-out.jpg").string();
    }
    ~Files() {
        std::filesystem::remove(strIn);
        std::filesystem::remove(strOut);
        std::filesystem::remove(strOut + ".peak");
    }
};

std::shared_ptr<Files> MakeFiles(Size size) {
    auto pFiles = std::make_shared<Files>();
    if (MakeScene(size, 24)->Save(pFiles->strIn.c_str(), KEL_IMAGE_JPEG, nullptr) != KEL_OK) {
        std::exit(1);
    }
    return pFiles;
}

// Opens, scales and saves one picture, all in memory.
void OneJob(const plain::Bytes& file) {
    CVamArchiveMemory in(file.data(), file.size()), out;
    tagKelParameterItem items[] = {{"width", CVamVariant(320)}, {"height", CVamVariant(240)}};
    tagKelParameters params = {2, items};
    CKelImage image;
    if (image.Open(&in) != KEL_OK || image.ApplyFilter(KEL_FILTER_SCALE, &params) != KEL_OK ||
        image.Save(&out, KEL_IMAGE_JPEG, nullptr) != KEL_OK) {
        std::exit(1);
    }
}

// The job in two threads at once, and in one.
Pair TwoAndOne(const std::function<void()>& fnJob) {
    return {[fnJob] {
                return Seconds([&] {
                    std::thread other(fnJob);
                    fnJob();
                    other.join();
                });
            },
            [fnJob] { return Seconds(fnJob); }};
}

}  // namespace

void AddProcessRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large();
    const std::string strJob = "program: JPEG " + large.Text() + " to 320x240 JPEG";
    rows.push_back({strJob, "program that only decodes", 1.15, [large] {
                        auto pFiles = MakeFiles(large);
                        return Pair{[=] {
                                        return RunProgram(Sibling("ikelex_bench_thumbnail"),
                                                          pFiles->strIn, pFiles->strOut);
                                    },
                                    [=] {
                                        return RunProgram(Sibling("ikelex_bench_decode"),
                                                          pFiles->strIn, pFiles->strOut);
                                    }};
                    }});
    // Not a time: the two sides are memory in KiB (written as thousandths of a second).
    const double dPicture = 3.0 * large.nWidth * large.nHeight / 1024;
    rows.push_back({"the same, peak memory in KiB", "picture + 8 MiB", 1.0, [large, dPicture] {
                        auto pFiles = MakeFiles(large);
                        return Pair{[=] {
                                        RunProgram(Sibling("ikelex_bench_thumbnail"), pFiles->strIn,
                                                   pFiles->strOut);
                                        return PeakKiB(pFiles->strOut) / 1e3;
                                    },
                                    [=] { return (dPicture + 8 * 1024) / 1e3; }};
                    }});
    rows.push_back({"two threads, one picture each", "one thread, one picture", 2 / 1.9, [large] {
                        auto pFile = std::make_shared<plain::Bytes>(
                            Saved(*MakeScene(large, 24), KEL_IMAGE_JPEG));
                        return TwoAndOne([pFile] { OneJob(*pFile); });
                    }});
    rows.push_back({"limit: libjpeg, two threads", "one thread", 0, [large] {
                        auto pFile = std::make_shared<plain::Bytes>(
                            Saved(*MakeScene(large, 24), KEL_IMAGE_JPEG));
                        return TwoAndOne([pFile] { plain::DecodeJpeg(*pFile); });
                    }});
}

}  // namespace bench
