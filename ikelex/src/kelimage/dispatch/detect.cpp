#include "../kelimage.h"

KelImageFormat CKelImage::DetectImageFormat(unsigned char*, int) const { return KEL_IMAGE_UNKNOWN; }
