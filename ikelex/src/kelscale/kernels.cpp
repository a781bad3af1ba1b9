// The resampling kernels and the table of them that the scale filter uses.
//
// Every expression is evaluated in double, in the order written. The weights are cut to integers
// afterwards, so a different rounding here could change a pixel.
#include <cmath>
#include <iterator>
#include <new>

#include "kelscale.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kSqrtTwoPi = 2.5066282746310002;

// Arguments closer to zero than this take the limit of sin(x) / x.
constexpr double kSincZero = 0.000001;

template <class Kernel>
PLContribDef* Create(double dWidth) {
    return new (std::nothrow) Kernel(dWidth);
}

const tagKelScaleKernel kKernels[] = {
    {KEL_SCALE_BILINEAR, "bilinear", KEL_BILINEAR_WIDTH, Create<PLBilinearContribDef>},
    {KEL_SCALE_BOX, "box", KEL_BOX_WIDTH, Create<PLBoxContribDef>},
    {KEL_SCALE_GAUSSIAN, "gaussian", KEL_SCALE_RADIUS, Create<PLGaussianContribDef>},
    {KEL_SCALE_HAMMING, "hamming", KEL_SCALE_RADIUS, Create<PLHammingContribDef>},
};

}  // namespace

const tagKelScaleKernel* GetScaleKernels(int* pnCount) {
    constexpr int nCount = std::size(kKernels);
    *pnCount = nCount;
    return kKernels;
}

PLContribDef::PLContribDef(double dWidth) : m_dWidth(dWidth) {}
PLContribDef::~PLContribDef() = default;

PLBoxContribDef::PLBoxContribDef(double dWidth) : PLContribDef(dWidth) {}
PLBoxContribDef::~PLBoxContribDef() = default;

double PLBoxContribDef::Filter(double x) const {
    return std::fabs(x) <= m_dWidth ? 1.0 : 0.0;
}

PLBilinearContribDef::PLBilinearContribDef(double dWidth) : PLContribDef(dWidth) {}
PLBilinearContribDef::~PLBilinearContribDef() = default;

// The peak is the width and not 1, because the weights are normalised afterwards.
double PLBilinearContribDef::Filter(double x) const {
    const double dDistance = std::fabs(x);
    return dDistance < m_dWidth ? m_dWidth - dDistance : 0.0;
}

PLGaussianContribDef::PLGaussianContribDef(double dWidth) : PLContribDef(dWidth) {}
PLGaussianContribDef::~PLGaussianContribDef() = default;

double PLGaussianContribDef::Filter(double x) const {
    if (std::fabs(x) > m_dWidth) {
        return 0.0;
    }
    return std::exp(-1.0 - x * x / m_dWidth) / kSqrtTwoPi;
}

PLHammingContribDef::PLHammingContribDef(double dWidth) : PLContribDef(dWidth) {}
PLHammingContribDef::~PLHammingContribDef() = default;

// The window's cosine has period 1, whatever the width.
double PLHammingContribDef::Filter(double x) const {
    if (std::fabs(x) > m_dWidth) {
        return 0.0;
    }
    const double dWindow = 0.46 * std::cos(kTwoPi * x) + 0.54;
    if (-kSincZero < x && x < kSincZero) {
        return dWindow;
    }
    return dWindow * std::sin(kPi * x) / (kPi * x);
}
