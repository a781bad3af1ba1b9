#include "kelbmpencoder.h"

CKelBMPEncoder::CKelBMPEncoder() = default;
CKelBMPEncoder::~CKelBMPEncoder() = default;
KelResult CKelBMPEncoder::Do(CVamArchive*, CKelImage*) { return KEL_ERR_NOT_IMPLEMENTED; }
