// libyuv. It scales 32 bits where we scale 24. Its transposition is a quarter turn.
#include <libyuv.h>

#include "allpeers.h"

namespace bench {

namespace {

Side Scaled(CKelImage& image, Size out, libyuv::FilterMode eMode) {
    const Size in = {image.GetWidth(), image.GetHeight()};
    const SharedImage pImage = Scene(in, 32);
    return Timed([=] {
        const std::unique_ptr<unsigned char[]> pTarget(new unsigned char[PictureSize(32, out)]);
        libyuv::ARGBScale(pImage->GetBits(), 4 * in.nWidth, in.nWidth, in.nHeight, pTarget.get(),
                          4 * out.nWidth, out.nWidth, out.nHeight, eMode);
        Use(pTarget.get());
    });
}

struct Libyuv : Peer {
    const char* Name() const override { return "libyuv"; }
    Side Scale(SharedImage pImage, Size out, int nKernel) const override {
        // When shrinking it samples instead of filtering.
        return nKernel == KEL_SCALE_BILINEAR && out.nWidth > pImage->GetWidth()
                   ? Scaled(*pImage, out, libyuv::kFilterBilinear)
                   : nullptr;
    }
    Side Zoom(SharedImage pImage, Size out) const override {
        return Scaled(*pImage, out, libyuv::kFilterBilinear);
    }
    Side Transpose(SharedImage pImage) const override {
        const int nBits = pImage->GetBitsPerPixel();
        if (nBits != 8 && nBits != 32) {
            return nullptr;
        }
        const auto pRotate = nBits == 8 ? libyuv::RotatePlane : libyuv::ARGBRotate;
        const Size out = {pImage->GetHeight(), pImage->GetWidth()};
        return Timed([=] {
            const std::unique_ptr<unsigned char[]> pTarget(
                new unsigned char[PictureSize(nBits, out)]);
            pRotate(pImage->GetBits(), StrideOf(*pImage), pTarget.get(),
                    static_cast<int>(kel::RowStride(nBits, out.nWidth)), pImage->GetWidth(),
                    pImage->GetHeight(), libyuv::kRotate90);
            Use(pTarget.get());
        });
    }
    Side Lines(SharedImage pImage) const override {
        // To red, green, blue; from 16 bits to 32, which is its nearest.
        const int nBits = pImage->GetBitsPerPixel();
        const auto pConvert = nBits == 16   ? libyuv::ARGB1555ToARGB
                              : nBits == 24 ? libyuv::RAWToRGB24
                              : nBits == 32 ? libyuv::ARGBToRAW
                                            : nullptr;
        if (pConvert == nullptr) {
            return nullptr;
        }
        const auto pLine =
            std::make_shared<support::Bytes>(PictureSize(32, {pImage->GetWidth(), 1}));
        return Timed([=] {
            for (int y = 0; y < pImage->GetHeight(); ++y) {
                pConvert(pImage->GetLineArray()[y], 0, pLine->data(), 0, pImage->GetWidth(), 1);
                Use(pLine->data());
            }
        });
    }
    Side Expand(SharedImage pImage) const override {
        const Size size = {pImage->GetWidth(), pImage->GetHeight()};
        return Timed([=] {
            const std::unique_ptr<unsigned char[]> pTarget(
                new unsigned char[PictureSize(32, size)]);
            libyuv::RGB24ToARGB(pImage->GetBits(), StrideOf(*pImage), pTarget.get(),
                                4 * size.nWidth, size.nWidth, size.nHeight);
            Use(pTarget.get());
        });
    }
};

}  // namespace

const Peer* LibyuvPeer() {
    static const Libyuv peer;
    return &peer;
}

}  // namespace bench
