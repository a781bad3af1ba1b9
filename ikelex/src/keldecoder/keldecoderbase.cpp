// The abstract reader, with its virtual table.
#include "keldecoderbase.h"

CKelDecoder::CKelDecoder() = default;

CKelDecoder::~CKelDecoder() = default;
