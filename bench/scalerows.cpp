// The scale filter into a new image, against the plain passes into fresh memory.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "suite.h"

namespace bench {

namespace {

constexpr const char* kKernels[] = {"", "bilinear", "box", "gaussian", "hamming"};

Pair MakePair(Size in, Size out, int nKernel) {
    std::shared_ptr<CKelImage> pImage = MakeScene(in, 24);
    const Side ours = [=] {
        tagKelParameterItem items[] = {{"width", CVamVariant(out.nWidth)},
                                       {"height", CVamVariant(out.nHeight)},
                                       {"type", CVamVariant(nKernel)}};
        tagKelParameters params = {3, items};
        return Seconds([&] {
            IKelImage* pScaled = nullptr;
            if (pImage->ApplyFilter(&pScaled, KEL_FILTER_SCALE, &params) != KEL_OK)
                std::exit(1);
            Use(pScaled->GetBits());
            DestroyImageObject(pScaled);
        });
    };
    const Side yardstick = [=] {
        return Seconds([&] {
            const int nStride = (24 * out.nWidth + 31) / 32 * 4;
            plain::Bytes target(static_cast<std::size_t>(nStride) *
                                static_cast<std::size_t>(out.nHeight));
            plain::Scale(nKernel, pImage->GetLineArray(), in.nWidth, in.nHeight,
                         plain::Rows(target.data(), nStride, out.nHeight).data(), out.nWidth,
                         out.nHeight);
            Use(target.data());
        });
    };
    return {ours, yardstick};
}

}  // namespace

void AddScaleRows(std::vector<Row>& rows, const Options& options) {
    struct Job {
        Size in, out;
        double dTargets[4];
    };
    const Job jobs[] = {
        {options.Large(), options.Target(320, 240), {0.18, 0.10, 0.055, 0.06}},
        {options.Large(), options.Target(1920, 1440), {0.10, 0.11, 0.07, 0.09}},
        {options.Hd(), options.Target(3840, 2160), {0.10, 0.09, 0.09, 0.10}},
    };
    for (const Job& job : jobs) {
        for (int nKernel = 1; nKernel <= 4; nKernel++) {
            rows.push_back(
                {"scale " + job.in.Text() + " to " + job.out.Text() + " " + kKernels[nKernel],
                 "plain loops", job.dTargets[nKernel - 1],
                 [job, nKernel] { return MakePair(job.in, job.out, nKernel); }});
        }
    }
}

}  // namespace bench
