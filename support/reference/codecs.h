/// libjpeg and libpng, driven the shortest way over bytes in memory: in benchmarks the limit of the
/// codecs' speed, in tests the judges of what they read and write.
#ifndef REFERENCE_CODECS_H
#define REFERENCE_CODECS_H

#include <png.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

// After <cstdio>, which it needs.
#include <jpeglib.h>

#include "support/rows.h"

namespace reference {

using support::Bytes;

// Rows from the top without padding, in fresh memory.
using FreshRows = std::unique_ptr<unsigned char[]>;

// Thrown where libjpeg reports an error. libpng's errors end the program.
struct JpegError {};

struct JpegPicture {
    int nWidth = 0;
    int nHeight = 0;
    int nComponents = 0;  // bytes a pixel
    std::size_t nSize = 0;
    FreshRows pRows;
};

// Decodes with libjpeg's defaults, except that fewer than 3 components ask for red, green, blue.
JpegPicture DecodeJpeg(const Bytes& file);

struct JpegFormat {
    int nWidth = 0;
    int nHeight = 0;
    int nComponents = 3;  // 1 grey, 3 red, green, blue, 4 CMYK, 2 and 5 unknown
    int nQuality = 75;
    bool bProgressive = false;
    J_COLOR_SPACE eStored = JCS_UNKNOWN;  // JCS_UNKNOWN: libjpeg's choice
    unsigned int nComment = 0;            // bytes of a comment before the picture; 0 for none
    unsigned int nRestart = 0;            // MCUs between restart markers; 0 for none
};

// Encodes rows without padding with libjpeg's defaults.
Bytes EncodeJpeg(const unsigned char* pRows, const JpegFormat& format);

struct PngFormat {
    int nWidth = 0;
    int nHeight = 0;
    int nBitDepth = 8;
    int nColorType = PNG_COLOR_TYPE_RGB;
    int nInterlace = PNG_INTERLACE_NONE;
    std::vector<png_color> palette;
};

struct PngPicture : PngFormat {
    std::size_t nStride = 0;
    FreshRows pRows;
};

// Asks libpng for something between the header and the rows.
using PngRequest = std::function<void(png_structp, png_infop)>;

// Decodes into rows as stored (truecolour, with alpha, or palette indices), or as request wants.
PngPicture DecodePng(const Bytes& file, const PngRequest& request = nullptr);

// Encodes rows of nStride bytes at libpng's default settings.
Bytes EncodePng(const unsigned char* pRows, std::size_t nStride, const PngFormat& format,
                const PngRequest& request = nullptr);

}  // namespace reference

#endif  // REFERENCE_CODECS_H
