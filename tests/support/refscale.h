// The scaler as its formulas read: the judge of every faster form, and the yardstick of its speed.
#ifndef SUPPORT_REFSCALE_H
#define SUPPORT_REFSCALE_H

#include <ikelex/filters.h>

namespace support {

// Both passes with a temporary picture between them.
void RefScale(KelScaleType eType, const unsigned char* const* ppIn, unsigned int nInWidth,
              unsigned int nInHeight, unsigned char* const* ppOut, unsigned int nOutWidth,
              unsigned int nOutHeight);

}  // namespace support

#endif  // SUPPORT_REFSCALE_H
