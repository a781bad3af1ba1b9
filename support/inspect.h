/// What an image shows, and what holds for it after every operation, failed ones included.
#ifndef SUPPORT_INSPECT_H
#define SUPPORT_INSPECT_H

#include <string>

#include "kelimage/kelimage.h"
#include "support/rows.h"

namespace support {

/// Empty when the image is sound: palette counts in range, each row at its place with both ends
/// readable (an address sanitizer sees those outside the buffer), no rows without pixels, a filled
/// header block that agrees with the header. Else what is wrong.
std::string FaultOf(const CKelImage& image);

/// All an image shows: header, palette, rows with their padding.
Bytes Snapshot(const CKelImage& image);

/// Fills image with a new picture of these rows and a header block.
void FillImage(CKelImage* pImage, const Rows& rows);
/// The image's picture.
Rows RowsOf(const CKelImage& image);
/// Whether the image is sound and shows exactly these rows.
bool Shows(const CKelImage& image, const Rows& rows);

}  // namespace support

#endif  // SUPPORT_INSPECT_H
