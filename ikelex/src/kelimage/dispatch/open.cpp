#include <platform/vamplatform.h>

#include "../../keldecoder/keldecoder.h"
#include "../kelimage.h"
#include "exceptions.h"

namespace {

constexpr unsigned int kSignatureSize = 512;

// Brings the stream back after something threw; it may be past helping.
void TrySeek(CVamArchive* pArchive, unsigned int nPosition) noexcept {
    try {
        pArchive->Seek(nPosition, 0);
    } catch (...) {
    }
}

// Reads the picture whose first bytes stand at nStart, where the stream stands before and after.
KelResult OpenAt(unsigned int nStart, CVamArchive* pArchive, CKelImage* pImage) {
    unsigned char signature[kSignatureSize] = {};
    pArchive->Read(signature, kSignatureSize);
    pArchive->Seek(nStart, 0);

    KelResult nResult = KEL_OK;
    switch (pImage->DetectImageFormat(signature, static_cast<int>(kSignatureSize))) {
        case KEL_IMAGE_BMP:
            nResult = CKelBMPDecoder().Do(pArchive, pImage);
            break;
        case KEL_IMAGE_JPEG:
            nResult = CKelJpegDecoder().Do(pArchive, pImage);
            break;
        case KEL_IMAGE_PNG:
            nResult = CKelPNGDecoder().Do(pArchive, pImage);
            break;
        case KEL_IMAGE_TIFF:
            break;  // accepted, not read: the image stays empty
        case KEL_IMAGE_UNKNOWN:
            return KEL_ERR_FAIL;
        default:
            return KEL_ERR_OPEN_FORMAT;
    }
    pArchive->Seek(nStart, 0);
    return nResult;
}

}  // namespace

KelResult CKelImage::Open(CVamArchive* pArchive) {
    if (pArchive == nullptr) {
        return KEL_ERR_PARAM;
    }
    Clean();
    unsigned int nStart = 0;
    try {
        nStart = static_cast<unsigned int>(pArchive->GetPosition());
    } catch (...) {
        return kel::ResultOfException();
    }
    try {
        return OpenAt(nStart, pArchive, this);
    } catch (...) {
        const KelResult nResult = kel::ResultOfException();
        TrySeek(pArchive, nStart);
        Clean();
        return nResult;
    }
}

KelResult CKelImage::Open(const char* pszPath) {
    if (pszPath == nullptr) {
        return KEL_ERR_PARAM;
    }
    try {
        CVamArchiveFile file;
        file.Open(pszPath, "rb");
        if (file.GetHandle() == nullptr) {
            return KEL_ERR_FILE;
        }
        return Open(static_cast<CVamArchive*>(&file));
    } catch (...) {
        return kel::ResultOfException();
    }
}
