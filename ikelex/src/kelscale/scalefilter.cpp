// The scale filter gives its parameters a meaning, and reads source rows of any depth.
//
// The scaler decides the pixels, the source image the colours of other depths than 24 bits.
#include <algorithm>
#include <cstring>
#include <memory>

#include "bandedscale.h"
#include "kelbitmap/integers.h"
#include "kelbitmap/strides.h"
#include "kelfilter.h"
#include "kelimage/kelimage.h"
#include "kelimage/line24.h"
#include "kelparameters/variantvalue.h"
#include "kelscale.h"
#include "keltrace/keltrace.h"

namespace {

using Pixel = CDataRGB_UBYTE::PixelClass;

// nSize times a factor in single precision, cut towards zero. 0 when that is no int.
int ScaleByFactor(int nSize, float fFactor) {
    const float fResult = static_cast<float>(nSize) * fFactor;
    // Both bounds are exact in single precision. A NaN fails both comparisons.
    return fResult >= -2147483648.0f && fResult < 2147483648.0f ? static_cast<int>(fResult) : 0;
}

// The target size that a parameter asks for.
int TargetSize(const CVamVariant* pValue, int nSize) {
    if (pValue == nullptr) {
        return nSize;
    }
    switch (pValue->m_byType) {
        case VAM_FLOAT:
            return ScaleByFactor(nSize, kel::ValueAs<float>(*pValue));
        case VAM_DOUBLE:
            return ScaleByFactor(nSize, static_cast<float>(kel::ValueAs<double>(*pValue)));
        default:
            return kel::IntegerOf(*pValue).value_or(nSize);
    }
}

// The kernel of a number, or null.
const tagKelScaleKernel* FindKernel(int nType) {
    int nCount = 0;
    const tagKelScaleKernel* pKernels = GetScaleKernels(&nCount);
    const auto* pEnd = pKernels + nCount;
    const auto* pFound = std::find_if(
        pKernels, pEnd, [nType](const tagKelScaleKernel& kernel) { return kernel.eType == nType; });
    return pFound == pEnd ? nullptr : pFound;
}

// The rows of an image of another depth than 24 bits as blue, green, red.
class ConvertedRows : public kel::RowSource {
  public:
    explicit ConvertedRows(CKelImage* pImage)
        : m_pImage(pImage),
          m_Reader(pImage, kel::kOrderBGR),
          m_nRowBytes(kel::AsSize(kel::RowStride(24, pImage->GetWidth()))) {}

    // The memory starts zeroed, and every row writes the same bytes of it. So what an image without
    // colours leaves out is black.
    bool Prepare(unsigned int nMostRows) override {
        if (!m_Rows.Allocate(nMostRows, nMostRows, m_nRowBytes)) {
            return false;
        }
        for (unsigned int i = 0; i < nMostRows; ++i) {
            std::memset(m_Rows.Rows()[i], 0, m_nRowBytes);
        }
        return true;
    }

    const unsigned char* const* Rows(unsigned int nFirst, unsigned int nRows) override {
        for (unsigned int i = 0; i < nRows; ++i) {
            m_Reader.Read(static_cast<int>(nFirst + i), m_Rows.Rows()[i]);
        }
        return m_Rows.Rows();
    }

    kel::NextRows MadeFrom(unsigned int nFirst) const override {
        const unsigned int nHeight = kel::Low32(m_pImage->GetHeight());
        const auto nBytes = kel::RowStride(m_pImage->GetBitsPerPixel(), m_pImage->GetWidth());
        return {m_pImage->GetLineArray() + nFirst, nHeight - nFirst, kel::AsSize(nBytes)};
    }

  private:
    CKelImage* m_pImage;
    kel::Line24Reader m_Reader;
    std::size_t m_nRowBytes;
    kel::RowBlock m_Rows;
};

// Traces the size of the rows at 24 bits where it is 0 or large. They are converted a few at a
// time, so the size is no limit.
void TraceConversion(CKelImage* pSrc) {
    const std::int64_t nSize = kel::PictureSize(24, pSrc->GetWidth(), pSrc->GetHeight());
    if (nSize == 0 || nSize > kel::kTracedSizeLimit) {
        kel::TraceInvalid("bufferSize", kel::Low32(nSize));
    }
}

// False when memory is short.
bool Resample(CKelImage* pSrc, CKelImage* pDst, PLContribDef* pKernel) {
    const unsigned int nSrcWidth = kel::Low32(pSrc->GetWidth());
    const unsigned int nSrcHeight = kel::Low32(pSrc->GetHeight());
    const unsigned int nDstWidth = kel::Low32(pDst->GetWidth());
    const unsigned int nDstHeight = kel::Low32(pDst->GetHeight());
    if (pSrc->GetBitsPerPixel() != 24) {
        ConvertedRows rows(pSrc);
        return kel::ScaleRows(*pKernel, rows, nSrcWidth, nSrcHeight, pDst->GetLineArray(),
                              nDstWidth, nDstHeight);
    }
    C2PassScale<CDataRGB_UBYTE> scaler(pKernel);
    return scaler.Scale(reinterpret_cast<Pixel**>(pSrc->GetLineArray()), nSrcWidth, nSrcHeight,
                        reinterpret_cast<Pixel**>(pDst->GetLineArray()), nDstWidth,
                        nDstHeight) != nullptr;
}

// Whether the rows are all there. A picture without rows misses none.
bool HasAllRows(CKelImage* pImage) {
    const bool bRows = pImage->GetHeight() > 0 && pImage->GetLineArray() != nullptr;
    return pImage->GetWidth() >= 0 && (bRows || pImage->GetHeight() == 0);
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
    return pValue != nullptr && pValue->m_byType == VAM_INT32 ? kel::ValueAs<int>(*pValue)
                                                              : KEL_SCALE_BILINEAR;
}

double CKelImageFilterScale::GetScaleRadius() {
    return KEL_SCALE_RADIUS;
}

KelResult CKelImageFilterScale::Apply(CKelImage* pSrc, CKelImage* pDst) {
    if (pSrc == nullptr || pDst == nullptr || pSrc == pDst || !HasAllRows(pSrc)) {
        return KEL_ERR_PARAM;
    }
    const int nDstWidth = GetScaleWidth(pSrc->GetWidth());
    const int nDstHeight = GetScaleHeight(pSrc->GetHeight());
    if (nDstWidth <= 0 || nDstHeight <= 0) {
        return KEL_ERR_PARAM;
    }
    pDst->Clean();
    pDst->CreateUncleared(nDstWidth, nDstHeight, 24);
    if (pDst->GetLineArray() == nullptr) {
        return KEL_ERR_MEMORY;
    }
    if (pSrc->GetBitsPerPixel() != 24) {
        TraceConversion(pSrc);
    }
    const tagKelScaleKernel* pFound = FindKernel(GetScaleType());
    if (pFound == nullptr) {
        pDst->ClearRowsFrom(0);
        return KEL_OK;  // no such kernel: a blank picture
    }
    const std::unique_ptr<PLContribDef> kernel(pFound->pfnCreate(pFound->dWidth));
    if (kernel == nullptr || !Resample(pSrc, pDst, kernel.get())) {
        pDst->ClearRowsFrom(0);
        return KEL_ERR_MEMORY;
    }
    return KEL_OK;
}
