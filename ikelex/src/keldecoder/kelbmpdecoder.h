/// @file
/// CKelBMPDecoder, the BMP reader.
#ifndef KELDECODER_KELBMPDECODER_H
#define KELDECODER_KELBMPDECODER_H

#include "keldecoderbase.h"

/// Takes no parameters. Each call of Do needs a new reader.
class IKELEX_API CKelBMPDecoder : public CKelDecoder {
  public:
    CKelBMPDecoder();
    ~CKelBMPDecoder() override;

    /// The file must start at stream position 0, because its pixel offset is an absolute position.
    KelResult Do(CVamArchive* pArchive, CKelImage* pImage) override;
};

#endif  // KELDECODER_KELBMPDECODER_H
