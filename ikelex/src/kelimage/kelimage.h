// CKelImage: the one implementation of IKelImage.
//
// The class is declared here and names no codec and no filter; the members that make them are
// defined in dispatch/. What the interface documents is not repeated.
#ifndef KELIMAGE_KELIMAGE_H
#define KELIMAGE_KELIMAGE_H

#include <ikelex/ikelimage.h>

#include <cstdint>

#include "../kelbitmap/kelbitmap.h"

class IKELEX_API CKelImage : public IKelImage {
  public:
    // ---- lifetime.cpp
    CKelImage();
    CKelImage(const CKelImage&) = delete;
    CKelImage& operator=(const CKelImage&) = delete;
    ~CKelImage() override;

    // ---- dispatch/open.cpp, dispatch/save.cpp, dispatch/applyfilter.cpp, bitmapinfo.cpp
    KelResult Open(const char* pszPath) override;
    KelResult Open(CVamArchive* pArchive) override;
    KelResult Open() override;
    KelResult Open(BITMAPINFO* pBMI, unsigned char* pBits) override;
    KelResult OpenAs(BITMAPINFO* pBMI, unsigned char* pBits, int bOwn) override;
    KelResult Save(const char* pszPath, KelImageFormat eFormat, tagKelParameters* pParams) override;
    KelResult Save(CVamArchive* pArchive, KelImageFormat eFormat,
                   tagKelParameters* pParams) override;
    KelResult ApplyFilter(KelImageFilterType eType, tagKelParameters* pParams) override;
    KelResult ApplyFilter(IKelImage** ppImage, KelImageFilterType eType,
                          tagKelParameters* pParams) override;

    // ---- lifetime.cpp: the members as they are
    unsigned char* GetBits() override;
    unsigned char** GetLineArray() override;
    tagKelRGBQUAD* GetPalette() override;
    BITMAPINFOHEADER* GetBitmapInfoHeader() override;

    // ---- bitmapinfo.cpp, storage.cpp
    BITMAPINFO* GetBitmapInfo() override;
    BITMAPINFO* AllocateBMI(unsigned int nSize) override;
    unsigned char* AllocateBits(unsigned int dwSize) override;

    // ---- lifetime.cpp, storage.cpp
    int GetPaletteNum() override;
    int GetWidth() override;
    int GetHeight() override;
    int GetBitsPerPixel() override;
    unsigned int GetBmpDataSize() override;

    // ---- zoom.cpp, subimage.cpp, mirror.cpp, rotate.cpp, depth.cpp
    void ZoomImage(int nWidth, int nHeight) override;
    void SubImage(int nX, int nY, int nWidth, int nHeight) override;
    void Mirror(int nMode) override;
    bool Rotate(int nUnused) override;
    void ChangeBitCount(int nBitCount) override;

    // ---- lifetime.cpp
    void Destroy() override;

    // ---- dispatch/applyfilter.cpp
    // The worker behind both ApplyFilter: *ppImage receives a new image or null.
    virtual KelResult ApplyFilter1(CKelImage** ppImage, KelImageFilterType eType,
                                   tagKelParameters* pParams);

    // ---- lifetime.cpp
    // Releases what the image holds and leaves it empty. Borrowed buffers are forgotten, not freed.
    void Clean();
    // Forgets the buffers without releasing them, owns from now on, and cleans.
    void Init();
    // Takes over everything pDonor holds; the donor is left empty and owning.
    void Borrow(CKelImage* pDonor);

    // ---- storage.cpp
    // Empties header, palette and header block, sets the header to the given size and depth, and
    // returns the new zeroed pixel buffer with its row array, or null when it cannot be had (also
    // for negative sizes and sizes over 31 bits). The depth is not validated; no palette is made. A
    // borrowing image lets its buffers go and owns from now on.
    unsigned char* Create(int nWidth, int nHeight, int nBitCount);
    // A new zeroed pixel buffer sized from the header, with its row array, or null.
    unsigned char* AllocateBits1();
    // Release the pixel buffer, the header block, the row array, whoever owns them.
    void DeleteBits();
    void DeleteBMI();
    void DeleteLineArray();
    // Rebuilds the row array: entry i is m_pBits + i x stride. Null, traced, when it cannot be had.
    unsigned char** CreateLineArray();
    bool IsValidPixelDepth(int nBitCount) const;
    bool IsValidWINCompression(unsigned int dwCompression) const;

    // ---- palette.cpp
    // Builds the palette table from the colour table that follows the header of pBMI. Null when the
    // depth has none, or, traced, when it cannot be had.
    tagKelRGBQUAD* CreatePalette(BITMAPINFO* pBMI);
    void DestroyPaletteTable();
    // Makes room for one more entry: first 2 x depth entries (256 above 8 bits), then 16 more at a
    // time. False, traced, when it cannot be had; the old table survives.
    bool ExpandPaletteTable();
    // Appends an entry and returns the count after the call, unchanged when there is no room.
    int AddPaletteEntry(unsigned char byRed, unsigned char byGreen, unsigned char byBlue,
                        unsigned char byReserved);

    // ---- line24.cpp
    // A new uninitialised buffer of one row of the image's width at 32, 24 or 16 bits per pixel, or
    // null, traced. The caller releases it with array delete.
    unsigned char* CreateLine32() const;
    unsigned char* CreateLine24() const;
    unsigned char* CreateLine16() const;
    // Writes row nRow as 24-bit pixels to pOut, which holds one 24-bit stride: red, green, blue
    // when nOrder is 1, else blue, green, red. Returns pOut; null, nothing written, when there is
    // no such row. A depth, compression or palette that cannot be converted leaves pOut as it was.
    unsigned char* GetLine24At(int nOrder, int nRow, unsigned char* pOut);
    unsigned char* GetLine24AsBGRAt(int nRow, unsigned char* pOut);
    unsigned char* GetLine24AsRGBAt(int nRow, unsigned char* pOut);
    // All rows, one 24-bit stride apart. Always true.
    bool ConvertTo24Bit(int nOrder, unsigned char* pOut);
    // One stored row of each depth; called by GetLine24At.
    void Convert1BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    void Convert4BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    void Convert8BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    void Convert16BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    void Convert24BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) const;
    void Convert32BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);

    // ---- depth.cpp
    // One row of the image's width from 24 to 32 bits, fourth byte 0. The first argument has no
    // effect.
    void Convert24BitTo32Bit(int nUnused, unsigned char* pSrc, unsigned char* pDst);

    // ---- zoom.cpp, mirror.cpp, subimage.cpp: the work on raw buffers, which touch no member
    // Samples the source into the destination, which holds stride(nBits, nDstWidth) x nDstHeight
    // zeroed bytes.
    void ZoomBytes(int nBits, unsigned char* pSrc, int nSrcWidth, int nSrcHeight,
                   unsigned char* pDst, int nDstWidth, int nDstHeight) const;
    // Exchanges the rows of a buffer top to bottom; nStride bytes each.
    void MirrorBytes_V(unsigned char* pBuffer, int nStride, int nRows) const;
    // Moves the rectangle's rows to the front of the buffer, at the stride of the new width.
    void CopyBytes(int nBits, unsigned char* pBuffer, int nSrcWidth, int nSrcHeight, int nX, int nY,
                   int nWidth, int nHeight) const;

    // ---- dispatch/detect.cpp
    // The format of data whose first bytes stand in pBuffer, which holds at least 4. The length is
    // not consulted.
    KelImageFormat DetectImageFormat(unsigned char* pBuffer, int nLength) const;

    // ---- the record; its order is part of the binary interface
    int m_nPaletteNum;              // valid palette entries
    int m_nPaletteSize;             // entries the palette table has room for
    unsigned char** m_ppLineArray;  // one pointer per row into m_pBits; owned
    unsigned char* m_pBits;         // the pixel buffer
    tagKelRGBQUAD* m_pPalette;      // the palette table; owned
    BITMAPINFO* m_pBMI;             // the header block
    int m_bOwnBuffers;              // 1: m_pBits and m_pBMI are released by the image; 0: borrowed
    BITMAPINFOHEADER m_bmih;        // the authoritative description of the picture

  private:
    // ---- storage.cpp
    // Installs pNewBits (from array new) as the pixel buffer and owns everything from then on. An
    // owning image releases the old buffer; a borrowing one first copies its header block, if any,
    // and leaves the caller's memory as it was. False, nothing changed and pNewBits not released,
    // when that copy cannot be had. The header and the row array are the caller's next steps.
    IKELEX_LOCAL bool ReplaceBits(unsigned char* pNewBits);
    // Lets an owned buffer go and installs a new zeroed one of nSize bytes with its row array; null
    // when it cannot be had, always for a negative size.
    IKELEX_LOCAL unsigned char* InstallBits(std::int64_t nSize);

    // ---- bitmapinfo.cpp
    IKELEX_LOCAL bool IsSupportedHeader(const BITMAPINFOHEADER& header) const;
    // Owns from now on: copies borrowed pixels, rows included, and leaves the header block to the
    // caller. False, nothing changed, when the copy cannot be had.
    IKELEX_LOCAL bool OwnBits();
};

#endif  // KELIMAGE_KELIMAGE_H
