/// Another image library that does the same work, as far as it has it.
#ifndef BENCH_PEER_H
#define BENCH_PEER_H

#include "suite.h"

namespace bench {

/// A member returns nothing where the library has no work of that kind. The kernels and codecs are
/// each library's own: the nearest in kind is chosen, and the bytes differ from ours.
struct Peer {
    virtual ~Peer() = default;
    virtual const char* Name() const = 0;

    /// Scales 24 bits with a kernel of the same kind (a KelScaleType).
    virtual Side Scale(SharedImage, Size, int) const { return nullptr; }
    /// Interpolates between two rows and two columns, also when shrinking.
    virtual Side Zoom(SharedImage, Size) const { return nullptr; }
    /// Transposes or rotates by a quarter; 8, 24 or 32 bits.
    virtual Side Transpose(SharedImage) const { return nullptr; }
    /// Puts the rows into the opposite order, in place.
    virtual Side Mirror(SharedImage) const { return nullptr; }
    /// Converts row after row to 24 bits into one line.
    virtual Side Lines(SharedImage) const { return nullptr; }
    /// 24 to 32 bits.
    virtual Side Expand(SharedImage) const { return nullptr; }
    virtual Side OpenFile(std::string) const { return nullptr; }
    virtual Side SaveFile(SharedImage, std::string) const { return nullptr; }
    virtual Side OpenMemory(std::shared_ptr<support::Bytes>, KelImageFormat) const {
        return nullptr;
    }
    /// JPEG at quality 75, PNG at the library's default.
    virtual Side SaveMemory(SharedImage, KelImageFormat) const { return nullptr; }
};

/// Those that this program was built with.
const std::vector<const Peer*>& Peers();

/// Adds the side that each peer has for a work.
template <class SideOf>
void AddPeers(std::vector<Other>& others, const SideOf& sideOf) {
    for (const Peer* pPeer : Peers()) {
        if (Side side = sideOf(*pPeer)) {
            others.push_back({Kind::kPeer, pPeer->Name(), side});
        }
    }
}

}  // namespace bench

#endif  // BENCH_PEER_H
