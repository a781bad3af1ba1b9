#include "kelbitmap.h"

unsigned int IMG_GetColorTableSize(BITMAPINFOHEADER*) { return 0; }
unsigned int IMG_GetBitmapInfoSize(BITMAPINFOHEADER*) { return 0; }
int MaskToRShift(unsigned int) { return 0; }
int MaskToLShift(unsigned int) { return 0; }
void RGB2BGR(unsigned char*, int) {}
