// adopt: lets the library work on a bitmap that belongs to the caller, without copying it, and
// takes it back.
//
//   adopt OUT
#include <ikelex/ikelex.h>

#include <cstdio>
#include <vector>

#include "paintscene.h"
#include "safesave.h"

int main(int nCount, char** ppArguments) {
    if (nCount != 2 || FormatOfName(ppArguments[1]) == KEL_IMAGE_UNKNOWN) {
        std::fputs("usage: adopt OUT.(bmp|jpg|png)\n", stderr);
        return 2;
    }
    // The caller's own bitmap: a header, and rows from the top padded to 4 bytes each.
    const int nWidth = 400, nHeight = 300, nStride = (24 * nWidth + 31) / 32 * 4;
    std::vector<unsigned char> pixels(static_cast<std::size_t>(nStride) * nHeight);
    PaintScene(pixels.data(), nWidth, nHeight, nStride);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = nWidth;
    info.bmiHeader.biHeight = nHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;

    const ImagePtr image = NewImage();
    // 0: header and pixels stay the caller's; both outlive their use by the image.
    KelResult nResult = image ? image->OpenAs(&info, pixels.data(), 0) : KEL_ERR_MEMORY;
    if (nResult == KEL_OK) {
        image->GetLineArray()[0][0] = 255;  // the image's rows are the caller's memory
        tagKelParameterItem items[] = {{"width", 160}, {"height", 120}};
        tagKelParameters params = {2, items};
        IKelImage* pSmall = nullptr;
        nResult = image->ApplyFilter(&pSmall, KEL_FILTER_SCALE, &params);
        const ImagePtr small(pSmall);
        if (nResult == KEL_OK) {
            nResult = SafeSave(*small, ppArguments[1], FormatOfName(ppArguments[1]), nullptr);
        }
    }
    if (nResult != KEL_OK) {
        std::fprintf(stderr, "adopt: %s: %s\n", KelResultName(nResult), KelResultMeaning(nResult));
        return 1;
    }
    // The image goes, the bitmap stays: it was only lent.
    std::printf("lent %zu bytes, saved a picture of them, have them back: first byte %d\n",
                pixels.size(), pixels[0]);
    return 0;
}
