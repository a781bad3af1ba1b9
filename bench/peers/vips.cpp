// libvips, until the pixels lie in memory. Its transposition is a quarter turn.
#include <vips/vips.h>

#include <cstdlib>

#include "allpeers.h"

namespace bench {

namespace {

std::shared_ptr<VipsImage> Wrap(CKelImage& image) {
    return {vips_image_new_from_memory(image.GetBits(), image.GetBmpDataSize(), image.GetWidth(),
                                       image.GetHeight(), image.GetBitsPerPixel() / 8,
                                       VIPS_FORMAT_UCHAR),
            [](VipsImage* p) { g_object_unref(p); }};
}

// Times an operation that makes *ppOut.
Side Computed(const std::function<int(VipsImage**)>& work) {
    return Timed([work] {
        VipsImage* pOut = nullptr;
        size_t nSize = 0;
        if (work(&pOut) != 0) {
            std::exit(1);
        }
        void* pPixels = vips_image_write_to_memory(pOut, &nSize);
        Use(pPixels);
        g_free(pPixels);
        g_object_unref(pOut);
    });
}

struct Vips : Peer {
    Vips() {
        if (VIPS_INIT("bench") != 0) {
            std::exit(1);
        }
        vips_concurrency_set(1);
        vips_cache_set_max(0);
    }
    const char* Name() const override { return "libvips"; }
    Side Scale(SharedImage pImage, Size out, int nKernel) const override {
        const bool bWide = nKernel == KEL_SCALE_GAUSSIAN || nKernel == KEL_SCALE_HAMMING;
        const double dRatio = static_cast<double>(out.nWidth) / pImage->GetWidth();
        return Computed([=](VipsImage** ppOut) {
            return vips_resize(Wrap(*pImage).get(), ppOut, dRatio, "kernel",
                               bWide ? VIPS_KERNEL_LANCZOS3 : VIPS_KERNEL_LINEAR, nullptr);
        });
    }
    Side Transpose(SharedImage pImage) const override {
        if (pImage->GetBitsPerPixel() < 8) {
            return nullptr;
        }
        return Computed([=](VipsImage** ppOut) {
            return vips_rot(Wrap(*pImage).get(), ppOut, VIPS_ANGLE_D90, nullptr);
        });
    }
    Side OpenMemory(std::shared_ptr<support::Bytes> pFile, KelImageFormat eFormat) const override {
        if (eFormat == KEL_IMAGE_BMP) {
            return nullptr;
        }
        return Computed([=](VipsImage** ppOut) {
            *ppOut = vips_image_new_from_buffer(pFile->data(), pFile->size(), "", nullptr);
            return *ppOut == nullptr ? 1 : 0;
        });
    }
    Side SaveMemory(SharedImage pImage, KelImageFormat eFormat) const override {
        if (eFormat == KEL_IMAGE_BMP || pImage->GetBitsPerPixel() == 8) {
            return nullptr;
        }
        return Timed([=] {
            void* pOut = nullptr;
            size_t nSize = 0;
            if (vips_image_write_to_buffer(Wrap(*pImage).get(),
                                           eFormat == KEL_IMAGE_JPEG ? ".jpg[Q=75]" : ".png", &pOut,
                                           &nSize, nullptr) != 0) {
                std::exit(1);
            }
            g_free(pOut);
        });
    }
};

}  // namespace

const Peer* VipsPeer() {
    static const Vips peer;
    return &peer;
}

}  // namespace bench
