/// @file
/// The published Windows bitmap structures, byte for byte, little-endian.
///
/// On Windows they are the system's own, whether <windows.h> comes before this header, after it or
/// not at all. A host that has them from another library's header includes that one first and
/// defines IKELEX_NO_BITMAP_TYPES before it includes any header of this library.
#ifndef IKELEX_BITMAP_H
#define IKELEX_BITMAP_H

#if defined(IKELEX_NO_BITMAP_TYPES)
// Another header has defined them.
#elif defined(_WIN32)

#if defined(NOGDI)
#error "ikelex needs BITMAPINFOHEADER: without NOGDI, or from you, with IKELEX_NO_BITMAP_TYPES"
#endif
#if defined(_M_X64) && !defined(_AMD64_)
#define _AMD64_  // as <windows.h> does, which is not needed as a whole
#endif
// clang-format off
#include <windef.h>
#include <wingdi.h>
// clang-format on

#else

/// 40 bytes.
struct tagBITMAPINFOHEADER {
    unsigned int biSize;         ///< bytes of this header: 40
    int biWidth;                 ///< pixels per row
    int biHeight;                ///< rows; inside the library always positive with row 0 at the top
    unsigned short biPlanes;     ///< 1
    unsigned short biBitCount;   ///< bits per pixel: 1, 4, 8, 16, 24 or 32
    unsigned int biCompression;  ///< BI_RGB, BI_RLE8, BI_RLE4 or BI_BITFIELDS
    unsigned int biSizeImage;    ///< bytes of pixel data; 0: stride x height, run-length data none
    int biXPelsPerMeter;         ///< stored, not interpreted
    int biYPelsPerMeter;         ///< stored, not interpreted
    unsigned int biClrUsed;      ///< colour-table entries; 0 means the default of the depth
    unsigned int biClrImportant;  ///< stored, not interpreted
};
typedef struct tagBITMAPINFOHEADER BITMAPINFOHEADER;  ///< defined twice? IKELEX_NO_BITMAP_TYPES

/// A colour-table entry, 4 bytes.
struct tagRGBQUAD {
    unsigned char rgbBlue;      ///< 0 to 255
    unsigned char rgbGreen;     ///< 0 to 255
    unsigned char rgbRed;       ///< 0 to 255
    unsigned char rgbReserved;  ///< stored, not interpreted
};
typedef struct tagRGBQUAD RGBQUAD;  ///< the published name

/// A header and its colour table. The table has the number of entries that the header gives, or
/// holds three 32-bit masks.
struct tagBITMAPINFO {
    BITMAPINFOHEADER bmiHeader;  ///< says how many entries follow
    RGBQUAD bmiColors[1];        ///< the first of them
};
typedef struct tagBITMAPINFO BITMAPINFO;  ///< the published name

/// Values of biCompression.
enum { BI_RGB = 0, BI_RLE8 = 1, BI_RLE4 = 2, BI_BITFIELDS = 3 };

#endif

static_assert(sizeof(BITMAPINFOHEADER) == 40, "IKELEX_NO_BITMAP_TYPES: they come first");
static_assert(sizeof(RGBQUAD) == 4 && sizeof(BITMAPINFO) == 44, "not the published bitmap types");

/// A palette entry, laid out as RGBQUAD. For 16- and 32-bit images with BI_BITFIELDS the palette
/// table holds three little-endian colour masks instead, in the order red, green, blue.
struct tagKelRGBQUAD {
    unsigned char byBlue;      ///< 0 to 255
    unsigned char byGreen;     ///< 0 to 255
    unsigned char byRed;       ///< 0 to 255
    unsigned char byReserved;  ///< stored, not interpreted
};

#endif  // IKELEX_BITMAP_H
