#include "kelencoderbase.h"

CKelEncoder::CKelEncoder() = default;

CKelEncoder::~CKelEncoder() = default;
