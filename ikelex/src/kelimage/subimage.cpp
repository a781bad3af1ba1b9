#include "kelimage.h"

void CKelImage::SubImage(int, int, int, int) {}
void CKelImage::CopyBytes(int, unsigned char*, int, int, int, int, int, int) const {}
