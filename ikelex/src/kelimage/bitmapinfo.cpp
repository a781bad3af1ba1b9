#include "kelimage.h"

KelResult CKelImage::Open() { return KEL_ERR_PARAM; }
KelResult CKelImage::Open(BITMAPINFO*, unsigned char*) { return KEL_ERR_PARAM; }
KelResult CKelImage::OpenAs(BITMAPINFO*, unsigned char*, int) { return KEL_ERR_PARAM; }
BITMAPINFO* CKelImage::GetBitmapInfo() { return nullptr; }
BITMAPINFO* CKelImage::AllocateBMI(unsigned int) { return nullptr; }
