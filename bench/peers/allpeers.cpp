// The peers that Debian packages; each is one file and runs on one thread.
#include "allpeers.h"

namespace bench {

const std::vector<const Peer*>& Peers() {
    static const std::vector<const Peer*> all = {OpenCvPeer(), VipsPeer(), LibyuvPeer(),
                                                 FreeImagePeer(), StbPeer()};
    return all;
}

}  // namespace bench
