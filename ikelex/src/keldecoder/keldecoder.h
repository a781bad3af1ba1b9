/// @file
/// CKelDecoder, the abstract reader, and all readers.
#ifndef KELDECODER_KELDECODER_H
#define KELDECODER_KELDECODER_H

#include "kelbmpdecoder.h"
#include "keldecoderbase.h"
#include "keljpegdecoder.h"
#include "kelpngdecoder.h"

#endif  // KELDECODER_KELDECODER_H
