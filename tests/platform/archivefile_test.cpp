#include <gtest/gtest.h>
#include <platform/vamplatform.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/pictures.h"

namespace {

using Bytes = std::vector<unsigned char>;

class ArchiveFile : public testing::Test {
  protected:
    void SetUp() override {
        // A name beyond ASCII: paths are UTF-8.
        m_Folder = std::filesystem::path(testing::TempDir()) / u8"Bilder-äöü-図-";
        m_Folder += std::to_string(getpid());
        std::filesystem::create_directories(m_Folder);
    }
    void TearDown() override { std::filesystem::remove_all(m_Folder); }

    std::string Path(const char* pszName) const { return (m_Folder / pszName).string(); }

    std::filesystem::path m_Folder;
};

Bytes RandomBytes(std::size_t nSize, unsigned nSeed) {
    Bytes bytes(nSize);
    support::Random(nSeed).Fill(bytes.data(), nSize);
    return bytes;
}

// The file archive against the memory archive: the same random calls give the same answers,
// whatever the sizes are and however reads, writes and seeks follow each other.
TEST_F(ArchiveFile, BehavesAsTheMemoryArchiveDoes) {
    support::Random random(1);
    CVamArchiveFile file;
    ASSERT_TRUE(file.Open(Path("file").c_str(), "w+b"));
    CVamArchiveMemory memory;
    const Bytes source = RandomBytes(70000, 2);
    Bytes fromFile(70000), fromMemory(70000);
    for (int nStep = 0; nStep < 3000; ++nStep) {
        const unsigned int nLimits[] = {9, 500, 5000, 70000};
        const auto nCount = random.Next() % nLimits[random.Below(4)];
        const int nCall = random.Below(5);
        if (nCall < 2) {
            ASSERT_EQ(memory.Write(source.data(), nCount), file.Write(source.data(), nCount));
        } else if (nCall == 2) {
            ASSERT_EQ(memory.Read(fromMemory.data(), nCount), file.Read(fromFile.data(), nCount));
            ASSERT_EQ(fromMemory, fromFile) << nStep;
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
    Bytes all(memory.GetSize() + 1);
    ASSERT_EQ(memory.GetSize(), file.Read(all.data(), static_cast<unsigned int>(all.size())));
    EXPECT_TRUE(std::equal(all.begin(), all.end() - 1, memory.GetData()));
}

TEST_F(ArchiveFile, RefusesWhatIsNoFile) {
    CVamArchiveFile file;
    std::filesystem::create_directory(Path("folder"));
    for (const auto& [strPath, pszMode] : {std::pair{Path("folder"), "rb"},
                                           {Path("folder"), "w+b"},
                                           {Path("none/file"), "w+b"},
                                           {Path("none"), "rb"},
                                           {std::string(), "rb"}}) {
        EXPECT_FALSE(file.Open(strPath.c_str(), pszMode)) << strPath;
        EXPECT_EQ(nullptr, file.GetHandle());
    }
    EXPECT_FALSE(file.Open(nullptr, "rb"));
    EXPECT_FALSE(file.Open(Path("file").c_str(), nullptr));
    unsigned char byOne = 7;
    EXPECT_EQ(0u, file.Read(&byOne, 1));
    EXPECT_FALSE(file.Seek(0, 0));
    EXPECT_EQ(-1, file.GetPosition());
    EXPECT_FALSE(file.HasFailed());
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
}

// A medium that takes nothing, asked at each place where the loss may show first.
TEST_F(ArchiveFile, RemembersALostWriteUntilTheNextOpen) {
    const Bytes large(700000, 1);
    CVamArchiveFile file;
    const std::function<bool()> places[] = {
        [&] { return file.Flush(); }, [&] { return file.Seek(0, 0); }, [&] { return file.Close(); },
        [&] { return file.Write(large.data(), 700000) != 0; }};
    for (const auto& place : places) {
        EXPECT_TRUE(file.Open("/dev/full", "w+b"));
        EXPECT_EQ(5u, file.Write(large.data(), 5));
        EXPECT_FALSE(file.HasFailed());
        EXPECT_FALSE(place());
        EXPECT_TRUE(file.HasFailed());
    }
    ASSERT_TRUE(file.Open("/dev/null", "rb"));
    EXPECT_EQ(0u, file.Write(large.data(), 1));
    EXPECT_TRUE(file.HasFailed());
}

// A pipe gives and takes a little at a time, and a timer interrupts every wait.
TEST_F(ArchiveFile, SurvivesInterruptedAndShortSystemCalls) {
    const std::string strPipe = Path("pipe");
    ASSERT_EQ(0, mkfifo(strPipe.c_str(), 0600));
    const Bytes sent = RandomBytes(400001, 4);
    struct sigaction action = {}, old;
    action.sa_handler = [](int) {};  // no SA_RESTART: the call in progress gives up
    ASSERT_EQ(0, sigaction(SIGALRM, &action, &old));
    std::thread writer([&] {
        CVamArchiveFile file;
        EXPECT_TRUE(file.Open(strPipe.c_str(), "wb"));
        EXPECT_EQ(150001u, file.Write(sent.data(), 150001));
        usleep(5000);
        EXPECT_EQ(250000u, file.Write(sent.data() + 150001, 250000));
        EXPECT_TRUE(file.Close());
    });
    CVamArchiveFile file;
    EXPECT_TRUE(file.Open(strPipe.c_str(), "rb"));
    const struct itimerval ticking = {{0, 300}, {0, 300}}, still = {};
    setitimer(ITIMER_REAL, &ticking, nullptr);
    Bytes received(sent.size());
    EXPECT_EQ(7u, file.Read(received.data(), 7));
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarm, nullptr);  // the writer's turn
    usleep(5000);                                 // the pipe fills
    pthread_sigmask(SIG_UNBLOCK, &alarm, nullptr);
    EXPECT_EQ(399994u, file.Read(received.data() + 7, 399994));
    writer.join();
    setitimer(ITIMER_REAL, &still, nullptr);
    sigaction(SIGALRM, &old, nullptr);
    EXPECT_EQ(-1, file.GetPosition());
    EXPECT_TRUE(sent == received);
}

}  // namespace
