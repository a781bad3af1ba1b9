#include "safesave.h"

#include <platform/vamplatform.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// Saves into a file that is already open, and makes sure of it: Save does not report a full disk,
// the file does. bSync false is for targets that cannot be synchronised.
KelResult SaveInto(IKelImage& image, CVamArchiveFile& file, bool bSync, KelImageFormat eFormat,
                   tagKelParameters* pParams) {
    const KelResult nResult = image.Save(static_cast<CVamArchive*>(&file), eFormat, pParams);
    bool bArrived = file.Flush();
    if (bArrived && bSync) {
        bArrived = fsync(fileno(file.GetHandle())) == 0;
    }
    bArrived = file.Close() && bArrived;
    return nResult == KEL_OK && !bArrived ? KEL_ERR_FILE : nResult;
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

ImagePtr NewImage() {
    IKelImage* pImage = nullptr;
    CreateImageObject(&pImage);
    return ImagePtr(pImage);
}

KelImageFormat FormatOfName(const std::string& strName) {
    std::string strEnding = fs::path(strName).extension().string();
    std::transform(strEnding.begin(), strEnding.end(), strEnding.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (strEnding == ".jpg" || strEnding == ".jpeg") {
        return KEL_IMAGE_JPEG;
    }
    return strEnding == ".png"   ? KEL_IMAGE_PNG
           : strEnding == ".bmp" ? KEL_IMAGE_BMP
                                 : KEL_IMAGE_UNKNOWN;
}

KelResult SafeSave(IKelImage& image, const std::string& strPath, KelImageFormat eFormat,
                   tagKelParameters* pParams) {
    std::error_code error;
    const fs::file_status old = fs::status(strPath, error);
    if (fs::exists(old) && access(strPath.c_str(), W_OK) != 0) {
        return KEL_ERR_FILE;
    }
    CVamArchiveFile file;
    if (fs::exists(old) && !fs::is_regular_file(old)) {
        file.Open(strPath.c_str(), "w+b");
        return file.GetHandle() == nullptr ? KEL_ERR_FILE
                                           : SaveInto(image, file, false, eFormat, pParams);
    }
    // Through a link, the file it leads to is the one to replace.
    const std::string strTarget =
        fs::exists(old) ? fs::canonical(strPath, error).string() : strPath;
    const std::string strPart = OpenBeside(strTarget, file);
    if (file.GetHandle() == nullptr) {
        return KEL_ERR_FILE;
    }
    KelResult nResult = SaveInto(image, file, true, eFormat, pParams);
    if (nResult == KEL_OK) {
        if (fs::exists(old)) {
            fs::permissions(strPart, old.permissions(), error);
        }
        fs::rename(strPart, strTarget, error);
        nResult = error ? KEL_ERR_FILE : KEL_OK;
    }
    if (nResult != KEL_OK) {
        std::remove(strPart.c_str());
    }
    return nResult;
}
