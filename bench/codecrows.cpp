// Opening and saving. Plain loops decode to and encode from red-green-blue rows, so the exchange of
// the channels is ours alone to pay.
#include <platform/vamarchivefile.h>
#include <platform/vamarchivememory.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "plaincodecs.h"
#include "suite.h"

namespace bench {

namespace {

void Check(KelResult nResult) {
    if (nResult == KEL_OK)
        return;
    std::fprintf(stderr, "bench: %s\n", KelResultName(nResult));
    std::exit(1);
}

// Opening these bytes into a new image, the image's end included.
Side OpenMemory(std::shared_ptr<plain::Bytes> pFile) {
    return [pFile] {
        return Seconds([&] {
            CVamArchiveMemory archive(pFile->data(), pFile->size());
            CKelImage image;
            Check(image.Open(&archive));
            Use(image.GetBits());
        });
    };
}

Side SaveMemory(std::shared_ptr<CKelImage> pImage, KelImageFormat eFormat) {
    return [pImage, eFormat] {
        return Seconds([&] {
            CVamArchiveMemory archive;
            Check(pImage->Save(&archive, eFormat, nullptr));
            Use(archive.GetData());
        });
    };
}

std::shared_ptr<plain::Bytes> Shared(plain::Bytes bytes) {
    return std::make_shared<plain::Bytes>(std::move(bytes));
}

// A file of the bytes in the temporary directory, removed with the last owner.
std::shared_ptr<const std::string> TemporaryFile(const plain::Bytes& bytes, const char* pszName) {
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

void AddJpeg(std::vector<Row>& rows, Size size) {
    rows.push_back({"open JPEG " + size.Text(), "libjpeg, fresh buffer", 0.90, [size] {
                        auto pFile = Shared(Saved(*MakeScene(size, 24), KEL_IMAGE_JPEG));
                        return Pair{OpenMemory(pFile), [pFile] {
                                        return Seconds([&] { plain::DecodeJpeg(*pFile); });
                                    }};
                    }});
    rows.push_back({"open JPEG " + size.Text() + " ", "libjpeg, reused buffer", 1.10, [size] {
                        auto pFile = Shared(Saved(*MakeScene(size, 24), KEL_IMAGE_JPEG));
                        auto pTarget = Shared(RgbPixels(*MakeScene(size, 24)));
                        return Pair{
                            OpenMemory(pFile), [pFile, pTarget] {
                                return Seconds([&] { plain::DecodeJpeg(*pFile, pTarget->data()); });
                            }};
                    }});
    rows.push_back({"save JPEG " + size.Text() + ", quality 75", "libjpeg", 1.03, [size] {
                        std::shared_ptr<CKelImage> pImage = MakeScene(size, 24);
                        auto pPixels = Shared(RgbPixels(*pImage));
                        return Pair{
                            SaveMemory(pImage, KEL_IMAGE_JPEG), [pPixels, size] {
                                return Seconds([&] {
                                    plain::EncodeJpeg(pPixels->data(), {size.nWidth, size.nHeight});
                                });
                            }};
                    }});
}

void AddPng(std::vector<Row>& rows, Size size) {
    struct Kind {
        const char* pszName;
        int nBits;
        int nColorType;
    };
    for (const Kind kind :
         {Kind{"truecolour", 24, PNG_COLOR_TYPE_RGB}, Kind{"alpha", 32, PNG_COLOR_TYPE_RGB_ALPHA},
          Kind{"palette", 8, PNG_COLOR_TYPE_PALETTE}}) {
        const std::string strTail = std::string(" PNG ") + size.Text() + ", " + kind.pszName;
        rows.push_back({"open" + strTail, "libpng", 1.03, [size, kind] {
                            auto pFile = Shared(Saved(*MakeScene(size, kind.nBits), KEL_IMAGE_PNG));
                            return Pair{OpenMemory(pFile), [pFile] {
                                            return Seconds([&] { plain::DecodePng(*pFile); });
                                        }};
                        }});
        rows.push_back(
            {"save" + strTail, "libpng", 1.03, [size, kind] {
                 std::shared_ptr<CKelImage> pImage = MakeScene(size, kind.nBits);
                 // The stored rows serve as they are: the order of the channels is all
                 // the same to libpng.
                 plain::PngFormat format{size.nWidth,     size.nHeight,       8,
                                         kind.nColorType, PNG_INTERLACE_NONE, {}};
                 for (int i = 0; i < pImage->GetPaletteNum(); i++) {
                     const tagKelRGBQUAD& entry = pImage->GetPalette()[i];
                     format.palette.push_back({entry.byRed, entry.byGreen, entry.byBlue});
                 }
                 const auto nStride =
                     static_cast<std::size_t>(kind.nBits * size.nWidth + 31) / 32 * 4;
                 return Pair{
                     SaveMemory(pImage, KEL_IMAGE_PNG), [=] {
                         return Seconds([&] {
                             Use(plain::EncodePng(pImage->GetBits(), nStride, format).data());
                         });
                     }};
             }});
    }
}

// Writes the bytes to a new file, in blocks that go through a buffer of that size, or in one piece.
double WriteFile(const std::string& strPath, const plain::Bytes& bytes, std::size_t nBlock = 0) {
    return Seconds([&] {
        std::FILE* pFile = std::fopen(strPath.c_str(), "w+b");
        std::vector<unsigned char> buffer(nBlock);
        std::size_t nDone = nBlock == 0 ? std::fwrite(bytes.data(), 1, bytes.size(), pFile) : 0;
        for (std::size_t nCount = 1; nBlock != 0 && nCount != 0; nDone += nCount) {
            nCount = std::min(nBlock, bytes.size() - nDone);
            std::memcpy(buffer.data(), bytes.data() + nDone, nCount);
            nCount = std::fwrite(buffer.data(), 1, nCount, pFile);
        }
        if (nDone != bytes.size() || std::fclose(pFile) != 0) {
            std::exit(1);
        }
    });
}

void AddBmp(std::vector<Row>& rows, Size size) {
    rows.push_back({"open BMP " + size.Text() + ", 24 bits", "fread, fresh buffer", 0.60, [size] {
                        const plain::Bytes bytes = Saved(*MakeScene(size, 24), KEL_IMAGE_BMP);
                        auto pPath = TemporaryFile(bytes, "ikelex-bench-open.bmp");
                        const std::size_t nSize = bytes.size();
                        return Pair{[pPath] {
                                        return Seconds([&] {
                                            CKelImage image;
                                            Check(image.Open(pPath->c_str()));
                                            Use(image.GetBits());
                                        });
                                    },
                                    [pPath, nSize] {
                                        return Seconds([&] {
                                            const std::unique_ptr<unsigned char[]> p(
                                                new unsigned char[nSize]);
                                            std::FILE* pFile = std::fopen(pPath->c_str(), "rb");
                                            if (std::fread(p.get(), 1, nSize, pFile) != nSize)
                                                std::exit(1);
                                            std::fclose(pFile);
                                            Use(p.get());
                                        });
                                    }};
                    }});
    rows.push_back({"save BMP " + size.Text() + ", 24 bits", "fwrite", 1.05, [size] {
                        std::shared_ptr<CKelImage> pImage = MakeScene(size, 24);
                        auto pBytes = Shared(Saved(*pImage, KEL_IMAGE_BMP));
                        auto pPath = TemporaryFile({}, "ikelex-bench-save.bmp");
                        return Pair{
                            [pImage, pPath] {
                                return Seconds([&] {
                                    Check(pImage->Save(pPath->c_str(), KEL_IMAGE_BMP, nullptr));
                                });
                            },
                            [pBytes, pPath] { return WriteFile(*pPath, *pBytes); }};
                    }});
    rows.push_back({"limit: write " + size.Text() + " in blocks", "fwrite", 0, [size] {
                        auto pBytes = Shared(Saved(*MakeScene(size, 24), KEL_IMAGE_BMP));
                        auto pPath = TemporaryFile({}, "ikelex-bench-blocks.bmp");
                        return Pair{[=] { return WriteFile(*pPath, *pBytes, 512 * 1024); },
                                    [=] { return WriteFile(*pPath, *pBytes); }};
                    }});
}

}  // namespace

void AddCodecRows(std::vector<Row>& rows, const Options& options) {
    AddJpeg(rows, options.Large());
    AddPng(rows, options.Hd());
    AddBmp(rows, options.Large());
}

}  // namespace bench
