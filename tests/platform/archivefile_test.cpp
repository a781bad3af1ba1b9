// The file stream as every system must have it. What needs a system's own calls lies in
// system_posix_test.cpp and system_windows_test.cpp.
#include "archivefile.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>

#include "support/allocfaults.h"

using namespace platform_test;

namespace {

// The file archive against the memory archive: the same random calls give the same answers,
// whatever the sizes are and however reads, writes and seeks follow each other.
TEST_F(ArchiveFile, BehavesAsTheMemoryArchiveDoes) {
    support::Random random(1);
    constexpr std::size_t kMost = 1200000;
    const Bytes source = RandomBytes(kMost, 2);
    Bytes fromFile(kMost), fromMemory(kMost);
    const support::LiveBlocks before = support::CountLiveBlocks();
    auto pFile = std::make_unique<CVamArchiveFile>();
    auto pMemory = std::make_unique<CVamArchiveMemory>();
    CVamArchiveFile& file = *pFile;
    CVamArchiveMemory& memory = *pMemory;
    ASSERT_TRUE(file.Open(Path("file").c_str(), "w+b"));
    for (int nStep = 0; nStep < 3000; ++nStep) {
        const unsigned int nLimits[] = {9, 500, 5000, 70000};
        auto nCount = random.Next() % nLimits[random.Below(4)];
        int nCall = random.Below(5);
        // First the buffer grows while it holds bytes, which are read back at once; sometimes it
        // gets more than it can hold.
        if (nStep < 2 || nStep % 200 < 2) {
            nCall = 0;
            nCount = nStep % 200 == 0 ? 5 : nStep == 1 ? 20000 : kMost;
        }
        if (nStep == 2) {
            ASSERT_TRUE(memory.Seek(0, 0) && file.Seek(0, 0));
            nCall = 2;
            nCount = 20005;
        }
        if (nCall < 2) {
            ASSERT_EQ(memory.Write(source.data(), nCount), file.Write(source.data(), nCount));
        } else if (nCall == 2) {
            ASSERT_EQ(memory.Read(fromMemory.data(), nCount), file.Read(fromFile.data(), nCount));
            ASSERT_EQ(0, std::memcmp(fromMemory.data(), fromFile.data(), nCount)) << nStep;
        } else if (nCall == 3) {
            const int nOrigin = random.Below(3);
            const long long nTo = static_cast<long long>(nCount) - (nOrigin == 0 ? 0 : 3000);
            ASSERT_EQ(memory.Seek(nTo, nOrigin), file.Seek(nTo, nOrigin)) << nStep;
        } else {
            ASSERT_TRUE(file.Flush());
        }
        ASSERT_EQ(memory.GetPosition(), file.GetPosition()) << nStep;
    }
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(memory.HasFailed());
    ASSERT_TRUE(file.Open(Path("file").c_str(), "rb"));
    fromFile.resize(memory.GetSize() + 1);
    ASSERT_EQ(1u, file.Read(fromFile.data(), 1));
    ASSERT_TRUE(file.Open(Path("file").c_str(), "rb"));  // without what was read ahead
    const auto nRead = file.Read(fromFile.data(), static_cast<unsigned int>(fromFile.size()));
    ASSERT_EQ(memory.GetSize(), nRead);
    EXPECT_TRUE(std::equal(fromFile.begin(), fromFile.end() - 1, memory.GetData()));
    EXPECT_FALSE(IsInherited(file.GetHandle()));
    pFile.reset();
    pMemory.reset();
    EXPECT_EQ(before, support::CountLiveBlocks());
}

TEST_F(ArchiveFile, RefusesWhatIsNoFile) {
    CVamArchiveFile file;
    const std::string strFile = Path("file");
    ASSERT_TRUE(file.Open(strFile.c_str(), "w+b"));
    const int nDescriptor = fileno(file.GetHandle());
    std::filesystem::create_directory(m_Folder / "folder");
    std::vector<std::string> paths = SystemPathsWithoutFile();
    paths.insert(paths.end(), {"", Path("folder"), Path("none/file")});
    const auto start = std::filesystem::current_path();
    std::filesystem::current_path(m_Folder);
    for (const std::string& strPath : paths) {
        for (const char* pszMode : {"rb", "w+b"}) {
            EXPECT_FALSE(file.Open(strPath.c_str(), pszMode)) << strPath;
            EXPECT_EQ(nullptr, file.GetHandle());
        }
    }
    EXPECT_FALSE(file.Open(nullptr, "rb"));
    EXPECT_FALSE(file.Open(strFile.c_str(), nullptr));
    EXPECT_FALSE(file.Open(strFile.c_str(), "?"));
    EXPECT_FALSE(file.Open(Path("none").c_str(), "rb"));
    std::filesystem::current_path(start);
    EXPECT_EQ(2, std::distance(std::filesystem::directory_iterator(m_Folder), {}));
    unsigned char byOne = 7;
    EXPECT_EQ(0u, file.Read(&byOne, 1));
    EXPECT_FALSE(file.Seek(0, 0));
    EXPECT_EQ(-1, file.GetPosition());
    EXPECT_FALSE(file.HasFailed());
    EXPECT_EQ(0u, file.Write(&byOne, 1));
    EXPECT_TRUE(file.HasFailed());
    // Nothing was left open.
    ASSERT_TRUE(file.Open(strFile.c_str(), "rb"));
    EXPECT_EQ(nDescriptor, fileno(file.GetHandle()));
    EXPECT_EQ(0u, file.Write(&byOne, 1));
    EXPECT_TRUE(file.HasFailed());
}

TEST_F(ArchiveFile, HoldsPositionsBeyond32Bits) {
    constexpr long long kFar = (5LL << 32) + 3;
    CVamArchiveFile file;
    ASSERT_TRUE(file.Open(Path("sparse").c_str(), "w+b"));
    ASSERT_TRUE(file.Seek(kFar, 0));
    EXPECT_EQ(4u, file.Write("far", 4));
    EXPECT_EQ(kFar + 4, file.GetPosition());
    EXPECT_FALSE(file.Seek(-1, 0));
    char szText[4] = {};
    ASSERT_TRUE(file.Seek(-4, 1));
    EXPECT_EQ(4u, file.Read(szText, 4));
    EXPECT_STREQ("far", szText);
    ASSERT_TRUE(file.Seek(-4, 2));
    EXPECT_EQ(1u, file.Read(szText, 1));
    EXPECT_FALSE(file.Seek(std::numeric_limits<long long>::min(), 1));
    EXPECT_FALSE(file.Seek(0, 3));
}

// The stream-open notations beside the two of the library. A file that is open stays open to
// others.
TEST_F(ArchiveFile, OpensInEveryMode) {
    const std::string strFile = Path("modes");
    struct {
        const char* pszMode;
        bool bWrites;
        const char* pszAfter;
    } const rows[] = {{"wb", true, "ab"},   {"rb", false, "ab"},    {"r+b", true, "ab"},
                      {"ab", true, "abab"}, {"a+", true, "ababab"}, {"w", true, "ab"},
                      {"w+bx", false, "ab"}};
    for (const auto& row : rows) {
        CVamArchiveFile file, reader;
        file.Open(strFile.c_str(), row.pszMode);
        EXPECT_EQ(row.bWrites ? 2u : 0u, file.Write("ab", 2)) << row.pszMode;
        EXPECT_EQ(row.bWrites, file.Flush() && !file.HasFailed()) << row.pszMode;
        ASSERT_TRUE(reader.Open(strFile.c_str(), "rb"));
        char szText[16] = {};
        EXPECT_EQ(0u, reader.Read(nullptr, 1));
        reader.Read(szText, 15);
        EXPECT_STREQ(row.pszAfter, szText) << row.pszMode;
    }
}

// Every place where the loss of a write may show first, with bytes that wait and without.
TEST_F(ArchiveFile, RemembersALostWriteUntilTheNextOpen) {
    const Bytes large(700000, 1);
    CVamArchiveFile file;
    const std::function<bool()> places[] = {
        [&] { return file.Write(large.data(), 700000) != 0; }, [&] { return file.Flush(); },
        [&] { return file.Seek(0, 0); }, [&] { return file.Close(); }};
    for (const unsigned int nWaiting : {0u, 5u, 5u, 5u, 5u}) {
        static int nPlace = 0;
        ASSERT_TRUE(OpenFullMedium(file));
        EXPECT_EQ(nWaiting, file.Write(large.data(), nWaiting));
        EXPECT_FALSE(file.HasFailed());
        EXPECT_FALSE(places[nWaiting == 0 ? 0 : nPlace++]());
        EXPECT_TRUE(file.HasFailed());
        EXPECT_FALSE(file.Close());
    }
}

}  // namespace
