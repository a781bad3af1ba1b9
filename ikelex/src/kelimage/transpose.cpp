#include "transpose.h"

#include <algorithm>
#include <cstring>

#include "geometry.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kel {

namespace {

constexpr int kLine = 64;
constexpr int kBlock = 16;

// The work goes down panels of columns, tile after tile: so many bytes of so many source rows that
// each destination row gets kTileBytes. A tile and the next one, which is fetched meanwhile, take
// 288 KiB each at 8 bits, less at others, and stay in the second level cache together.
constexpr int kPanelBytes = 768;
constexpr int kTileBytes = 384;
constexpr int PanelWidth(int nBytes) {
    return kPanelBytes / nBytes / kBlock * kBlock;
}
constexpr int TileHeight(int nBytes) {
    return kTileBytes / nBytes / kBlock * kBlock;
}

// Destinations over this size leave the nearer caches before they are used: their lines are better
// written past the caches, which need not fetch them first.
constexpr std::int64_t kStreamingSize = std::int64_t{4} << 20;

// How far p lies behind the start of its cache line.
std::int64_t BytesInLine(const unsigned char* p) {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(p) % kLine);
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
    std::size_t nDone = std::min(nCount, static_cast<std::size_t>(-BytesInLine(pTo) & (kLine - 1)));
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

// A rectangle of the source.
struct Tile {
    int nX;
    int nY;
    int nWidth;
    int nHeight;
};

// The tiles of a picture in their order: from the right panel to the left, since the last rows of a
// destination cleared just now are likelier to be in the caches than its first. The last tile of a
// panel takes the rows that would not fill a block.
class Tiles {
  public:
    Tiles(int nBytes, const Transposition& work)
        : m_nPanelWidth(PanelWidth(nBytes)), m_nTileHeight(TileHeight(nBytes)), m_work(work) {}

    Tile First() const { return At((m_work.nWidth - 1) / m_nPanelWidth * m_nPanelWidth, 0); }
    // Without rows behind the last one.
    Tile Behind(const Tile& tile) const {
        const int nY = tile.nY + tile.nHeight;
        return nY < m_work.nHeight ? At(tile.nX, nY) : At(tile.nX - m_nPanelWidth, 0);
    }

  private:
    Tile At(int nX, int nY) const {
        const int nRows = nX >= 0 ? m_work.nHeight - nY : 0;
        return {nX, nY, std::min(m_nPanelWidth, m_work.nWidth - nX),
                nRows < m_nTileHeight + kBlock ? nRows : m_nTileHeight};
    }

    int m_nPanelWidth;
    int m_nTileHeight;
    const Transposition& m_work;
};

// Transposes a tile, 16 columns at a time, in a small buffer, and copies its rows out as whole
// cache lines: what does not fill a line is kept for the tile below.
class TileTransposer {
  public:
    static std::int64_t ScratchSize(int nBytes) {
        return kBlock * Pitch(nBytes) + std::int64_t{PanelWidth(nBytes)} * kLine;
    }

    TileTransposer(TransposeBlocks pfnBlocks, int nBytes, const Transposition& work,
                   unsigned char* pScratch)
        : m_pfnBlocks(pfnBlocks),
          m_nBytes(nBytes),
          m_nPitch(Pitch(nBytes)),
          m_bStream(work.nDstStride * work.nWidth > kStreamingSize),
          m_work(work),
          m_pRows(pScratch),
          m_pKept(pScratch + kBlock * m_nPitch) {}

    // Fetches the next tile ahead, row after row as it lies in memory, a share with each row that
    // goes out: tiles have more rows than the processor foresees streams.
    void Transpose(const Tile& tile, const Tile& next) const {
        const int nColumns = (tile.nWidth + kBlock - 1) / kBlock * kBlock;
        for (int i = 0; i < nColumns; ++i) {
            // The last columns of the picture may overlap those before them.
            const int nX = std::min(tile.nX + i / kBlock * kBlock, m_work.nWidth - kBlock);
            if (i % kBlock == 0) {
                TransposeColumns(tile, nX);
            }
            Prefetch(next, next.nHeight * i / nColumns, next.nHeight * (i + 1) / nColumns);
            CopyRow(tile, nX, i);
        }
    }

  private:
    // A row takes what is kept from above, the tile's bytes, and what blocks write behind them.
    static std::int64_t Pitch(int nBytes) {
        const std::int64_t nRow = std::int64_t{TileHeight(nBytes) + kBlock} * nBytes + kBehindRow;
        return kLine + (nRow + kLine - 1) / kLine * kLine;
    }

    // Into the second level cache: the first has no room for as much.
    void Prefetch(const Tile& tile, int nFirst, int nBehind) const {
        for (int i = nFirst; i < nBehind; ++i) {
            const unsigned char* const pRow =
                PartOf(m_work, m_nBytes, tile.nX, tile.nY + i, 0, 0).pSrc;
            for (int k = 0; k < tile.nWidth * m_nBytes; k += kLine) {
                __builtin_prefetch(pRow + k, 0, 2);
            }
        }
    }

    // Puts 16 columns of a tile, from nX on, into the rows of the buffer.
    void TransposeColumns(const Tile& tile, int nX) const {
        Transposition part = PartOf(m_work, m_nBytes, nX, tile.nY, kBlock, tile.nHeight);
        part.nHeight = tile.nHeight / kBlock * kBlock;
        part.pDst = m_pRows + kLine;
        part.nDstStride = m_nPitch;
        m_pfnBlocks(part);
        if (part.nHeight < tile.nHeight) {
            m_pfnBlocks(PartOf(part, m_nBytes, 0, tile.nHeight - kBlock, kBlock, kBlock));
        }
    }

    // Copies the row of a tile's column out, from what the tile above kept of it up to its last
    // whole line. nX is the first column in the buffer.
    void CopyRow(const Tile& tile, int nX, int nColumn) const {
        unsigned char* const pRow = m_pRows + nColumn % kBlock * m_nPitch;
        unsigned char* const pKept = m_pKept + std::int64_t{nColumn} * kLine;
        unsigned char* const pTo =
            PartOf(m_work, m_nBytes, nX + nColumn % kBlock, tile.nY, 1, tile.nHeight).pDst;
        const std::int64_t nCount = std::int64_t{tile.nHeight} * m_nBytes;
        const bool bLast = tile.nY + tile.nHeight == m_work.nHeight;
        const std::int64_t nAbove = tile.nY > 0 ? BytesInLine(pTo) : 0;
        const std::int64_t nBelow = bLast ? 0 : BytesInLine(pTo + nCount);
        if (nAbove > 0) {
            std::memcpy(pRow, pKept, kLine);
        }
        CopyOut(pTo - nAbove, pRow + kLine - nAbove,
                static_cast<std::size_t>(nAbove + nCount - nBelow), m_bStream);
        if (nBelow > 0) {
            std::memcpy(pKept, pRow + nCount, kLine);
        }
    }

    TransposeBlocks m_pfnBlocks;
    int m_nBytes;
    std::int64_t m_nPitch;
    bool m_bStream;
    const Transposition& m_work;
    unsigned char* m_pRows;
    unsigned char* m_pKept;
};

}  // namespace

TransposeBlocks ChooseTransposeBlocks([[maybe_unused]] CpuLevel eLevel, int nBytes) {
#if defined(__x86_64__)
    if (eLevel >= CpuLevel::kAvx512 && nBytes == 3) {
        return TransposeBlocks3Avx512;
    }
    if (eLevel >= CpuLevel::kAvx2 && nBytes == 3) {
        return TransposeBlocks3Avx2;
    }
    if (eLevel >= CpuLevel::kAvx2 && nBytes == 1) {
        return TransposeBlocks1Avx2;
    }
#endif
    return PortableTransposeBlocks(nBytes);
}

void TransposePixels(CpuLevel eLevel, int nBytes, const Transposition& work) {
    const bool bBlocks =
        nBytes >= 1 && nBytes <= 4 && work.nWidth >= kBlock && work.nHeight >= kBlock;
    const auto pScratch = bBlocks ? NewScratch(TileTransposer::ScratchSize(nBytes)) : nullptr;
    if (pScratch == nullptr) {
        TransposePixelsPlain(nBytes, work);
        return;
    }
    const TileTransposer transposer(ChooseTransposeBlocks(eLevel, nBytes), nBytes, work,
                                    pScratch.get());
    const Tiles tiles(nBytes, work);
    for (Tile tile = tiles.First(); tile.nHeight > 0;) {
        const Tile next = tiles.Behind(tile);
        transposer.Transpose(tile, next);
        tile = next;
    }
    FinishStreaming();
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
