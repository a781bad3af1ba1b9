// stb's image resizer, the first version, into fresh memory.
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#define STB_IMAGE_RESIZE_STATIC
#include <stb/stb_image_resize.h>

#include "allpeers.h"

namespace bench {

namespace {

struct Stb : Peer {
    const char* Name() const override { return "stb"; }
    Side Scale(SharedImage pImage, Size out, int nKernel) const override {
        if (nKernel == KEL_SCALE_HAMMING) {
            return nullptr;  // no kernel of three lobes
        }
        const stbir_filter eFilter = nKernel == KEL_SCALE_BOX        ? STBIR_FILTER_BOX
                                     : nKernel == KEL_SCALE_BILINEAR ? STBIR_FILTER_TRIANGLE
                                                                     : STBIR_FILTER_CUBICBSPLINE;
        const int nStride = static_cast<int>(kel::RowStride(24, out.nWidth));
        return Timed([=] {
            const std::unique_ptr<unsigned char[]> pTarget(new unsigned char[PictureSize(24, out)]);
            stbir_resize_uint8_generic(pImage->GetBits(), pImage->GetWidth(), pImage->GetHeight(),
                                       StrideOf(*pImage), pTarget.get(), out.nWidth, out.nHeight,
                                       nStride, 3, STBIR_ALPHA_CHANNEL_NONE, 0, STBIR_EDGE_CLAMP,
                                       eFilter, STBIR_COLORSPACE_LINEAR, nullptr);
            Use(pTarget.get());
        });
    }
};

}  // namespace

const Peer* StbPeer() {
    static const Stb peer;
    return &peer;
}

}  // namespace bench
