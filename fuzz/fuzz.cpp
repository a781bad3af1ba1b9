// The allocation bound, the checks of an image, and what the input can make and do.
#include "fuzz.h"

#include <ikelex/handle.h>

#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <new>

// Allocations of an array over this size fail in every target, so that a file's claim costs nothing
// whatever its format: the library answers KEL_ERR_MEMORY.
constexpr std::size_t kMaxBytes = 1u << 20;

void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept {
    return nSize > kMaxBytes ? nullptr : std::malloc(nSize == 0 ? 1 : nSize);
}
void* operator new[](std::size_t nSize) {
    if (void* pBlock = operator new[](nSize, std::nothrow)) {
        return pBlock;
    }
    throw std::bad_alloc();
}
void operator delete[](void* pBlock) noexcept {
    std::free(pBlock);
}
void operator delete[](void* pBlock, std::size_t) noexcept {
    std::free(pBlock);
}

namespace fuzz {

void Require(bool bHolds, const char* pszWhat) {
    if (!bHolds) {
        std::fprintf(stderr, "broken: %s\n", pszWhat);
        std::abort();
    }
}

void CheckResult(KelResult nResult) {
    const bool bKnown =
        (nResult >= 0 && nResult <= 6) || nResult == 8 || nResult == 11 || nResult == 1000;
    Require(bKnown, "a result code that is not documented");
}

void CheckImage(CKelImage& image) {
    if (image.GetLineArray() != nullptr) {
        image.GetBitmapInfo();  // built, so that it is compared from now on
    }
    const std::string strFault = support::FaultOf(image);
    Require(strFault.empty(), strFault.c_str());
    support::Snapshot(image);  // copies every byte: the sanitizers have seen it
}

support::Picture MakePicture(Input& input) {
    const std::vector<support::Kind>& kinds = support::AllKinds();
    support::Kind kind = kinds[input.Byte() % kinds.size()];
    if (kind.nBits <= 8) {
        kind.nColors = static_cast<unsigned int>(input.Range(0, 1 << kind.nBits));
    }
    const int nWidth = input.Range(0, kMaxSide), nHeight = input.Range(0, kMaxSide);
    return support::MakePicture(kind, nWidth, nHeight, input.Byte());
}

namespace {

// Options with and without meaning, of every kind, with values that make sense or any others.
KelParameters MakeOptions(Input& input) {
    static const char* const kNames[] = {"quality", "width", "height", "type",
                                         "",        "Width", "xxxxx"};
    KelParameters options;
    for (int n = input.Byte() % 8; n > 0; --n) {
        const char* const pszName = kNames[input.Byte() % std::size(kNames)];
        CVamVariant value(input.Range(-1, kMaxSide));
        if (input.Byte() % 4 == 0) {
            const unsigned char byType = input.Byte() % 16;
            const auto nHigh = static_cast<std::uint64_t>(input.Word()) << 48;
            value.Set(byType, nHigh | static_cast<unsigned int>(input.Word()));
        }
        options.Set(pszName, value);
    }
    return options;
}

void ReadLines(CKelImage& image, Input&) {
    Bytes line(static_cast<std::size_t>(kel::RowStride(24, image.GetWidth())));
    for (int y = -1; y <= image.GetHeight(); ++y) {
        image.GetLine24AsBGRAt(y, line.data());
        image.GetLine24AsRGBAt(y, line.data());
    }
}

void (*const kOperations[])(CKelImage&, Input&) = {
    [](auto& image, auto& input) {
        const int nWidth = input.Range(-1, kMaxSide);
        image.ZoomImage(nWidth, input.Range(-1, kMaxSide));
    },
    [](auto& image, auto& input) {
        const int nX = input.Range(-1, kMaxSide), nY = input.Range(-1, kMaxSide);
        const int nWidth = input.Range(-1, kMaxSide);
        image.SubImage(nX, nY, nWidth, input.Range(-1, kMaxSide));
    },
    [](auto& image, auto& input) { image.Mirror(input.Byte() % 2); },
    [](auto& image, auto&) { image.Rotate(0); },
    [](auto& image, auto&) { image.ChangeBitCount(32); },
    [](auto& image, auto& input) {
        CheckResult(image.ApplyFilter(KEL_FILTER_SCALE, MakeOptions(input)));
    },
    [](auto& image, auto& input) {
        CVamArchiveMemory archive;
        const auto eFormat = static_cast<KelImageFormat>(input.Byte() % 9);
        CheckResult(image.Save(&archive, eFormat, MakeOptions(input)));
    },
    ReadLines,
    [](auto& image, auto&) { image.DestroyPaletteTable(); },
    [](auto& image, auto& input) {
        for (int n = input.Byte() % 20; n > 0; --n) {
            image.AddPaletteEntry(1, 2, 3, 4);
        }
    },
};

}  // namespace

void Operate(CKelImage& image, Input& input) {
    constexpr int kLongSide = 1 << 20;
    if (image.GetWidth() > kLongSide || image.GetHeight() > kLongSide) {
        return;  // without rows or columns a side may be of any length, and takes its time
    }
    kOperations[input.Byte() % std::size(kOperations)](image, input);
    CheckImage(image);
}

}  // namespace fuzz
