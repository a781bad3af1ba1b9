// Any sequence of calls on two images: made, adopted with and without ownership, opened from
// blocks, borrowed from each other, and worked on.
#include <cstring>

#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    fuzz::Input input(pData, nSize);
    support::Picture lent = fuzz::MakePicture(input);  // outlives the images that use it
    CKelImage images[2];
    for (int nCalls = 0; nCalls < 24 && !input.Empty(); ++nCalls) {
        CKelImage& image = images[input.Byte() % 2];
        CKelImage& other = images[&image == images ? 1 : 0];
        switch (input.Byte() % 10) {
            case 0: {
                support::Picture picture = fuzz::MakePicture(input);
                fuzz::CheckResult(image.Open(picture.Info(), picture.bits.data()));
                break;
            }
            case 1:
                fuzz::CheckResult(image.Open(lent.Info(), lent.bits.data()));
                break;
            case 2:
                image.Clean();
                if (other.m_pBMI == lent.Info()) {
                    break;  // a crop of one image would change the lent header of both
                }
                fuzz::CheckResult(image.OpenAs(lent.Info(), lent.bits.data(), 0));
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
