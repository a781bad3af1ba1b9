// The exported factory, by which a host makes and ends an image.
#include <new>

#include "kelimage.h"

int GetKelVersion() {
    return IKELEX_VERSION;
}

void CreateImageObject(IKelImage** ppImage) {
    *ppImage = new (std::nothrow) CKelImage;
}

void DestroyImageObject(IKelImage* pImage) {
    delete dynamic_cast<CKelImage*>(pImage);
}
