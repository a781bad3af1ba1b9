#include "kelpngencoder.h"

CKelPNGEncoder::CKelPNGEncoder() = default;
CKelPNGEncoder::~CKelPNGEncoder() = default;
KelResult CKelPNGEncoder::Do(CVamArchive*, CKelImage*) { return KEL_ERR_NOT_IMPLEMENTED; }
