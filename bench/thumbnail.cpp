// The smallest host: JPEG file in, 320 x 240 JPEG file out.
#include <ikelex/ikelex.h>

#include "peak.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    tagKelParameterItem items[] = {{"width", CVamVariant(320)}, {"height", CVamVariant(240)}};
    tagKelParameters params = {2, items};
    IKelImage* pImage = nullptr;
    CreateImageObject(&pImage);
    if (pImage == nullptr) {
        return 1;
    }
    KelResult nResult = pImage->Open(argv[1]);
    if (nResult == KEL_OK) {
        nResult = pImage->ApplyFilter(KEL_FILTER_SCALE, &params);
    }
    if (nResult == KEL_OK) {
        nResult = pImage->Save(argv[2], KEL_IMAGE_JPEG, nullptr);
    }
    DestroyImageObject(pImage);
    LeavePeak(argv[2]);
    return nResult;
}
