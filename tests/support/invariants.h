// What holds for an image after every operation, failed ones included.
#ifndef SUPPORT_INVARIANTS_H
#define SUPPORT_INVARIANTS_H

#include <gtest/gtest.h>

#include "kelimage/kelimage.h"

namespace support {

// Palette counts in range; each row at its place, both its ends readable (an address sanitizer sees
// those outside the buffer); no rows without pixels; a filled header block that agrees with the
// header.
testing::AssertionResult Consistent(const CKelImage& image);

}  // namespace support

#endif  // SUPPORT_INVARIANTS_H
