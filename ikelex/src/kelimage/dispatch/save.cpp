#include "../kelimage.h"

KelResult CKelImage::Save(const char*, KelImageFormat, tagKelParameters*) {
    return KEL_ERR_NOT_IMPLEMENTED;
}
KelResult CKelImage::Save(CVamArchive*, KelImageFormat, tagKelParameters*) {
    return KEL_ERR_NOT_IMPLEMENTED;
}
