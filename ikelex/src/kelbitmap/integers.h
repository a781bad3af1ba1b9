// Conversions between integers that say what they keep, and arithmetic that wraps.
#ifndef KELBITMAP_INTEGERS_H
#define KELBITMAP_INTEGERS_H

#include <cstddef>
#include <cstdint>

namespace kel {

// A size or count, 0 or more, as the standard library takes it.
template <typename Integer>
constexpr std::size_t AsSize(Integer n) {
    return static_cast<std::size_t>(n);
}

// The low 32 bits.
template <typename Integer>
constexpr std::uint32_t Low32(Integer n) {
    return static_cast<std::uint32_t>(n);
}

// The low 8 bits.
template <typename Integer>
constexpr unsigned char LowByte(Integer n) {
    return static_cast<unsigned char>(n);
}

// Sums and products that wrap at 32 bits. The library's own kernels never get that far.
constexpr int WrapAdd(int a, int b) {
    return static_cast<int>(Low32(a) + Low32(b));
}
constexpr int WrapMultiply(int a, int b) {
    return static_cast<int>(Low32(a) * Low32(b));
}

}  // namespace kel

#endif  // KELBITMAP_INTEGERS_H
