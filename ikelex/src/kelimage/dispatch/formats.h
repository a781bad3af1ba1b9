// The table of picture formats. It says how each is recognised, read and written.
#ifndef DISPATCH_FORMATS_H
#define DISPATCH_FORMATS_H

#include <ikelex/formats.h>
#include <ikelex/parameters.h>
#include <ikelex/result.h>

#include <cstddef>
#include <span>
#include <string_view>

class CVamArchive;
class CKelImage;

namespace kel {

// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order they are read
struct Format {
    KelImageFormat eFormat;
    // The first bytes of its files, '?' for any byte. No file shows the signatures of two formats.
    std::string_view aSignatures[6];
    // Reads one picture into an empty image. Null for a format that is recognised but not read.
    KelResult (*pfnRead)(CVamArchive* pArchive, CKelImage* pImage);
    // Writes the picture. The options may be null. Without a writer Save returns nNotWritten.
    KelResult (*pfnWrite)(CVamArchive* pArchive, CKelImage* pImage, tagKelParameters* pParams);
    KelResult nNotWritten;
};

// Every format with a name of its own.
std::span<const Format> Formats();

// The format of a file from its first nCount bytes. A signature counts when all of its bytes are
// there. Null for none.
const Format* FormatOfData(const unsigned char* pData, std::size_t nCount);

// The row of a format, or null.
const Format* FormatOfValue(KelImageFormat eFormat);

}  // namespace kel

#endif  // DISPATCH_FORMATS_H
