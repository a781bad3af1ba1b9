// The resampling kernels. Every expression is evaluated in double, in the order written: the
// weights are cut to integers afterwards, so a different rounding here could change a pixel.
#include <cmath>

#include "kelscale.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kSqrtTwoPi = 2.5066282746310002;

// Arguments closer to zero than this take the limit of sin(x) / x.
constexpr double kSincZero = 0.000001;

}  // namespace

PLContribDef::PLContribDef(double dWidth) : m_dWidth(dWidth) {}
PLContribDef::~PLContribDef() = default;

PLBoxContribDef::PLBoxContribDef(double dWidth) : PLContribDef(dWidth) {}
PLBoxContribDef::~PLBoxContribDef() = default;

double PLBoxContribDef::Filter(double x) const {
    return std::fabs(x) <= m_dWidth ? 1.0 : 0.0;
}

PLBilinearContribDef::PLBilinearContribDef(double dWidth) : PLContribDef(dWidth) {}
PLBilinearContribDef::~PLBilinearContribDef() = default;

// The peak is the width, not 1: normalising the weights makes up for it.
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
