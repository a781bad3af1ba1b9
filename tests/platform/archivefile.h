// A folder for the tests of the file stream, and what they ask each system for.
#ifndef PLATFORM_ARCHIVEFILE_H
#define PLATFORM_ARCHIVEFILE_H

#include <gtest/gtest.h>
#include <platform/vamplatform.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "support/pictures.h"

namespace platform_test {

using support::Bytes;

inline Bytes RandomBytes(std::size_t nSize, unsigned nSeed) {
    Bytes bytes(nSize);
    support::Random(nSeed).Fill(bytes.data(), nSize);
    return bytes;
}

// A folder of this process, with a name beyond ASCII: paths are UTF-8.
class ArchiveFile : public testing::Test {
  protected:
    void SetUp() override {
        m_Folder = std::filesystem::path(testing::TempDir()) / u8"Bilder-äöü-図-😀-";
        m_Folder += std::to_string(getpid());
        std::filesystem::create_directories(m_Folder);
    }
    void TearDown() override { std::filesystem::remove_all(m_Folder); }

    // UTF-8.
    std::string Path(const std::string& strName) const {
        const std::u8string strPart(strName.begin(), strName.end());
        const std::u8string strPath = (m_Folder / strPart).u8string();
        return std::string(strPath.begin(), strPath.end());
    }

    std::filesystem::path m_Folder;
};

// Opens the stream for writing over a medium that takes nothing.
bool OpenFullMedium(CVamArchiveFile& file);

// True when a child process would get the open file.
bool IsInherited(std::FILE* pFile);

// Paths that name no file, besides those of every system.
std::vector<std::string> SystemPathsWithoutFile();

}  // namespace platform_test

#endif  // PLATFORM_ARCHIVEFILE_H
