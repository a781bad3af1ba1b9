// The scaler as its formulas read: the judge of every faster form, and the yardstick of its speed.
#ifndef SUPPORT_REFSCALE_H
#define SUPPORT_REFSCALE_H

#include <ikelex/filters.h>

#include <functional>
#include <vector>

namespace support {

using Kernel = std::function<double(double)>;

// A kernel function and its half-width, as the scale filter uses them.
struct RefKernel {
    double dWidth;
    Kernel fnFilter;
};
RefKernel MakeRefKernel(KelScaleType eType);

// The weights of one output position: entry j belongs to source position nLeft + j.
struct RefRecord {
    int nLeft;
    std::vector<int> weights;
};
std::vector<RefRecord> RefContributions(const RefKernel& kernel, int nOut, int nIn);

// The two loops over rows of 3-byte pixels, in their natural order: three channels a step.
void RefHorizontal(const std::vector<RefRecord>& table, const unsigned char* const* ppIn,
                   unsigned char* const* ppOut, int nRows);
void RefVertical(const std::vector<RefRecord>& table, const unsigned char* const* ppIn,
                 unsigned char* const* ppOut, int nWidth);

// Both passes with a temporary picture between them.
void RefScale(const RefKernel& kernel, const unsigned char* const* ppIn, int nInWidth,
              int nInHeight, unsigned char* const* ppOut, int nOutWidth, int nOutHeight);

}  // namespace support

#endif  // SUPPORT_REFSCALE_H
