// The zoom of a whole picture, from rows to rows.
#ifndef KELGEOMETRY_ZOOM_H
#define KELGEOMETRY_ZOOM_H

#include "kelcpu/kelcpu.h"

namespace kel {

// Source and destination rows are padded to multiples of 4 bytes. They do not overlap. All sizes
// are 1 or more.
struct Zoom {
    const unsigned char* pSrc;
    int nSrcWidth;
    int nSrcHeight;
    unsigned char* pDst;
    int nDstWidth;
    int nDstHeight;
};

// Writes every pixel of the destination at 1, 4, 8, 16, 24 and 32 bits. At 1, 4 and 8 bits a pixel
// is the nearest one of the source, so that palette indices stay what they are, and unused bits of
// a row's last byte are 0. At the other depths ZoomBlend defines its bytes. Padding bytes are not
// written, nor is anything at a depth that has no pixels of 2, 3 or 4 whole bytes. Throws
// std::bad_alloc when one of its three tables cannot be allocated. Nothing is written then.
void ZoomPicture(CpuLevel eLevel, int nBits, const Zoom& zoom);

}  // namespace kel

#endif  // KELGEOMETRY_ZOOM_H
