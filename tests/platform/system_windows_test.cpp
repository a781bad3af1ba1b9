// The file stream over Windows: names, pipes, a medium that is gone.
#ifdef _WIN32

#include <windows.h>

#include <io.h>

#include <algorithm>
#include <iterator>
#include <thread>

#include "archivefile.h"

using namespace platform_test;

namespace {

// The server's end of a pipe of this process.
class Pipe {
  public:
    Pipe()
        : m_hPipe(CreateNamedPipeA(PathOf().c_str(), PIPE_ACCESS_DUPLEX,
                                   PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT, 1, 4096, 4096,
                                   0, nullptr)) {}
    ~Pipe() { Close(); }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void Close() {
        if (m_hPipe != INVALID_HANDLE_VALUE) {
            CloseHandle(m_hPipe);
        }
        m_hPipe = INVALID_HANDLE_VALUE;
    }
    static std::string PathOf() { return "\\\\.\\pipe\\ikelex-" + std::to_string(getpid()); }
    HANDLE Handle() const { return m_hPipe; }

  private:
    HANDLE m_hPipe;
};

}  // namespace

bool platform_test::OpenFullMedium(CVamArchiveFile& file) {
    Pipe pipe;  // gone when this function ends
    return file.Open(Pipe::PathOf().c_str(), "w+b");
}

bool platform_test::IsInherited(std::FILE* pFile) {
    DWORD nFlags = HANDLE_FLAG_INHERIT;
    GetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(pFile))), &nFlags);
    return (nFlags & HANDLE_FLAG_INHERIT) != 0;
}

std::vector<std::string> platform_test::SystemPathsWithoutFile() {
    return {"NUL",
            "nul.png",
            "C:\\NUL",
            "CON",
            "COM1",
            "\\\\.\\C:",
            "C:",
            "C:\\",
            "no\xFF\xFEutf8",
            "\xC3",
            "a*b",
            "a?b",
            "\\\\no.invalid\\share\\file"};
}

namespace {

// Folders beyond the length that the C++ library of the tests can make or remove.
class LongFolders {
  public:
    LongFolders(std::filesystem::path base, const std::string& strPart)
        : m_strPath(L"\\\\?\\" + base.make_preferred().wstring()) {
        for (bool& bMade : m_bMade) {
            m_strPath += L"\\" + std::wstring(strPart.begin(), strPart.end());
            bMade = CreateDirectoryW(m_strPath.c_str(), nullptr) != 0;
        }
    }
    ~LongFolders() {
        DeleteFileW((m_strPath + L"\\grün-图-😀").c_str());
        for (std::size_t i = 0; i < std::size(m_bMade); ++i) {
            RemoveDirectoryW(m_strPath.c_str());
            m_strPath.resize(m_strPath.rfind(L'\\'));
        }
    }
    LongFolders(const LongFolders&) = delete;
    LongFolders& operator=(const LongFolders&) = delete;

    bool AreMade() const { return m_bMade[0] && m_bMade[1]; }

  private:
    std::wstring m_strPath;
    bool m_bMade[2] = {};
};

TEST_F(ArchiveFile, OpensNamesOfEveryScriptAndLength) {
    const std::string strLong(200, 'x');
    const LongFolders folders(m_Folder, strLong);
    ASSERT_TRUE(folders.AreMade());
    const std::string strShort = "Größe-大小-🖼.bin";
    for (const std::string& strName :
         {strShort, strLong + "/./" + strLong + "/../" + strLong + "/grün-图-😀"}) {
        CVamArchiveFile file;
        ASSERT_TRUE(file.Open(Path(strName).c_str(), "w+b")) << strName;
        EXPECT_EQ(6u, file.Write("a\r\nb\x1A\n", 6));
        EXPECT_TRUE(file.Close());
        char szRead[8] = {};
        ASSERT_TRUE(file.Open(Path(strName).c_str(), "r"));
        EXPECT_EQ(6u, file.Read(szRead, 8));
        EXPECT_STREQ("a\r\nb\x1A\n", szRead);
    }
    EXPECT_TRUE(std::filesystem::exists(m_Folder / u8"Größe-大小-🖼.bin"));
    CVamArchiveFile file;
    EXPECT_FALSE(file.Open(std::string(40000, 'x').c_str(), "w+b"));
}

// A pipe gives and takes a little at a time.
TEST_F(ArchiveFile, SurvivesShortTransfers) {
    Pipe pipe;
    const Bytes sent = RandomBytes(400001, 4);
    std::thread writer([&] {
        for (std::size_t nDone = 0; nDone < sent.size();) {
            DWORD nPut = 0;
            const std::size_t nPart = std::min<std::size_t>(777, sent.size() - nDone);
            WriteFile(pipe.Handle(), sent.data() + nDone, static_cast<DWORD>(nPart), &nPut,
                      nullptr);
            nDone += nPut;
        }
        FlushFileBuffers(pipe.Handle());
        pipe.Close();
    });
    CVamArchiveFile file;
    EXPECT_TRUE(file.Open(Pipe::PathOf().c_str(), "rb"));
    Bytes received(sent.size() + 1);
    EXPECT_EQ(7u, file.Read(received.data(), 7));
    EXPECT_EQ(-1, file.GetPosition());
    EXPECT_EQ(399994u, file.Read(received.data() + 7, 399995));
    writer.join();
    received.pop_back();
    EXPECT_TRUE(sent == received);
}

}  // namespace

#endif
