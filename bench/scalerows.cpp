// The scale filter into a new image: kernels and sizes, other depths, wide rows, small pictures,
// and the scaler with a progress callback.
#include <cstdlib>
#include <memory>

#include "kelscale.h"
#include "machinelimits.h"
#include "peer.h"
#include "support/reference/operations.h"

namespace bench {

namespace {

const tagKelScaleKernel& KernelOf(int nKernel) {
    int nCount = 0;
    return GetScaleKernels(&nCount)[nKernel - 1];
}

Side Filter(const SharedImage& pImage, Size out, int nKernel) {
    return Timed([=] {
        tagKelParameterItem items[] = {{"width", CVamVariant(out.nWidth)},
                                       {"height", CVamVariant(out.nHeight)},
                                       {"type", CVamVariant(nKernel)}};
        tagKelParameters params = {3, items};
        IKelImage* pScaled = nullptr;
        Check(pImage->ApplyFilter(&pScaled, KEL_FILTER_SCALE, &params));
        Use(pScaled->GetBits());
        DestroyImageObject(pScaled);
    });
}

bool GoOn(unsigned char) {
    return true;
}

// The scaler alone, between rows that stay.
Side Scaler(const std::vector<unsigned char*>& in, Size inSize,
            const std::vector<unsigned char*>& out, Size outSize, int nKernel,
            ScaleProgressFunc pfnProgress) {
    return Timed([=] {
        using Pixels = CDataRGB_UBYTE::PixelClass**;
        const tagKelScaleKernel& kernel = KernelOf(nKernel);
        const std::unique_ptr<PLContribDef> contribDef(kernel.pfnCreate(kernel.dWidth));
        C2PassScale<CDataRGB_UBYTE> scaler(contribDef.get(), pfnProgress);
        std::vector<unsigned char*> from = in, to = out;
        const auto u = [](int n) { return static_cast<unsigned int>(n); };
        if (scaler.Scale(reinterpret_cast<Pixels>(from.data()), u(inSize.nWidth), u(inSize.nHeight),
                         reinterpret_cast<Pixels>(to.data()), u(outSize.nWidth),
                         u(outSize.nHeight)) == nullptr) {
            std::exit(1);
        }
    });
}

// The row pointers of a picture of nHeight rows that repeats the first nRows rows of another.
std::vector<unsigned char*> Repeated(unsigned char* const* ppRows, int nRows, int nHeight) {
    std::vector<unsigned char*> rows;
    for (int y = 0; y < nHeight; ++y) {
        rows.push_back(ppRows[y % nRows]);
    }
    return rows;
}

// With and without a callback.
Sides ProgressSides(Size in, Size out, int nKernel) {
    const SharedImage pImage = Scene(in, 24);
    const auto pTarget =
        std::make_shared<support::Rows>(support::BlackRows(24, out.nWidth, out.nHeight));
    const auto side = [&](ScaleProgressFunc pfnProgress) -> Side {
        return [pImage, pTarget,
                side = Scaler(Repeated(pImage->GetLineArray(), in.nHeight, in.nHeight), in,
                              pTarget->Pointers(), out, nKernel, pfnProgress)] { return side(); };
    };
    return {side(GoOn), {{Kind::kOwn, "without a callback", side(nullptr)}}};
}

// A picture whose rows are few and lie in the caches, beside the whole filter: the arithmetic.
Sides ArithmeticSides(Size in, Size out, int nKernel) {
    constexpr int kRows = 32;
    const SharedImage pImage = Scene(in, 24);
    const auto pTarget = std::make_shared<support::Rows>(support::BlackRows(24, out.nWidth, kRows));
    const Side side =
        Scaler(Repeated(pImage->GetLineArray(), kRows, in.nHeight), in,
               Repeated(pTarget->Pointers().data(), kRows, out.nHeight), out, nKernel, nullptr);
    return {[pImage, pTarget, side] { return side(); },
            {{Kind::kOwn, "the whole", Filter(pImage, out, nKernel)}}};
}

Sides MakeSides(Size in, Size out, int nKernel) {
    const SharedImage pImage = Scene(in, 24);
    Sides sides{Filter(pImage, out, nKernel), {ReadWriteLimit(pImage, PictureSize(24, out))}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.Scale(pImage, out, nKernel); });
    sides.others.push_back(
        {Kind::kLoops, "reference loops", Timed([=] {
             support::Rows target = support::BlackRows(24, out.nWidth, out.nHeight);
             reference::Scale(nKernel, pImage->GetLineArray(), in.nWidth, in.nHeight,
                              target.Pointers().data(), out.nWidth, out.nHeight);
             Use(target.Row(0));
         })});
    return sides;
}

std::string Work(Size in, Size out, int nKernel) {
    return "scale " + in.Text() + " to " + out.Text() + " " + KernelOf(nKernel).pszName;
}

}  // namespace

void AddScaleRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large(), hd = options.Hd();
    const Reach none, toPeer{Kind::kPeer, 0.95}, ahead{Kind::kPeer, 0.9};
    const auto limit = [](double dFactor) { return Reach{Kind::kLimit, dFactor}; };
    struct Job {
        Size in, out;
        Reach reaches[4];  // bilinear, box, Gaussian, Hamming
    };
    const Job jobs[] = {
        {large, options.Target(160, 120), {toPeer, toPeer, none, none}},
        {large, options.Target(320, 240), {ahead, none, none, none}},
        {large, options.Target(1920, 1440), {limit(1.8), limit(1.8), limit(3.2), limit(3.2)}},
        {hd, options.Target(3840, 2160), {limit(2), limit(2), limit(4), limit(4)}},
        {{64, 64}, {32, 32}, {{Kind::kPeer, 1.0}, none, none, none}},
        {{256, 256}, {128, 128}, {none, none, none, none}},
    };
    for (const Job& job : jobs) {
        for (int nKernel = 1; nKernel <= (job.in.nWidth <= 256 ? 1 : 4); ++nKernel) {
            rows.push_back({Work(job.in, job.out, nKernel), job.reaches[nKernel - 1],
                            [=] { return MakeSides(job.in, job.out, nKernel); }});
        }
    }
    const Size icon = options.Target(320, 240), half = options.Target(1920, 1440);
    for (const auto& [out, nKernel] :
         {std::pair{icon, KEL_SCALE_BILINEAR}, {half, KEL_SCALE_HAMMING}}) {
        rows.push_back({Work(large, out, nKernel) + ", progress", {Kind::kOwn, 1.15}, [=] {
                            return ProgressSides(large, out, nKernel);
                        }});
    }
    for (const auto& [out, nKernel] : {std::pair{icon, KEL_SCALE_BILINEAR},
                                       {half, KEL_SCALE_BILINEAR},
                                       {half, KEL_SCALE_BOX},
                                       {half, KEL_SCALE_HAMMING}}) {
        rows.push_back({"part: arithmetic, " + Work(large, out, nKernel), {}, [=] {
                            return ArithmeticSides(large, out, nKernel);
                        }});
    }
    for (const int nBits : {1, 4, 8, 16, 32}) {
        rows.push_back(
            {Work(large, icon, 1) + ", from " + std::to_string(nBits), {Kind::kOwn, 1.5}, [=] {
                 return Sides{Filter(Scene(large, nBits), icon, 1),
                              {{Kind::kOwn, "from 24 bits", Filter(Scene(large, 24), icon, 1)}}};
             }});
    }
    // The tables of some ratios cost more than those of their neighbours.
    for (const int nColumns : {350000, 351000}) {
        const bool bPart = nColumns != 350000;
        rows.push_back({(bPart ? "part: scale rows of " : "scale rows of ") +
                            std::to_string(nColumns) + " columns to 1000x8 bilinear",
                        {Kind::kOwn, bPart ? 0 : 1.1},
                        [=] {
                            return Sides{Filter(Scene({nColumns, 16}, 24), {1000, 8}, 1),
                                         {{Kind::kOwn, "349000 columns",
                                           Filter(Scene({349000, 16}, 24), {1000, 8}, 1)}}};
                        }});
    }
}

}  // namespace bench
