// The allocation bound, the checks of an image, and what the input can make and do.
#include "fuzz.h"

#include <new>

#include "kelbitmap/strides.h"

void* operator new[](std::size_t nSize) {
    void* pBlock = nSize > fuzz::kMaxBytes ? nullptr : std::malloc(nSize == 0 ? 1 : nSize);
    if (pBlock == nullptr) {
        throw std::bad_alloc();
    }
    return pBlock;
}
void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept {
    return nSize > fuzz::kMaxBytes ? nullptr : std::malloc(nSize == 0 ? 1 : nSize);
}
void operator delete[](void* pBlock) noexcept {
    std::free(pBlock);
}
void operator delete[](void* pBlock, std::size_t) noexcept {
    std::free(pBlock);
}

namespace fuzz {

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
    unsigned int nSum = 0;
    for (const unsigned char by : support::Snapshot(image)) {
        nSum = nSum * 31 + by;
    }
    asm volatile("" : : "r"(nSum));  // every byte above was read: the sanitizers have seen it
}

void MakeImage(CKelImage& image, Input& input) {
    constexpr int kDepths[] = {1, 4, 8, 16, 24, 32, 16, 32};
    const int nKind = input.Byte() % 8;
    const int nBits = kDepths[nKind];
    const int nWidth = input.Range(0, kMaxSide), nHeight = input.Range(0, kMaxSide);
    if (image.Create(nWidth, nHeight, nBits) == nullptr) {
        return;
    }
    const int nColours = nBits <= 8 ? input.Range(0, 1 << nBits) : nKind >= 6 ? 3 : 0;
    for (int i = 0; i < nColours; ++i) {
        const unsigned char r = input.Byte(), g = input.Byte(), b = input.Byte();
        image.AddPaletteEntry(r, g, b, input.Byte());
    }
    if (nKind >= 6) {
        image.m_bmih.biCompression = BI_BITFIELDS;
    }
    const std::size_t nSize = image.GetBmpDataSize();
    for (std::size_t i = 0; i < nSize; ++i) {
        image.m_pBits[i] = input.Noise();
    }
}

void Operate(CKelImage& image, Input& input) {
    switch (input.Byte() % 9) {
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
        default:
            for (int n = input.Byte() % 20; n > 0; n--) {
                image.AddPaletteEntry(1, 2, 3, 4);
            }
    }
    CheckImage(image);
}

}  // namespace fuzz
