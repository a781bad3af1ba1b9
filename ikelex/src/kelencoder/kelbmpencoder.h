/// @file
/// CKelBMPEncoder, the BMP writer.
#ifndef KELENCODER_KELBMPENCODER_H
#define KELENCODER_KELBMPENCODER_H

#include "kelencoderbase.h"

/// Takes no parameters. Each call of Do needs a new writer.
class IKELEX_API CKelBMPEncoder : public CKelEncoder {
  public:
    CKelBMPEncoder();
    ~CKelBMPEncoder() override;

    /// Writes an uncompressed 24-bit bitmap from stream position 0. KEL_ERR_PARAM, nothing written,
    /// for an image without a header record. KEL_ERR_MEMORY when the image has no row array
    /// (nothing written), or when the row buffer cannot be allocated.
    KelResult Do(CVamArchive* pArchive, CKelImage* pImage) override;
};

#endif  // KELENCODER_KELBMPENCODER_H
