#include "kelbmpdecoder.h"

CKelBMPDecoder::CKelBMPDecoder() = default;
CKelBMPDecoder::~CKelBMPDecoder() = default;
KelResult CKelBMPDecoder::Do(CVamArchive*, CKelImage*) { return KEL_ERR_OPEN_FORMAT; }
