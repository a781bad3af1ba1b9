// Rows of any stored depth as 24 bits. What a conversion needs besides the pixels (the functions of
// the processor's level, colours in output order, channel fields) is gathered once, before the loop
// over the rows.
#ifndef KELIMAGE_LINE24_H
#define KELIMAGE_LINE24_H

#include "kelbitmap/rows.h"
#include "kelimage.h"

namespace kel {

// Output orders. Any other value means blue, green, red.
inline constexpr int kOrderRGB = 1;
inline constexpr int kOrderBGR = 2;

// A palette, or the three masks of a bit-field image. nSlots entries exist, nCount are in use.
struct LineColors {
    const tagKelRGBQUAD* pEntries;
    int nCount;
    int nSlots;
};

// Converts rows that were stored at nBits bits per pixel. The header gives width and compression.
class LineConverter {
  public:
    LineConverter(const BITMAPINFOHEADER& header, int nBits, int nOrder, const LineColors& colors);
    // Writes nothing where the depth, the compression or missing colours allow no conversion.
    void Convert(const unsigned char* pRow, unsigned char* pOut) const;

  private:
    void SetFields(const ChannelField& red, const ChannelField& green, const ChannelField& blue);

    bool m_bReverse;
    std::size_t m_nPixels;
    std::int64_t m_nStride;  // of the stored row
    bool m_bCopy = false;    // the row as it is
    RowMove* m_pfnMove = nullptr;
    RowLookup* m_pfnLookup = nullptr;
    RowFields* m_pfnFields = nullptr;
    PixelFields m_Fields;
    std::uint32_t m_aWords[256];
};

// The rows of one image, which must keep its shape and palette meanwhile.
class Line24Reader {
  public:
    Line24Reader(CKelImage* pImage, int nOrder);
    // As CKelImage::GetLine24At.
    unsigned char* Read(int nRow, unsigned char* pOut) const;

  private:
    const CKelImage* m_pImage;
    LineConverter m_Converter;
};

}  // namespace kel

#endif  // KELIMAGE_LINE24_H
