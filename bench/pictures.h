/// The pictures that are measured: a painted scene at any size and depth.
#ifndef BENCH_PICTURES_H
#define BENCH_PICTURES_H

#include <memory>
#include <string>

#include "kelimage.h"
#include "support/rows.h"

namespace bench {

struct Size {
    int nWidth;
    int nHeight;
    std::string Text() const { return std::to_string(nWidth) + "x" + std::to_string(nHeight); }
};

using Image = std::unique_ptr<CKelImage>;
using SharedImage = std::shared_ptr<CKelImage>;

/// The scene at 1, 4, 8, 16, 24 or 32 bits, with a palette up to 8; painted once for all rows.
/// Nobody changes its size or depth. Ends the program when memory runs out.
SharedImage Scene(Size size, int nBits);

/// A new image with the same header, palette and pixels.
Image Copy(CKelImage& image);

/// The image's rows, without header and palette.
support::Rows RowsOf(CKelImage& image);

/// The scene's pixels in red-green-blue order without padding, as codecs take them.
support::Bytes RgbPixels(CKelImage& image);

/// The image written in the given format, 75 being the JPEG quality.
support::Bytes Saved(CKelImage& image, KelImageFormat eFormat);

/// Bytes of rows of that size.
inline std::size_t PictureSize(int nBits, Size size) {
    return static_cast<std::size_t>(kel::PictureSize(nBits, size.nWidth, size.nHeight));
}

}  // namespace bench

#endif  // BENCH_PICTURES_H
