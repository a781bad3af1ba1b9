/// @file
/// The two-pass scaler, with its kernels and contribution tables.
///
/// Rows are arrays of 3-byte pixels, an image is an array of row pointers. Weights are 8-bit fixed
/// point and sum to 256 for every output position that has a positive raw sum. The scaler knows
/// nothing of the image class.
#ifndef KELSCALE_KELSCALE_H
#define KELSCALE_KELSCALE_H

#include <ikelex/export.h>
#include <ikelex/filters.h>

/// A resampling kernel of half-width m_dWidth. It is zero for |x| beyond that.
class IKELEX_API PLContribDef {
  public:
    /// dWidth is the half-width, in pixels of the coarser side.
    explicit PLContribDef(double dWidth);
    virtual ~PLContribDef();

    /// The kernel's value at x. It must depend on x alone, because a table keeps the values of
    /// arguments that repeat.
    virtual double Filter(double x) const = 0;

    double m_dWidth;  ///< the half-width
};

/// 1 for |x| <= width.
class IKELEX_API PLBoxContribDef : public PLContribDef {
  public:
    /// dWidth is the half-width.
    explicit PLBoxContribDef(double dWidth);
    ~PLBoxContribDef() override;

    /// The value at x.
    double Filter(double x) const override;
};

/// width - |x| for |x| < width.
class IKELEX_API PLBilinearContribDef : public PLContribDef {
  public:
    /// dWidth is the half-width.
    explicit PLBilinearContribDef(double dWidth);
    ~PLBilinearContribDef() override;

    /// The value at x.
    double Filter(double x) const override;
};

/// exp(-1 - x^2 / width) / sqrt(2 pi) for |x| <= width.
class IKELEX_API PLGaussianContribDef : public PLContribDef {
  public:
    /// dWidth is the half-width.
    explicit PLGaussianContribDef(double dWidth);
    ~PLGaussianContribDef() override;

    /// The value at x.
    double Filter(double x) const override;
};

/// (0.54 + 0.46 cos(2 pi x)) sin(pi x) / (pi x) for |x| <= width.
class IKELEX_API PLHammingContribDef : public PLContribDef {
  public:
    /// dWidth is the half-width.
    explicit PLHammingContribDef(double dWidth);
    ~PLHammingContribDef() override;

    /// The value at x.
    double Filter(double x) const override;
};

/// The half-widths at which the scale filter uses the kernels.
/// @{
const double KEL_BILINEAR_WIDTH = 0.64;
const double KEL_BOX_WIDTH = 0.5;
const double KEL_SCALE_RADIUS = 3.0;  ///< of the Gaussian and Hamming kernels
/// @}

/// One kernel of the scale filter.
struct tagKelScaleKernel {
    KelScaleType eType;   ///< the value of the "type" parameter
    const char* pszName;  ///< for people, in lower case
    double dWidth;        ///< the width the scale filter uses
    /// A new kernel, which the caller deletes. Null when it cannot be allocated.
    PLContribDef* (*pfnCreate)(double dWidth);
};

/// The kernels of the scale filter, of which there are *pnCount, in the order of their numbers.
IKELEX_API const tagKelScaleKernel* GetScaleKernels(int* pnCount);

/// The weights of one output position. Entry j belongs to source index nLeft + j.
struct PixelContribType {
    int* pWeights;  ///< nWindowSize entries
    int nLeft;      ///< first contributing source index
    int nRight;     ///< last one, below nLeft when none contributes
};

/// The contribution table of one pass, one record per output position. The weights of all records
/// lie in one block. A host may change weights, but no pointer of a table.
struct LineContribType {
    PixelContribType* pPixels;  ///< nLineLength records
    int nWindowSize;            ///< weights each record can hold
    int nLineLength;            ///< number of records
};

/// Called before every output row of either pass with the percentage done (0 to 49, then 50 to 99).
/// False stops the scale.
typedef bool (*ScaleProgressFunc)(unsigned char byPercent);

/// The pixel traits of the one instantiation. Three unsigned bytes are filtered independently.
class CDataRGB_UBYTE {
  public:
    typedef unsigned char PixelClass[3];  ///< one pixel
};

/// Resamples an image in two passes, horizontally first, with one kernel. One thread at a time.
template <class DataClass>
class C2PassScale {
  public:
    typedef typename DataClass::PixelClass PixelClass;  ///< one pixel

    /// Neither the kernel nor the callback is owned. pfnProgress may be null.
    explicit C2PassScale(PLContribDef* pContribDef, ScaleProgressFunc pfnProgress = nullptr);
    virtual ~C2PassScale();

    /// Resamples ppIn into ppOut, which holds nOutHeight rows of at least nOutWidth pixels, apart
    /// from one another. They may be rows of ppIn. Returns ppOut, or null
    /// - when working storage cannot be allocated, with no row written,
    /// - when the callback cancels, with the rows before that written.
    /// A zero output size writes nothing and returns ppOut.
    PixelClass** Scale(PixelClass** ppIn, unsigned int nInWidth, unsigned int nInHeight,
                       PixelClass** ppOut, unsigned int nOutWidth, unsigned int nOutHeight);

    /// One pass each, over nOutHeight rows.
    /// @{
    void HorizScale(PixelClass** ppIn, unsigned int nInWidth, unsigned int nInHeight,
                    PixelClass** ppOut, unsigned int nOutWidth, unsigned int nOutHeight);
    void VertScale(PixelClass** ppIn, unsigned int nInWidth, unsigned int nInHeight,
                   PixelClass** ppOut, unsigned int nOutWidth, unsigned int nOutHeight);
    /// @}

    /// One row of the horizontal pass. pTable has at least nOutWidth records, and their positions
    /// lie in the row. Neither is checked. Does nothing for null or a width of 0.
    void ScaleRow(PixelClass** ppIn, unsigned int nInWidth, PixelClass** ppOut,
                  unsigned int nOutWidth, unsigned int nRow, LineContribType* pTable) const;

    /// The table of one pass. dRatio = output size / source size. Null when it cannot be allocated.
    LineContribType* CalcContributions(unsigned int nOutLength, unsigned int nInLength,
                                       double dRatio) const;
    /// A table of nRecords records of nWeights weights, or null.
    LineContribType* AllocContributions(unsigned int nRecords, unsigned int nWeights) const;
    /// Releases a table. Null is accepted.
    void FreeContributions(LineContribType* pTable) const;

    ScaleProgressFunc m_pfnProgress;  ///< may be null
    bool m_bCancelled;                ///< the callback returned false. Cleared by Scale
    PLContribDef* m_pContribDef;      ///< not owned
};

extern template class IKELEX_API C2PassScale<CDataRGB_UBYTE>;

#endif  // KELSCALE_KELSCALE_H
