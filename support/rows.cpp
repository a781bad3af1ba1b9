// Rows in memory as a bitmap lays them out: padded to 4 bytes, leftmost pixel in the highest bits.
#include "support/rows.h"

#include <ostream>

namespace support {

std::uint32_t Random::Next() {
    // xorshift32: never 0 once it is not 0.
    m_nState = m_nState == 0 ? 1 : m_nState;
    m_nState ^= m_nState << 13;
    m_nState ^= m_nState >> 17;
    m_nState ^= m_nState << 5;
    return m_nState;
}

void Random::Fill(unsigned char* p, std::size_t nBytes) {
    for (std::size_t i = 0; i < nBytes; ++i) {
        p[i] = Byte();
    }
}

std::vector<unsigned char*> Rows::Pointers() {
    std::vector<unsigned char*> pointers;
    for (int y = 0; y < nHeight; ++y) {
        pointers.push_back(Row(y));
    }
    return pointers;
}

std::ostream& operator<<(std::ostream& out, const Rows& rows) {
    return out << rows.nBits << " bits, " << rows.nWidth << "x" << rows.nHeight;
}

Rows BlackRows(int nBits, int nWidth, int nHeight) {
    Rows rows{nBits, nWidth, nHeight, {}};
    rows.bytes.resize(rows.Stride() * static_cast<std::size_t>(nHeight));
    return rows;
}

Rows RandomRows(int nBits, int nWidth, int nHeight, unsigned int nSeed) {
    Rows rows = BlackRows(nBits, nWidth, nHeight);
    Random(nSeed).Fill(rows.bytes.data(), rows.bytes.size());
    return rows;
}

std::uint32_t PixelAt(int nBits, const unsigned char* pRow, int nX) {
    std::uint32_t nPixel = 0;
    if (nBits < 8) {
        return static_cast<std::uint32_t>(pRow[nX * nBits / 8] >> (8 - nBits - nX * nBits % 8)) &
               ((1u << nBits) - 1);
    }
    for (int k = nBits / 8 - 1; k >= 0; --k) {
        nPixel = nPixel << 8 | pRow[nX * (nBits / 8) + k];
    }
    return nPixel;
}

void SetPixelAt(int nBits, unsigned char* pRow, int nX, std::uint32_t nPixel) {
    if (nBits < 8) {
        const int nShift = 8 - nBits - nX * nBits % 8;
        unsigned char& byte = pRow[nX * nBits / 8];
        const unsigned int nMask = ((1u << nBits) - 1) << nShift;
        byte = static_cast<unsigned char>((byte & ~nMask) | nPixel << nShift);
        return;
    }
    for (int k = 0; k < nBits / 8; ++k) {
        pRow[nX * (nBits / 8) + k] = static_cast<unsigned char>(nPixel >> 8 * k);
    }
}

}  // namespace support
