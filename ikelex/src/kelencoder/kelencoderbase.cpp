// The abstract writer, with its virtual table.
#include "kelencoderbase.h"

CKelEncoder::CKelEncoder() = default;

CKelEncoder::~CKelEncoder() = default;
