// New pictures to be filled by the caller.
#ifndef EXAMPLES_NEWPICTURE_H
#define EXAMPLES_NEWPICTURE_H

#include <ikelex/handle.h>

// A new picture of the given size and depth, all zero, with room for nColours palette entries. Its
// colours are set through GetBitmapInfo, and Open() then makes the palette of them. Null when
// memory runs out.
KelImagePtr NewPicture(int nWidth, int nHeight, int nBits, int nColours = 0);

#endif  // EXAMPLES_NEWPICTURE_H
