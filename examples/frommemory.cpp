// frommemory: opens a picture whose bytes are already in memory, and saves another into memory.
//
//   frommemory IN
#include <ikelex/handle.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <vector>

#include "utf8.h"

int main(int nCount, char** ppArguments) {
    TakeUtf8Arguments(nCount, ppArguments);
    if (nCount != 2) {
        std::fputs("usage: frommemory IN\n", stderr);
        return 2;
    }
    // A host has its bytes from a network, a data base or an archive.
    std::ifstream file(PathOf(ppArguments[1]), std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});

    CVamArchiveMemory input(bytes.data(), bytes.size());  // reads in place, copies nothing
    const KelImagePtr image = KelNewImage();
    KelStatus status = image ? image->Open(&input) : KEL_ERR_MEMORY;
    CVamArchiveMemory output;  // grows as it is written to
    if (status) {
        status = image->Save(&output, KEL_IMAGE_PNG, nullptr);
    }
    if (status && output.HasFailed()) {
        status = KEL_ERR_MEMORY;
    }
    if (!status) {
        std::fprintf(stderr, "frommemory: %s\n", status.ToString().c_str());
        return 1;
    }
    std::printf("%zu bytes in, %d x %d pixels, %zu bytes of PNG out\n", bytes.size(),
                image->GetWidth(), image->GetHeight(), output.GetSize());
    return 0;
}
