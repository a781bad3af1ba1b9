// What the tests of the readers share.
#ifndef SUPPORT_READERS_H
#define SUPPORT_READERS_H

#include <vector>

#include "kelimage/kelimage.h"
#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/recordingtrace.h"

namespace support {

template <typename Decoder>
KelResult Decode(const std::vector<unsigned char>& file, CKelImage& image) {
    FaultyArchive archive(file);
    return Decoder().Do(&archive, &image);
}

// All a picture shows: header, palette, rows with their padding.
inline std::vector<unsigned char> Snapshot(CKelImage& image) {
    std::vector<unsigned char> all;
    const auto Append = [&all](const void* p, std::size_t nSize) {
        const auto* pBytes = static_cast<const unsigned char*>(p);
        all.insert(all.end(), pBytes, pBytes + nSize);
    };
    Append(image.GetBitmapInfoHeader(), sizeof(BITMAPINFOHEADER));
    Append(image.GetPalette(), static_cast<std::size_t>(image.GetPaletteNum()) * 4);
    Append(image.GetBits(), image.GetLineArray() ? image.GetBmpDataSize() : 0);
    return all;
}

}  // namespace support

#endif  // SUPPORT_READERS_H
