/// The peers, one function for each library.
#ifndef PEERS_ALLPEERS_H
#define PEERS_ALLPEERS_H

#include "peer.h"

namespace bench {

const Peer* OpenCvPeer();
const Peer* VipsPeer();
const Peer* LibyuvPeer();
const Peer* FreeImagePeer();
const Peer* StbPeer();

/// Bytes of a stored row.
inline int StrideOf(CKelImage& image) {
    return static_cast<int>(kel::RowStride(image.GetBitsPerPixel(), image.GetWidth()));
}

}  // namespace bench

#endif  // PEERS_ALLPEERS_H
