// The base of test helpers that act from construction to destruction.
#ifndef SUPPORT_SCOPED_H
#define SUPPORT_SCOPED_H

namespace support {

struct Scoped {
    Scoped() = default;
    Scoped(const Scoped&) = delete;
    Scoped& operator=(const Scoped&) = delete;
};

}  // namespace support

#endif  // SUPPORT_SCOPED_H
