// Whole programs, and two threads.
#include <platform/vamarchivememory.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <thread>

#include "suite.h"
#include "support/reference/codecs.h"

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

// The peak memory in KiB that a program wrote after its output, as it found it in its own status.
double PeakKiB(const std::string& strOut) {
    double dPeak = 0;
    if (std::FILE* pFile = std::fopen((strOut + ".peak").c_str(), "r")) {
        if (std::fscanf(pFile, "%lf", &dPeak) != 1) {
            dPeak = 0;
        }
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
    Check(Scene(size, 24)->Save(pFiles->strIn.c_str(), KEL_IMAGE_JPEG, nullptr));
    return pFiles;
}

// Opens, scales and saves one picture, all in memory.
void OneJob(const support::Bytes& file) {
    CVamArchiveMemory in(file.data(), file.size()), out;
    tagKelParameterItem items[] = {{"width", CVamVariant(320)}, {"height", CVamVariant(240)}};
    tagKelParameters params = {2, items};
    CKelImage image;
    Check(image.Open(&in));
    Check(image.ApplyFilter(KEL_FILTER_SCALE, &params));
    Check(image.Save(&out, KEL_IMAGE_JPEG, nullptr));
}

Side InTwoThreads(const std::function<void()>& job) {
    return Timed([job] {
        std::thread other(job);
        job();
        other.join();
    });
}

}  // namespace

void AddProcessRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large();
    const std::string strJob = "program: JPEG " + large.Text() + " to 320x240 JPEG";
    rows.push_back(
        {strJob, {}, [large] {
             const auto pFiles = MakeFiles(large);
             const auto side = [pFiles](const char* pszProgram) -> Side {
                 return
                     [=] { return RunProgram(Sibling(pszProgram), pFiles->strIn, pFiles->strOut); };
             };
             return Sides{side("ikelex_bench_thumbnail"),
                          {{Kind::kLimit, "program that decodes", side("ikelex_bench_decode")}}};
         }});
    // Not a time: both sides are memory in KiB, written as thousandths of a second.
    const double dPicture = 3.0 * large.nWidth * large.nHeight / 1024;
    rows.push_back(
        {"the same, peak memory in KiB", {}, [large, dPicture] {
             const auto pFiles = MakeFiles(large);
             return Sides{
                 [=] {
                     RunProgram(Sibling("ikelex_bench_thumbnail"), pFiles->strIn, pFiles->strOut);
                     return PeakKiB(pFiles->strOut) / 1e3;
                 },
                 {{Kind::kLimit, "picture + 8 MiB", [=] { return (dPicture + 8 * 1024) / 1e3; }}}};
         }});
    rows.push_back(
        {"open, scale, save in two threads at once", {}, [large] {
             const auto pFile =
                 std::make_shared<support::Bytes>(Saved(*Scene(large, 24), KEL_IMAGE_JPEG));
             return Sides{
                 InTwoThreads([=] { OneJob(*pFile); }),
                 {{Kind::kOwn, "one thread, one picture", Timed([=] { OneJob(*pFile); })}}};
         }});
    rows.push_back({"libjpeg alone in two threads at once", {}, [large] {
                        const auto pFile = std::make_shared<support::Bytes>(
                            Saved(*Scene(large, 24), KEL_IMAGE_JPEG));
                        return Sides{InTwoThreads([=] { reference::DecodeJpeg(*pFile); }),
                                     {{Kind::kOwn, "one thread, one picture",
                                       Timed([=] { reference::DecodeJpeg(*pFile); })}}};
                    }});
}

}  // namespace bench
