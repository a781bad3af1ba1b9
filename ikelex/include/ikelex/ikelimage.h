// IKelImage: the interface of an image, and the factory that makes one.
//
// An image is a device-independent bitmap: a header, an optional palette, one pixel buffer, and an
// array of pointers to its rows. Rows are held top-down (row 0 is the top of the picture, the
// height is positive), each padded to a multiple of 4 bytes: stride = (bits * width + 31) / 32 * 4.
// Pixels of 24 bits are stored blue, green, red; of 32 bits blue, green, red and a fourth byte; of
// 1 and 4 bits with the leftmost pixel in the highest bits.
//
// Threads: an image has no lock; one image is used by one thread at a time, different images by any
// threads at once. No operation throws.
#ifndef IKELEX_IKELIMAGE_H
#define IKELEX_IKELIMAGE_H

#include <ikelex/bitmap.h>
#include <ikelex/export.h>
#include <ikelex/filters.h>
#include <ikelex/formats.h>
#include <ikelex/parameters.h>
#include <ikelex/result.h>

class CVamArchive;

// The order of the operations is part of the binary interface; the number before each is its slot.
class IKELEX_API IKelImage {
  public:
    // 1. Releases the image and everything it owns.
    virtual ~IKelImage();

    // 2. Opens the picture file pszPath (UTF-8). The format is found from the data, never from the
    // name. KEL_ERR_PARAM for a null path and KEL_ERR_FILE for a file that cannot be opened leave
    // the image as it was; otherwise as slot 3.
    virtual KelResult Open(const char* pszPath) = 0;

    // 3. Opens a picture from the stream's current position; the stream's position is the same
    // afterwards. The image is emptied first, and filled on KEL_OK (TIFF: KEL_OK and empty).
    // KEL_ERR_FAIL: not recognised. KEL_ERR_OPEN_FORMAT: GIF, PCX, PSD, PGM, PPM. KEL_ERR_PARAM: a
    // BMP header that is not supported. KEL_ERR_CODEC: a damaged JPEG or PNG; the image is empty or
    // keeps the rows read so far, the rest zero. KEL_ERR_MEMORY: empty. KEL_ERR_FILE: the stream
    // threw.
    virtual KelResult Open(CVamArchive* pArchive) = 0;

    // 4. Derives header, palette and rows from the header block and the pixel buffer the image
    // holds (see AllocateBMI, AllocateBits). KEL_ERR_PARAM when either is missing or the block's
    // biSize is not 40, its depth not 1, 4, 8, 16, 24 or 32, its biCompression above 3, or a size
    // negative: the palette and rows are then released, the header zeroed, both buffers kept.
    virtual KelResult Open() = 0;

    // 5. Copies a caller's bitmap: header with colour table, and biSizeImage bytes of pixels in
    // memory order (0 means stride x height). KEL_ERR_PARAM for a null pointer, buffers of the
    // image's own, an unsupported header, more than 65,536 colours or too few pixel bytes: the
    // image was emptied. Also KEL_ERR_PARAM when memory runs out; the image then has no rows.
    virtual KelResult Open(BITMAPINFO* pBMI, unsigned char* pBits) = 0;

    // 6. Adopts a caller's bitmap without copying. bOwn not 0: the image releases both with array
    // delete. bOwn 0: both stay the caller's and must outlive their use; what the image held before
    // is replaced without being released, so empty it first. Results as slot 4.
    virtual KelResult OpenAs(BITMAPINFO* pBMI, unsigned char* pBits, int bOwn) = 0;

    // 7. Writes the picture to the file pszPath (UTF-8), which is created or truncated first, also
    // when the format turns out to be unsupported. pParams may be null; JPEG reads "quality".
    // KEL_ERR_PARAM: null path. KEL_ERR_FILE: the file cannot be created. Otherwise as slot 8. A
    // full disk is not reported here: save through a CVamArchiveFile of your own and ask it.
    virtual KelResult Save(const char* pszPath, KelImageFormat eFormat,
                           tagKelParameters* pParams) = 0;

    // 8. Writes the picture to a stream: JPEG and PNG from its current position, BMP from position
    // 0. The image is not changed. KEL_ERR_SAVE_FORMAT: no such writer. KEL_ERR_NOT_IMPLEMENTED:
    // GIF, TIFF. KEL_ERR_PARAM: BMP of an empty image. KEL_ERR_FAIL: a depth PNG cannot hold.
    // KEL_ERR_CODEC: libjpeg or libpng refused the picture. KEL_ERR_MEMORY. KEL_ERR_FILE: the
    // stream threw. Failed writes of the stream are not reported; ask the stream.
    virtual KelResult Save(CVamArchive* pArchive, KelImageFormat eFormat,
                           tagKelParameters* pParams) = 0;

    // 9. Applies a filter in place. On any result but KEL_OK the image is unchanged.
    // KEL_ERR_FILTER_TYPE, KEL_ERR_PARAM (target size 0 or below, no rows), KEL_ERR_MEMORY.
    virtual KelResult ApplyFilter(KelImageFilterType eType, tagKelParameters* pParams) = 0;

    // 10. Applies a filter and leaves this image alone: *ppImage receives a new image, which the
    // caller ends with DestroyImageObject, or null on failure. ppImage must not be null.
    virtual KelResult ApplyFilter(IKelImage** ppImage, KelImageFilterType eType,
                                  tagKelParameters* pParams) = 0;

    // 11. The pixel buffer, or null. It belongs to the image (or to the caller of OpenAs) and is
    // valid until the image changes.
    virtual unsigned char* GetBits() = 0;

    // 12. The row array: one pointer per row, top row first, or null. Valid until the image
    // changes.
    virtual unsigned char** GetLineArray() = 0;

    // 13. The palette: GetPaletteNum entries, or null. Valid until the image changes.
    virtual tagKelRGBQUAD* GetPalette() = 0;

    // 14. The header; never null, all zero for an empty image.
    virtual BITMAPINFOHEADER* GetBitmapInfoHeader() = 0;

    // 15. The header block: header and colour table in one. Built on first use, then held and
    // returned unchanged; null for an empty image or when memory runs out.
    virtual BITMAPINFO* GetBitmapInfo() = 0;

    // 16. Replaces the header block by a zeroed one of nSize bytes, to be filled before Open().
    // Null, nothing changed, when nSize is below 40; null without a block when memory runs out.
    virtual BITMAPINFO* AllocateBMI(unsigned int nSize) = 0;

    // 17. Replaces the pixel buffer by a zeroed one of dwSize bytes, to be filled before Open(),
    // and at least as long as the rows of the current header. Null when memory runs out. Sizes of 0
    // and above 52,428,800 are traced and still tried.
    virtual unsigned char* AllocateBits(unsigned int dwSize) = 0;

    // 18. The number of palette entries.
    virtual int GetPaletteNum() = 0;

    // 19, 20, 21. Pixels per row, rows, bits per pixel; 0 for an empty image.
    virtual int GetWidth() = 0;
    virtual int GetHeight() = 0;
    virtual int GetBitsPerPixel() = 0;

    // 22. Bytes of the whole picture: stride x height, the low 32 bits.
    virtual unsigned int GetBmpDataSize() = 0;

    // 23. Resizes in place by bilinear sampling of pixels (nearest pixel at 1, 4 and 8 bits).
    // Nothing happens for a size of 0 or below, an empty image, or without memory for the new
    // pixels; without memory for the sampling tables they are all zero.
    virtual void ZoomImage(int nWidth, int nHeight) = 0;

    // 24. Crops in place to the rectangle of nWidth x nHeight pixels whose left top corner is (nX,
    // nY). Nothing happens when it does not lie inside the picture, or without memory for one row.
    virtual void SubImage(int nX, int nY, int nWidth, int nHeight) = 0;

    // 25. Mode 0 turns the picture upside down, given memory for one row; other modes do nothing.
    virtual void Mirror(int nMode) = 0;

    // 26. Transposes the picture: pixel (x, y) moves to (y, x). The argument has no effect. False,
    // nothing changed, for an empty image or when memory runs out.
    virtual bool Rotate(int nUnused) = 0;

    // 27. Changes a 24-bit image to 32 bits, fourth byte 0. Any other request does nothing.
    virtual void ChangeBitCount(int nBitCount) = 0;

    // 28. Releases what the image holds and deletes the image itself.
    virtual void Destroy() = 0;
    // The interface ends here; new operations follow after this line.
};

extern "C" {

// Makes an empty image and stores it in *ppImage, or null when memory runs out. ppImage must not be
// null. C linkage, so that a host can look it up by name at run time.
IKELEX_API void CreateImageObject(IKelImage** ppImage);

// Ends an image made by this library. Does nothing for null and for an IKelImage of another kind.
IKELEX_API void DestroyImageObject(IKelImage* pImage);

}  // extern "C"

#endif  // IKELEX_IKELIMAGE_H
