// The program to compare with: reads a JPEG file and decodes it with libjpeg, nothing more.
#include <cstdio>

#include "support/reference/codecs.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    std::FILE* pFile = std::fopen(argv[1], "rb");
    if (pFile == nullptr || std::fseek(pFile, 0, SEEK_END) != 0) {
        return 1;
    }
    support::Bytes bytes(static_cast<std::size_t>(std::ftell(pFile)));
    std::rewind(pFile);
    const bool bRead = std::fread(bytes.data(), 1, bytes.size(), pFile) == bytes.size();
    std::fclose(pFile);
    if (!bRead) {
        return 1;
    }
    reference::DecodeJpeg(bytes);
    return 0;
}
