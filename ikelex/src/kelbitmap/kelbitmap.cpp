// The functions of kelbitmap.h, which the library exports.
#include "kelbitmap.h"

#include <bit>

#include "colortable.h"
#include "integers.h"
#include "kelcpu/kelcpu.h"
#include "rows.h"

unsigned int IMG_GetColorTableSize(BITMAPINFOHEADER* pHeader) {
    return kel::ColorTableEntries(*pHeader) * 4;
}

unsigned int IMG_GetBitmapInfoSize(BITMAPINFOHEADER* pHeader) {
    return pHeader->biSize + IMG_GetColorTableSize(pHeader);
}

int MaskToRShift(unsigned int nMask) {
    return nMask == 0 ? 0 : std::countr_zero(nMask);
}

int MaskToLShift(unsigned int nMask) {
    return nMask == 0 ? 0 : 8 - std::countr_one(nMask >> std::countr_zero(nMask));
}

void RGB2BGR(unsigned char* pBuffer, int nCount) {
    if (nCount > 0) {
        kel::RowFunctionsFor(kel::BestLevel()).pfnReverse24(pBuffer, pBuffer, kel::AsSize(nCount));
    }
}
