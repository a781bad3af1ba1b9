/// @file
/// The picture formats.
#ifndef IKELEX_FORMATS_H
#define IKELEX_FORMATS_H

/// What DetectImageFormat recognises and Save is asked for. BMP, JPEG and PNG are read and written.
/// docs/formats.md says what happens to the others. The values 2, 3 and 10 are reserved.
enum KelImageFormat : int {
    KEL_IMAGE_UNKNOWN = 0,
    KEL_IMAGE_BMP = 1,
    KEL_IMAGE_JPEG = 4,
    KEL_IMAGE_PNG = 5,
    KEL_IMAGE_GIF = 6,
    KEL_IMAGE_TIFF = 7,
    KEL_IMAGE_PCX = 8,
    KEL_IMAGE_PSD = 9,
    KEL_IMAGE_PGM = 11,
    KEL_IMAGE_PPM = 12
};

#endif  // IKELEX_FORMATS_H
