#include "support/refrows.h"

#include <algorithm>
#include <cstring>

namespace support {

namespace {

unsigned int WordAt(const unsigned char* p, int nBytes) {
    unsigned int nWord = 0;
    for (int i = 0; i < nBytes; ++i) {
        nWord |= static_cast<unsigned int>(p[i]) << (8 * i);
    }
    return nWord;
}

}  // namespace

unsigned char RefChannel(unsigned int nPixel, unsigned int nMask) {
    int nRight = 0;
    while (nRight < 31 && (nMask >> nRight & 1) == 0) {
        ++nRight;
    }
    int nRun = 0;
    while (nRight + nRun < 32 && (nMask >> (nRight + nRun) & 1) != 0) {
        ++nRun;
    }
    const unsigned int nValue = (nPixel & nMask) >> nRight;
    return static_cast<unsigned char>(nRun > 8 ? nValue >> (nRun - 8) : nValue << (8 - nRun));
}

void RefLine24(const Picture& picture, int nRow, bool bRgb, std::vector<unsigned char>* pOut) {
    BITMAPINFOHEADER header;
    std::memcpy(&header, picture.block.data(), sizeof header);
    const unsigned char* pTable = picture.block.data() + sizeof header;
    const int nColors = static_cast<int>(picture.block.size() - sizeof header) / 4;
    const std::size_t nStride =
        (header.biBitCount * static_cast<std::size_t>(header.biWidth) + 31) / 32 * 4;
    const unsigned char* pRow = picture.bits.data() + static_cast<std::size_t>(nRow) * nStride;
    const bool bFields = header.biCompression == BI_BITFIELDS;
    for (int x = 0; x < header.biWidth; ++x) {
        unsigned char bgr[3];
        if (header.biBitCount <= 8) {
            const int nBit = x * header.biBitCount;
            const int nShift = 8 - header.biBitCount - nBit % 8;
            const int nIndex = pRow[nBit / 8] >> nShift & ((1 << header.biBitCount) - 1);
            std::memcpy(bgr, pTable + 4 * std::min(nIndex, nColors - 1), 3);
        } else if (header.biBitCount == 24 || (header.biBitCount == 32 && !bFields)) {
            std::memcpy(bgr, pRow + x * (header.biBitCount / 8), 3);
        } else {
            const int nBytes = header.biBitCount / 8;
            const unsigned int nPixel = WordAt(pRow + x * nBytes, nBytes);
            const unsigned int a555[3] = {0x7C00, 0x03E0, 0x001F};
            for (int c = 0; c < 3; ++c) {
                bgr[2 - c] = RefChannel(nPixel, bFields ? WordAt(pTable + 4 * c, 4) : a555[c]);
            }
        }
        for (int c = 0; c < 3; ++c) {
            (*pOut)[static_cast<std::size_t>(3 * x + c)] = bgr[bRgb ? 2 - c : c];
        }
    }
    if (header.biBitCount == 24 && !bRgb && nStride > 0) {
        std::copy(pRow, pRow + nStride, pOut->begin());  // padding too
    }
}

}  // namespace support
