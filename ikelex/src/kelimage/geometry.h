// What the operations that change a picture's shape have in common.
#ifndef KELIMAGE_GEOMETRY_H
#define KELIMAGE_GEOMETRY_H

#include <cstdint>
#include <memory>

class CKelImage;

namespace kel {

// The zeroed pixel buffer of a picture of nSize bytes. Traces "bufferSize" with the low 32 bits of
// a size of 0 or above the traced limit, and goes on. Null when the size does not fit 32 bits or
// the buffer cannot be had; lets no exception through.
std::unique_ptr<unsigned char[]> NewPicture(std::int64_t nSize);

// A scratch row of nSize bytes, uninitialised. Null, untraced, when it cannot be had.
std::unique_ptr<unsigned char[]> NewScratch(std::int64_t nSize);

// Records a new picture size in the image's header and, when there is one, in its header block,
// then rebuilds the row array over the pixel buffer. The buffer holds nHeight rows by now; their
// size fits 32 bits.
void SetPictureSize(CKelImage* pImage, int nWidth, int nHeight);

}  // namespace kel

#endif  // KELIMAGE_GEOMETRY_H
