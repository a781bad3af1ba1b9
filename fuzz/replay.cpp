// Runs a fuzz target over files, without an engine: every file of every argument, directories
// included. Prints how many; the program ends where a target finds something.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);

namespace {

void Run(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int nFiles = 0;
    for (int i = 1; i < argc; i++) {
        if (std::filesystem::is_regular_file(argv[i])) {
            Run(argv[i]);
            nFiles++;
        } else if (std::filesystem::is_directory(argv[i])) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
                if (!entry.is_regular_file())
                    continue;
                std::printf("%s\n", entry.path().c_str());
                Run(entry.path());
                nFiles++;
            }
        }
    }
    LLVMFuzzerTestOneInput(nullptr, 0);  // a target must take no bytes at all
    std::printf("%d files replayed\n", nFiles);
    return 0;
}
