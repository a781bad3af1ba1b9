// The file stream over POSIX: a full device, pipes, interrupted calls.
#ifndef _WIN32

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <thread>

#include "archivefile.h"

using namespace platform_test;

bool platform_test::OpenFullMedium(CVamArchiveFile& file) {
    return file.Open("/dev/full", "w+b");
}

bool platform_test::IsInherited(std::FILE* pFile) {
    return (fcntl(fileno(pFile), F_GETFD) & FD_CLOEXEC) == 0;
}

std::vector<std::string> platform_test::SystemPathsWithoutFile() {
    return {"/", "."};
}

namespace {

// The system loses the file: nothing that is still written can arrive.
TEST_F(ArchiveFile, RemembersAFailedClose) {
    CVamArchiveFile file;
    ASSERT_TRUE(file.Open(Path("file").c_str(), "w+b"));
    ASSERT_EQ(0, close(fileno(file.GetHandle())));
    char cRead = 0;
    EXPECT_EQ(0u, file.Read(&cRead, 1));
    EXPECT_FALSE(file.Close());
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
    EXPECT_EQ(-1, file.GetPosition());
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
    EXPECT_TRUE(sent == received);
}

}  // namespace

#endif
