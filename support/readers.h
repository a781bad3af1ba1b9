/// What the tests of the readers share.
#ifndef SUPPORT_READERS_H
#define SUPPORT_READERS_H

#include "support/allocfaults.h"
#include "support/faultyarchive.h"
#include "support/inspect.h"
#include "support/recordingtrace.h"

namespace support {

template <typename Decoder>
KelResult Decode(const Bytes& file, CKelImage& image) {
    FaultyArchive archive(file);
    return Decoder().Do(&archive, &image);
}

}  // namespace support

#endif  // SUPPORT_READERS_H
