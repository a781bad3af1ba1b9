// Small files that claim much, opened in a child process that may take little more memory: what is
// not used, or will be refused, costs little.
#ifndef _WIN32  // no child process that shares this one's memory, no limit on its own

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdint>
#include <ctime>
#include <fstream>
#include <utility>

#include "kelbitmap/bmplayout.h"
#include "scenarios.h"
#include "support/recordingtrace.h"

using namespace faults;

#ifndef FAULTS_SANITIZED

namespace {

using u32 = std::uint32_t;

struct Claim {
    Bytes file;
    KelResult nResult;
    std::size_t nLines;  // of the trace
};

constexpr std::size_t kAny = SIZE_MAX;  // lines, where releases of libpng differ

std::vector<Claim> BmpClaims() {
    std::vector<Claim> claims;
    const Bytes bmp = Load("bmp/40-24-0");
    const std::pair<std::size_t, u32> refused[] = {{28, 2}, {28, 64}, {30, 4}, {30, 0xFFFFFFFF}};
    for (const auto& [nField, nValue] : refused) {
        for (const u32 nRows : {0x08000000u, 2u}) {
            Bytes file = bmp;
            kel::Store32(&file[18], 40);
            kel::Store32(&file[22], nRows / (nValue == 64 ? 64 : 8));
            kel::Store32(&file[34], 0xFFFFFFF0);
            kel::Store16(&file[nField], static_cast<std::uint16_t>(nValue));
            claims.push_back({file, KEL_ERR_PARAM, 0});
        }
    }
    Bytes tall = bmp, table = bmp;
    kel::Store32(&tall.at(18), 1);
    kel::Store32(&tall[22], 0x10000000);  // 2 GiB of row pointers
    claims.push_back({tall, KEL_ERR_MEMORY, 2});
    kel::Store32(&table[46], 0x10000000);
    claims.push_back({table, KEL_OK, 0});
    return claims;
}

void Append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes Chunk(const char* pszType, Bytes data) {
    data.insert(data.begin(), pszType, pszType + 4);
    Bytes bytes(4), crc(4);
    kel::Store32(bytes.data(), htonl(static_cast<u32>(data.size() - 4)));
    kel::Store32(crc.data(), htonl(static_cast<u32>(crc32_z(0, data.data(), data.size()))));
    Append(bytes, data);
    Append(bytes, crc);
    return bytes;
}

// Chunks before the pixels.
std::vector<Claim> PngClaims() {
    std::vector<Claim> claims;
    const auto add = [&claims](const Bytes& chunks, KelResult nResult, std::size_t nLines) {
        Bytes file = Load("png/2-8-0");
        file.insert(file.begin() + 33, chunks.begin(), chunks.end());
        claims.push_back({file, nResult, nLines});
    };
    // 250 chunks of 8 KB that inflate to 8 MB each.
    const Bytes text(7900000, 'a');
    uLongf nPacked = compressBound(text.size());
    Bytes packed(nPacked + 3), chunks;
    packed[0] = 'k';
    compress2(&packed[3], &nPacked, text.data(), text.size(), 9);
    packed.resize(nPacked + 3);
    for (int i = 0; i < 250; ++i) {
        Append(chunks, Chunk("zTXt", packed));
    }
    add(chunks, KEL_OK, 0);
    // Claims of 2 GB, and what is too small to be sound.
    for (const char* pszType : {"tEXt", "zTXt", "iTXt", "sPLT", "pCAL", "sCAL", "eXIf"}) {
        Bytes claim = Chunk(pszType, {1, 2, 3, 4});
        kel::Store32(claim.data(), htonl(0x7FFFFFF0));
        add(claim, KEL_ERR_CODEC, kAny);          // "too large", "Read Error", or one of them
        const bool bDamaged = pszType[0] != 't';  // in a small chunk that is traced
        add(Chunk(pszType, {}), KEL_OK, bDamaged ? 1 : kAny);
    }
    // Damage in a chunk that is not used is traced while such chunks take up to 4,096 bytes in all.
    const std::pair<std::vector<std::size_t>, std::size_t> budgets[] = {
        {{}, 1}, {{4095}, 1}, {{4096}, 0}, {{3000, 1000}, 1}, {{3000, 3000}, 0}};
    for (const auto& [sizes, nLines] : budgets) {
        Bytes texts;
        for (const std::size_t nSize : sizes) {
            Bytes sound(nSize, 'a');
            sound[1] = 0;
            Append(texts, Chunk("tEXt", sound));
        }
        Append(texts, Chunk("zTXt", {'k'}));
        add(texts, KEL_OK, nLines);
    }
    return claims;
}

void OpenAll(const std::vector<Claim>& claims) {
    for (const Claim& claim : claims) {
        SCOPED_TRACE(&claim - claims.data());
        const support::RecordingTrace trace;
        CVamArchiveMemory archive(claim.file.data(), claim.file.size());
        CKelImage image;
        const std::clock_t nStart = std::clock();
        EXPECT_EQ(claim.nResult, image.Open(&archive));
        EXPECT_LT(std::clock() - nStart, CLOCKS_PER_SEC / 2);
        if (claim.nLines != kAny) {
            EXPECT_EQ(claim.nLines, trace.Lines().size());
        }
    }
}

}  // namespace

TEST(Sizes, SmallFilesCostLittle) {
    for (const std::vector<Claim>& claims : {BmpClaims(), PngClaims()}) {
        const pid_t nChild = fork();
        if (nChild == 0) {
            rlim_t nPages = 0;  // of address space in use
            std::ifstream("/proc/self/statm") >> nPages;
            const rlim_t nCap = nPages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (32u << 20);
            const rlimit cap = {nCap, nCap};
            setrlimit(RLIMIT_AS, &cap);
            [&]() noexcept { OpenAll(claims); }();
            _exit(HasFailure() ? 1 : 0);
        }
        int nStatus = -1;
        waitpid(nChild, &nStatus, 0);
        EXPECT_TRUE(WIFEXITED(nStatus) && WEXITSTATUS(nStatus) == 0);
    }
}

#endif

#endif
