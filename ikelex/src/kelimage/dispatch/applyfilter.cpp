// The filter entry points. What a filter or a host's own class throws becomes a result here, after
// everything made for the call is released.
#include <memory>
#include <new>

#include "exceptions.h"
#include "kelimage/kelimage.h"
#include "kelscale/kelfilter.h"
#include "keltrace/keltrace.h"

KelResult CKelImage::ApplyFilter(KelImageFilterType eType, tagKelParameters* pParams) {
    return kel::Guard([&] {
        CKelImage* pNew = nullptr;
        const KelResult nResult = ApplyFilter1(&pNew, eType, pParams);
        const std::unique_ptr<CKelImage> owner(pNew);
        if (nResult == KEL_OK && pNew != nullptr) {
            Borrow(pNew);
        }
        return nResult;
    });
}

KelResult CKelImage::ApplyFilter(IKelImage** ppImage, KelImageFilterType eType,
                                 tagKelParameters* pParams) {
    *ppImage = nullptr;
    return kel::Guard([&] {
        CKelImage* pNew = nullptr;
        const KelResult nResult = ApplyFilter1(&pNew, eType, pParams);
        *ppImage = pNew;
        return nResult;
    });
}

KelResult CKelImage::ApplyFilter1(CKelImage** ppImage, KelImageFilterType eType,
                                  tagKelParameters* pParams) {
    *ppImage = nullptr;
    if (eType != KEL_FILTER_SCALE) {
        return KEL_ERR_FILTER_TYPE;
    }
    return kel::Guard([&] {
        std::unique_ptr<CKelImage> image(new (std::nothrow) CKelImage);
        if (image == nullptr) {
            kel::TraceNull("pImage");
        }
        CKelImageFilterScale filter;
        filter.SetParameters(pParams);
        const KelResult nResult = filter.Apply(this, image.get());
        if (nResult == KEL_OK) {
            *ppImage = image.release();
        }
        return nResult;
    });
}
