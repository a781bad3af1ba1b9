// folder: opens and scales every picture of a folder on a thread pool, and says how many a second.
//
//   folder IN_FOLDER [OUT_FOLDER] [--size PIXELS] [--threads N]
//
// With OUT_FOLDER each result is saved as a JPEG. Without it the results are dropped, as a program
// would drop them after it has drawn them. An image belongs to one thread at a time, and different
// images do not disturb each other. So each thread has one image of its own and needs no lock.
#include <ikelex/handle.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "safesave.h"
#include "utf8.h"

namespace fs = std::filesystem;

namespace {

struct Request {
    std::vector<fs::path> sources;
    fs::path target;  // empty: nothing is saved
    int nSize = 160;  // pixels along the longer side of a result
    unsigned int nThreads = std::max(1u, std::thread::hardware_concurrency());
};

// The work, the next piece of it, and the one line that shows how far it has come.
class Pool {
  public:
    explicit Pool(const Request& request) : m_Request(request) {}

    // Returns how many pictures failed.
    std::size_t Run() {
        std::vector<std::thread> threads;
        for (unsigned int i = 0; i < m_Request.nThreads; ++i) {
            threads.emplace_back(&Pool::Work, this);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        return m_nFailed;
    }

  private:
    void Work() {
        const KelImagePtr image = KelNewImage();  // opening the next picture empties it first
        for (std::size_t i = m_nNext++; i < m_Request.sources.size(); i = m_nNext++) {
            const fs::path& source = m_Request.sources[i];
            Report(source, image == nullptr ? KelStatus(KEL_ERR_MEMORY) : Make(*image, source));
        }
    }

    KelStatus Make(IKelImage& image, const fs::path& source) const {
        KelStatus status = image.Open(Utf8Of(source).c_str());
        const int nLonger = std::max(image.GetWidth(), image.GetHeight());
        if (status && nLonger > m_Request.nSize) {
            const double dFactor = double(m_Request.nSize) / nLonger;  // an int would mean pixels
            status = image.ApplyFilter(
                KEL_FILTER_SCALE, KelParameters{}.Set("width", dFactor).Set("height", dFactor));
        }
        if (status && !m_Request.target.empty()) {
            // The whole name, so that a.png and a.jpg do not meet.
            const fs::path target =
                m_Request.target / PathOf(Utf8Of(source.filename()) + ".thumb.jpg");
            status = SafeSave(image, Utf8Of(target), KEL_IMAGE_JPEG, nullptr);
        }
        return status;
    }

    void Report(const fs::path& source, KelStatus status) {
        const std::lock_guard<std::mutex> lock(m_Mutex);
        if (!status) {
            ++m_nFailed;
            std::printf("\r%s: %s\n", Utf8Of(source).c_str(), status.Meaning());
        }
        const std::size_t nAll = m_Request.sources.size();
        const std::size_t nBar = 40 * ++m_nDone / nAll;
        if (nBar != m_nBar) {
            m_nBar = nBar;
            std::printf("\r[%s%s] %zu of %zu", std::string(nBar, '#').c_str(),
                        std::string(40 - nBar, ' ').c_str(), m_nDone, nAll);
            std::fflush(stdout);
        }
    }

    const Request& m_Request;
    std::atomic<std::size_t> m_nNext{0};
    std::mutex m_Mutex;  // guards what stands below, and the line on the screen
    std::size_t m_nDone = 0;
    std::size_t m_nFailed = 0;
    std::size_t m_nBar = 0;
};

// The pictures of the folder, by the endings of their names.
std::error_code List(const fs::path& folder, std::vector<fs::path>& sources) {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        if (entry.is_regular_file(error) && FormatOfName(Utf8Of(entry.path())) != 0) {
            sources.push_back(entry.path());
        }
    }
    return error;
}

bool Parse(int nCount, char** ppArguments, std::vector<fs::path>& folders, Request& request) {
    for (int i = 1; i < nCount; ++i) {
        const std::string strName = ppArguments[i];
        if (strName.compare(0, 2, "--") != 0) {
            folders.push_back(PathOf(strName));
            continue;
        }
        const int nValue = ++i < nCount ? std::atoi(ppArguments[i]) : 0;
        if (strName == "--size" && nValue > 0) {
            request.nSize = nValue;
        } else if (strName == "--threads" && nValue > 0 && nValue <= 64) {
            request.nThreads = static_cast<unsigned int>(nValue);
        } else {
            return false;
        }
    }
    return folders.size() == 1 || folders.size() == 2;
}

}  // namespace

int main(int nCount, char** ppArguments) {
    TakeUtf8Arguments(nCount, ppArguments);
    Request request;
    std::vector<fs::path> folders;
    if (!Parse(nCount, ppArguments, folders, request)) {
        std::fputs("usage: folder IN_FOLDER [OUT_FOLDER] [--size PIXELS] [--threads 1..64]\n",
                   stderr);
        return 2;
    }
    std::error_code error = List(folders[0], request.sources);
    if (!error && folders.size() == 2) {
        request.target = folders[1];
        fs::create_directories(request.target, error);
    }
    if (error) {
        std::fprintf(stderr, "folder: %s\n", error.message().c_str());
        return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::size_t nFailed = Pool(request).Run();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("\n%zu pictures, %zu failed, %.0f a second on %u threads\n", request.sources.size(),
                nFailed, static_cast<double>(request.sources.size()) / seconds.count(),
                request.nThreads);
    return nFailed == 0 ? 0 : 1;
}
