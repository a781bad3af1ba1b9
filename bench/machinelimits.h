/// What no program can go below: memory and files, moved once.
#ifndef BENCH_MACHINELIMITS_H
#define BENCH_MACHINELIMITS_H

#include "suite.h"

namespace bench {

using SharedBytes = std::shared_ptr<support::Bytes>;

/// Reads the image's pixels once.
Other ReadLimit(const SharedImage& pImage);
/// Reads the pixels once and writes a fresh block of nSize bytes.
Other ReadWriteLimit(const SharedImage& pImage, std::size_t nSize);
/// Copies the pixels into a fresh block.
Other CopyLimit(const SharedImage& pImage);
/// Copies squares of 16 x 16 pixels of 24 bits into a fresh block, each to where a transposition
/// puts it. No limit, but the part of a transposition that moves memory.
Other CopySquares(const SharedImage& pImage);
/// Exchanges the rows of the upper half with those of the lower through registers.
Other ExchangeLimit(const SharedImage& pImage);
/// Reads a file with one read() into a fresh block.
Other ReadFileLimit(const std::string& strPath, std::size_t nSize);
/// Writes the bytes to a new file with one write().
Other WriteFileLimit(const std::string& strPath, const SharedBytes& pBytes);

}  // namespace bench

#endif  // BENCH_MACHINELIMITS_H
