// Claims of sizes at every wrap-around of 32-bit arithmetic, opened and asked for in a child
// process that may hold 512 MB: whatever does not fit is answered with a code at once, whatever
// fits is done.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>
#include <ctime>

#include "kelbitmap/bmplayout.h"
#include "scenarios.h"
#include "support/recordingtrace.h"

using namespace faults;

#ifndef FAULTS_SANITIZED

namespace {

using u32 = std::uint32_t;

// Widths and heights whose products with depths and each other pass 2^31 and 2^32, closely.
constexpr u32 kSizes[] = {0,          1,          2,          0x7FFF,     0x8000,     0xFFFF,
                          0x10000,    46341,      0x1555556,  0x2AAAAAB,  0x4000000,  0x5555556,
                          0x8000000,  0x10000000, 0x15555556, 0x1FFFFFFF, 0x20000000, 0x40000000,
                          0x7FFFFFFE, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

void PutBig(Bytes& bytes, std::size_t i, int nBytes, u32 nValue) {
    for (int k = nBytes; k-- > 0;)
        bytes[i++] = static_cast<unsigned char>(nValue >> 8 * k);
}

enum { kFine, kSlow, kBadCode, kUnsound, kThrew };

// True for sizes whose pixels the cap can hold but that take long to fill: not the subject here.
bool IsLong(u32 nWidth, u32 nHeight, u32 nBits) {
    const double dRows = nHeight < 0x80000000 ? nHeight : 0x100000000 - nHeight;
    const double dPixels = dRows * (4 + nBits / 8.0 * nWidth);
    return dPixels + 8 * dRows > (2 << 20) && dPixels < (600 << 20);
}

// Opens in a child and works on what came of it; the child's exit code is 0 when all went well.
template <class Work>
int InChild(const Work& work) {
    const pid_t nChild = fork();
    if (nChild == 0) {
        const rlimit cap = {512u << 20, 512u << 20};
        setrlimit(RLIMIT_AS, &cap);
        int nCode = kThrew;
        try {
            nCode = work();
        } catch (...) {
        }
        _exit(nCode);
    }
    int nStatus = -1;
    waitpid(nChild, &nStatus, 0);
    return WIFEXITED(nStatus) ? WEXITSTATUS(nStatus) : 1000 + WTERMSIG(nStatus);
}

int OpenAll(const std::vector<Bytes>& files) {
    const support::RecordingTrace silence(-1);
    for (const Bytes& file : files) {
        CVamArchiveMemory archive(file.data(), file.size());
        CKelImage image;
        const std::clock_t nStart = std::clock();
        const KelResult nResult = image.Open(&archive);
        const double dSeconds = static_cast<double>(std::clock() - nStart) / CLOCKS_PER_SEC;
        if (nResult != KEL_OK &&
            dSeconds > 2.0) {  // a second, and as much again for a busy machine
            std::fprintf(stderr, "file %td: result %d after %.1f s\n", &file - files.data(),
                         nResult, dSeconds);
            return kSlow;
        }
        const bool bKnown = nResult == KEL_OK || nResult == KEL_ERR_PARAM ||
                            nResult == KEL_ERR_MEMORY || nResult == KEL_ERR_CODEC;
        if (!bKnown)
            return kBadCode;
        ExpectSound(image, "claim");
        if (testing::Test::HasFailure())
            return kUnsound;
    }
    return kFine;
}

}  // namespace

TEST(Sizes, BmpClaimsAtEveryWrapAround) {
    std::vector<Bytes> files;
    const Bytes base = Load("bmp/40-24-0");
    for (const u32 nBits : {1u, 8u, 24u, 32u, 0x8000u}) {
        for (const u32 nWidth : kSizes) {
            for (const u32 nHeight : kSizes) {
                if (IsLong(nWidth, nHeight, nBits))
                    continue;
                files.push_back(base);
                kel::Store32(&files.back()[18], nWidth);
                kel::Store32(&files.back()[22], nHeight);
                kel::Store16(&files.back()[28], static_cast<std::uint16_t>(nBits));
            }
        }
    }
    for (const u32 nValue : kSizes) {
        for (const std::size_t nField :
             {10u, 30u, 34u, 46u}) {  // offset, compression, size, colours
            for (const u32 nBits : {8u, 24u}) {
                files.push_back(base);
                kel::Store16(&files.back()[28], static_cast<std::uint16_t>(nBits));
                kel::Store32(&files.back()[nField], nValue);
            }
        }
    }
    EXPECT_EQ(InChild([&] { return OpenAll(files); }), kFine);
}

TEST(Sizes, PngAndJpegClaims) {
    std::vector<Bytes> files;
    for (const char* pszFile : {"png/2-8-0", "png/3-1-1", "png/6-16-1"}) {
        const Bytes base = Load(pszFile);
        for (const u32 nWidth : kSizes) {
            for (const u32 nHeight : kSizes) {
                if (IsLong(nWidth, nHeight, 24))
                    continue;
                Bytes file = base;
                PutBig(file, 16, 4, nWidth);
                PutBig(file, 20, 4, nHeight);
                PutBig(file, 29, 4, static_cast<u32>(crc32(0, file.data() + 12, 17)));
                files.push_back(file);
            }
        }
    }
    for (const char* pszFile : {"jpeg/1b0", "jpeg/3b0", "jpeg/4b0", "jpeg/3p0"}) {
        Bytes file = Load(pszFile);
        for (std::size_t i = 0; i + 9 < file.size(); i++) {
            if (file[i] != 0xFF || (file[i + 1] != 0xC0 && file[i + 1] != 0xC2))
                continue;
            for (const u32 nSide : {0u, 65500u, 65501u, 65535u}) {
                PutBig(file, i + 5, 2, nSide);
                PutBig(file, i + 7, 2, 65500);
                files.push_back(file);
            }
            break;
        }
    }
    EXPECT_EQ(InChild([&] { return OpenAll(files); }), kFine);
}

TEST(Sizes, CallsAtEveryWrapAround) {
    const auto work = [] {
        const support::RecordingTrace silence(-1);
        CKelImage image;
        for (const u32 nWidth : kSizes) {
            for (const u32 nHeight : kSizes) {
                const int w = static_cast<int>(nWidth), h = static_cast<int>(nHeight);
                for (const int nBits : {1, 24, 32}) {
                    if (IsLong(nWidth, nHeight, static_cast<u32>(nBits)) ||
                        IsLong(nWidth, nHeight, 24))
                        continue;
                    image.Create(w, h, nBits);
                    ExpectSound(image, "Create");
                    image.Create(3, 2, nBits);
                    image.ZoomImage(w, h);
                    ExpectSound(image, "ZoomImage");
                    image.Create(3, 2, nBits);
                    image.SubImage(w, h, w, h);
                    tagKelParameterItem items[] = {{"width", CVamVariant(w)},
                                                   {"height", CVamVariant(h)}};
                    tagKelParameters params = {2, items};
                    image.ApplyFilter(KEL_FILTER_SCALE, &params);
                    ExpectSound(image, "ApplyFilter");
                }
            }
            image.AllocateBMI(nWidth);
            image.AllocateBits(nWidth);
        }
        return testing::Test::HasFailure() ? kUnsound : kFine;
    };
    EXPECT_EQ(InChild(work), kFine);
}

#endif
