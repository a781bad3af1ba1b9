// Runs a fuzz target over the files of each directory, without an engine. Prints each file; the
// program ends where a target finds something.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize);

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        std::error_code none;  // a directory that is missing has no files
        for (const auto& entry : std::filesystem::directory_iterator(argv[i], none)) {
            std::printf("%s\n", entry.path().string().c_str());
            std::ifstream in(entry.path(), std::ios::binary);
            const std::vector<char> bytes(std::istreambuf_iterator<char>(in), {});
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                   bytes.size());
        }
    }
    LLVMFuzzerTestOneInput(nullptr, 0);  // a target must take no bytes at all
    return 0;
}
