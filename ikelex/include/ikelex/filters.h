/// @file
/// The image filters and the kernels of the scale filter.
#ifndef IKELEX_FILTERS_H
#define IKELEX_FILTERS_H

/// The filters that ApplyFilter knows.
enum KelImageFilterType : int {
    /// Resamples to a new size; the result has 24 bits per pixel. Parameters:
    ///
    /// - "width" and "height": an integer gives the size in pixels, a float or double a factor;
    ///   absent keeps the size.
    /// - "type": a 32-bit signed integer, one of the kernels below; absent or of another kind means
    ///   bilinear. A number outside 1 to 4 selects no kernel: the result is KEL_OK and a black
    ///   picture of the new size, in place too, where the original is lost.
    KEL_FILTER_SCALE = 1
};

/// Values of the scale filter's "type" parameter. Any other number gives KEL_OK and a black
/// picture. In place, the original is then lost.
enum KelScaleType : int {
    KEL_SCALE_BILINEAR = 1,
    KEL_SCALE_BOX = 2,
    KEL_SCALE_GAUSSIAN = 3,
    KEL_SCALE_HAMMING = 4
};

#endif  // IKELEX_FILTERS_H
