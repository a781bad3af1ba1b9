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

int Fail(const char* pszStep, KelResult nResult) {
    std::fprintf(stderr, "%s: %s\n", pszStep, KelResultName(nResult));
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string strPath = std::string(argc > 1 ? argv[1] : ".") + "/host.png";
    IKelImage* pImage = nullptr;
    CreateImageObject(&pImage);
    if (pImage == nullptr || !Paint(pImage)) {
        return Fail("paint", KEL_ERR_MEMORY);
    }
    KelResult nResult = pImage->Save(strPath.c_str(), KEL_IMAGE_PNG, nullptr);
    if (nResult != KEL_OK) {
        return Fail("save", nResult);
    }
    nResult = pImage->Open(strPath.c_str());
    if (nResult != KEL_OK) {
        return Fail("open", nResult);
    }
    tagKelParameterItem items[2];
    items[0].strName = CVamString("width");
    items[0].varValue = CVamVariant(5);
    items[1].strName = CVamString("height");
    items[1].varValue = CVamVariant(0.5);
    tagKelParameters params = {2, items};
    nResult = pImage->ApplyFilter(KEL_FILTER_SCALE, &params);
    if (nResult != KEL_OK) {
        return Fail("scale", nResult);
    }
    CVamArchiveMemory archive;
    nResult = pImage->Save(&archive, KEL_IMAGE_JPEG, nullptr);
    const bool bRight = pImage->GetWidth() == 5 && pImage->GetHeight() == 4 &&
                        pImage->GetBits()[0] == 77 && archive.GetSize() > 100 &&
                        GetKelVersion() == IKELEX_VERSION;
    DestroyImageObject(pImage);
    if (nResult != KEL_OK || !bRight) {
        return Fail("save or result", nResult);
    }
    std::printf("opened, scaled and saved with version %d\n", GetKelVersion());
    return 0;
}
