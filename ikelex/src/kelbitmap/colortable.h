// How many entries the colour table after a header has.
#ifndef KELBITMAP_COLORTABLE_H
#define KELBITMAP_COLORTABLE_H

#include <ikelex/bitmap.h>

namespace kel {

// Where a table's memory is not known to exist, one with more entries than this counts as damage.
inline constexpr unsigned int kMaxColorTableEntries = 65536;

// The number of entries of 4 bytes, which are palette colours or three masks. 0 for an unsupported
// depth. biClrUsed is taken as it is, however large.
constexpr unsigned int ColorTableEntries(const BITMAPINFOHEADER& header) {
    switch (header.biBitCount) {
        case 1:
            return 2;
        case 4:
        case 8:
            return header.biClrUsed != 0 ? header.biClrUsed : 1u << header.biBitCount;
        case 16:
        case 32:
            return header.biCompression == BI_BITFIELDS ? 3 : header.biClrUsed;
        case 24:
            return header.biClrUsed;
        default:
            return 0;
    }
}

}  // namespace kel

#endif  // KELBITMAP_COLORTABLE_H
