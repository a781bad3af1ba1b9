// What the fuzz targets share: taking values off the input, and looking at an image from all sides.
#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include <platform/vamarchivememory.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "support/inspect.h"

namespace fuzz {

using support::Bytes;

// Allocations of an array over this size fail in every target, so that a file's claim costs nothing
// whatever its format: the library answers KEL_ERR_MEMORY.
inline constexpr std::size_t kMaxBytes = 1u << 20;
inline constexpr int kMaxSide = 96;

// Ends the program, which is how a target reports a find.
inline void Require(bool bHolds, const char* pszWhat) {
    if (bHolds) {
        return;
    }
    std::fprintf(stderr, "broken: %s\n", pszWhat);
    std::abort();
}

// Takes values off the front of the input; zeros after its end.
class Input {
  public:
    Input(const std::uint8_t* pData, std::size_t nSize) : m_pData(pData), m_nSize(nSize) {}
    bool Empty() const { return m_nSize == 0; }
    unsigned char Byte() {
        if (m_nSize == 0) {
            return 0;
        }
        m_nSize--;
        return *m_pData++;
    }
    int Word() {
        const int nLow = Byte();
        return nLow | Byte() << 8;
    }
    int Range(int nLow, int nHigh) { return nLow + Word() % (nHigh - nLow + 1); }
    // The next byte; after the end, noise that is the same every time.
    unsigned char Noise() {
        m_nRandom = m_nRandom * 1664525 + 1013904223;
        return Empty() ? static_cast<unsigned char>(m_nRandom >> 24) : Byte();
    }
    void Fill(unsigned char* p, std::size_t nCount) {
        for (std::size_t i = 0; i < nCount; ++i) {
            p[i] = Byte();
        }
    }

  private:
    const std::uint8_t* m_pData;
    std::size_t m_nSize;
    unsigned int m_nRandom = 1;
};

// The result is one of the documented codes.
void CheckResult(KelResult nResult);

// The image is sound; reads every byte it owns.
void CheckImage(CKelImage& image);

// A picture of any depth and compression from the input, palette included; the pixels take what is
// left and repeat it.
void MakeImage(CKelImage& image, Input& input);

// One operation chosen by the input, then CheckImage.
void Operate(CKelImage& image, Input& input);

}  // namespace fuzz

#endif  // FUZZ_FUZZ_H
