// The allocation bound, the checks of an image, and what the input can make and do.
#include "fuzz.h"

#include <cstdio>
#include <cstdlib>
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

void Operate(CKelImage& image, Input& input) {
    switch (input.Byte() % 10) {
        case 0:
            image.ZoomImage(input.Range(-1, kMaxSide), input.Range(-1, kMaxSide));
            break;
        case 1: {
            const int nX = input.Range(-1, kMaxSide), nY = input.Range(-1, kMaxSide);
            image.SubImage(nX, nY, input.Range(-1, kMaxSide), input.Range(-1, kMaxSide));
            break;
        }
        case 2:
            image.Mirror(input.Byte() % 2);
            break;
        case 3:
            image.Rotate(0);
            break;
        case 4:
            image.ChangeBitCount(32);
            break;
        case 5: {
            tagKelParameterItem items[] = {{"width", CVamVariant(input.Range(-1, kMaxSide))},
                                           {"height", CVamVariant(input.Range(-1, kMaxSide))},
                                           {"type", CVamVariant(input.Range(0, 5))}};
            tagKelParameters params = {3, items};
            CheckResult(image.ApplyFilter(KEL_FILTER_SCALE, &params));
            break;
        }
        case 6: {
            tagKelParameterItem item = {"quality", CVamVariant(input.Range(-1, 101))};
            tagKelParameters params = {1, &item};
            CVamArchiveMemory archive;
            CheckResult(
                image.Save(&archive, static_cast<KelImageFormat>(input.Byte() % 9), &params));
            break;
        }
        case 7: {
            Bytes line(static_cast<std::size_t>(kel::RowStride(24, image.GetWidth())));
            for (int y = -1; y <= image.GetHeight(); ++y) {
                image.GetLine24AsBGRAt(y, line.data());
                image.GetLine24AsRGBAt(y, line.data());
            }
            break;
        }
        case 8:
            image.DestroyPaletteTable();
            break;
        default:
            for (int n = input.Byte() % 20; n > 0; n--) {
                image.AddPaletteEntry(1, 2, 3, 4);
            }
    }
    CheckImage(image);
}

}  // namespace fuzz
