#include "../kelimage.h"

KelResult CKelImage::Open(const char*) { return KEL_ERR_OPEN_FORMAT; }
KelResult CKelImage::Open(CVamArchive*) { return KEL_ERR_OPEN_FORMAT; }
