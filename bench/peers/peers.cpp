// The library against OpenCV and libvips on the same pictures, each on one thread. The kernels are
// each library's own: the nearest in kind is chosen, and the pixels differ.
#include <platform/vamarchivememory.h>
#include <vips/vips.h>

#include <cstdlib>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "suite.h"

namespace {

using bench::Image;
using bench::Options;
using bench::Pair;
using bench::Row;
using bench::Seconds;
using bench::Side;
using bench::Size;

using SharedImage = std::shared_ptr<CKelImage>;
using SharedBytes = std::shared_ptr<plain::Bytes>;

constexpr const char* kCv = "OpenCV";
constexpr const char* kVips = "libvips";

// The image's own pixels as the peers see them.
cv::Mat Mat(CKelImage& image) {
    const int nBits = image.GetBitsPerPixel();
    return cv::Mat(image.GetHeight(), image.GetWidth(), CV_8UC(nBits / 8), image.GetBits(),
                   static_cast<std::size_t>((nBits * image.GetWidth() + 31) / 32 * 4));
}

std::shared_ptr<VipsImage> Vips(CKelImage& image) {
    const int nBands = image.GetBitsPerPixel() / 8;
    return {vips_image_new_from_memory(image.GetBits(), image.GetBmpDataSize(), image.GetWidth(),
                                       image.GetHeight(), nBands, VIPS_FORMAT_UCHAR),
            [](VipsImage* p) { g_object_unref(p); }};
}

// Times a libvips operation until its pixels lie in memory, and releases both.
template <class Work>
double VipsSeconds(const Work& work) {
    return Seconds([&] {
        VipsImage* pOut = nullptr;
        size_t nSize = 0;
        if (work(&pOut) != 0)
            std::exit(1);
        void* pPixels = vips_image_write_to_memory(pOut, &nSize);
        bench::Use(pPixels);
        g_free(pPixels);
        g_object_unref(pOut);
    });
}

void AddCodecs(std::vector<Row>& rows, KelImageFormat eFormat, const std::string& strName,
               Size size) {
    const auto open = [=](bool bCv) {
        auto pFile =
            std::make_shared<plain::Bytes>(bench::Saved(*bench::MakeScene(size, 24), eFormat));
        const Side ours = [pFile] {
            return Seconds([&] {
                CVamArchiveMemory archive(pFile->data(), pFile->size());
                CKelImage image;
                if (image.Open(&archive) != KEL_OK)
                    std::exit(1);
            });
        };
        const Side cv = [pFile] {
            return Seconds([&] { bench::Use(cv::imdecode(*pFile, cv::IMREAD_COLOR).data); });
        };
        const Side vips = [pFile] {
            return VipsSeconds([&](VipsImage** ppOut) {
                *ppOut = vips_image_new_from_buffer(pFile->data(), pFile->size(), "", nullptr);
                return *ppOut == nullptr ? 1 : 0;
            });
        };
        return Pair{ours, bCv ? cv : vips};
    };
    const auto save = [=](bool bCv) {
        const SharedImage pImage = bench::MakeScene(size, 24);
        const std::string strSuffix = eFormat == KEL_IMAGE_JPEG ? ".jpg" : ".png";
        const Side ours = [=] {
            return Seconds([&] {
                CVamArchiveMemory archive;
                if (pImage->Save(&archive, eFormat, nullptr) != KEL_OK)
                    std::exit(1);
            });
        };
        const Side cv = [=] {
            return Seconds([&] {
                plain::Bytes out;
                cv::imencode(strSuffix, Mat(*pImage), out,
                             eFormat == KEL_IMAGE_JPEG
                                 ? std::vector<int>{cv::IMWRITE_JPEG_QUALITY, 75}
                                 : std::vector<int>{});
                bench::Use(out.data());
            });
        };
        const Side vips = [=] {
            return Seconds([&] {
                void* pOut = nullptr;
                size_t nSize = 0;
                const std::string strOptions = eFormat == KEL_IMAGE_JPEG ? ".jpg[Q=75]" : ".png";
                if (vips_image_write_to_buffer(Vips(*pImage).get(), strOptions.c_str(), &pOut,
                                               &nSize, nullptr) != 0) {
                    std::exit(1);
                }
                g_free(pOut);
            });
        };
        return Pair{ours, bCv ? cv : vips};
    };
    for (const bool bCv : {true, false}) {
        const char* pszPeer = bCv ? kCv : kVips;
        rows.push_back(
            {"open " + strName + " " + size.Text(), pszPeer, 0, [=] { return open(bCv); }});
        rows.push_back(
            {"save " + strName + " " + size.Text(), pszPeer, 0, [=] { return save(bCv); }});
    }
}

// Kernels of the same kind: linear interpolation or triangle, area or shrink, and for the wide
// kernels (radius 3) the peers' widest.
struct Kernel {
    const char* pszName;
    int nOurs, nCv;
    VipsKernel eVips;
};
constexpr Kernel kKernels[] = {
    {"bilinear", KEL_SCALE_BILINEAR, cv::INTER_LINEAR, VIPS_KERNEL_LINEAR},
    {"box", KEL_SCALE_BOX, cv::INTER_AREA, VIPS_KERNEL_LINEAR},
    {"hamming", KEL_SCALE_HAMMING, cv::INTER_LANCZOS4, VIPS_KERNEL_LANCZOS3},
};

void AddScale(std::vector<Row>& rows, Size in, Size out) {
    for (const Kernel& kernel : kKernels) {
        const auto make = [=](bool bCv) {
            const SharedImage pImage = bench::MakeScene(in, 24);
            const Side ours = [=] {
                tagKelParameterItem items[] = {{"width", CVamVariant(out.nWidth)},
                                               {"height", CVamVariant(out.nHeight)},
                                               {"type", CVamVariant(kernel.nOurs)}};
                tagKelParameters params = {3, items};
                return Seconds([&] {
                    IKelImage* pScaled = nullptr;
                    if (pImage->ApplyFilter(&pScaled, KEL_FILTER_SCALE, &params) != KEL_OK)
                        std::exit(1);
                    DestroyImageObject(pScaled);
                });
            };
            const Side cv = [=] {
                return Seconds([&] {
                    cv::Mat target;
                    cv::resize(Mat(*pImage), target, {out.nWidth, out.nHeight}, 0, 0, kernel.nCv);
                    bench::Use(target.data);
                });
            };
            const Side vips = [=] {
                const auto pSource = Vips(*pImage);
                return VipsSeconds([&](VipsImage** ppOut) {
                    return vips_resize(pSource.get(), ppOut,
                                       static_cast<double>(out.nWidth) / in.nWidth, "kernel",
                                       kernel.eVips, nullptr);
                });
            };
            return Pair{ours, bCv ? cv : vips};
        };
        for (const bool bCv : {true, false}) {
            rows.push_back({"scale " + in.Text() + " to " + out.Text() + " " + kernel.pszName,
                            bCv ? kCv : kVips, 0, [=] { return make(bCv); }});
        }
    }
}

void AddGeometry(std::vector<Row>& rows, Size size) {
    for (const int nBits : {8, 24, 32}) {
        const auto make = [=](bool bCv) {
            const SharedImage pImage = bench::MakeScene(size, nBits);
            const Side ours = [=] {
                const Image pCopy = bench::Copy(*pImage);
                return Seconds([&] { pCopy->Rotate(0); });
            };
            const Side cv = [=] {
                return Seconds([&] {
                    cv::Mat target;
                    cv::transpose(Mat(*pImage), target);
                    bench::Use(target.data);
                });
            };
            const Side vips = [=] {  // its nearest: a quarter turn
                const auto pSource = Vips(*pImage);
                return VipsSeconds([&](VipsImage** ppOut) {
                    return vips_rot(pSource.get(), ppOut, VIPS_ANGLE_D90, nullptr);
                });
            };
            return Pair{ours, bCv ? cv : vips};
        };
        for (const bool bCv : {true, false}) {
            rows.push_back({"transpose " + size.Text() + ", " + std::to_string(nBits) + " bits",
                            bCv ? kCv : kVips, 0, [=] { return make(bCv); }});
        }
    }
    rows.push_back({"mirror " + size.Text() + ", 24 bits", kCv, 0, [=] {
                        const SharedImage pImage = bench::MakeScene(size, 24);
                        return Pair{[=] { return Seconds([&] { pImage->Mirror(0); }); },
                                    [=] {
                                        return Seconds([&] {
                                            cv::Mat picture = Mat(*pImage);
                                            cv::flip(picture, picture, 0);
                                        });
                                    }};
                    }});
    rows.push_back({"24 to 32 bits in place " + size.Text(), kCv, 0, [=] {
                        const SharedImage pImage = bench::MakeScene(size, 24);
                        return Pair{[=] {
                                        const Image pCopy = bench::Copy(*pImage);
                                        return Seconds([&] { pCopy->ChangeBitCount(32); });
                                    },
                                    [=] {
                                        return Seconds([&] {
                                            cv::Mat target;
                                            cv::cvtColor(Mat(*pImage), target, cv::COLOR_BGR2BGRA);
                                        });
                                    }};
                    }});
}

}  // namespace

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    if (VIPS_INIT(argv[0]) != 0)
        return 1;
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    return bench::Run(argc, argv, "ikelex against other libraries",
                      [](std::vector<Row>& rows, const Options& options) {
                          const Size large = options.Large(), hd = options.Hd();
                          AddCodecs(rows, KEL_IMAGE_JPEG, "JPEG", large);
                          AddCodecs(rows, KEL_IMAGE_PNG, "PNG", hd);
                          AddScale(rows, large, options.Target(320, 240));
                          AddScale(rows, large, options.Target(1920, 1440));
                          AddScale(rows, hd, options.Target(3840, 2160));
                          AddGeometry(rows, large);
                      });
}
