// The painted scene, layer by layer, in integer arithmetic alone.
#include "paintscene.h"

#include <algorithm>
#include <cstdint>

namespace {

struct Colour {
    int nBlue, nGreen, nRed;
};

// nWeight of 256 parts b, the rest a.
Colour Mix(const Colour& a, const Colour& b, int nWeight) {
    const auto mix = [nWeight](int x, int y) { return x + (y - x) * nWeight / 256; };
    return {mix(a.nBlue, b.nBlue), mix(a.nGreen, b.nGreen), mix(a.nRed, b.nRed)};
}

Colour Shade(const Colour& a, int nAmount) {
    return {a.nBlue + nAmount, a.nGreen + nAmount, a.nRed + nAmount};
}

// A number from 0 to 255 that depends on the place alone and looks like chance.
int Hash(std::uint32_t nX, std::uint32_t nY) {
    std::uint32_t n = nX * 0x9E3779B1u ^ nY * 0x85EBCA77u;
    n = (n ^ (n >> 15)) * 0x2C1B3C6Du;
    return static_cast<int>((n ^ (n >> 13)) >> 24);
}

// One row of smooth noise: random values at the corners of square cells of 2^nShift pixels, blended
// between them. The two corners to the left and right of a pixel are kept while x stays in the
// cell.
class NoiseRow {
  public:
    NoiseRow(int nShift, int nY, std::uint32_t nSeed)
        : m_nShift(nShift),
          m_nSeed(nSeed),
          m_nCellY(static_cast<std::uint32_t>(nY >> nShift)),
          m_nWeightY(Weight(nY)) {}

    int At(int nX) {
        const int nCell = nX >> m_nShift;
        if (nCell != m_nCell) {
            m_nLeft = nCell == m_nCell + 1 && m_nCell >= 0 ? m_nRight : Corner(nCell);
            m_nRight = Corner(nCell + 1);
            m_nCell = nCell;
        }
        return m_nLeft + (m_nRight - m_nLeft) * Weight(nX) / 256;
    }

  private:
    // The place inside the cell, 0 to 256, eased at both ends.
    int Weight(int n) const {
        const int t = (n & ((1 << m_nShift) - 1)) * 256 >> m_nShift;
        return t * t * (768 - 2 * t) >> 16;
    }
    int Corner(int nCell) const {
        const std::uint32_t nX = static_cast<std::uint32_t>(nCell) + m_nSeed;
        const int nTop = Hash(nX, m_nCellY);
        return nTop + (Hash(nX, m_nCellY + 1) - nTop) * m_nWeightY / 256;
    }

    int m_nShift;
    std::uint32_t m_nSeed;
    std::uint32_t m_nCellY;
    int m_nWeightY;
    int m_nCell = -2;
    int m_nLeft = 0;
    int m_nRight = 0;
};

// The letters of the sign, 5 x 7 dots each, a row's leftmost dot in bit 4.
constexpr int kLetters = 6;
constexpr unsigned char kLetter[kLetters][7] = {
    {14, 4, 4, 4, 4, 4, 14},      {17, 18, 20, 24, 20, 18, 17}, {31, 16, 16, 30, 16, 16, 31},
    {16, 16, 16, 16, 16, 16, 31}, {31, 16, 16, 30, 16, 16, 31}, {17, 17, 10, 4, 10, 17, 17}};

// What a size fixes once for all rows; all in pixels.
class Scene {
  public:
    Scene(int nWidth, int nHeight)
        : m_nWidth(nWidth),
          m_nHeight(nHeight),
          m_nHorizon(static_cast<int>(nHeight * 5LL / 9)),
          m_nUnit(std::max(1, std::min(nWidth, nHeight) / 100)) {}

    void PaintRow(unsigned char* pRow, int nY) const {
        NoiseRow cloud(9, nY * 2, 11), wisp(6, nY * 2, 23), hill(8, 0, 37), crag(4, 0, 41);
        NoiseRow field(7, nY, 53), tuft(2, nY * 2, 67);
        std::uint32_t nGrain = static_cast<std::uint32_t>(nY) * 2654435761u + 1u;
        for (int x = 0; x < m_nWidth; ++x) {
            Colour colour;
            const int nRidge =
                m_nHorizon - 5 * m_nUnit - (hill.At(x) * 12 + crag.At(x)) * m_nUnit / 256;
            if (!House(x, nY, &colour)) {
                colour = nY < nRidge       ? Sky(x, nY, cloud.At(x) * 3 + wisp.At(x))
                         : nY < m_nHorizon ? Shade({96, 84, 70}, (nY - nRidge) / (m_nUnit + 1))
                                           : Ground(nY, field.At(x), tuft.At(x));
            }
            nGrain = nGrain * 1664525u + 1013904223u;
            const int nNoise = static_cast<int>((nGrain >> 28) + (nGrain >> 24 & 15)) - 15;
            pRow[3 * x] = Byte(colour.nBlue + nNoise / 2);
            pRow[3 * x + 1] = Byte(colour.nGreen + nNoise / 3);
            pRow[3 * x + 2] = Byte(colour.nRed + nNoise / 2);
        }
    }

  private:
    static unsigned char Byte(int n) {
        return static_cast<unsigned char>(n < 0 ? 0 : n > 255 ? 255 : n);
    }

    // A gradient, a sun with a sharp rim, and clouds where the noise (0 to 1020) is strong.
    Colour Sky(int nX, int nY, int nNoise) const {
        const long long nDX = nX - m_nWidth * 3LL / 4, nDY = nY - m_nHeight / 6;
        const long long nRadius = 6LL * m_nUnit;
        if (nDX * nDX + nDY * nDY < nRadius * nRadius) {
            return {150, 232, 252};
        }
        const int nDown = static_cast<int>(nY * 256LL / m_nHorizon);
        const Colour sky = Mix({176, 104, 44}, {232, 214, 190}, nDown);
        return Mix(sky, {248, 246, 244}, std::min(220, std::max(0, nNoise - 480)));
    }

    // Grass that grows darker and coarser towards the viewer.
    Colour Ground(int nY, int nField, int nTuft) const {
        const int nNear = static_cast<int>((nY - m_nHorizon) * 256LL / (m_nHeight - m_nHorizon));
        const Colour grass = Mix({92, 168, 150}, {30, 96, 52}, nNear);
        const Colour patch = Mix(grass, {40, 110, 140}, nField / 2);
        return Shade(patch, (nTuft - 128) * (64 + nNear) / 640);
    }

    // A house with windows and a lettered sign; false outside it.
    bool House(int nX, int nY, Colour* pColour) const {
        const int nLeft = m_nWidth / 8, nTop = m_nHorizon - 18 * m_nUnit;
        const int nAcross = (nX - nLeft) / m_nUnit, nDown = (nY - nTop) / m_nUnit;
        if (nX < nLeft || nY < nTop || nAcross >= 44 || nDown >= 24) {
            return false;
        }
        if (nDown < 9) {  // the sign: letters 5 units wide, 1 unit apart
            const int nLetter = (nAcross - 4) / 6, nDot = (nAcross - 4) % 6;
            const bool bInk = nAcross >= 4 && nLetter < kLetters && nDot < 5 && nDown >= 1 &&
                              nDown < 8 && (kLetter[nLetter][nDown - 1] >> (4 - nDot) & 1);
            *pColour = bInk ? Colour{40, 24, 150} : Colour{226, 238, 242};
        } else if (nDown % 7 >= 4 && nAcross % 6 >= 2) {
            *pColour = Shade({88, 70, 52}, (nX + nY) % 64);  // glass with a slanting reflection
        } else {
            const bool bJoint = (nY - nTop) % (m_nUnit + 1) == 0;  // one line of mortar a course
            *pColour = bJoint ? Colour{150, 160, 170} : Colour{70, 92, 168};
        }
        return true;
    }

    int m_nWidth;
    int m_nHeight;
    int m_nHorizon;
    int m_nUnit;  // a hundredth of the shorter side, at least one pixel
};

}  // namespace

void PaintScene(unsigned char* pBits, int nWidth, int nHeight, int nStride) {
    const Scene scene(nWidth, nHeight);
    for (int y = 0; y < nHeight; ++y) {
        scene.PaintRow(pBits + static_cast<long long>(y) * nStride, y);
    }
}
