// The pictures that are measured: a painted scene at any size and depth.
#ifndef BENCH_PICTURES_H
#define BENCH_PICTURES_H

#include <memory>
#include <string>

#include "kelimage.h"
#include "plain.h"

namespace bench {

struct Size {
    int nWidth;
    int nHeight;
    std::string Text() const { return std::to_string(nWidth) + "x" + std::to_string(nHeight); }
};

using Image = std::unique_ptr<CKelImage>;

// The scene at 1, 8, 16, 24 or 32 bits; 1 and 8 bits with a palette. Ends the program when memory
// runs out.
Image MakeScene(Size size, int nBits);

// A new image with the same header, palette and pixels.
Image Copy(CKelImage& image);

// The scene's pixels in red-green-blue order without padding, as codecs take them.
plain::Bytes RgbPixels(CKelImage& image);

// The image written in the given format, 75 being the JPEG quality.
plain::Bytes Saved(CKelImage& image, KelImageFormat eFormat);

}  // namespace bench

#endif  // BENCH_PICTURES_H
