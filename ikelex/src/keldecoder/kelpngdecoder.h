/// @file
/// CKelPNGDecoder, the PNG reader.
#ifndef KELDECODER_KELPNGDECODER_H
#define KELDECODER_KELPNGDECODER_H

#include "keldecoderbase.h"

struct png_struct_def;

/// Takes no parameters. Each call of Do needs a new reader.
class IKELEX_API CKelPNGDecoder : public CKelDecoder {
  public:
    CKelPNGDecoder();
    ~CKelPNGDecoder() override;

    KelResult Do(CVamArchive* pArchive, CKelImage* pImage) override;

    /// libpng's callbacks.
    /// @{
    static void user_error_fn(png_struct_def* pPng, const char* pszMessage);
    static void user_warning_fn(png_struct_def* pPng, const char* pszMessage);
    static void user_read_data(png_struct_def* pPng, unsigned char* pData, size_t nLength);
    /// @}
};

#endif  // KELDECODER_KELPNGDECODER_H
