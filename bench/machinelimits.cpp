// Each limit as a loop or a system call of its own. Fresh blocks ask for huge pages: without them
// the system's page faults would be most of the time.
#include "machinelimits.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace bench {

namespace {

using Block = std::unique_ptr<unsigned char[]>;

Block Fresh(std::size_t nSize) {
    Block pBlock(new unsigned char[nSize]);
    constexpr std::uintptr_t kPage = 4096;
    const auto nBegin =
        (reinterpret_cast<std::uintptr_t>(pBlock.get()) + kPage - 1) / kPage * kPage;
    if (nSize >= std::size_t{4} << 20) {
        madvise(reinterpret_cast<void*>(nBegin), nSize - kPage, MADV_HUGEPAGE);
    }
    return pBlock;
}

using Register = std::uint64_t __attribute__((vector_size(16)));

// Sums whole cache lines, a few KiB after those that it asks for.
void ReadOnce(const unsigned char* p, std::size_t nSize) {
    constexpr std::size_t kAhead = 4096;
    Register sums[4] = {};
    for (std::size_t i = 0; i + 64 <= nSize; i += 64) {
        __builtin_prefetch(p + std::min(i + kAhead, nSize - 1));
        Register line[4];
        std::memcpy(line, p + i, 64);
        for (int k = 0; k < 4; ++k) {
            sums[k] += line[k];
        }
    }
    Use(sums);
}

void ExchangeRows(unsigned char* pTop, unsigned char* pBottom, std::size_t nBytes) {
    std::size_t i = 0;
    for (; i + sizeof(Register) <= nBytes; i += sizeof(Register)) {
        Register top, bottom;
        std::memcpy(&top, pTop + i, sizeof top);
        std::memcpy(&bottom, pBottom + i, sizeof bottom);
        std::memcpy(pTop + i, &bottom, sizeof bottom);
        std::memcpy(pBottom + i, &top, sizeof top);
    }
    for (; i < nBytes; ++i) {
        std::swap(pTop[i], pBottom[i]);
    }
}

int OpenOrExit(const std::string& strPath, int nFlags) {
    const int nFile = open(strPath.c_str(), nFlags, 0600);
    if (nFile < 0) {
        std::perror(strPath.c_str());
        std::exit(1);
    }
    return nFile;
}

void CheckCount(ssize_t nCount, std::size_t nWanted) {
    if (nCount != static_cast<ssize_t>(nWanted)) {
        std::perror("bench: a file");
        std::exit(1);
    }
}

}  // namespace

Other ReadLimit(const SharedImage& pImage) {
    return {Kind::kLimit, "read",
            Timed([=] { ReadOnce(pImage->GetBits(), pImage->GetBmpDataSize()); })};
}

Other ReadWriteLimit(const SharedImage& pImage, std::size_t nSize) {
    return {Kind::kLimit, "read and write", Timed([=] {
                ReadOnce(pImage->GetBits(), pImage->GetBmpDataSize());
                const Block pBlock = Fresh(nSize);
                std::memset(pBlock.get(), 1, nSize);
                Use(pBlock.get());
            })};
}

Other CopyLimit(const SharedImage& pImage) {
    return {Kind::kLimit, "copy", Timed([=] {
                const Block pBlock = Fresh(pImage->GetBmpDataSize());
                std::memcpy(pBlock.get(), pImage->GetBits(), pImage->GetBmpDataSize());
                Use(pBlock.get());
            })};
}

Other CopySquares(const SharedImage& pImage) {
    return {Kind::kOwn, "copy of squares", Timed([=] {
                constexpr int kSquare = 16, kPanel = 16 * kSquare, kTile = 8 * kSquare;
                const int nWidth = pImage->GetWidth() / kSquare * kSquare;
                const int nHeight = pImage->GetHeight() / kSquare * kSquare;
                const std::size_t nStride = PictureSize(24, {nHeight, 1});
                const Block pBlock = Fresh(nStride * static_cast<std::size_t>(nWidth));
                const auto fnCopy = [&](int x, int y) {
                    for (int i = 0; i < kSquare; ++i) {
                        std::memcpy(&pBlock[nStride * static_cast<std::size_t>(x + i) +
                                            std::size_t{3} * static_cast<std::size_t>(y)],
                                    pImage->GetLineArray()[y + i] + 3 * x, 3 * kSquare);
                    }
                };
                for (int nPanel = 0; nPanel < nWidth; nPanel += kPanel) {
                    for (int nTile = 0; nTile < nHeight; nTile += kTile) {
                        for (int x = nPanel; x < std::min(nPanel + kPanel, nWidth); x += kSquare) {
                            for (int y = nTile; y < std::min(nTile + kTile, nHeight);
                                 y += kSquare) {
                                fnCopy(x, y);
                            }
                        }
                    }
                }
                Use(pBlock.get());
            })};
}

Other ExchangeLimit(const SharedImage& pImage) {
    return {Kind::kLimit, "exchange", Timed([=] {
                unsigned char** const ppRows = pImage->GetLineArray();
                const int nHeight = pImage->GetHeight();
                const std::size_t nBytes =
                    pImage->GetBmpDataSize() / static_cast<std::size_t>(nHeight);
                for (int y = 0; y < nHeight / 2; ++y) {
                    ExchangeRows(ppRows[y], ppRows[nHeight - 1 - y], nBytes);
                }
            })};
}

Other ReadFileLimit(const std::string& strPath, std::size_t nSize) {
    return {Kind::kLimit, "one read()", Timed([=] {
                const Block pBlock = Fresh(nSize);
                const int nFile = OpenOrExit(strPath, O_RDONLY);
                CheckCount(read(nFile, pBlock.get(), nSize), nSize);
                close(nFile);
            })};
}

Other WriteFileLimit(const std::string& strPath, const SharedBytes& pBytes) {
    return {Kind::kLimit, "one write()", Timed([=] {
                const int nFile = OpenOrExit(strPath, O_WRONLY | O_CREAT | O_TRUNC);
                CheckCount(write(nFile, pBytes->data(), pBytes->size()), pBytes->size());
                close(nFile);
            })};
}

}  // namespace bench
