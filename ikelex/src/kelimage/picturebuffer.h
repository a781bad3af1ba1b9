// What the operations that change a picture's shape have in common.
#ifndef KELIMAGE_PICTUREBUFFER_H
#define KELIMAGE_PICTUREBUFFER_H

#include <cstdint>
#include <memory>

class CKelImage;

namespace kel {

// A new zeroed pixel buffer. With bOverwritten only the padding and the last row are zero, and the
// caller goes on to write every pixel. Traces "bufferSize" with the low 32 bits of a size of 0 or
// above the traced limit, and goes on. Null for a negative width or height, when the size does not
// fit 32 bits, or when the allocation fails. Lets no exception through.
std::unique_ptr<unsigned char[]> NewPicture(int nBits, int nWidth, int nHeight, bool bOverwritten);

// Records a new picture size in the image's header, and in a header block that Open() did not
// refuse, then rebuilds the row array over the pixel buffer. The buffer already holds nHeight rows,
// whose size fits 32 bits.
void SetPictureSize(CKelImage* pImage, int nWidth, int nHeight);

}  // namespace kel

#endif  // KELIMAGE_PICTUREBUFFER_H
