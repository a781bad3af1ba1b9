// Slow reference loops for row conversion, written from the formulas: one pixel, one channel at a
// time.
#ifndef SUPPORT_REFROWS_H
#define SUPPORT_REFROWS_H

#include <vector>

#include "support/pictures.h"

namespace support {

// What GetLine24At leaves in out, which holds one 24-bit stride, for row nRow of the picture. bRgb:
// red, green, blue; else blue, green, red.
void RefLine24(const Picture& picture, int nRow, bool bRgb, std::vector<unsigned char>* pOut);

// One channel of pixel word nPixel under a colour mask, counted bit by bit.
unsigned char RefChannel(unsigned int nPixel, unsigned int nMask);

}  // namespace support

#endif  // SUPPORT_REFROWS_H
