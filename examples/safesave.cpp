// The safe order of a save: a new file beside the old one, ask whether it arrived, rename.
#include "safesave.h"

#include <platform/vamplatform.h>
#ifdef _WIN32
#include <io.h>
#include <process.h>
#else
#include <unistd.h>
#endif

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "utf8.h"

namespace fs = std::filesystem;

namespace {

// Waits until the disk has what was written to the open file.
bool Synchronise(std::FILE* pFile) {
#ifdef _WIN32
    return _commit(_fileno(pFile)) == 0;
#else
    return fsync(fileno(pFile)) == 0;
#endif
}

bool IsWritable(const fs::path& path) {
#ifdef _WIN32
    return _waccess(path.c_str(), 2) == 0;
#else
    return access(path.c_str(), W_OK) == 0;
#endif
}

// Saves into a file that is already open, and makes sure of it: Save does not report a full disk,
// the file does. bSync false is for targets that cannot be synchronised.
KelStatus SaveInto(IKelImage& image, CVamArchiveFile& file, bool bSync, KelImageFormat eFormat,
                   tagKelParameters* pParams) {
    const KelStatus status = image.Save(static_cast<CVamArchive*>(&file), eFormat, pParams);
    bool bArrived = file.Flush();
    if (bArrived && bSync) {
        bArrived = Synchronise(file.GetHandle());
    }
    bArrived = file.Close() && bArrived;
    return status && !bArrived ? KelStatus(KEL_ERR_FILE) : status;
}

// Opens a file beside strPath that did not exist before and returns its name; the file stays closed
// when there is no way to make one.
std::string OpenBeside(const std::string& strPath, CVamArchiveFile& file) {
    std::string strName;
    for (int i = 0; i < 100 && file.GetHandle() == nullptr; ++i) {
        strName = strPath + "." + std::to_string(getpid()) + "-" + std::to_string(i) + ".part";
        file.Open(strName.c_str(), "w+bx");
    }
    return strName;
}

}  // namespace

KelImageFormat FormatOfName(const std::string& strName) {
    std::string strEnding = Utf8Of(PathOf(strName).extension());
    std::transform(strEnding.begin(), strEnding.end(), strEnding.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (strEnding == ".jpg" || strEnding == ".jpeg") {
        return KEL_IMAGE_JPEG;
    }
    return strEnding == ".png"   ? KEL_IMAGE_PNG
           : strEnding == ".bmp" ? KEL_IMAGE_BMP
                                 : KEL_IMAGE_UNKNOWN;
}

KelStatus SafeSave(IKelImage& image, const std::string& strPath, KelImageFormat eFormat,
                   tagKelParameters* pParams) {
    std::error_code error;
    const fs::path path = PathOf(strPath);
    const fs::file_status old = fs::status(path, error);
    if (fs::exists(old) && !IsWritable(path)) {
        return KEL_ERR_FILE;
    }
    CVamArchiveFile file;
    if (fs::exists(old) && !fs::is_regular_file(old)) {
        file.Open(strPath.c_str(), "w+b");
        return file.GetHandle() == nullptr ? KelStatus(KEL_ERR_FILE)
                                           : SaveInto(image, file, false, eFormat, pParams);
    }
    // Through a link, the file it leads to is the one to replace.
    const std::string strTarget = fs::exists(old) ? Utf8Of(fs::canonical(path, error)) : strPath;
    const std::string strPart = OpenBeside(strTarget, file);
    if (file.GetHandle() == nullptr) {
        return KEL_ERR_FILE;
    }
    KelStatus status = SaveInto(image, file, true, eFormat, pParams);
    if (status) {
        if (fs::exists(old)) {
            fs::permissions(PathOf(strPart), old.permissions(), error);
        }
        fs::rename(PathOf(strPart), PathOf(strTarget), error);
        status = error ? KEL_ERR_FILE : KEL_OK;
    }
    if (!status) {
        fs::remove(PathOf(strPart), error);
    }
    return status;
}
