// Plain libjpeg loops over memory: the independent judge of the JPEG reader and writer.
#ifndef SUPPORT_PLAINJPEG_H
#define SUPPORT_PLAINJPEG_H

#include <cstdio>
#include <vector>

#include <jpeglib.h>

namespace support {

using Bytes = std::vector<unsigned char>;

// Samples as libjpeg delivers or takes them: rows from the top, nComponents bytes a pixel, no
// padding.
struct Samples {
    int nWidth = 0;
    int nHeight = 0;
    int nComponents = 0;
    Bytes bytes;
};

// Gradients with noise on top, the same for the same arguments.
Samples MakeSamples(int nWidth, int nHeight, int nComponents);

struct EncodeOptions {
    J_COLOR_SPACE eStored = JCS_UNKNOWN;  // JCS_UNKNOWN: libjpeg's choice
    int nQuality = 75;
    bool bProgressive = false;
    unsigned int nComment = 0;  // bytes of a comment before the picture; 0 for none
};

// Encodes samples with libjpeg's defaults: 1 grey, 3 red, green, blue, 4 CMYK, else unknown.
Bytes PlainEncode(const Samples& samples, const EncodeOptions& options = {});

// Decodes with libjpeg's defaults, except that fewer than 3 components ask for red, green, blue.
// False when libjpeg reports an error.
bool PlainDecode(const Bytes& file, Samples* pSamples);

}  // namespace support

#endif  // SUPPORT_PLAINJPEG_H
