// A white page on which pictures and labels are laid out.
#ifndef DOCS_SHEET_H
#define DOCS_SHEET_H

#include <ikelex/handle.h>

#include <string>
#include <vector>

#include "newpicture.h"
#include "safesave.h"

// A rectangle of a picture, in pixels from its left top corner.
struct Area {
    int nX;
    int nY;
    int nWidth;
    int nHeight;
};

class Sheet {
  public:
    Sheet(int nWidth, int nHeight);

    // Writes strText with its left top corner at (nX, nY), each dot nDot pixels wide. What does not
    // fit on the page is cut off, here as below.
    void Write(int nX, int nY, const std::string& strText, int nDot = 1);

    // Places a 24-bit picture, each pixel enlarged to nFactor x nFactor; with pArea only that part
    // of it. False for a picture of another depth.
    bool Place(int nX, int nY, IKelImage& image, int nFactor = 1, const Area* pArea = nullptr);

    // Draws a thin frame just outside the given rectangle of the page.
    void Frame(const Area& area);

    // Saves the page; results as SafeSave.
    KelStatus Save(const std::string& strPath);

  private:
    void Dot(int nX, int nY, int nSize, const unsigned char* pColour);

    int m_nWidth;
    int m_nHeight;
    int m_nStride;
    std::vector<unsigned char> m_Bits;
};

// A new image of the same picture resampled to nWidth x nHeight at 24 bits, or null.
KelImagePtr Scaled(const KelImagePtr& image, int nWidth, int nHeight, KelScaleType eKernel);

#endif  // DOCS_SHEET_H
