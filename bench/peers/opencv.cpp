// OpenCV. Its linear resize samples two pixels whatever the ratio, which is a zoom; its area resize
// is a box. Its PNG writer compresses less by default.
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "allpeers.h"

namespace bench {

namespace {

// The image's own pixels.
cv::Mat Mat(CKelImage& image) {
    return cv::Mat(image.GetHeight(), image.GetWidth(), CV_8UC(image.GetBitsPerPixel() / 8),
                   image.GetBits(), static_cast<std::size_t>(StrideOf(image)));
}

Side Resize(const SharedImage& pImage, Size out, int nMethod) {
    return Timed([=] {
        cv::Mat target;
        cv::resize(Mat(*pImage), target, {out.nWidth, out.nHeight}, 0, 0, nMethod);
        Use(target.data);
    });
}

struct OpenCv : Peer {
    OpenCv() { cv::setNumThreads(1); }
    const char* Name() const override { return "OpenCV"; }
    Side Scale(SharedImage pImage, Size out, int nKernel) const override {
        const bool bEnlarges = out.nWidth > pImage->GetWidth();
        if (nKernel == KEL_SCALE_BOX) {
            return Resize(pImage, out, cv::INTER_AREA);
        }
        if (nKernel == KEL_SCALE_BILINEAR && bEnlarges) {
            return Resize(pImage, out, cv::INTER_LINEAR);
        }
        return nKernel == KEL_SCALE_HAMMING && bEnlarges ? Resize(pImage, out, cv::INTER_LANCZOS4)
                                                         : nullptr;
    }
    Side Zoom(SharedImage pImage, Size out) const override {
        return Resize(pImage, out, cv::INTER_LINEAR);
    }
    Side Transpose(SharedImage pImage) const override {
        if (pImage->GetBitsPerPixel() < 8) {
            return nullptr;
        }
        return Timed([=] {
            cv::Mat target;
            cv::transpose(Mat(*pImage), target);
            Use(target.data);
        });
    }
    Side Mirror(SharedImage pImage) const override {
        return Timed([=] {
            cv::Mat picture = Mat(*pImage);
            cv::flip(picture, picture, 0);
        });
    }
    Side Expand(SharedImage pImage) const override {
        return Timed([=] {
            cv::Mat target;
            cv::cvtColor(Mat(*pImage), target, cv::COLOR_BGR2BGRA);
            Use(target.data);
        });
    }
    Side OpenFile(std::string strPath) const override {
        return Timed([=] { Use(cv::imread(strPath, cv::IMREAD_COLOR).data); });
    }
    Side SaveFile(SharedImage pImage, std::string strPath) const override {
        return Timed([=] { cv::imwrite(strPath, Mat(*pImage)); });
    }
    Side OpenMemory(std::shared_ptr<support::Bytes> pFile, KelImageFormat) const override {
        return Timed([=] { Use(cv::imdecode(*pFile, cv::IMREAD_UNCHANGED).data); });
    }
    Side SaveMemory(SharedImage pImage, KelImageFormat eFormat) const override {
        if (pImage->GetBitsPerPixel() == 8) {
            return nullptr;  // has no palettes
        }
        const std::string strSuffix = eFormat == KEL_IMAGE_JPEG  ? ".jpg"
                                      : eFormat == KEL_IMAGE_PNG ? ".png"
                                                                 : ".bmp";
        return Timed([=] {
            support::Bytes out;
            std::vector<int> options;
            if (eFormat == KEL_IMAGE_JPEG) {
                options = {cv::IMWRITE_JPEG_QUALITY, 75};
            }
            cv::imencode(strSuffix, Mat(*pImage), out, options);
            Use(out.data());
        });
    }
};

}  // namespace

const Peer* OpenCvPeer() {
    static const OpenCv peer;
    return &peer;
}

}  // namespace bench
