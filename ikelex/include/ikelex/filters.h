/// @file
/// The image filters and the kernels of the scale filter.
#ifndef IKELEX_FILTERS_H
#define IKELEX_FILTERS_H

/// The filters that ApplyFilter knows.
enum KelImageFilterType : int {
    /// Resamples to a new size. The result has 24 bits per pixel. Its parameters are
    ///
    /// - "width" and "height". An integer is a size in pixels, a float or double is a factor.
    ///   Without a value of these kinds the size stays.
    /// - "type", a KelScaleType as a 32-bit signed integer. Without one the kernel is bilinear.
    KEL_FILTER_SCALE = 1
};

/// Values of the scale filter's "type" parameter. Any other number gives KEL_OK and a black picture
/// of the new size. In place, the original is then lost.
enum KelScaleType : int {
    KEL_SCALE_BILINEAR = 1,
    KEL_SCALE_BOX = 2,
    KEL_SCALE_GAUSSIAN = 3,
    KEL_SCALE_HAMMING = 4
};

#endif  // IKELEX_FILTERS_H
