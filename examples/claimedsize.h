// What a picture file claims to hold, read from its first bytes: what a host looks at before it
// opens a file from somewhere it does not trust.
#ifndef EXAMPLES_CLAIMEDSIZE_H
#define EXAMPLES_CLAIMEDSIZE_H

#include <cstddef>
#include <cstdlib>

struct ClaimedSize {
    unsigned long long nWidth;
    unsigned long long nHeight;
    unsigned long long nBytes;  // upper bound of the pixel buffer that opening takes
};

// Reads the claim of a BMP, JPEG or PNG; false when there is none to be found in the nSize bytes:
// do not open such a file without another bound on its memory.
inline bool ReadClaimedSize(const unsigned char* p, std::size_t nSize, ClaimedSize& claim) {
    const auto big = [p](std::size_t i, int nBytes) {
        unsigned long long n = 0;
        for (int k = 0; k < nBytes; ++k) {
            n = n << 8 | p[i + static_cast<std::size_t>(k)];
        }
        return n;
    };
    const auto little = [p](std::size_t i, int nBytes) {
        unsigned long long n = 0;
        for (int k = nBytes; k-- > 0;) {
            n = n << 8 | p[i + static_cast<std::size_t>(k)];
        }
        return n;
    };
    if (nSize >= 24 && p[0] == 0x89 && p[1] == 'P') {
        if (big(12, 4) != 0x49484452) {
            return false;  // "IHDR" stands first in every sound PNG
        }
        claim = {big(16, 4), big(20, 4), 0};
        claim.nBytes = claim.nWidth * claim.nHeight * 4;
        return true;
    }
    if (nSize >= 4 && p[0] == 0xFF && p[1] == 0xD8) {
        for (std::size_t i = 2; i + 9 < nSize;) {
            while (i < nSize && p[i] != 0xFF) {
                ++i;
            }
            while (i < nSize && p[i] == 0xFF) {
                ++i;
            }
            if (i + 8 >= nSize) {
                return false;
            }
            const int nMarker = p[i++];
            if (nMarker == 0 || nMarker == 1 || (nMarker >= 0xD0 && nMarker <= 0xD7)) {
                continue;
            }
            if (nMarker >= 0xC0 && nMarker <= 0xCF && nMarker != 0xC4 && nMarker != 0xC8 &&
                nMarker != 0xCC) {
                claim = {big(i + 5, 2), big(i + 3, 2), 0};
                claim.nBytes = claim.nWidth * claim.nHeight * 4;
                return true;
            }
            i += static_cast<std::size_t>(big(i, 2));
        }
        return false;
    }
    if (nSize >= 54) {  // a BMP starts in many ways; its header begins at byte 14 in all of them
        const bool bLong = little(14, 4) == 40;
        const auto nHeight = static_cast<int>(little(22, 4));
        claim = {bLong ? little(18, 4) : little(18, 2),
                 bLong ? static_cast<unsigned long long>(std::llabs(nHeight)) : little(20, 2), 0};
        const unsigned long long nBits = bLong ? little(28, 2) : little(24, 2);
        claim.nBytes = (nBits * claim.nWidth + 31) / 32 * 4 * claim.nHeight;
        if (bLong && little(34, 4) > claim.nBytes) {
            claim.nBytes = little(34, 4);
        }
        return true;
    }
    return false;
}

#endif  // EXAMPLES_CLAIMEDSIZE_H
