// Save to a path or a stream. The table of formats decides what is written.
#include <platform/vamplatform.h>

#include "exceptions.h"
#include "formats.h"
#include "kelimage/kelimage.h"

KelResult CKelImage::Save(CVamArchive* pArchive, KelImageFormat eFormat,
                          tagKelParameters* pParams) {
    const kel::Format* pFormat = kel::FormatOfValue(eFormat);
    if (pFormat == nullptr) {
        return KEL_ERR_SAVE_FORMAT;
    }
    if (pFormat->pfnWrite == nullptr) {
        return pFormat->nNotWritten;
    }
    if (pArchive == nullptr) {
        return KEL_ERR_PARAM;
    }
    return kel::Guard([&] { return pFormat->pfnWrite(pArchive, this, pParams); });
}

KelResult CKelImage::Save(const char* pszPath, KelImageFormat eFormat, tagKelParameters* pParams) {
    if (pszPath == nullptr) {
        return KEL_ERR_PARAM;
    }
    return kel::Guard([&] {
        CVamArchiveFile file;
        file.Open(pszPath, "w+b");
        CVamArchive* const pArchive = &file;
        return file.GetHandle() == nullptr ? KEL_ERR_FILE : Save(pArchive, eFormat, pParams);
    });
}
