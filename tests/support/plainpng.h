// PNG files made and read by libpng alone: the judge of the PNG reader and writer.
#ifndef SUPPORT_PLAINPNG_H
#define SUPPORT_PLAINPNG_H

#include <png.h>

#include <functional>
#include <vector>

namespace support {

using Bytes = std::vector<unsigned char>;

// What a PNG file says and holds; the rows one after another without padding.
struct PlainPng {
    unsigned int nWidth = 0;
    unsigned int nHeight = 0;
    int nBitDepth = 8;
    int nColorType = PNG_COLOR_TYPE_RGB;
    int nInterlace = PNG_INTERLACE_NONE;
    std::vector<png_color> palette;
    Bytes rows;

    std::size_t RowBytes() const { return nHeight == 0 ? 0 : rows.size() / nHeight; }
};

// Asks libpng for something between the header and the rows.
using PngRequest = std::function<void(png_structp, png_infop)>;

// A picture of that kind with random rows; indices and, at depth below 8, the unused bits of a
// row's last byte stay what every palette of 2^depth entries (at most 200) allows.
PlainPng RandomPng(int nColorType, int nBitDepth, int nInterlace, unsigned int nWidth,
                   unsigned int nHeight);

// The file. libpng errors abort the test program.
Bytes EncodePlainPng(PlainPng picture, const PngRequest& request = nullptr);

// The picture as libpng delivers it after the transforms request asks for.
PlainPng DecodePlainPng(Bytes file, const PngRequest& request = nullptr);

}  // namespace support

#endif  // SUPPORT_PLAINPNG_H
