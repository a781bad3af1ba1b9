#include <cstring>
#include <memory>
#include <new>

#include "../kelbitmap/strides.h"
#include "../kelimage/kelimage.h"
#include "../keltrace/keltrace.h"
#include "kelfilter.h"
#include "kelscale.h"

namespace {

using Pixel = CDataRGB_UBYTE::PixelClass;
using Scaler = C2PassScale<CDataRGB_UBYTE>;

constexpr double kBilinearWidth = 0.64;
constexpr double kBoxWidth = 0.5;
constexpr double kRadius = 3.0;

// The value of a variant as its kind lies in memory.
template <typename Kind>
Kind ValueAs(const CVamVariant& variant) {
    Kind value;
    std::memcpy(&value, &variant.m_Value, sizeof value);
    return value;
}

// nSize times a factor in single precision, cut towards zero; 0 when that is no int.
int ScaleByFactor(int nSize, float fFactor) {
    const float fResult = static_cast<float>(nSize) * fFactor;
    // Both bounds are exact in single precision; a NaN fails both comparisons.
    return fResult >= -2147483648.0f && fResult < 2147483648.0f ? static_cast<int>(fResult) : 0;
}

// The target size that a parameter asks for.
int TargetSize(const CVamVariant* pValue, int nSize) {
    if (pValue == nullptr) {
        return nSize;
    }
    switch (pValue->m_byType) {
        case VAM_INT16:
            return ValueAs<short>(*pValue);
        case VAM_UINT16:
            return ValueAs<unsigned short>(*pValue);
        case VAM_INT32:
        case VAM_UINT32:
        case VAM_LONG:
        case VAM_ULONG:
            return ValueAs<int>(*pValue);
        case VAM_FLOAT:
            return ScaleByFactor(nSize, ValueAs<float>(*pValue));
        case VAM_DOUBLE:
            return ScaleByFactor(nSize, static_cast<float>(ValueAs<double>(*pValue)));
        default:
            return nSize;
    }
}

// The four kernels at the widths the filter uses, found by number; null for a number of none.
class KernelSet {
  public:
    explicit KernelSet(double dRadius)
        : m_Bilinear(kBilinearWidth), m_Box(kBoxWidth), m_Gaussian(dRadius), m_Hamming(dRadius) {}

    PLContribDef* Find(int nType) {
        switch (nType) {
            case KEL_SCALE_BILINEAR:
                return &m_Bilinear;
            case KEL_SCALE_BOX:
                return &m_Box;
            case KEL_SCALE_GAUSSIAN:
                return &m_Gaussian;
            case KEL_SCALE_HAMMING:
                return &m_Hamming;
            default:
                return nullptr;
        }
    }

  private:
    PLBilinearContribDef m_Bilinear;
    PLBoxContribDef m_Box;
    PLGaussianContribDef m_Gaussian;
    PLHammingContribDef m_Hamming;
};

// The rows of a source as blue, green, red: its own at 24 bits, else a converted copy.
class SourceRows {
  public:
    // False when the copy cannot be had.
    bool Load(CKelImage* pSrc) {
        if (pSrc->GetBitsPerPixel() == 24) {
            m_ppRows = pSrc->GetLineArray();
            return true;
        }
        return Convert(pSrc);
    }

    Pixel** Rows() const { return reinterpret_cast<Pixel**>(m_ppRows); }

  private:
    bool Convert(CKelImage* pSrc) {
        const int nHeight = pSrc->GetHeight();
        const std::int64_t nStride = kel::RowStride(24, pSrc->GetWidth());
        const std::int64_t nSize = kel::PictureSize(24, pSrc->GetWidth(), nHeight);
        const std::int64_t nArraySize = nHeight * std::int64_t{sizeof(unsigned char*)};
        if (nArraySize <= kel::kMaxSize) {
            m_pArray.reset(new (std::nothrow) unsigned char*[static_cast<std::size_t>(nHeight)]);
        }
        if (m_pArray == nullptr) {
            return false;
        }
        if (nSize == 0 || nSize > kel::kTracedSizeLimit) {
            kel::TraceInvalid("bufferSize", static_cast<unsigned int>(nSize));
        }
        // Zeroed: a row that cannot be converted comes out black, never as old memory.
        if (nSize <= kel::kMaxSize) {
            m_pBuffer.reset(new (std::nothrow) unsigned char[static_cast<std::size_t>(nSize)]());
        }
        if (m_pBuffer == nullptr) {
            return false;
        }
        for (int i = 0; i < nHeight; ++i) {
            m_pArray[static_cast<std::size_t>(i)] = m_pBuffer.get() + i * nStride;
            pSrc->GetLine24AsBGRAt(i, m_pArray[static_cast<std::size_t>(i)]);
        }
        m_ppRows = m_pArray.get();
        return true;
    }

    unsigned char** m_ppRows = nullptr;
    std::unique_ptr<unsigned char*[]> m_pArray;
    std::unique_ptr<unsigned char[]> m_pBuffer;
};

bool HasRows(CKelImage* pImage) {
    return pImage->GetLineArray() != nullptr && pImage->GetWidth() >= 0 && pImage->GetHeight() > 0;
}

}  // namespace

CKelImageFilter::CKelImageFilter() = default;
CKelImageFilter::~CKelImageFilter() = default;

CKelImageFilterScale::CKelImageFilterScale() = default;
CKelImageFilterScale::~CKelImageFilterScale() = default;

int CKelImageFilterScale::GetScaleWidth(int nSrcWidth) {
    return TargetSize(GetParameter("width"), nSrcWidth);
}

int CKelImageFilterScale::GetScaleHeight(int nSrcHeight) {
    return TargetSize(GetParameter("height"), nSrcHeight);
}

int CKelImageFilterScale::GetScaleType() {
    const CVamVariant* pValue = GetParameter("type");
    return pValue != nullptr && pValue->m_byType == VAM_INT32 ? ValueAs<int>(*pValue)
                                                              : KEL_SCALE_BILINEAR;
}

double CKelImageFilterScale::GetScaleRadius() {
    return kRadius;
}

KelResult CKelImageFilterScale::Apply(CKelImage* pSrc, CKelImage* pDst) {
    if (pSrc == nullptr || pDst == nullptr || pSrc == pDst || !HasRows(pSrc)) {
        return KEL_ERR_PARAM;
    }
    const int nSrcWidth = pSrc->GetWidth();
    const int nSrcHeight = pSrc->GetHeight();
    const int nDstWidth = GetScaleWidth(nSrcWidth);
    const int nDstHeight = GetScaleHeight(nSrcHeight);
    if (nDstWidth <= 0 || nDstHeight <= 0) {
        return KEL_ERR_PARAM;
    }
    pDst->Clean();
    pDst->Create(nDstWidth, nDstHeight, 24);
    Pixel** ppDst = reinterpret_cast<Pixel**>(pDst->GetLineArray());
    if (ppDst == nullptr) {
        return KEL_ERR_MEMORY;
    }
    SourceRows source;
    if (!source.Load(pSrc)) {
        return KEL_ERR_MEMORY;
    }
    KernelSet kernels(GetScaleRadius());
    PLContribDef* pKernel = kernels.Find(GetScaleType());
    if (pKernel == nullptr) {
        return KEL_OK;  // no such kernel: the picture stays as blank as Create made it
    }
    Scaler scaler(pKernel);
    return scaler.Scale(source.Rows(), static_cast<unsigned int>(nSrcWidth),
                        static_cast<unsigned int>(nSrcHeight), ppDst,
                        static_cast<unsigned int>(nDstWidth),
                        static_cast<unsigned int>(nDstHeight)) == nullptr
               ? KEL_ERR_MEMORY
               : KEL_OK;
}
