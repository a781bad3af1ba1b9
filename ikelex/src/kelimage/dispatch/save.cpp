#include <platform/vamplatform.h>

#include "../../kelencoder/kelencoder.h"
#include "../kelimage.h"
#include "exceptions.h"

namespace {

// Runs a writer that takes options.
template <typename Encoder>
KelResult Write(CVamArchive* pArchive, CKelImage* pImage, tagKelParameters* pParams) {
    Encoder encoder;
    encoder.SetParameters(pParams);
    return encoder.Do(pArchive, pImage);
}

}  // namespace

KelResult CKelImage::Save(CVamArchive* pArchive, KelImageFormat eFormat,
                          tagKelParameters* pParams) {
    if (pArchive == nullptr) {
        return KEL_ERR_PARAM;
    }
    try {
        switch (eFormat) {
            case KEL_IMAGE_BMP:
                return CKelBMPEncoder().Do(pArchive, this);
            case KEL_IMAGE_JPEG:
                return Write<CKelJpegEncoder>(pArchive, this, pParams);
            case KEL_IMAGE_PNG:
                return Write<CKelPNGEncoder>(pArchive, this, pParams);
            case KEL_IMAGE_GIF:
            case KEL_IMAGE_TIFF:
                return KEL_ERR_NOT_IMPLEMENTED;
            default:
                return KEL_ERR_SAVE_FORMAT;
        }
    } catch (...) {
        return kel::ResultOfException();
    }
}

KelResult CKelImage::Save(const char* pszPath, KelImageFormat eFormat, tagKelParameters* pParams) {
    if (pszPath == nullptr) {
        return KEL_ERR_PARAM;
    }
    try {
        CVamArchiveFile file;
        file.Open(pszPath, "w+b");
        if (file.GetHandle() == nullptr) {
            return KEL_ERR_FILE;
        }
        return Save(static_cast<CVamArchive*>(&file), eFormat, pParams);
    } catch (...) {
        return kel::ResultOfException();
    }
}
