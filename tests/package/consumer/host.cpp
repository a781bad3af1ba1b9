// A foreign program over the installed package, C++11: makes a picture, saves it, opens it, scales
// it, and saves the result. Public names only. Exits with 0 when every step gave what it should.
#include <ikelex/ikelex.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <string>

namespace {

// 16 x 8 pixels of one colour, so that every kernel keeps it.
bool Paint(IKelImage* pImage) {
    BITMAPINFO* pBMI = pImage->AllocateBMI(sizeof(BITMAPINFOHEADER));
    unsigned char* pBits = pImage->AllocateBits(16 * 3 * 8);
    if (pBMI == nullptr || pBits == nullptr) {
        return false;
    }
    pBMI->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    pBMI->bmiHeader.biWidth = 16;
    pBMI->bmiHeader.biHeight = 8;
    pBMI->bmiHeader.biPlanes = 1;
    pBMI->bmiHeader.biBitCount = 24;
    for (int i = 0; i < 16 * 3 * 8; ++i) {
        pBits[i] = 77;
    }
    return pImage->Open() == KEL_OK;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string strPath = std::string(argc > 1 ? argv[1] : ".") + "/host.png";
    IKelImage* pImage = nullptr;
    CreateImageObject(&pImage);
    if (pImage == nullptr || !Paint(pImage)) {
        return 2;
    }
    tagKelParameterItem items[2] = {{CVamString("width"), CVamVariant(5)},
                                    {CVamString("height"), CVamVariant(0.5)}};
    tagKelParameters params = {2, items};
    CVamArchiveMemory archive;
    const KelResult results[] = {pImage->Save(strPath.c_str(), KEL_IMAGE_PNG, nullptr),
                                 pImage->Open(strPath.c_str()),
                                 pImage->ApplyFilter(KEL_FILTER_SCALE, &params),
                                 pImage->Save(&archive, KEL_IMAGE_JPEG, nullptr)};
    bool bRight = pImage->GetWidth() == 5 && pImage->GetHeight() == 4 &&
                  pImage->GetBits()[0] == 77 && archive.GetSize() > 100 &&
                  GetKelVersion() == IKELEX_VERSION;
    for (KelResult nResult : results) {
        bRight = bRight && nResult == KEL_OK;
        std::printf("%s ", KelResultName(nResult));
    }
    std::printf("with version %d\n", GetKelVersion());
    DestroyImageObject(pImage);
    return bRight ? 0 : 1;
}
