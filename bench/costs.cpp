// The peak memory of each operation beside its bound, as docs/trust.md gives it. Each operation
// runs in a process of its own, which compares its high-water mark with what it held before.
#include <ikelex/ikelex.h>
#include <platform/vamarchivememory.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>

#include "kelimage.h"

namespace {

// A line of this process's status in KiB: "VmHWM:" is the peak, "VmRSS:" the memory in use.
long Status(const char* pszName) {
    long nValue = 0;
    char szLine[256];
    if (std::FILE* pStatus = std::fopen("/proc/self/status", "r")) {
        while (std::fgets(szLine, sizeof szLine, pStatus) != nullptr) {
            if (std::strncmp(szLine, pszName, std::strlen(pszName)) == 0) {
                std::sscanf(szLine + std::strlen(pszName), "%ld", &nValue);
            }
        }
        std::fclose(pStatus);
    }
    return nValue;
}

using Work = std::function<void(CKelImage&)>;

// Runs work in a child and prints how far its memory rose and how far it may rise. False when it
// rose further.
bool Measure(const char* pszName, double dBound, const Work& prepare, const Work& work) {
    std::fflush(stdout);
    const pid_t nChild = fork();
    if (nChild == 0) {
        CKelImage image;
        prepare(image);
        const long nBefore = Status("VmRSS:");
        work(image);
        const double dRise = static_cast<double>(Status("VmHWM:") - nBefore) * 1024;
        std::printf("%-46s %8.1f %8.1f\n", pszName, dRise / 1e6, dBound / 1e6);
        std::fflush(stdout);
        _exit(dRise <= dBound ? 0 : 1);
    }
    int nStatus = 1;
    waitpid(nChild, &nStatus, 0);
    return nStatus == 0;
}

Work Holding(int nWidth, int nHeight, int nBits) {
    return [=](CKelImage& image) {
        image.Create(nWidth, nHeight, nBits);
        std::memset(image.GetBits(), 77, image.GetBmpDataSize());
    };
}

Work Scale(int nWidth, int nHeight, int nKernel) {
    return [=](CKelImage& image) {
        tagKelParameterItem items[] = {{"width", CVamVariant(nWidth)},
                                       {"height", CVamVariant(nHeight)},
                                       {"type", CVamVariant(nKernel)}};
        tagKelParameters params = {3, items};
        image.ApplyFilter(KEL_FILTER_SCALE, &params);
    };
}

constexpr double kSmall = 4e6;  // libraries, tables and buffers of no growing size

// Bytes of a picture's rows and their array.
double Picture(int nBits, int nWidth, int nHeight) {
    const long nStride = (static_cast<long>(nBits) * nWidth + 31) / 32 * 4;
    return static_cast<double>(nStride + 8) * nHeight;
}

// The weights of one axis.
double Weights(int nFrom, int nTo, int nKernel) {
    const double dReach = nKernel == KEL_SCALE_BILINEAR ? 1 : 3;
    const double dReduction = std::max(1.0, static_cast<double>(nFrom) / nTo);
    return nTo * (48 + 16 * (2 * std::ceil(dReach * dReduction) + 1));
}

Work OpenSaved(KelImageFormat eFormat, CVamArchiveMemory& file, CKelImage& source) {
    source.Save(&file, eFormat, nullptr);
    return [&file](CKelImage& image) {
        CVamArchiveMemory archive(file.GetData(), file.GetSize());
        image.Open(&archive);
    };
}

}  // namespace

int main() {
    std::printf("%-46s %8s %8s\n", "MB beside what was held before", "peak", "bound");
    CKelImage source;
    Holding(4000, 3000, 24)(source);
    const Work nothing = [](CKelImage&) {};
    const double dPicture = Picture(24, 4000, 3000) + kSmall;
    CVamArchiveMemory bmp, jpeg, png;
    bool bHolds =
        Measure("open BMP 4000x3000", dPicture, nothing, OpenSaved(KEL_IMAGE_BMP, bmp, source));
    bHolds &=
        Measure("open JPEG 4000x3000", dPicture, nothing, OpenSaved(KEL_IMAGE_JPEG, jpeg, source));
    bHolds &=
        Measure("open PNG 4000x3000", dPicture, nothing, OpenSaved(KEL_IMAGE_PNG, png, source));
    struct Case {
        int nWidth, nHeight, nBits, nToWidth, nToHeight, nKernel;
    };
    const Case cases[] = {{4000, 3000, 24, 320, 240, KEL_SCALE_BILINEAR},
                          {4000, 3000, 8, 320, 240, KEL_SCALE_BILINEAR},
                          {20000, 2000, 24, 1000, 1000, KEL_SCALE_HAMMING},
                          {1000, 1, 24, 2000000, 1, KEL_SCALE_HAMMING},
                          {1, 1000, 24, 1, 2000000, KEL_SCALE_HAMMING},
                          {12000000, 1, 24, 2000, 1, KEL_SCALE_HAMMING},
                          {12000000, 1, 24, 12000000, 1, KEL_SCALE_BILINEAR},
                          {3000000, 4, 24, 3000000, 8, KEL_SCALE_BILINEAR}};
    for (const Case& c : cases) {
        char szName[128];
        std::snprintf(szName, sizeof szName, "scale %dx%d, %d bits, to %dx%d, %s", c.nWidth,
                      c.nHeight, c.nBits, c.nToWidth, c.nToHeight,
                      c.nKernel == KEL_SCALE_BILINEAR ? "bilinear" : "Hamming");
        const double dBetween = Picture(24, c.nToWidth, c.nHeight);
        const double dBound = Picture(24, c.nToWidth, c.nToHeight) + dBetween + (16 << 20) +
                              Weights(c.nWidth, c.nToWidth, c.nKernel) +
                              Weights(c.nHeight, c.nToHeight, c.nKernel) + kSmall;
        bHolds &= Measure(szName, dBound, Holding(c.nWidth, c.nHeight, c.nBits),
                          Scale(c.nToWidth, c.nToHeight, c.nKernel));
    }
    bHolds &= Measure("zoom 1000x1 to 80000x100", Picture(24, 80000, 100) + 24.0 * 80000 + kSmall,
                      Holding(1000, 1, 24), [](CKelImage& image) { image.ZoomImage(80000, 100); });
    bHolds &= Measure("rotate 4000x3000", Picture(24, 3000, 4000) + kSmall, Holding(4000, 3000, 24),
                      [](CKelImage& image) { image.Rotate(0); });
    return bHolds ? 0 : 1;
}
