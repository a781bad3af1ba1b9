// The page as rows of its own, which an image borrows for the time of the save.
#include "sheet.h"

#include <algorithm>

#include "lettering.h"

namespace {

constexpr unsigned char kInk[3] = {40, 30, 30};
constexpr unsigned char kLine[3] = {40, 40, 220};

int Stride(int nWidth, int nBits) {
    return (nWidth * nBits + 31) / 32 * 4;
}

}  // namespace

Sheet::Sheet(int nWidth, int nHeight)
    : m_nWidth(nWidth),
      m_nHeight(nHeight),
      m_nStride(Stride(nWidth, 24)),
      m_Bits(static_cast<std::size_t>(m_nStride) * static_cast<std::size_t>(nHeight), 248) {}

void Sheet::Dot(int nX, int nY, int nSize, const unsigned char* pColour) {
    for (int y = std::max(nY, 0); y < std::min(nY + nSize, m_nHeight); ++y) {
        for (int x = std::max(nX, 0); x < std::min(nX + nSize, m_nWidth); ++x) {
            std::copy_n(pColour, 3, &m_Bits[static_cast<std::size_t>(y * m_nStride + 3 * x)]);
        }
    }
}

void Sheet::Write(int nX, int nY, const std::string& strText, int nDot) {
    EachDot(strText, [&](int x, int y) { Dot(nX + x * nDot, nY + y * nDot, nDot, kInk); });
}

bool Sheet::Place(int nX, int nY, IKelImage& image, int nFactor, const Area* pArea) {
    const Area whole = {0, 0, image.GetWidth(), image.GetHeight()};
    const Area& area = pArea != nullptr ? *pArea : whole;
    if (image.GetBitsPerPixel() != 24 || area.nX + area.nWidth > whole.nWidth ||
        area.nY + area.nHeight > whole.nHeight) {
        return false;
    }
    for (int y = 0; y < area.nHeight; ++y) {
        const unsigned char* pRow = image.GetLineArray()[area.nY + y] + 3 * area.nX;
        for (int x = 0; x < area.nWidth; ++x) {
            Dot(nX + x * nFactor, nY + y * nFactor, nFactor, pRow + 3 * x);
        }
    }
    return true;
}

void Sheet::Frame(const Area& area) {
    for (int x = -1; x <= area.nWidth; ++x) {
        Dot(area.nX + x, area.nY - 1, 1, kLine);
        Dot(area.nX + x, area.nY + area.nHeight, 1, kLine);
    }
    for (int y = -1; y <= area.nHeight; ++y) {
        Dot(area.nX - 1, area.nY + y, 1, kLine);
        Dot(area.nX + area.nWidth, area.nY + y, 1, kLine);
    }
}

KelStatus Sheet::Save(const std::string& strPath) {
    KelImagePtr pImage = KelNewImage();
    if (pImage == nullptr) {
        return KEL_ERR_MEMORY;
    }
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = m_nWidth;
    info.bmiHeader.biHeight = m_nHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    const KelStatus status = pImage->OpenAs(&info, m_Bits.data(), 0);
    return !status ? status : SafeSave(*pImage, strPath, FormatOfName(strPath), nullptr);
}

KelImagePtr Scaled(const KelImagePtr& image, int nWidth, int nHeight, KelScaleType eKernel) {
    KelImagePtr scaled;
    KelApplyFilter(
        image, scaled, KEL_FILTER_SCALE,
        KelParameters{}.Set("width", nWidth).Set("height", nHeight).Set("type", eKernel));
    return scaled;
}
