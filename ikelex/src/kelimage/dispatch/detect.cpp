#include "../kelimage.h"

namespace {

// The first four bytes as one little-endian number.
unsigned int FirstWord(const unsigned char* p) {
    return p[0] | unsigned{p[1]} << 8 | unsigned{p[2]} << 16 | unsigned{p[3]} << 24;
}

// The two-letter signatures of bitmap files: pictures, arrays, icons and pointers.
bool IsBitmapFile(unsigned char byFirst, unsigned char bySecond) {
    return (byFirst == 'B' && (bySecond == 'M' || bySecond == 'A')) ||
           (byFirst == 'C' && (bySecond == 'I' || bySecond == 'P')) ||
           (byFirst == 'I' && bySecond == 'C');
}

// The formats that start with "P" and a digit; 1, 4 and 7 are none of ours.
KelImageFormat PortableFormat(unsigned char bySecond) {
    switch (bySecond) {
        case '2':
        case '5':
            return KEL_IMAGE_PGM;
        case '3':
        case '6':
            return KEL_IMAGE_PPM;
        default:
            return KEL_IMAGE_UNKNOWN;
    }
}

}  // namespace

KelImageFormat CKelImage::DetectImageFormat(unsigned char* pBuffer, int) const {
    if (IsBitmapFile(pBuffer[0], pBuffer[1])) {
        return KEL_IMAGE_BMP;
    }
    switch (FirstWord(pBuffer)) {
        case 0x2A004D4D:  // "MM", 0, 42
        case 0x002A4949:  // "II", 42, 0
            return KEL_IMAGE_TIFF;
        case 0x38464947:  // "GIF8"
            return KEL_IMAGE_GIF;
        case 40:  // a bitmap header without a file header before it
            return KEL_IMAGE_BMP;
        case 0x474E5089:  // 0x89, "PNG"
            return KEL_IMAGE_PNG;
        case 0x53504238:  // "8BPS"
            return KEL_IMAGE_PSD;
        default:
            break;
    }
    if (pBuffer[0] == 0x0A && pBuffer[2] == 1) {
        return KEL_IMAGE_PCX;
    }
    if (pBuffer[0] == 0xFF && pBuffer[1] == 0xD8 && pBuffer[2] == 0xFF) {
        return KEL_IMAGE_JPEG;
    }
    return pBuffer[0] == 'P' ? PortableFormat(pBuffer[1]) : KEL_IMAGE_UNKNOWN;
}
