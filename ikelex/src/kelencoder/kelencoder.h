/// @file
/// CKelEncoder, the abstract writer, and all writers.
#ifndef KELENCODER_KELENCODER_H
#define KELENCODER_KELENCODER_H

#include "kelbmpencoder.h"
#include "kelencoderbase.h"
#include "keljpegencoder.h"
#include "kelpngencoder.h"

#endif  // KELENCODER_KELENCODER_H
