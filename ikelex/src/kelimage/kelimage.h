/// @file
/// CKelImage, the one implementation of IKelImage.
///
/// The class is declared here and names no codec and no filter. The members that make them are
/// defined in dispatch/. What the interface documents is not repeated.
#ifndef KELIMAGE_KELIMAGE_H
#define KELIMAGE_KELIMAGE_H

#include <ikelex/ikelimage.h>

#include <cstdint>

#include "kelbitmap/kelbitmap.h"

/// An image. Its operations are documented in IKelImage. The members after them are for programs
/// that use the class itself.
class IKELEX_API CKelImage : public IKelImage {
  public:
    // ---- lifetime.cpp
    /// An empty image that owns its buffers.
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
    /// The work of both ApplyFilter. *ppImage receives a new image or null.
    virtual KelResult ApplyFilter1(CKelImage** ppImage, KelImageFilterType eType,
                                   tagKelParameters* pParams);

    // ---- lifetime.cpp
    /// Releases what the image holds and leaves it empty. Lent buffers are forgotten, not released.
    void Clean();
    /// Forgets the buffers without releasing them, owns from then on, and cleans.
    void Init();
    /// Takes over everything pDonor holds. The donor is left empty and owning.
    void Borrow(CKelImage* pDonor);

    // ---- storage.cpp
    /// Empties header, palette and header block, sets the header to the given size and depth, and
    /// returns the new zeroed pixel buffer with its row array. Null when it cannot be allocated,
    /// and for negative sizes and sizes over 2^31 - 1 bytes. The depth is not validated, and no
    /// palette is made. Lent buffers are forgotten. From then on the image owns its buffers.
    unsigned char* Create(int nWidth, int nHeight, int nBitCount);
    /// As Create, for callers that go on to write every pixel. Only the row padding and the last
    /// row are zero. Rows that are not written in the end are zeroed by ClearRowsFrom.
    IKELEX_LOCAL unsigned char* CreateUncleared(int nWidth, int nHeight, int nBitCount);
    /// Zeroes row nFirst (0 or more) and all below it.
    IKELEX_LOCAL void ClearRowsFrom(int nFirst);
    /// A new zeroed pixel buffer sized from the header, with its row array, or null.
    unsigned char* AllocateBits1();
    /// Releases the pixel buffer, whoever owns it, and the row array.
    void DeleteBits();
    /// Releases the header block, whoever owns it.
    void DeleteBMI();
    /// Releases the row array.
    void DeleteLineArray();
    /// Rebuilds the row array, whose entry i is m_pBits + i * stride. Null, traced, when it cannot
    /// be allocated. Null for an image with rows but no pixels.
    unsigned char** CreateLineArray();
    /// Whether an image can hold the depth, which is 1, 4, 8, 16, 24 or 32 bits.
    bool IsValidPixelDepth(int nBitCount) const;
    /// Whether the compression is one of BI_RGB to BI_BITFIELDS.
    bool IsValidWINCompression(unsigned int dwCompression) const;

    // ---- palette.cpp
    /// Builds the palette table from the colour table that follows the header of pBMI. Null when
    /// the depth has none, or, traced, when it cannot be allocated.
    tagKelRGBQUAD* CreatePalette(BITMAPINFO* pBMI);
    /// Releases the palette table and sets both counts to 0.
    void DestroyPaletteTable();
    /// Makes room for one more entry. The first table has 2 * depth entries (256 above 8 bits), and
    /// grows by 16. When it cannot be allocated, false, traced, and the old table stays.
    bool ExpandPaletteTable();
    /// Appends an entry and returns the count after the call, unchanged when there is no room.
    int AddPaletteEntry(unsigned char byRed, unsigned char byGreen, unsigned char byBlue,
                        unsigned char byReserved);

    // ---- line24.cpp
    /// A new uninitialised buffer of one row of the image's width at 32 bits per pixel, or null,
    /// traced. The caller releases it with array delete.
    unsigned char* CreateLine32() const;
    /// The same at 24 bits per pixel.
    unsigned char* CreateLine24() const;
    /// The same at 16 bits per pixel.
    unsigned char* CreateLine16() const;
    /// Writes row nRow as 24-bit pixels to pOut, which holds one 24-bit stride. The order is red,
    /// green, blue when nOrder is 1, else blue, green, red. Returns pOut, or null with nothing
    /// written when there is no such row. A depth, compression or palette that cannot be converted
    /// leaves pOut as it was.
    unsigned char* GetLine24At(int nOrder, int nRow, unsigned char* pOut);
    /// GetLine24At in the order blue, green, red.
    unsigned char* GetLine24AsBGRAt(int nRow, unsigned char* pOut);
    /// GetLine24At in the order red, green, blue.
    unsigned char* GetLine24AsRGBAt(int nRow, unsigned char* pOut);
    /// All rows, one 24-bit stride apart. Always true.
    bool ConvertTo24Bit(int nOrder, unsigned char* pOut);
    /// One stored row of 1 bit per pixel, converted as by GetLine24At.
    void Convert1BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    /// The same at 4 bits per pixel.
    void Convert4BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    /// The same at 8 bits per pixel.
    void Convert8BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    /// The same at 16 bits per pixel.
    void Convert16BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);
    /// The same at 24 bits per pixel.
    void Convert24BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut) const;
    /// The same at 32 bits per pixel.
    void Convert32BitTo24Bit(int nOrder, unsigned char* pRow, unsigned char* pOut);

    // ---- depth.cpp
    /// One row of the image's width from 24 to 32 bits, fourth byte 0. The first argument has no
    /// effect.
    void Convert24BitTo32Bit(int nUnused, unsigned char* pSrc, unsigned char* pDst);

    // ---- zoom.cpp, mirror.cpp, subimage.cpp: the work on raw buffers, which touch no member
    /// Samples the source into the destination, which holds stride * nDstHeight zeroed bytes.
    void ZoomBytes(int nBits, unsigned char* pSrc, int nSrcWidth, int nSrcHeight,
                   unsigned char* pDst, int nDstWidth, int nDstHeight) const;
    /// Exchanges the rows of a buffer top to bottom. Each has nStride bytes.
    void MirrorBytes_V(unsigned char* pBuffer, int nStride, int nRows) const;
    /// Moves the rectangle's rows to the front of the buffer, at the stride of the new width.
    void CopyBytes(int nBits, unsigned char* pBuffer, int nSrcWidth, int nSrcHeight, int nX, int nY,
                   int nWidth, int nHeight) const;

    // ---- dispatch/open.cpp
    /// The format of data whose first bytes lie in pBuffer, which holds at least 4. The length is
    /// not consulted.
    KelImageFormat DetectImageFormat(unsigned char* pBuffer, int nLength) const;

    // ---- the record, whose order is part of the binary interface
    int m_nPaletteNum;              ///< valid palette entries
    int m_nPaletteSize;             ///< entries the palette table has room for
    unsigned char** m_ppLineArray;  ///< one pointer per row into m_pBits; owned
    unsigned char* m_pBits;         ///< the pixel buffer
    tagKelRGBQUAD* m_pPalette;      ///< the palette table; owned
    BITMAPINFO* m_pBMI;             ///< the header block
    int m_bOwnBuffers;              ///< 1: m_pBits and m_pBMI are released by the image; 0: lent
    BITMAPINFOHEADER m_bmih;        ///< the authoritative description of the picture

  private:
    // ---- storage.cpp
    /// Empties palette and header block, and sets the header to the given size and depth.
    IKELEX_LOCAL void Describe(int nWidth, int nHeight, int nBitCount);
    /// Bytes of the rows the header describes, or -1 for sizes that are refused.
    IKELEX_LOCAL std::int64_t SizeOfRows() const;
    /// Releases the pixel buffer, and the row array with it, when the image owns them.
    IKELEX_LOCAL void DropOwnBits();
    /// Replaces the pixel buffer by a new one of nSize bytes, the last nCleared of them zero, with
    /// its row array. Null when it cannot be allocated, always for a negative size.
    IKELEX_LOCAL unsigned char* NewBits(std::int64_t nSize, std::int64_t nCleared);
    /// Makes every entry of the row array, where there is one, point into pBits.
    IKELEX_LOCAL void PointRowsInto(unsigned char* pBits);

    // ---- ownership.cpp
    /// Whether one of nBytes bytes from p on belongs to the object itself or to what Clean
    /// releases. 0 asks for the byte at p.
    IKELEX_LOCAL bool Owns(const void* p, std::int64_t nBytes) const;
    /// Installs pNewBits (from array new) in place of the pixel buffer. From then on the image owns
    /// its buffers. Owned pixels are released, a lent header block is copied first. When that copy
    /// cannot be allocated, the result is false, nothing changes, and pNewBits is not released. The
    /// caller then sets the header and makes the row array.
    IKELEX_LOCAL bool AdoptBits(unsigned char* pNewBits);
    /// Copies lent pixels and points the rows into the copy. From then on the image owns its
    /// buffers. The caller then replaces the lent header block. False, nothing changed, when the
    /// copy cannot be allocated.
    IKELEX_LOCAL bool CopyLentBits();
};

#endif  // KELIMAGE_KELIMAGE_H
