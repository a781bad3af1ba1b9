// The abstract writer: its virtual table lies here.
#include "kelencoderbase.h"

CKelEncoder::CKelEncoder() = default;

CKelEncoder::~CKelEncoder() = default;
