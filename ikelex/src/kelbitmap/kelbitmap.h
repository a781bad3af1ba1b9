/// @file
/// Sizes, colour tables, masks and channel order of bitmaps. Free functions without state. Nothing
/// here allocates, traces or fails.
#ifndef KELBITMAP_KELBITMAP_H
#define KELBITMAP_KELBITMAP_H

#include <ikelex/bitmap.h>
#include <ikelex/export.h>

/// Bytes of the colour table that follows a header, modulo 2^32. Reads the header and nothing after
/// it.
/// - 1 bit: 8
/// - 4 and 8 bits: biClrUsed x 4, or 64 and 1024 when biClrUsed is 0
/// - 16 and 32 bits with BI_BITFIELDS: 12 (three masks)
/// - 16, 24 and 32 bits otherwise: biClrUsed x 4
/// - any other depth: 0
IKELEX_API unsigned int IMG_GetColorTableSize(BITMAPINFOHEADER* pHeader);

/// biSize + IMG_GetColorTableSize, wrapping at 32 bits.
IKELEX_API unsigned int IMG_GetBitmapInfoSize(BITMAPINFOHEADER* pHeader);

/// The right shift that brings a colour mask's lowest bit to bit 0. 0 for the mask 0.
IKELEX_API int MaskToRShift(unsigned int nMask);

/// 8 minus the length of the run of one bits that starts at the mask's lowest set bit. 0 for the
/// mask 0, negative for runs over 8.
IKELEX_API int MaskToLShift(unsigned int nMask);

/// Reverses the bytes of nCount consecutive 3-byte pixels, in place. Nothing for a count of 0 or
/// below.
IKELEX_API void RGB2BGR(unsigned char* pBuffer, int nCount);

#endif  // KELBITMAP_KELBITMAP_H
