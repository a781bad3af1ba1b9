// Runs a fuzz target over files, without an engine: every file of every argument, directories
// included. Prints each and how many; the program ends where a target finds something.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);

int main(int argc, char** argv) {
    int nFiles = 0;
    const auto run = [&](const std::filesystem::path& path) {
        std::printf("%s\n", path.string().c_str());
        std::ifstream in(path, std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        ++nFiles;
    };
    for (int i = 1; i < argc; ++i) {
        std::error_code none;  // a directory that is missing has no files
        if (std::filesystem::is_regular_file(argv[i])) {
            run(argv[i]);
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i], none)) {
            if (entry.is_regular_file()) {
                run(entry.path());
            }
        }
    }
    LLVMFuzzerTestOneInput(nullptr, 0);  // a target must take no bytes at all
    std::printf("%d files replayed\n", nFiles);
    return 0;
}
