// Claims of sizes at every wrap-around of 32-bit arithmetic, opened and asked for in a child
// process that may hold 512 MB: whatever does not fit is answered with a code at once, whatever
// fits is done.
#ifndef _WIN32  // no child process that shares this one's memory, no limit on its own

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <utility>

#include "kelbitmap/bmplayout.h"
#include "scenarios.h"
#include "support/inspect.h"
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

// True for sizes whose pixels the cap can hold but that take long to fill: not the subject here.
bool IsLong(u32 nWidth, u32 nHeight, u32 nBits) {
    const double dRows = nHeight < 0x80000000 ? nHeight : 0x100000000 - nHeight;
    const double dPixels = dRows * std::max(4.0, nBits / 8.0 * nWidth);
    return dPixels + 8 * dRows > (2 << 20) && dPixels < (600 << 20);
}

// Bytes of address space in use.
rlim_t AddressSpace() {
    rlim_t nPages = 0;
    std::ifstream("/proc/self/statm") >> nPages;
    return nPages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

// Whether the work, done in a child that may hold nCap bytes, comes to its end without a failed
// expectation.
template <class Work>
bool PassesInChild(const Work& work, rlim_t nCap = 512u << 20) {
    const pid_t nChild = fork();
    if (nChild == 0) {
        const rlimit cap = {nCap, nCap};
        setrlimit(RLIMIT_AS, &cap);
        [&]() noexcept { work(); }();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int nStatus = -1;
    waitpid(nChild, &nStatus, 0);
    return WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0;
}

void OpenAll(const std::vector<Bytes>& files) {
    const support::RecordingTrace silence(-1);
    for (const Bytes& file : files) {
        CVamArchiveMemory archive(file.data(), file.size());
        CKelImage image;
        const std::clock_t nStart = std::clock();
        const KelResult nResult = image.Open(&archive);
        const std::clock_t nSeconds = (std::clock() - nStart) / CLOCKS_PER_SEC;
        // On an idle machine none takes a twentieth of a second.
        EXPECT_TRUE(nResult == KEL_OK || nSeconds < 2) << &file - files.data();
        const KelResult codes[] = {KEL_OK, KEL_ERR_PARAM, KEL_ERR_MEMORY, KEL_ERR_CODEC};
        EXPECT_NE(std::find(codes, codes + 4, nResult), codes + 4) << nResult;
        EXPECT_EQ("", support::FaultOf(image)) << "claim";
    }
}

// Calls work(width, height) for every pair of sizes whose pictures of nBits are not long to fill.
template <class Work>
void ForAllSizes(u32 nBits, const Work& work) {
    for (const u32 nWidth : kSizes) {
        for (const u32 nHeight : kSizes) {
            if (!IsLong(nWidth, nHeight, nBits))
                work(nWidth, nHeight);
        }
    }
}

}  // namespace

TEST(Sizes, BmpClaimsAtEveryWrapAround) {
    std::vector<Bytes> files;
    const Bytes base = Load("bmp/40-24-0");
    const auto add = [&](u32 nBits, std::size_t nField, u32 nValue) {
        files.push_back(base);
        kel::Store16(&files.back()[28], static_cast<std::uint16_t>(nBits));
        kel::Store32(&files.back()[nField], nValue);
    };
    for (const u32 nBits : {1u, 8u, 24u, 32u, 0x8000u}) {
        ForAllSizes(nBits, [&](u32 nWidth, u32 nHeight) {
            add(nBits, 18, nWidth);
            kel::Store32(&files.back()[22], nHeight);
        });
        for (const u32 nValue : kSizes) {
            for (const std::size_t nField :
                 {10u, 30u, 34u, 46u})  // offset, compression, size, colours
                add(nBits, nField, nValue);
        }
    }
    EXPECT_TRUE(PassesInChild([&] { OpenAll(files); }));
}

TEST(Sizes, PngAndJpegClaims) {
    std::vector<Bytes> files;
    for (const char* pszFile : {"png/2-8-0", "png/3-1-1", "png/6-16-1"}) {
        Bytes file = Load(pszFile);
        ForAllSizes(24, [&](u32 nWidth, u32 nHeight) {
            kel::Store32(&file[16], htonl(nWidth));
            kel::Store32(&file[20], htonl(nHeight));
            kel::Store32(&file[29], htonl(static_cast<u32>(crc32(0, file.data() + 12, 17))));
            files.push_back(file);
        });
    }
    for (const char* pszFile : {"jpeg/1b0", "jpeg/3b0", "jpeg/4b0", "jpeg/3p0"}) {
        Bytes file = Load(pszFile);
        std::size_t nFrame = 0;
        while (file.at(nFrame) != 0xFF || (file[nFrame + 1] != 0xC0 && file[nFrame + 1] != 0xC2))
            ++nFrame;
        kel::Store16(&file[nFrame + 7], htons(65500));
        const std::uint16_t sides[] = {0, 65500, 65501, 65535};
        for (const std::uint16_t nSide : sides) {
            kel::Store16(&file[nFrame + 5], htons(nSide));
            files.push_back(file);
        }
    }
    EXPECT_TRUE(PassesInChild([&] { OpenAll(files); }));
}

// What is not used, or will be refused, costs little whatever it claims.
TEST(Sizes, SmallFilesCostLittle) {
    struct Case {
        Bytes file;
        KelResult nResult;
        std::size_t nLines;  // of the trace
    };
    std::vector<Case> cases;
    const Bytes bmp = Load("bmp/40-24-0");
    const std::pair<std::size_t, u32> refused[] = {{28, 2}, {28, 64}, {30, 4}, {30, 0xFFFFFFFF}};
    for (const auto& [nField, nValue] : refused) {
        for (const u32 nRows : {0x08000000u, 2u}) {
            Bytes file = bmp;
            kel::Store32(&file[18], 40);
            kel::Store32(&file[22], nRows / (nValue == 64 ? 64 : 8));
            kel::Store32(&file[34], 0xFFFFFFF0);
            kel::Store16(&file[nField], static_cast<std::uint16_t>(nValue));
            cases.push_back({file, KEL_ERR_PARAM, 0});
        }
    }
    Bytes tall = bmp, table = bmp;
    kel::Store32(&tall[18], 1);
    kel::Store32(&tall[22], 0x10000000);  // 2 GiB of row pointers
    cases.push_back({tall, KEL_ERR_MEMORY, 2});
    kel::Store32(&table[46], 0x10000000);
    cases.push_back({table, KEL_OK, 0});
    // Chunks before the pixels of a PNG: 250 of 8 KB that inflate to 8 MB each, and claims of 2 GB.
    const auto append = [](Bytes& bytes, const Bytes& more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
    };
    const auto chunk = [&append](const char* pszType, Bytes data) {
        data.insert(data.begin(), pszType, pszType + 4);
        Bytes bytes(4), crc(4);
        kel::Store32(bytes.data(), htonl(static_cast<u32>(data.size() - 4)));
        kel::Store32(crc.data(), htonl(static_cast<u32>(crc32_z(0, data.data(), data.size()))));
        append(bytes, data);
        append(bytes, crc);
        return bytes;
    };
    const Bytes png = Load("png/2-8-0");
    const auto with = [&](const Bytes& chunks) {
        Bytes file = png;
        file.insert(file.begin() + 33, chunks.begin(), chunks.end());
        return file;
    };
    const Bytes text(7900000, 'a');
    uLongf nPacked = compressBound(text.size());
    Bytes packed(nPacked + 3);
    packed[0] = 'k';
    compress2(&packed[3], &nPacked, text.data(), text.size(), 9);
    packed.resize(nPacked + 3);
    Bytes chunks;
    for (int i = 0; i < 250; ++i) {
        append(chunks, chunk("zTXt", packed));
    }
    cases.push_back({with(chunks), KEL_OK, 0});
    for (const char* pszType : {"tEXt", "zTXt", "iTXt", "sPLT", "pCAL", "sCAL", "eXIf"}) {
        Bytes claim = chunk(pszType, {1, 2, 3, 4});
        kel::Store32(claim.data(), htonl(0x7FFFFFF0));
        cases.push_back({with(claim), KEL_ERR_CODEC, 2});  // "too large", "Read Error"
        const bool bDamaged = pszType[0] != 't';           // in a small chunk that is traced
        cases.push_back({with(chunk(pszType, {})), KEL_OK, bDamaged ? 1u : 0u});
    }
    // Damage in a chunk that is not used is traced while such chunks take up to 4,096 bytes in all.
    const std::pair<std::vector<std::size_t>, std::size_t> budgets[] = {
        {{}, 1}, {{4095}, 1}, {{4096}, 0}, {{3000, 1000}, 1}, {{3000, 3000}, 0}};
    for (const auto& [sizes, nLines] : budgets) {
        Bytes texts;
        for (const std::size_t nSize : sizes) {
            Bytes sound(nSize, 'a');
            sound[1] = 0;
            append(texts, chunk("tEXt", sound));
        }
        append(texts, chunk("zTXt", {'k'}));
        cases.push_back({with(texts), KEL_OK, nLines});
    }
    const auto work = [&] {
        for (const Case& c : cases) {
            SCOPED_TRACE(&c - cases.data());
            const support::RecordingTrace trace;
            CVamArchiveMemory archive(c.file.data(), c.file.size());
            CKelImage image;
            const std::clock_t nStart = std::clock();
            EXPECT_EQ(c.nResult, image.Open(&archive));
            EXPECT_LT(std::clock() - nStart, CLOCKS_PER_SEC / 2);
            EXPECT_EQ(c.nLines, trace.Lines().size());
        }
    };
    EXPECT_TRUE(PassesInChild(work, AddressSpace() + (32u << 20)));
}

TEST(Sizes, CallsAtEveryWrapAround) {
    const auto work = [] {
        const support::RecordingTrace silence(-1);
        CKelImage image;
        for (const u32 nBits : {1u, 24u, 32u}) {
            ForAllSizes(nBits, [&](u32 nWidth, u32 nHeight) {
                if (IsLong(nWidth, nHeight, 24))  // as scaled
                    return;
                const int w = static_cast<int>(nWidth), h = static_cast<int>(nHeight);
                const int nDepth = static_cast<int>(nBits);
                image.Create(w, h, nDepth);
                EXPECT_EQ("", support::FaultOf(image)) << "Create";
                image.Create(3, 2, nDepth);
                image.ZoomImage(w, h);
                EXPECT_EQ("", support::FaultOf(image)) << "ZoomImage";
                image.Create(3, 2, nDepth);
                image.SubImage(w, h, w, h);
                tagKelParameterItem items[] = {{"width", CVamVariant(w)},
                                               {"height", CVamVariant(h)}};
                tagKelParameters params = {2, items};
                image.ApplyFilter(KEL_FILTER_SCALE, &params);
                EXPECT_EQ("", support::FaultOf(image)) << "ApplyFilter";
            });
        }
        for (const u32 nSize : kSizes) {
            image.AllocateBMI(nSize);
            image.AllocateBits(nSize);
        }
    };
    EXPECT_TRUE(PassesInChild(work));
}

#endif

#endif
