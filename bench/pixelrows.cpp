// Geometry, depth change and rows, against the plain loops and memcpy.
#include <cstdint>
#include <cstring>
#include <memory>

#include "suite.h"

namespace bench {

namespace {

using SharedImage = std::shared_ptr<CKelImage>;

std::size_t Stride(int nBits, int nWidth) {
    return static_cast<std::size_t>((nBits * nWidth + 31) / 32 * 4);
}

std::size_t PictureSize(int nBits, Size size) {
    return Stride(nBits, size.nWidth) * static_cast<std::size_t>(size.nHeight);
}

// In place for the library: a fresh copy of the source is replaced by the result and released, on
// both sides.
Pair ZoomPair(Size in, Size out) {
    const SharedImage pImage = MakeScene(in, 24);
    return {[=] {
                const Image pCopy = Copy(*pImage);
                const double dSeconds = Seconds([&] { pCopy->ZoomImage(out.nWidth, out.nHeight); });
                Use(pCopy->GetBits());
                return dSeconds;
            },
            [=] {
                Image pCopy = Copy(*pImage);
                return Seconds([&] {
                    const std::size_t nSize = PictureSize(24, out);
                    const std::unique_ptr<unsigned char[]> pTarget(new unsigned char[nSize]);
                    std::memset(pTarget.get(), 0, nSize);
                    plain::Zoom(pCopy->GetBits(), in.nWidth, in.nHeight, pTarget.get(), out.nWidth,
                                out.nHeight);
                    Use(pTarget.get());
                    pCopy->DeleteBits();
                });
            }};
}

Pair TransposePair(Size size, int nBits) {
    const SharedImage pImage = MakeScene(size, nBits);
    return {[=] {
                const Image pCopy = Copy(*pImage);
                return Seconds([&] { pCopy->Rotate(0); });
            },
            [=] {
                Image pCopy = Copy(*pImage);
                return Seconds([&] {
                    const std::size_t nSize = PictureSize(nBits, {size.nHeight, size.nWidth});
                    const std::unique_ptr<unsigned char[]> pTarget(new unsigned char[nSize]);
                    std::memset(pTarget.get(), 0, nSize);
                    plain::Transpose(nBits / 8, pCopy->GetBits(), size.nWidth, size.nHeight,
                                     pTarget.get());
                    Use(pTarget.get());
                    pCopy->DeleteBits();
                });
            }};
}

Pair MirrorPair(const SharedImage& pImage) {
    auto pTarget = std::make_shared<plain::Bytes>(pImage->GetBmpDataSize());
    return {[=] { return Seconds([&] { pImage->Mirror(0); }); },
            [=] {
                return Seconds([&] {
                    std::memcpy(pTarget->data(), pImage->GetBits(), pTarget->size());
                    Use(pTarget->data());
                });
            }};
}

// What no operation with a new picture can go below: taking it from the system, and clearing it.
Pair NewPicturePair(Size size, int nBits) {
    auto pWarm = std::make_shared<plain::Bytes>(PictureSize(nBits, size));
    return {[=] {
                return Seconds([&] {
                    CKelImage image;
                    Use(image.Create(size.nWidth, size.nHeight, nBits));
                });
            },
            [=] {
                return Seconds([&] {
                    std::memset(pWarm->data(), 0, pWarm->size());
                    Use(pWarm->data());
                });
            }};
}

Pair RowPair(const SharedImage& pImage, Size size, int nBits) {
    auto pLine = std::make_shared<plain::Bytes>(Stride(24, size.nWidth));
    return {[=] {
                return Seconds([&] {
                    for (int y = 0; y < size.nHeight; y++) {
                        Use(pImage->GetLine24AsRGBAt(y, pLine->data()));
                    }
                });
            },
            [=] {
                const auto* pPalette = reinterpret_cast<unsigned char*>(pImage->GetPalette());
                return Seconds([&] {
                    for (int y = 0; y < size.nHeight; y++) {
                        const unsigned char* pRow = pImage->GetLineArray()[y];
                        unsigned char* pOut = pLine->data();
                        switch (nBits) {
                            case 1:
                                plain::Row1(pRow, size.nWidth, pPalette, pOut);
                                break;
                            case 8:
                                plain::Row8(pRow, size.nWidth, pPalette, pImage->GetPaletteNum(),
                                            pOut);
                                break;
                            case 16:
                                plain::Row16(pRow, size.nWidth, pOut);
                                break;
                            case 24:
                                plain::Row24(pRow, size.nWidth, pOut);
                                break;
                            default:
                                plain::Row32(pRow, size.nWidth, pOut);
                        }
                        Use(pOut);
                    }
                });
            }};
}

// What no operation that looks at every pixel can go below, beside the plain rows.
Pair ReadOncePair(Size size, int nBits) {
    const SharedImage pImage = MakeScene(size, nBits);
    return {[=] {
                return Seconds([&] {
                    const unsigned char* const pBits = pImage->GetBits();
                    const std::size_t nWords =
                        static_cast<std::size_t>(pImage->GetBmpDataSize()) / 8;
                    std::uint64_t nSum = 0;
                    for (std::size_t i = 0; i < nWords; i++) {
                        std::uint64_t nWord;
                        std::memcpy(&nWord, pBits + 8 * i, 8);
                        nSum += nWord;
                    }
                    Use(&nSum);
                });
            },
            RowPair(pImage, size, nBits).yardstick};
}

// The three copies that exchange two rows, for all rows, beside one copy of the picture.
Pair ExchangePair(Size size) {
    const SharedImage pImage = MakeScene(size, 24);
    auto pScratch = std::make_shared<plain::Bytes>(Stride(24, size.nWidth));
    return {[=] {
                return Seconds([&] {
                    for (int y = 0; y < size.nHeight / 2; y++) {
                        unsigned char* const pTop = pImage->GetLineArray()[y];
                        unsigned char* const pBottom = pImage->GetLineArray()[size.nHeight - 1 - y];
                        std::memcpy(pScratch->data(), pTop, pScratch->size());
                        std::memcpy(pTop, pBottom, pScratch->size());
                        std::memcpy(pBottom, pScratch->data(), pScratch->size());
                    }
                });
            },
            MirrorPair(pImage).yardstick};
}

// What no operation with a result of the picture's size in a new buffer can go below: copying it,
// beside the plain transposition.
Pair CopyPair(Size size, int nBits) {
    const SharedImage pImage = MakeScene(size, nBits);
    return {[=] {
                return Seconds([&] {
                    CKelImage image;
                    std::memcpy(image.Create(size.nWidth, size.nHeight, nBits), pImage->GetBits(),
                                pImage->GetBmpDataSize());
                    Use(image.GetBits());
                });
            },
            TransposePair(size, nBits).yardstick};
}

Pair DepthPair(Size size) {
    const SharedImage pImage = MakeScene(size, 24);
    auto pFrom = std::make_shared<plain::Bytes>(PictureSize(32, size), 1);
    auto pTo = std::make_shared<plain::Bytes>(PictureSize(32, size), 2);
    return {[=] {
                const Image pCopy = Copy(*pImage);
                return Seconds([&] { pCopy->ChangeBitCount(32); });
            },
            [=] {
                return Seconds([&] {
                    std::memcpy(pTo->data(), pFrom->data(), pTo->size());
                    Use(pTo->data());
                });
            }};
}

}  // namespace

void AddPixelRows(std::vector<Row>& rows, const Options& options) {
    const Size large = options.Large(), hd = options.Hd();
    struct Zoom {
        Size in, out;
        double dTarget;
    };
    for (const Zoom zoom : {Zoom{large, options.Target(1920, 1440), 0.22},
                            Zoom{hd, options.Target(3840, 2160), 0.15}}) {
        rows.push_back({"zoom " + zoom.in.Text() + " to " + zoom.out.Text() + ", 24 bits",
                        "plain loop", zoom.dTarget,
                        [zoom] { return ZoomPair(zoom.in, zoom.out); }});
    }
    struct Depth {
        int nBits;
        double dTarget;
    };
    for (const Depth depth : {Depth{8, 0.06}, Depth{24, 0.15}, Depth{32, 0.19}}) {
        rows.push_back({"transpose " + large.Text() + ", " + std::to_string(depth.nBits) + " bits",
                        "plain loop", depth.dTarget,
                        [=] { return TransposePair(large, depth.nBits); }});
    }
    rows.push_back({"mirror " + large.Text() + ", 24 bits", "memcpy of the picture", 0.70,
                    [=] { return MirrorPair(MakeScene(large, 24)); }});
    for (const Depth depth :
         {Depth{24, 0.25}, Depth{32, 0.28}, Depth{8, 0.22}, Depth{16, 0.20}, Depth{1, 0.10}}) {
        rows.push_back({"rows to 24 bits " + large.Text() + ", from " + std::to_string(depth.nBits),
                        "plain loop", depth.dTarget, [=] {
                            return RowPair(MakeScene(large, depth.nBits), large, depth.nBits);
                        }});
    }
    rows.push_back({"24 to 32 bits in place " + large.Text(), "memcpy of the result", 2.4,
                    [=] { return DepthPair(large); }});
    for (const int nBits : {8, 24, 32}) {
        rows.push_back({"limit: new " + large.Text() + ", " + std::to_string(nBits) + " bits",
                        "memset of warm memory", 0, [=] { return NewPicturePair(large, nBits); }});
    }
    for (const int nBits : {8, 24, 32}) {
        rows.push_back({"limit: copy " + large.Text() + ", " + std::to_string(nBits) + " bits",
                        "plain transposition", 0, [=] { return CopyPair(large, nBits); }});
    }
    rows.push_back({"limit: exchange rows, " + large.Text(), "memcpy of the picture", 0,
                    [=] { return ExchangePair(large); }});
    for (const int nBits : {24, 32}) {
        rows.push_back({"limit: read " + large.Text() + ", " + std::to_string(nBits) + " bits",
                        "plain rows", 0, [=] { return ReadOncePair(large, nBits); }});
    }
}

}  // namespace bench
