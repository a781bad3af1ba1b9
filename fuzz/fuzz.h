// What the fuzz targets share: taking values off the input, and looking at an image from all sides.
#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include <platform/vamarchivememory.h>

#include "support/inspect.h"
#include "support/pictures.h"

namespace fuzz {

using support::Bytes;

inline constexpr int kMaxSide = 96;

// Ends the program where something does not hold, which is how a target reports a find.
void Require(bool bHolds, const char* pszWhat);

// Takes values off the front of the input; zeros after its end.
class Input {
  public:
    Input(const std::uint8_t* pData, std::size_t nSize) : m_pData(pData), m_pEnd(pData + nSize) {}
    bool Empty() const { return m_pData == m_pEnd; }
    unsigned char Byte() { return Empty() ? std::uint8_t{0} : *m_pData++; }
    int Word() {
        const int nLow = Byte();
        return nLow | Byte() << 8;
    }
    int Range(int nLow, int nHigh) { return nLow + Word() % (nHigh - nLow + 1); }

  private:
    const std::uint8_t* m_pData;
    const std::uint8_t* m_pEnd;
};

// The result is one of the documented codes.
void CheckResult(KelResult nResult);

// The image is sound; reads every byte it owns.
void CheckImage(CKelImage& image);

// A caller's picture of any depth, compression, size and number of colours.
support::Picture MakePicture(Input& input);

// One operation chosen by the input, then CheckImage.
void Operate(CKelImage& image, Input& input);

}  // namespace fuzz

#endif  // FUZZ_FUZZ_H
