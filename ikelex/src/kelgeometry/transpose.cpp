// Transposition of pixels of whole bytes, in blocks. The order of the blocks, and where they go.
// The functions of the level transpose the blocks.
#include "transpose.h"

#include <algorithm>
#include <cstring>

#include "kelbitmap/integers.h"
#include "kelcpu/kelcpu.h"
#include "kelmemory/kelmemory.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace kel {

namespace {

constexpr int kLine = 64;
constexpr int kBlock = 16;

// Rows at multiples of this stride lie in at most two sets of the first level cache.
constexpr std::int64_t kSharedStride = 2048;

// The work goes down panels of columns, tile after tile. A tile takes so many bytes of so many
// source rows that each destination row gets kTileBytes. A tile and the next one, which is fetched
// meanwhile, take 288 KiB each at 8 bits, less at others, and stay in the second level cache
// together.
constexpr int kPanelBytes = 768;
constexpr int kTileBytes = 384;
constexpr int PanelWidth(int nBytes) {
    return kPanelBytes / nBytes / kBlock * kBlock;
}
constexpr int TileHeight(int nBytes) {
    return kTileBytes / nBytes / kBlock * kBlock;
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

// The tiles of a picture in their order. The last tile of a panel takes the rows that would not
// fill a block.
class Tiles {
  public:
    Tiles(int nBytes, const Transposition& work)
        : m_nPanelWidth(PanelWidth(nBytes)), m_nTileHeight(TileHeight(nBytes)), m_work(work) {}

    Tile First() const { return At(0, 0); }
    // Without rows after the last one.
    Tile After(const Tile& tile) const {
        const int nY = tile.nY + tile.nHeight;
        return nY < m_work.nHeight ? At(tile.nX, nY) : At(tile.nX + tile.nWidth, 0);
    }

  private:
    Tile At(int nX, int nY) const {
        const int nRows = nX < m_work.nWidth ? m_work.nHeight - nY : 0;
        return {nX, nY, std::min(m_nPanelWidth, m_work.nWidth - nX),
                nRows < m_nTileHeight + kBlock ? nRows : m_nTileHeight};
    }

    int m_nPanelWidth;
    int m_nTileHeight;
    const Transposition& m_work;
};

// Prefetches share nShare of nShares of the rows of a tile into the second level cache. The first
// is too small for a tile.
void PrefetchShare(int nBytes, const Transposition& work, const Tile& tile, int nShare,
                   int nShares) {
    const int nEnd = tile.nHeight * (nShare + 1) / nShares;
    for (int i = tile.nHeight * nShare / nShares; i < nEnd; ++i) {
        const unsigned char* const pRow = PartOf(work, nBytes, tile.nX, tile.nY + i, 0, 0).pSrc;
        for (int k = 0; k < tile.nWidth * nBytes; k += kLine) {
            __builtin_prefetch(pRow + k, 0, 2);
        }
    }
}

// Transposes 16 columns of any number of rows from 16 on. The last 16 rows may overlap those before
// them.
void TransposeColumns(TransposeBlocks* pfnBlocks, int nBytes, const Transposition& work) {
    Transposition part = work;
    part.nHeight = work.nHeight / kBlock * kBlock;
    pfnBlocks(part);
    if (part.nHeight < work.nHeight) {
        pfnBlocks(PartOf(work, nBytes, 0, work.nHeight - kBlock, kBlock, kBlock));
    }
}

// Transposes straight into the destination.
void TransposeTiles(TransposeBlocks* pfnBlocks, int nBytes, const Transposition& work) {
    const Tiles tiles(nBytes, work);
    for (Tile tile = tiles.First(); tile.nHeight > 0; tile = tiles.After(tile)) {
        for (int i = 0; i < tile.nWidth; i += kBlock) {
            // The last columns of the picture may overlap those before them.
            const int nX = std::min(tile.nX + i, work.nWidth - kBlock);
            TransposeColumns(pfnBlocks, nBytes,
                             PartOf(work, nBytes, nX, tile.nY, kBlock, tile.nHeight));
        }
    }
}

// How far into its cache line p points.
std::int64_t BytesInLine(const unsigned char* p) {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(p) % kLine);
}

// Copies bytes of the small buffer to the destination, with bStream whole cache lines past the
// caches.
void CopyOut(unsigned char* pTo, const unsigned char* pFrom, std::int64_t nCount,
             [[maybe_unused]] bool bStream) {
    std::int64_t nDone = 0;
#if defined(__SSE2__)
    if (bStream) {
        nDone = std::min(nCount, -BytesInLine(pTo) & (kLine - 1));
        std::copy_n(pFrom, nDone, pTo);
        for (; nDone + kLine <= nCount; nDone += kLine) {
            for (std::int64_t k = nDone; k < nDone + kLine; k += 16) {
                _mm_stream_si128(reinterpret_cast<__m128i*>(pTo + k),
                                 _mm_loadu_si128(reinterpret_cast<const __m128i*>(pFrom + k)));
            }
        }
    }
#endif
    std::copy_n(pFrom + nDone, nCount - nDone, pTo + nDone);
}

// Transposes a tile, 16 columns at a time, in a small buffer, and copies its rows out as whole
// cache lines. Bytes that do not fill a line are kept for the tile below.
class BufferedTransposer {
  public:
    static std::int64_t ScratchSize(int nBytes) {
        return kBlock * Pitch(nBytes) + std::int64_t{PanelWidth(nBytes)} * kLine;
    }

    BufferedTransposer(TransposeBlocks* pfnBlocks, int nBytes, const Transposition& work,
                       bool bStream, unsigned char* pScratch)
        : m_pfnBlocks(pfnBlocks),
          m_nBytes(nBytes),
          m_nPitch(Pitch(nBytes)),
          m_bStream(bStream),
          m_work(work),
          m_pRows(pScratch),
          m_pKept(pScratch + kBlock * m_nPitch) {}

    // Prefetches a part of the next tile with each row that goes out. The hardware prefetcher
    // follows fewer streams than a tile has rows.
    void Transpose(const Tile& tile, const Tile& next) const {
        const int nColumns = (tile.nWidth + kBlock - 1) / kBlock * kBlock;
        for (int i = 0; i < nColumns; ++i) {
            // The last columns of the picture may overlap those before them.
            const int nX = std::min(tile.nX + i / kBlock * kBlock, m_work.nWidth - kBlock);
            if (i % kBlock == 0) {
                Transposition part = PartOf(m_work, m_nBytes, nX, tile.nY, kBlock, tile.nHeight);
                part.pDst = m_pRows + kLine;
                part.nDstStride = m_nPitch;
                TransposeColumns(m_pfnBlocks, m_nBytes, part);
            }
            PrefetchShare(m_nBytes, m_work, next, i, nColumns);
            CopyRow(tile, nX, i);
        }
    }

  private:
    // A row takes what is kept from above and the tile's bytes.
    static std::int64_t Pitch(int nBytes) {
        const std::int64_t nRow = std::int64_t{TileHeight(nBytes) + kBlock} * nBytes;
        return kLine + (nRow + kLine - 1) / kLine * kLine;
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
        CopyOut(pTo - nAbove, pRow + kLine - nAbove, nAbove + nCount - nBelow, m_bStream);
        if (nBelow > 0) {
            std::memcpy(pKept, pRow + nCount, kLine);
        }
    }

    TransposeBlocks* m_pfnBlocks;
    int m_nBytes;
    std::int64_t m_nPitch;
    bool m_bStream;
    const Transposition& m_work;
    unsigned char* m_pRows;
    unsigned char* m_pKept;
};

// Transposes through the small buffer. False, nothing done, without memory for it.
bool TransposeBuffered(TransposeBlocks* pfnBlocks, int nBytes, const Transposition& work,
                       bool bStream) {
    const auto pScratch = NewScratch(BufferedTransposer::ScratchSize(nBytes));
    if (pScratch == nullptr) {
        return false;
    }
    const BufferedTransposer transposer(pfnBlocks, nBytes, work, bStream, pScratch.get());
    const Tiles tiles(nBytes, work);
    for (Tile tile = tiles.First(); tile.nHeight > 0;) {
        const Tile next = tiles.After(tile);
        transposer.Transpose(tile, next);
        tile = next;
    }
#if defined(__SSE2__)
    _mm_sfence();
#endif
    return true;
}

// Pixel by pixel, for pictures smaller than a block and for other pixel sizes.
void TransposePlain(int nBytes, const Transposition& work) {
    for (int nX = 0; nX < work.nWidth; ++nX) {
        const unsigned char* pFrom = work.pSrc + std::int64_t{nX} * nBytes;
        unsigned char* pTo = work.pDst + nX * work.nDstStride;
        for (int nY = 0; nY < work.nHeight; ++nY) {
            std::memcpy(pTo, pFrom, AsSize(nBytes));
            pFrom += work.nSrcStride;
            pTo += nBytes;
        }
    }
}

}  // namespace

bool LeavesCaches(const Transposition& work) {
    // A smaller one stays, so that the system need not be asked.
    constexpr std::int64_t kAlwaysCached = std::int64_t{4} << 20;
    const std::int64_t nSize = work.nDstStride * work.nWidth;
    return nSize > kAlwaysCached && nSize > LastLevelCacheSize() / 2;
}

void TransposePixels(CpuLevel eLevel, int nBytes, const Transposition& work, bool bStream) {
    if (nBytes > 4 || work.nWidth < kBlock || work.nHeight < kBlock) {
        TransposePlain(nBytes, work);
        return;
    }
    TransposeBlocks* const pfnBlocks = TransposeFunctionsFor(eLevel).apfnBlocks[nBytes - 1];
    // The 16 rows of a block share few cache sets at such a stride and would evict each other. At 1
    // byte they are left sooner than that.
    const bool bShared = nBytes > 1 && work.nDstStride % kSharedStride == 0;
    if (!(bStream || bShared) || !TransposeBuffered(pfnBlocks, nBytes, work, bStream)) {
        TransposeTiles(pfnBlocks, nBytes, work);
    }
}

}  // namespace kel
