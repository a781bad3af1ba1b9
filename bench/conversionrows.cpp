// Rows at 24 bits, one after the other into the same line, and 24 to 32 bits in place.
#include "machinelimits.h"
#include "peer.h"
#include "support/reference/operations.h"

namespace bench {

namespace {

Sides LineSides(Size size, int nBits) {
    const SharedImage pImage = Scene(size, nBits);
    const auto pLine = std::make_shared<support::Bytes>(PictureSize(24, {size.nWidth, 1}));
    Sides sides{Timed([=] {
                    for (int y = 0; y < size.nHeight; ++y) {
                        Use(pImage->GetLine24AsRGBAt(y, pLine->data()));
                    }
                }),
                {ReadLimit(pImage)}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.Lines(pImage); });
    sides.others.push_back({Kind::kLoops, "reference loop", Timed([=] {
                                const BITMAPINFO* pInfo = pImage->GetBitmapInfo();
                                for (int y = 0; y < size.nHeight; ++y) {
                                    reference::Line24(pInfo, pImage->GetLineArray()[y], true,
                                                      pLine->data());
                                    Use(pLine->data());
                                }
                            })});
    return sides;
}

Sides ExpandSides(Size size) {
    const SharedImage pImage = Scene(size, 24);
    Sides sides{
        TimedOn([=] { return Copy(*pImage); }, [](CKelImage& image) { image.ChangeBitCount(32); }),
        {ReadWriteLimit(pImage, PictureSize(32, size))}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.Expand(pImage); });
    return sides;
}

}  // namespace

void AddConversionRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large();
    for (const int nBits : {1, 8, 16, 24, 32}) {
        rows.push_back({"rows to 24 bits " + large.Text() + ", from " + std::to_string(nBits),
                        {},
                        [=] { return LineSides(large, nBits); }});
    }
    rows.push_back(
        {"24 to 32 bits in place " + large.Text(), {}, [=] { return ExpandSides(large); }});
}

}  // namespace bench
