// The abstract reader: its virtual table lies here.
#include "keldecoderbase.h"

CKelDecoder::CKelDecoder() = default;

CKelDecoder::~CKelDecoder() = default;
