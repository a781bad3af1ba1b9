#include "transpose.h"

#include <algorithm>
#include <cstring>

#include "geometry.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kel {

namespace {

// A strip's columns and rows. The small buffer then takes at most 72 KiB and stays in the second
// level cache together with the source lines of the strip.
constexpr int kStripWidth = 64;
constexpr int StripHeight(int nBytes) {
    return nBytes <= 2 ? 512 : 256;
}
// The rows of a cache line, in whole blocks. A strip transposes so many rows of the next one as
// well: the destination lines that begin in the one and end in the other then leave in one piece.
constexpr int kLine = 64;
constexpr int RowsOfLine(int nBytes) {
    return (kLine / nBytes + 15) / 16 * 16;
}
static_assert(RowsOfLine(3) * 3 >= kLine);
// Bytes between the rows of the small buffer, so that they do not all fall into the same cache
// sets.
constexpr int kStripGap = 64;

// Destinations over this size leave the nearer caches before they are used: their lines are better
// written past the caches, which need not fetch them first.
constexpr std::int64_t kStreamingSize = std::int64_t{4} << 20;

// How far the next cache line is.
std::size_t BytesToLine(const unsigned char* p) {
    return (kLine - reinterpret_cast<std::uintptr_t>(p) % kLine) % kLine;
}

// Copies bytes of the small buffer to the destination; whole cache lines past the caches if asked
// to.
void CopyOut(unsigned char* pTo, const unsigned char* pFrom, std::size_t nCount,
             [[maybe_unused]] bool bStream) {
#if defined(__SSE2__)
    if (!bStream) {
        std::memcpy(pTo, pFrom, nCount);
        return;
    }
    std::size_t nDone = std::min(nCount, BytesToLine(pTo));
    std::memcpy(pTo, pFrom, nDone);
    for (; nDone + kLine <= nCount; nDone += kLine) {
        for (std::size_t k = nDone; k < nDone + kLine; k += 16) {
            _mm_stream_si128(reinterpret_cast<__m128i*>(pTo + k),
                             _mm_loadu_si128(reinterpret_cast<const __m128i*>(pFrom + k)));
        }
    }
    pTo += nDone;
    pFrom += nDone;
    nCount -= nDone;
#endif
    std::memcpy(pTo, pFrom, nCount);
}

void FinishStreaming() {
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

// Fetches ahead the source lines of the strip right of this one, a share of its rows with each
// column: the processor does not foresee as many streams.
void PrefetchNextStrip(int nBytes, const Transposition& strip, int nColumn) {
    const int nRows = StripHeight(nBytes) / kStripWidth;
    for (int nRow = nColumn * nRows; nRow < std::min((nColumn + 1) * nRows, strip.nHeight);
         ++nRow) {
        const unsigned char* const pNext =
            strip.pSrc + nRow * strip.nSrcStride + std::int64_t{kStripWidth} * nBytes;
        for (int k = 0; k < nBytes; ++k) {
            __builtin_prefetch(pNext + 64 * k);
        }
    }
}

// The rectangle of work that starts at column nX, row nY.
Transposition PartOf(const Transposition& work, int nBytes, int nX, int nY, int nWidth,
                     int nHeight) {
    return {work.pSrc + nY * work.nSrcStride + std::int64_t{nX} * nBytes,
            work.nSrcStride,
            nWidth,
            nHeight,
            work.pDst + nX * work.nDstStride + std::int64_t{nY} * nBytes,
            work.nDstStride};
}

}  // namespace

TransposeBlocks ChooseTransposeBlocks([[maybe_unused]] CpuLevel eLevel, int nBytes) {
#if defined(__x86_64__)
    if (eLevel >= CpuLevel::kAvx512 && nBytes == 3) {
        return TransposeBlocks3Avx512;
    }
    if (eLevel >= CpuLevel::kAvx2 && nBytes == 3) {
        return TransposeBlocks3Avx2;
    }
#endif
    return PortableTransposeBlocks(nBytes);
}

void TransposePixels(CpuLevel eLevel, int nBytes, const Transposition& work) {
    // Blocks may read one byte behind a row of theirs, so they leave out the last column.
    const int nBlocksWidth = (work.nWidth - 1) / 16 * 16;
    const int nBlocksHeight = work.nHeight / 16 * 16;
    const int nStripHeight = StripHeight(nBytes);
    std::unique_ptr<unsigned char[]> pStrip;
    std::int64_t nPitch = 0;
    if (nBytes >= 1 && nBytes <= 4 && nBlocksWidth > 0 && nBlocksHeight > 0) {
        nPitch = std::int64_t{nStripHeight + RowsOfLine(nBytes)} * nBytes + kStripGap;
        pStrip = NewScratch(kStripWidth * nPitch);
    }
    if (pStrip == nullptr) {
        TransposePixelsPlain(nBytes, work);
        return;
    }
    const TransposeBlocks pfnBlocks = ChooseTransposeBlocks(eLevel, nBytes);
    const bool bStream = work.nDstStride * work.nWidth > kStreamingSize;
    // Strip after strip along the same rows, whose pages then stay in reach.
    for (int nY = 0, nHeight = 0; nY < nBlocksHeight; nY += nHeight) {
        const int nBehind = nBlocksHeight - nY - nStripHeight - RowsOfLine(nBytes);
        nHeight = nBehind > 0 ? nStripHeight : nBlocksHeight - nY;
        const int nRows = nBehind > 0 ? nHeight + RowsOfLine(nBytes) : nHeight;
        for (int nX = 0; nX < nBlocksWidth; nX += kStripWidth) {
            const int nWidth = std::min(kStripWidth, nBlocksWidth - nX);
            const Transposition part = PartOf(work, nBytes, nX, nY, nWidth, nRows);
            Transposition strip = part;
            strip.pDst = pStrip.get();
            strip.nDstStride = nPitch;
            pfnBlocks(strip);
            const bool bNext = nX + 2 * kStripWidth <= work.nWidth;
            for (int i = 0; i < nWidth; ++i) {
                if (bNext) {
                    PrefetchNextStrip(nBytes, part, i);
                }
                // The strip above wrote the line this one's first row falls into; the line its last
                // row falls into goes out whole.
                unsigned char* const pTo = part.pDst + i * part.nDstStride;
                unsigned char* const pEnd = pTo + std::int64_t{nHeight} * nBytes;
                const std::size_t nFrom = nY > 0 ? BytesToLine(pTo) : 0;
                const std::size_t nTo = nBehind > 0 ? BytesToLine(pEnd) : 0;
                CopyOut(pTo + nFrom, strip.pDst + i * nPitch + nFrom,
                        static_cast<std::size_t>(pEnd - pTo) + nTo - nFrom, bStream);
            }
        }
    }
    FinishStreaming();
    // What does not fill a block: the columns on the right, then the rows below the blocks.
    TransposePixelsPlain(
        nBytes, PartOf(work, nBytes, nBlocksWidth, 0, work.nWidth - nBlocksWidth, work.nHeight));
    TransposePixelsPlain(
        nBytes, PartOf(work, nBytes, 0, nBlocksHeight, nBlocksWidth, work.nHeight - nBlocksHeight));
}

void TransposePixelsPlain(int nBytes, const Transposition& work) {
    for (int nX = 0; nX < work.nWidth; ++nX) {
        const unsigned char* pFrom = work.pSrc + std::int64_t{nX} * nBytes;
        unsigned char* pTo = work.pDst + nX * work.nDstStride;
        for (int nY = 0; nY < work.nHeight; ++nY) {
            std::memcpy(pTo, pFrom, static_cast<std::size_t>(nBytes));
            pFrom += work.nSrcStride;
            pTo += nBytes;
        }
    }
}

void TransposeBits(int nBits, const Transposition& work) {
    const int nPerByte = 8 / nBits;
    const int nMask = (1 << nBits) - 1;
    for (int nX = 0; nX < work.nWidth; ++nX) {
        const unsigned char* pFrom = work.pSrc + nX / nPerByte;
        const int nFromShift = 8 - nBits * (nX % nPerByte + 1);
        unsigned char* pTo = work.pDst + nX * work.nDstStride;
        for (int nY = 0; nY < work.nHeight; ++nY) {
            const int nPixel = *pFrom >> nFromShift & nMask;
            const int nToShift = 8 - nBits * (nY % nPerByte + 1);
            pTo[nY / nPerByte] =
                static_cast<unsigned char>(pTo[nY / nPerByte] | nPixel << nToShift);
            pFrom += work.nSrcStride;
        }
    }
}

}  // namespace kel
