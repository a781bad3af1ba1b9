/// @file
/// CKelPNGEncoder, the PNG writer.
#ifndef KELENCODER_KELPNGENCODER_H
#define KELENCODER_KELPNGENCODER_H

#include <ikelex/bitmap.h>

#include "kelencoderbase.h"

struct png_struct_def;

/// Takes no parameters. Each call of Do needs a new writer.
class IKELEX_API CKelPNGEncoder : public CKelEncoder {
  public:
    CKelPNGEncoder();
    ~CKelPNGEncoder() override;

    /// Indexed at 1, 4 and 8 bits, truecolour at 16 and 24, truecolour with alpha at 32.
    /// KEL_ERR_FAIL, nothing written, for any other depth. KEL_ERR_CODEC when libpng reported an
    /// error, or, nothing written, for an index beyond the palette. KEL_ERR_MEMORY when the image
    /// has no row array, or when a row or the palette cannot be allocated.
    KelResult Do(CVamArchive* pArchive, CKelImage* pImage) override;

    /// nCount x 3 bytes red, green, blue. The caller releases them with array delete. Null when
    /// nCount is below 1 or memory runs out.
    unsigned char* CreatePNGPalette(int nCount, tagKelRGBQUAD* pPalette) const;

    /// libpng's callbacks.
    /// @{
    static void user_error_fn(png_struct_def* pPng, const char* pszMessage);
    static void user_warning_fn(png_struct_def* pPng, const char* pszMessage);
    static void user_write_data(png_struct_def* pPng, unsigned char* pData, size_t nLength);
    static void user_flush_data(png_struct_def* pPng);
    /// @}
};

#endif  // KELENCODER_KELPNGENCODER_H
