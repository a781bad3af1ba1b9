#include "keldecoderbase.h"

CKelDecoder::CKelDecoder() = default;

CKelDecoder::~CKelDecoder() = default;
