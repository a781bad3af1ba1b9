#include "kelpngdecoder.h"

CKelPNGDecoder::CKelPNGDecoder() = default;
CKelPNGDecoder::~CKelPNGDecoder() = default;
KelResult CKelPNGDecoder::Do(CVamArchive*, CKelImage*) { return KEL_ERR_OPEN_FORMAT; }
