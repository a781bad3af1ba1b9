// Rows of one block of memory, placed so that they do not disturb each other in the cache.
#include "rowblock.h"

#include <new>

#include "kelmemory/kelmemory.h"

namespace kel {

namespace {

// Rows start on cache lines, and never a multiple of the cache's way size apart. The columns of
// many rows are read together, and would then compete for one place.
std::size_t Stride(std::size_t nRowBytes) {
    const std::size_t nStride = (nRowBytes + 63) / 64 * 64;
    return nStride % 1024 == 0 ? nStride + 64 : nStride;
}

}  // namespace

bool RowBlock::Allocate(std::size_t nRows, std::size_t nHeld, std::size_t nRowBytes) {
    const std::size_t nStride = Stride(nRowBytes);
    std::size_t nSize = 0;
    if (__builtin_mul_overflow(nHeld, nStride, &nSize)) {
        return false;
    }
    m_pBytes.reset(NewPixelsNothrow(static_cast<std::int64_t>(nSize)));
    m_ppRows.reset(new (std::nothrow) unsigned char*[nRows]);
    if (m_pBytes == nullptr || m_ppRows == nullptr) {
        return false;
    }
    for (std::size_t i = 0; i < nRows; ++i) {
        m_ppRows[i] = m_pBytes.get() + i % nHeld * nStride;
    }
    return true;
}

}  // namespace kel
