#include "kelimage.h"

void CKelImage::ChangeBitCount(int) {}
void CKelImage::Convert24BitTo32Bit(int, unsigned char*, unsigned char*) {}
