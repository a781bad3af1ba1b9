/// @file
/// CKelImageFilter, the abstract filter, and CKelImageFilterScale, the scale filter.
#ifndef KELSCALE_KELFILTER_H
#define KELSCALE_KELFILTER_H

#include <ikelex/result.h>

#include "kelparameters/kelparameters.h"

class CKelImage;

/// A filter lives for one call. Its user constructs it, calls SetParameters and Apply, and destroys
/// it.
class IKELEX_API CKelImageFilter : public CKelParameterMgr {
  public:
    CKelImageFilter();
    ~CKelImageFilter() override;

    /// Filters pSrc, which is only read, into pDst, which is rebuilt from scratch.
    virtual KelResult Apply(CKelImage* pSrc, CKelImage* pDst) = 0;
};

/// Resamples any depth to a new size at 24 bits. ikelex/filters.h describes the parameters.
class IKELEX_API CKelImageFilterScale : public CKelImageFilter {
  public:
    CKelImageFilterScale();
    ~CKelImageFilterScale() override;

    /// KEL_ERR_PARAM for a null image, a target size of 0 or below or a source whose row array is
    /// missing. KEL_ERR_MEMORY when memory is short. A source without rows or columns, or a kernel
    /// number of no kernel, gives KEL_OK and a blank picture.
    KelResult Apply(CKelImage* pSrc, CKelImage* pDst) override;

    /// The target size for a source size. 0 for a factor that is not finite or leaves the range of
    /// int.
    /// @{
    int GetScaleWidth(int nSrcWidth);
    int GetScaleHeight(int nSrcHeight);
    /// @}
    /// The "type" parameter when it is a 32-bit signed integer, else KEL_SCALE_BILINEAR.
    int GetScaleType();
    /// The radius of the Gaussian and Hamming kernels, 3.0.
    double GetScaleRadius();
};

#endif  // KELSCALE_KELFILTER_H
