#include "kelimage.h"

void CKelImage::ZoomImage(int, int) {}
void CKelImage::ZoomBytes(int, unsigned char*, int, int, unsigned char*, int, int) const {}
