// folder: thumbnails of every picture in a folder, several at a time.
//
//   folder IN_FOLDER OUT_FOLDER [THREADS]
//
// An image belongs to one thread at a time, and different images do not disturb each other: each
// thread makes its own and needs no lock.
#include <ikelex/ikelex.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "safesave.h"

namespace fs = std::filesystem;

namespace {

constexpr int kLongest = 160;  // pixels along the longer side of a thumbnail

KelResult MakeThumbnail(const fs::path& source, const fs::path& target) {
    const ImagePtr image = NewImage();
    if (image == nullptr) {
        return KEL_ERR_MEMORY;
    }
    KelResult nResult = image->Open(source.c_str());
    const int nLonger = std::max(image->GetWidth(), image->GetHeight());
    if (nResult == KEL_OK && nLonger > kLongest) {
        const double dFactor = double{kLongest} / nLonger;  // a double is a factor, an int pixels
        tagKelParameterItem items[] = {{"width", dFactor}, {"height", dFactor}};
        tagKelParameters params = {2, items};
        nResult = image->ApplyFilter(KEL_FILTER_SCALE, &params);
    }
    return nResult == KEL_OK ? SafeSave(*image, target.string(), KEL_IMAGE_JPEG, nullptr) : nResult;
}

// The work, the next piece of it, and the one line that shows how far it has come.
class Pool {
  public:
    Pool(std::vector<fs::path> sources, fs::path target)
        : m_Sources(std::move(sources)), m_Target(std::move(target)) {}

    // Returns how many pictures failed.
    int Run(unsigned int nThreads) {
        std::vector<std::thread> threads;
        for (unsigned int i = 0; i < nThreads; ++i) {
            threads.emplace_back(&Pool::Work, this);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        return m_nFailed;
    }

  private:
    void Work() {
        for (std::size_t i = m_nNext++; i < m_Sources.size(); i = m_nNext++) {
            const fs::path& source = m_Sources[i];
            // The whole name, so that a.png and a.jpg do not meet.
            const fs::path target = m_Target / (source.filename().string() + ".thumb.jpg");
            Report(source, MakeThumbnail(source, target));
        }
    }

    void Report(const fs::path& source, KelResult nResult) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (nResult != KEL_OK) {
            ++m_nFailed;
            std::printf("\r%s: %s\n", source.c_str(), KelResultMeaning(nResult));
        }
        ++m_nDone;
        const std::size_t nBar = (40 * m_nDone / m_Sources.size());
        std::printf("\r[%s%s] %zu of %zu", std::string(nBar, '#').c_str(),
                    std::string(40 - nBar, ' ').c_str(), m_nDone, m_Sources.size());
        std::fflush(stdout);
    }

    const std::vector<fs::path> m_Sources;
    const fs::path m_Target;
    std::atomic<std::size_t> m_nNext{0};
    std::mutex m_Mutex;  // guards what stands below, and the line on the screen
    std::size_t m_nDone = 0;
    int m_nFailed = 0;
};

}  // namespace

int main(int nCount, char** ppArguments) {
    const int nThreads = nCount == 4 ? std::atoi(ppArguments[3]) : 0;
    if (nCount < 3 || nCount > 4 || nThreads < 0 || nThreads > 64) {
        std::fputs("usage: folder IN_FOLDER OUT_FOLDER [THREADS, at most 64]\n", stderr);
        return 2;
    }
    std::error_code error;
    std::vector<fs::path> sources;
    for (const fs::directory_entry& entry : fs::directory_iterator(ppArguments[1], error)) {
        if (entry.is_regular_file(error) && FormatOfName(entry.path().string()) != 0) {
            sources.push_back(entry.path());
        }
    }
    if (!error) {
        fs::create_directories(ppArguments[2], error);
    }
    if (error) {
        std::fprintf(stderr, "folder: %s\n", error.message().c_str());
        return 1;
    }
    const unsigned int nCores = std::max(1u, std::thread::hardware_concurrency());
    const int nFailed = Pool(std::move(sources), ppArguments[2])
                            .Run(nThreads > 0 ? static_cast<unsigned int>(nThreads) : nCores);
    std::printf("\n%d failed\n", nFailed);
    return nFailed == 0 ? 0 : 1;
}
