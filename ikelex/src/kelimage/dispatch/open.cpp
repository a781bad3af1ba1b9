// Open from a path or a stream, and detection. The first bytes of the data decide the format.
#include <platform/vamplatform.h>

#include "exceptions.h"
#include "formats.h"
#include "kelbitmap/integers.h"
#include "kelimage/kelimage.h"

namespace {

constexpr unsigned int kSignatureSize = 512;

// Reads the picture whose first bytes lie at nStart, where the stream is before and after.
KelResult OpenAt(unsigned int nStart, CVamArchive* pArchive, CKelImage* pImage) {
    unsigned char signature[kSignatureSize] = {};
    const unsigned int nRead = pArchive->Read(signature, kSignatureSize);
    pArchive->Seek(nStart, 0);

    // A count above what was asked for means that nothing arrived.
    const kel::Format* pFormat = kel::FormatOfData(signature, nRead <= kSignatureSize ? nRead : 0);
    if (pFormat == nullptr) {
        return KEL_ERR_FAIL;
    }
    if (pFormat->pfnRead == nullptr) {
        return KEL_ERR_OPEN_FORMAT;
    }
    const KelResult nResult = pFormat->pfnRead(pArchive, pImage);
    if (nResult == KEL_ERR_PARAM) {
        pImage->Clean();  // a refused header may have left its block
    }
    pArchive->Seek(nStart, 0);
    return nResult;
}

}  // namespace

KelImageFormat CKelImage::DetectImageFormat(unsigned char* pBuffer, int) const {
    const kel::Format* pFormat = kel::FormatOfData(pBuffer, 4);
    return pFormat != nullptr ? pFormat->eFormat : KEL_IMAGE_UNKNOWN;
}

KelResult CKelImage::Open(CVamArchive* pArchive) {
    if (pArchive == nullptr) {
        return KEL_ERR_PARAM;
    }
    Clean();
    return kel::Guard([&] {
        const auto nStart = kel::Low32(pArchive->GetPosition());
        return kel::Guard([&] { return OpenAt(nStart, pArchive, this); },
                          [&] {
                              Clean();
                              pArchive->Seek(nStart, 0);
                          });
    });
}

KelResult CKelImage::Open(const char* pszPath) {
    if (pszPath == nullptr) {
        return KEL_ERR_PARAM;
    }
    const auto fnOpen = [&] {
        CVamArchiveFile file;
        file.Open(pszPath, "rb");
        CVamArchive* const pArchive = &file;
        return file.GetHandle() == nullptr ? KEL_ERR_FILE : Open(pArchive);
    };
    return kel::Guard(fnOpen, [&] { Clean(); });
}
