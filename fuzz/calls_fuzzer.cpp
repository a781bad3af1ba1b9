// Any sequence of calls on two images: made, adopted with and without ownership, opened from
// blocks, borrowed from each other, and worked on.
#include <cstring>

#include "fuzz.h"

namespace {

// A caller's block and pixels of a small picture of any depth.
struct Lent {
    explicit Lent(fuzz::Input& input) {
        fuzz::MakeImage(maker, input);
        if (const BITMAPINFO* pBlock = maker.GetBitmapInfo()) {
            BITMAPINFOHEADER header = pBlock->bmiHeader;
            block.resize(IMG_GetBitmapInfoSize(&header));
            std::memcpy(block.data(), pBlock, block.size());
            bits.assign(maker.m_pBits, maker.m_pBits + maker.GetBmpDataSize());
        }
    }
    BITMAPINFO* Block() {
        return block.empty() ? nullptr : reinterpret_cast<BITMAPINFO*>(block.data());
    }
    CKelImage maker;
    fuzz::Bytes block, bits;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    Lent lent(input);  // outlives the images that use it
    CKelImage images[2];
    for (int nCalls = 0; nCalls < 24 && !input.Empty(); ++nCalls) {
        CKelImage& image = images[input.Byte() % 2];
        CKelImage& other = images[&image == images ? 1 : 0];
        switch (input.Byte() % 10) {
            case 0:
                fuzz::MakeImage(image, input);
                break;
            case 1:
                fuzz::CheckResult(image.Open(lent.Block(), lent.bits.data()));
                break;
            case 2:
                image.Clean();
                fuzz::CheckResult(image.OpenAs(lent.Block(), lent.bits.data(), 0));
                break;
            case 3: {
                image.Clean();
                BITMAPINFO* pBlock =
                    image.AllocateBMI(static_cast<unsigned int>(lent.block.size()));
                if (pBlock != nullptr) {
                    std::memcpy(pBlock, lent.block.data(), lent.block.size());
                }
                image.AllocateBits(static_cast<unsigned int>(lent.bits.size()));
                fuzz::CheckResult(image.Open());
                break;
            }
            case 4:
                image.Borrow(&other);
                fuzz::Require(other.m_pBits == nullptr, "a donor keeps its pixels");
                break;
            case 5:
                image.Clean();
                break;
            default:
                fuzz::Operate(image, input);
        }
        fuzz::CheckImage(images[0]);
        fuzz::CheckImage(images[1]);
    }
    return 0;
}
