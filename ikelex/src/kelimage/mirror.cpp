#include "kelimage.h"

void CKelImage::Mirror(int) {}
void CKelImage::MirrorBytes_V(unsigned char*, int, int) const {}
