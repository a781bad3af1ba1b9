#include "../kelimage.h"

KelResult CKelImage::ApplyFilter(KelImageFilterType, tagKelParameters*) { return KEL_ERR_FILTER_TYPE; }
KelResult CKelImage::ApplyFilter(IKelImage**, KelImageFilterType, tagKelParameters*) {
    return KEL_ERR_FILTER_TYPE;
}
KelResult CKelImage::ApplyFilter1(CKelImage**, KelImageFilterType, tagKelParameters*) {
    return KEL_ERR_FILTER_TYPE;
}
