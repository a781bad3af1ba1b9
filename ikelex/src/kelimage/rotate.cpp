#include "kelimage.h"

bool CKelImage::Rotate(int) { return false; }
