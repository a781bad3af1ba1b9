#include "headerblock.h"

#include <platform/vamplatform.h>

#include <new>

#include "../kelbitmap/colortable.h"
#include "../kelbitmap/strides.h"
#include "../keltrace/keltrace.h"

namespace kel {

std::int64_t HeaderBlockSize(const BITMAPINFOHEADER& header) {
    return std::int64_t{ColorTableEntries(header)} * 4 + std::int64_t{sizeof header};
}

bool CopyHeaderBlock(const BITMAPINFO* pBlock, BITMAPINFO** ppCopy) {
    if (pBlock == nullptr || pBlock->bmiHeader.biSize != sizeof pBlock->bmiHeader) {
        *ppCopy = nullptr;
        return true;
    }
    const std::int64_t nBytes = HeaderBlockSize(pBlock->bmiHeader);
    if (nBytes > kMaxSize) {
        return false;
    }
    const auto nSize = static_cast<std::size_t>(nBytes);
    unsigned char* pCopy = new (std::nothrow) unsigned char[nSize];
    if (pCopy == nullptr) {
        return false;
    }
    CheckSecure(kSourceImage, memcpy_s(pCopy, nSize, pBlock, nSize));
    *ppCopy = reinterpret_cast<BITMAPINFO*>(pCopy);
    return true;
}

}  // namespace kel
