// The scaler as its formulas read: the judge of every faster form, and the yardstick of its speed.
#ifndef SUPPORT_REFSCALE_H
#define SUPPORT_REFSCALE_H

#include <ikelex/filters.h>

#include "plain.h"

namespace support {

// Both passes with a temporary picture between them.
inline void RefScale(KelScaleType eType, unsigned char** ppIn, unsigned int nInWidth,
                     unsigned int nInHeight, unsigned char** ppOut, unsigned int nOutWidth,
                     unsigned int nOutHeight) {
    plain::Scale(eType, ppIn, static_cast<int>(nInWidth), static_cast<int>(nInHeight), ppOut,
                 static_cast<int>(nOutWidth), static_cast<int>(nOutHeight));
}

}  // namespace support

#endif  // SUPPORT_REFSCALE_H
