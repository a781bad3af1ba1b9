// Opening and saving. The limit of JPEG and PNG is the codec library alone, driven the shortest
// way, to and from rows in its own order: the exchange of the channels is ours to pay.
#include <platform/vamarchivememory.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "machinelimits.h"
#include "peer.h"
#include "support/reference/codecs.h"

namespace bench {

namespace {

// Opening these bytes into a new image, the image's end included.
Side OpenMemory(const SharedBytes& pFile) {
    return Timed([pFile] {
        CVamArchiveMemory archive(pFile->data(), pFile->size());
        CKelImage image;
        Check(image.Open(&archive));
        Use(image.GetBits());
    });
}

Side SaveMemory(const SharedImage& pImage, KelImageFormat eFormat) {
    return Timed([pImage, eFormat] {
        CVamArchiveMemory archive;
        Check(pImage->Save(&archive, eFormat, nullptr));
        Use(archive.GetData());
    });
}

SharedBytes File(Size size, int nBits, KelImageFormat eFormat) {
    return std::make_shared<support::Bytes>(Saved(*Scene(size, nBits), eFormat));
}

// A file of the bytes in the temporary directory, removed with the last owner.
std::shared_ptr<const std::string> TemporaryFile(const support::Bytes& bytes, const char* pszName) {
    const auto strPath = (std::filesystem::temp_directory_path() / pszName).string();
    std::FILE* pFile = std::fopen(strPath.c_str(), "wb");
    if (pFile == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), pFile) != bytes.size() ||
        std::fclose(pFile) != 0) {
        std::perror(strPath.c_str());
        std::exit(1);
    }
    return {new std::string(strPath), [](const std::string* p) {
                std::remove(p->c_str());
                delete p;
            }};
}

void AddMemoryPeers(Sides& sides, const SharedImage& pImage, const SharedBytes& pFile,
                    KelImageFormat eFormat) {
    AddPeers(sides.others, [&](const Peer& peer) {
        return pFile != nullptr ? peer.OpenMemory(pFile, eFormat)
                                : peer.SaveMemory(pImage, eFormat);
    });
}

Sides OpenJpegSides(Size size) {
    const SharedBytes pFile = File(size, 24, KEL_IMAGE_JPEG);
    Sides sides{OpenMemory(pFile),
                {{Kind::kLimit, "libjpeg", Timed([=] { reference::DecodeJpeg(*pFile); })}}};
    AddMemoryPeers(sides, nullptr, pFile, KEL_IMAGE_JPEG);
    return sides;
}

Sides SaveJpegSides(Size size) {
    const SharedImage pImage = Scene(size, 24);
    const auto pPixels = std::make_shared<support::Bytes>(RgbPixels(*pImage));
    Sides sides{SaveMemory(pImage, KEL_IMAGE_JPEG),
                {{Kind::kLimit, "libjpeg", Timed([=] {
                      reference::EncodeJpeg(pPixels->data(), {size.nWidth, size.nHeight});
                  })}}};
    AddMemoryPeers(sides, pImage, nullptr, KEL_IMAGE_JPEG);
    return sides;
}

struct PngKind {
    const char* pszName;
    int nBits;
    int nColorType;
};

Sides OpenPngSides(Size size, PngKind kind) {
    const SharedBytes pFile = File(size, kind.nBits, KEL_IMAGE_PNG);
    Sides sides{OpenMemory(pFile),
                {{Kind::kLimit, "libpng", Timed([=] { reference::DecodePng(*pFile); })}}};
    AddMemoryPeers(sides, nullptr, pFile, KEL_IMAGE_PNG);
    return sides;
}

Sides SavePngSides(Size size, PngKind kind) {
    const SharedImage pImage = Scene(size, kind.nBits);
    // The stored rows serve as they are: the order of the channels is all the same to libpng.
    reference::PngFormat format{size.nWidth,     size.nHeight,       8,
                                kind.nColorType, PNG_INTERLACE_NONE, {}};
    for (int i = 0; i < pImage->GetPaletteNum(); ++i) {
        const tagKelRGBQUAD& entry = pImage->GetPalette()[i];
        format.palette.push_back({entry.byRed, entry.byGreen, entry.byBlue});
    }
    const std::size_t nStride = PictureSize(kind.nBits, {size.nWidth, 1});
    Sides sides{SaveMemory(pImage, KEL_IMAGE_PNG),
                {{Kind::kLimit, "libpng", Timed([=] {
                      Use(reference::EncodePng(pImage->GetBits(), nStride, format).data());
                  })}}};
    AddMemoryPeers(sides, pImage, nullptr, KEL_IMAGE_PNG);
    return sides;
}

Sides OpenBmpSides(Size size) {
    const SharedBytes pBytes = File(size, 24, KEL_IMAGE_BMP);
    const auto pPath = TemporaryFile(*pBytes, "ikelex-bench-open.bmp");
    Sides sides{Timed([pPath] {
                    CKelImage image;
                    Check(image.Open(pPath->c_str()));
                    Use(image.GetBits());
                }),
                {ReadFileLimit(*pPath, pBytes->size())}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.OpenFile(*pPath); });
    return sides;
}

Sides SaveBmpSides(Size size) {
    const SharedImage pImage = Scene(size, 24);
    const auto pPath = TemporaryFile({}, "ikelex-bench-save.bmp");
    Sides sides{Timed([=] { Check(pImage->Save(pPath->c_str(), KEL_IMAGE_BMP, nullptr)); }),
                {WriteFileLimit(*pPath, File(size, 24, KEL_IMAGE_BMP))}};
    AddPeers(sides.others, [&](const Peer& peer) { return peer.SaveFile(pImage, *pPath); });
    return sides;
}

Sides SmallBmpSides(Size size, bool bOpen) {
    const SharedImage pImage = Scene(size, 24);
    const SharedBytes pFile = bOpen ? File(size, 24, KEL_IMAGE_BMP) : nullptr;
    Sides sides{bOpen ? OpenMemory(pFile) : SaveMemory(pImage, KEL_IMAGE_BMP), {CopyLimit(pImage)}};
    AddMemoryPeers(sides, pImage, pFile, KEL_IMAGE_BMP);
    return sides;
}

}  // namespace

void AddCodecRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large(), hd = options.Hd(), small = {64, 64};
    for (const Size size : {large, small, Size{128, 128}, Size{256, 256}}) {
        rows.push_back({"open JPEG " + size.Text(),
                        {Kind::kLimit, size.nWidth <= 256 ? 1.05 : 0},
                        [=] { return OpenJpegSides(size); }});
    }
    rows.push_back({"save JPEG " + large.Text(), {}, [=] { return SaveJpegSides(large); }});
    for (const PngKind kind : {PngKind{"truecolour", 24, PNG_COLOR_TYPE_RGB},
                               PngKind{"alpha", 32, PNG_COLOR_TYPE_RGB_ALPHA},
                               PngKind{"palette", 8, PNG_COLOR_TYPE_PALETTE}}) {
        const std::string strTail = " PNG " + hd.Text() + ", " + kind.pszName;
        rows.push_back({"open" + strTail, {}, [=] { return OpenPngSides(hd, kind); }});
        rows.push_back({"save" + strTail, {}, [=] { return SavePngSides(hd, kind); }});
    }
    const Reach asPeer{Kind::kPeer, 1.0}, nearPeer{Kind::kPeer, 1.2};
    rows.push_back({"open BMP " + large.Text(), asPeer, [=] { return OpenBmpSides(large); }});
    rows.push_back({"save BMP " + large.Text(), asPeer, [=] { return SaveBmpSides(large); }});
    for (const bool bOpen : {true, false}) {
        rows.push_back({(bOpen ? "open BMP " : "save BMP ") + small.Text() + " in memory", nearPeer,
                        [=] { return SmallBmpSides(small, bOpen); }});
    }
}

}  // namespace bench
