// Zoom, transposition and mirror, which work in place: the image takes over a new picture and
// releases the old one.
#include "machinelimits.h"
#include "peer.h"
#include "support/reference/operations.h"

namespace bench {

namespace {

Side Zoom(const SharedImage& pImage, Size out) {
    return TimedOn([=] { return Copy(*pImage); },
                   [=](CKelImage& image) { image.ZoomImage(out.nWidth, out.nHeight); });
}

Sides ZoomSides(Size in, Size out) {
    const SharedImage pImage = Scene(in, 24);
    Sides sides{Zoom(pImage, out), {ReadWriteLimit(pImage, PictureSize(24, out))}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.Zoom(pImage, out); });
    const auto pRows = std::make_shared<support::Rows>(RowsOf(*pImage));
    sides.others.push_back({Kind::kLoops, "reference loop", Timed([=] {
                                Use(reference::Zoom(*pRows, out.nWidth, out.nHeight).Row(0));
                            })});
    return sides;
}

Side Transposed(SharedImage pImage) {
    return Timed([=] { pImage->Rotate(0); });
}

Sides TransposeSides(Size size, int nBits) {
    const SharedImage pImage = Scene(size, nBits);
    Sides sides{Transposed(Copy(*pImage)), {CopyLimit(pImage)}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.Transpose(pImage); });
    if (nBits < 8) {
        const double dPixels = static_cast<double>(size.nWidth) * size.nHeight;
        sides.others.push_back({Kind::kOwn, "0.5 ns a pixel", [=] { return 0.5e-9 * dPixels; }});
    }
    const auto pRows = std::make_shared<support::Rows>(RowsOf(*pImage));
    sides.others.push_back(
        {Kind::kLoops, "reference loop", Timed([=] { Use(reference::Transpose(*pRows).Row(0)); })});
    return sides;
}

Sides MirrorSides(Size size) {
    const SharedImage pImage = Scene(size, 24);
    Sides sides{Timed([=] { pImage->Mirror(0); }), {ExchangeLimit(pImage)}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.Mirror(pImage); });
    return sides;
}

}  // namespace

void AddGeometryRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large(), hd = options.Hd(), twice = options.Target(3840, 2160);
    struct Job {
        Size in, out;
        double dReach;
    };
    for (const Job& job : {Job{large, options.Target(1920, 1440), 0}, Job{hd, twice, 1.4},
                           Job{{256, 256}, {48, 48}, 1.0}}) {
        rows.push_back({"zoom " + job.in.Text() + " to " + job.out.Text() + ", 24 bits",
                        {Kind::kPeer, job.dReach},
                        [=] { return ZoomSides(job.in, job.out); }});
    }
    for (const int nBits : {1, 4, 8}) {
        rows.push_back({"zoom " + hd.Text() + " to " + twice.Text() + ", " + std::to_string(nBits) +
                            (nBits == 1 ? " bit" : " bits"),
                        {Kind::kOwn, 1.0},
                        [=] {
                            return Sides{Zoom(Scene(hd, nBits), twice),
                                         {{Kind::kOwn, "24 bits", Zoom(Scene(hd, 24), twice)}}};
                        }});
    }
    struct Depth {
        Size size;
        int nBits;
        Reach reach;
    };
    for (const Depth& depth :
         {Depth{large, 1, {Kind::kOwn, 1.0}}, Depth{large, 4, {Kind::kOwn, 1.0}},
          Depth{large, 8, {Kind::kPeer, 1.0}}, Depth{large, 24, {Kind::kLimit, 1.6}},
          Depth{large, 32, {}}, Depth{{64, 64}, 24, {Kind::kPeer, 1.0}},
          Depth{{256, 256}, 24, {}}}) {
        rows.push_back({"transpose " + depth.size.Text() + ", " + std::to_string(depth.nBits) +
                            (depth.nBits == 1 ? " bit" : " bits"),
                        depth.reach, [=] { return TransposeSides(depth.size, depth.nBits); }});
    }
    rows.push_back({"mirror " + large.Text() + ", 24 bits", {Kind::kPeer, 1.0}, [=] {
                        return MirrorSides(large);
                    }});
}

}  // namespace bench
