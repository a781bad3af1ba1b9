/// @file
/// CKelDecoder, the abstract base of the BMP and PNG readers.
#ifndef KELDECODER_KELDECODERBASE_H
#define KELDECODER_KELDECODERBASE_H

#include <ikelex/result.h>

#include "kelparameters/kelparameters.h"

class CVamArchive;
class CKelImage;

/// A reader of pictures. Each call of Do needs a new one.
class IKELEX_API CKelDecoder : public CKelParameterMgr {
  public:
    CKelDecoder();
    ~CKelDecoder() override;

    /// Reads a picture from pArchive, which stands at its start, into pImage, replacing what that
    /// held. Neither pointer may be null. An exception that pArchive throws passes on to the caller
    /// after everything has been released.
    virtual KelResult Do(CVamArchive* pArchive, CKelImage* pImage) = 0;
};

#endif  // KELDECODER_KELDECODERBASE_H
