/// @file
/// IKelImage, the interface of an image, and the factory that makes one.
#ifndef IKELEX_IKELIMAGE_H
#define IKELEX_IKELIMAGE_H

#include <ikelex/bitmap.h>
#include <ikelex/export.h>
#include <ikelex/filters.h>
#include <ikelex/formats.h>
#include <ikelex/parameters.h>
#include <ikelex/result.h>

class CVamArchive;

/// A device-independent bitmap: a header, an optional palette, one pixel buffer, and an array of
/// pointers to its rows. Row 0 is the top of the picture, and the height is positive. Each row is
/// padded to a multiple of 4 bytes. Its stride is (bits * width + 31) / 32 * 4.
///
/// - Pixels of 24 bits are stored blue, green, red.
/// - Pixels of 32 bits are stored blue, green, red and a fourth byte.
/// - Of pixels of 1 and 4 bits the leftmost lies in the highest bits.
///
/// An image has no lock. One thread at a time uses an image. Different images may be used by
/// different threads. No operation throws.
///
/// The order of the operations is part of the binary interface. The number before each is its slot.
class IKELEX_API IKelImage {
  public:
    /// 1. Releases the image and everything it owns.
    virtual ~IKelImage();

    /// 2. Opens the picture file pszPath (UTF-8). Its content decides the format, never its name.
    /// KEL_ERR_PARAM for a null path and KEL_ERR_FILE for a file that cannot be opened leave the
    /// image as it was. Everything else is as in slot 3.
    virtual KelResult Open(const char* pszPath) = 0;

    /// 3. Opens a picture from the stream's current position. The position is the same afterwards.
    /// The image is emptied first and filled on KEL_OK (TIFF: KEL_OK and empty).
    ///
    /// - KEL_ERR_FAIL: the format is not recognised.
    /// - KEL_ERR_OPEN_FORMAT: GIF, PCX, PSD, PGM, PPM.
    /// - KEL_ERR_PARAM: a null stream, which leaves the image as it was, or an unsupported BMP
    ///   header, after which the image is empty.
    /// - KEL_ERR_CODEC: a damaged JPEG or PNG. The image is empty, or keeps the rows read so far
    ///   with the rest zero.
    /// - KEL_ERR_MEMORY: the image is empty.
    /// - KEL_ERR_FILE: the stream threw. The image is empty.
    virtual KelResult Open(CVamArchive* pArchive) = 0;

    /// 4. Derives header, palette and rows from the header block and the pixel buffer that the
    /// image holds (see AllocateBMI, AllocateBits). KEL_ERR_PARAM when
    ///
    /// - the block or the pixels are missing,
    /// - the block's biSize is not 40, its depth not 1, 4, 8, 16, 24 or 32, or its biCompression
    ///   above 3,
    /// - or its width or height is negative.
    ///
    /// Palette and rows are then released, the header is zero, and both buffers are kept. When
    /// memory runs out, KEL_OK comes without a row array or without a palette.
    virtual KelResult Open() = 0;

    /// 5. Copies a caller's bitmap. It takes the header with its colour table, and biSizeImage
    /// bytes of pixels in memory order. For uncompressed rows a biSizeImage of 0 means all rows.
    ///
    /// - KEL_ERR_PARAM and the picture stays: pBMI or pBits lies in memory of this image, or the
    ///   colour table or the pixels reach into it.
    /// - KEL_ERR_PARAM and the image is empty: a null pointer, an unsupported header, more than
    ///   65,536 colours, or too few bytes for uncompressed rows.
    /// - KEL_ERR_PARAM without rows: memory ran out for the block or the pixels. When it runs out
    ///   for the row array or the palette, the result is KEL_OK without them.
    virtual KelResult Open(BITMAPINFO* pBMI, unsigned char* pBits) = 0;

    /// 6. Adopts a caller's bitmap without copying. The pixels must cover every row of the header,
    /// run-length data too. What the image held before is replaced without being released, so empty
    /// the image first. Results as in slot 4.
    ///
    /// - bOwn not 0: the image releases both buffers with array delete, also after KEL_ERR_PARAM.
    /// - bOwn 0: both stay the caller's and must outlive their use. Mirror and SubImage change the
    ///   lent pixels, and SubImage writes the new size into the lent header block.
    virtual KelResult OpenAs(BITMAPINFO* pBMI, unsigned char* pBits, int bOwn) = 0;

    /// 7. Writes the picture to the file pszPath (UTF-8). The file is created or truncated first,
    /// also when the format is not supported. pParams may be null. JPEG reads "quality".
    /// KEL_ERR_PARAM for a null path, KEL_ERR_FILE when the file cannot be created, everything else
    /// as in slot 8. A full disk is not reported here. Save through a CVamArchiveFile of your own
    /// and ask it.
    virtual KelResult Save(const char* pszPath, KelImageFormat eFormat,
                           tagKelParameters* pParams) = 0;

    /// 8. Writes the picture to a stream, JPEG and PNG from its current position, BMP from position
    /// 0. The image is not changed.
    ///
    /// - KEL_ERR_SAVE_FORMAT: there is no such writer.
    /// - KEL_ERR_NOT_IMPLEMENTED: GIF, TIFF.
    /// - KEL_ERR_PARAM: a null stream, or BMP of an empty image.
    /// - KEL_ERR_FAIL: a depth that PNG cannot hold.
    /// - KEL_ERR_CODEC: libjpeg or libpng refused the picture.
    /// - KEL_ERR_MEMORY: memory ran out.
    /// - KEL_ERR_FILE: the stream threw.
    ///
    /// Failed writes of the stream are not reported. Ask the stream.
    virtual KelResult Save(CVamArchive* pArchive, KelImageFormat eFormat,
                           tagKelParameters* pParams) = 0;

    /// 9. Applies a filter in place. KEL_ERR_FILTER_TYPE, KEL_ERR_PARAM (target size 0 or below,
    /// row array missing) and KEL_ERR_MEMORY leave the image unchanged. A picture without rows or
    /// columns, or a "type" outside 1 to 4, gives KEL_OK and a black picture. In the second case
    /// the original is lost.
    virtual KelResult ApplyFilter(KelImageFilterType eType, tagKelParameters* pParams) = 0;

    /// 10. Applies a filter and leaves this image alone. *ppImage receives a new image, which the
    /// caller ends with DestroyImageObject, or null on failure. ppImage must not be null. Results
    /// as in slot 9, with a black new image for a "type" outside 1 to 4.
    virtual KelResult ApplyFilter(IKelImage** ppImage, KelImageFilterType eType,
                                  tagKelParameters* pParams) = 0;

    /// 11. The pixel buffer, or null. It belongs to the image (or to the caller of OpenAs) and is
    /// valid until the image changes.
    virtual unsigned char* GetBits() = 0;

    /// 12. The row array, or null. It has one pointer per row, top row first, and is valid until
    /// the image changes.
    virtual unsigned char** GetLineArray() = 0;

    /// 13. The palette of GetPaletteNum entries, or null. It is valid until the image changes.
    virtual tagKelRGBQUAD* GetPalette() = 0;

    /// 14. The header. It is never null, and all zero for an empty image.
    virtual BITMAPINFOHEADER* GetBitmapInfoHeader() = 0;

    /// 15. The header block, which is header and colour table in one. Built on first use, then held
    /// and returned unchanged. Null for an empty image or when memory runs out.
    virtual BITMAPINFO* GetBitmapInfo() = 0;

    /// 16. Replaces the header block by a zeroed one of nSize bytes, to be filled before Open().
    /// When nSize is below 40, the result is null and nothing changes. When memory runs out, the
    /// result is null and no block is left, except a lent one.
    virtual BITMAPINFO* AllocateBMI(unsigned int nSize) = 0;

    /// 17. Replaces the pixel buffer by a zeroed one of dwSize bytes, to be filled before Open(),
    /// and at least as long as the rows of the current header. Null when memory runs out. The old
    /// pixels are then gone, except lent ones. Sizes of 0 and above 52,428,800 are traced and still
    /// tried.
    virtual unsigned char* AllocateBits(unsigned int dwSize) = 0;

    /// 18. The number of palette entries.
    virtual int GetPaletteNum() = 0;

    /// 19. Pixels per row, 0 for an empty image.
    virtual int GetWidth() = 0;
    /// 20. Rows, 0 for an empty image.
    virtual int GetHeight() = 0;
    /// 21. Bits per pixel, 0 for an empty image.
    virtual int GetBitsPerPixel() = 0;

    /// 22. The low 32 bits of stride * height, which is the size of the pixels in bytes.
    virtual unsigned int GetBmpDataSize() = 0;

    /// 23. Resizes in place by bilinear sampling of pixels (nearest pixel at 1, 4 and 8 bits).
    /// Nothing happens for a size of 0 or below, for an empty image, or without memory for the new
    /// pixels. Without memory for the sampling tables the new pixels are all zero.
    virtual void ZoomImage(int nWidth, int nHeight) = 0;

    /// 24. Crops in place to the rectangle of nWidth * nHeight pixels whose left top corner is (nX,
    /// nY). Nothing happens when it does not lie inside the picture, or without memory for one row.
    /// Pixels and a header block lent through OpenAs are changed too.
    virtual void SubImage(int nX, int nY, int nWidth, int nHeight) = 0;

    /// 25. Mode 0 flips the picture upside down, given memory for one row. Other modes do nothing.
    /// Pixels lent through OpenAs are changed too.
    virtual void Mirror(int nMode) = 0;

    /// 26. Transposes the picture, so that pixel (x, y) moves to (y, x). The argument has no
    /// effect. False and nothing changed for an empty image or when memory runs out.
    virtual bool Rotate(int nUnused) = 0;

    /// 27. Changes a 24-bit image to 32 bits, fourth byte 0. Any other request does nothing.
    virtual void ChangeBitCount(int nBitCount) = 0;

    /// 28. Releases what the image holds and deletes the image itself.
    virtual void Destroy() = 0;
    // The interface ends here. New operations follow after this line.
};

extern "C" {

/// Makes an empty image and stores it in *ppImage, or null when memory runs out. ppImage must not
/// be null. C linkage, so that a host can look it up by name at run time.
IKELEX_API void CreateImageObject(IKelImage** ppImage);

/// Ends an image made by this library. Does nothing for null and for an IKelImage of another kind.
IKELEX_API void DestroyImageObject(IKelImage* pImage);

}  // extern "C"

#endif  // IKELEX_IKELIMAGE_H
