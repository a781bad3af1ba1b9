// frommemory: opens a picture whose bytes are already in memory, and saves another into memory.
//
//   frommemory IN
#include <ikelex/ikelex.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

#include "safesave.h"

int main(int nCount, char** ppArguments) {
    if (nCount != 2) {
        std::fputs("usage: frommemory IN\n", stderr);
        return 2;
    }
    // Wherever a host has its bytes from: a network, a data base, an archive.
    std::ifstream file(ppArguments[1], std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});

    CVamArchiveMemory input(bytes.data(), bytes.size());  // reads in place, copies nothing
    const ImagePtr image = NewImage();
    KelResult nResult = image ? image->Open(&input) : KEL_ERR_MEMORY;
    CVamArchiveMemory output;  // grows as it is written to
    if (nResult == KEL_OK) {
        nResult = image->Save(&output, KEL_IMAGE_PNG, nullptr);
    }
    if (nResult == KEL_OK && output.HasFailed()) {
        nResult = KEL_ERR_MEMORY;
    }
    if (nResult != KEL_OK) {
        std::fprintf(stderr, "frommemory: %s: %s\n", KelResultName(nResult),
                     KelResultMeaning(nResult));
        return 1;
    }
    std::printf("%zu bytes in, %d x %d pixels, %zu bytes of PNG out\n", bytes.size(),
                image->GetWidth(), image->GetHeight(), output.GetSize());
    return 0;
}
