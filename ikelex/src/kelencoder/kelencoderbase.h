/// @file
/// CKelEncoder, the abstract base of the writers.
#ifndef KELENCODER_KELENCODERBASE_H
#define KELENCODER_KELENCODERBASE_H

#include <ikelex/result.h>

#include "kelparameters/kelparameters.h"

class CVamArchive;
class CKelImage;

/// A writer of pictures. Each call of SetParameters and Do needs a new one.
class IKELEX_API CKelEncoder : public CKelParameterMgr {
  public:
    CKelEncoder();
    ~CKelEncoder() override;

    /// Writes pImage to pArchive. The image is only read. Neither pointer may be null. Failed
    /// writes are not detected. An exception that pArchive throws passes on to the caller after
    /// everything has been released.
    virtual KelResult Do(CVamArchive* pArchive, CKelImage* pImage) = 0;
};

#endif  // KELENCODER_KELENCODERBASE_H
