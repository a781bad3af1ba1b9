// adopt: lends the library a bitmap of the caller's without copying it.
//
//   adopt OUT
#include <ikelex/handle.h>

#include <cstdio>
#include <vector>

#include "paintscene.h"
#include "safesave.h"
#include "utf8.h"

int main(int nCount, char** ppArguments) {
    TakeUtf8Arguments(nCount, ppArguments);
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

    const KelImagePtr image = KelNewImage();
    // 0: header and pixels stay the caller's; both outlive their use by the image.
    KelStatus status = image ? image->OpenAs(&info, pixels.data(), 0) : KEL_ERR_MEMORY;
    if (status) {
        image->GetLineArray()[0][0] = 255;  // the image's rows are the caller's memory
        KelImagePtr small;
        status = KelApplyFilter(image, small, KEL_FILTER_SCALE,
                                KelParameters{}.Set("width", 160).Set("height", 120));
        if (status) {
            status = SafeSave(*small, ppArguments[1], FormatOfName(ppArguments[1]), nullptr);
        }
    }
    if (!status) {
        std::fprintf(stderr, "adopt: %s\n", status.ToString().c_str());
        return 1;
    }
    // The image ends. The bitmap was lent and stays.
    std::printf("lent %zu bytes, saved a picture of them, have them back: first byte %d\n",
                pixels.size(), pixels[0]);
    return 0;
}
