// The row functions for AVX-512 with VBMI. rows_portable.cpp defines each of them.
//
// Bytes are only moved, masked and shifted, so the results are exact. The last pixels of a row are
// loaded and stored with masks. Bytes masked out are not touched.
#if defined(__x86_64__)

#include "kelbitmap/integers.h"
#include "kelbitmap/rows.h"
#include "kelcpu/x86.h"

namespace kel {

namespace {

using Byte = unsigned char;

struct alignas(64) Lanes {
    Byte a[64];
};

template <typename Function>
consteval Lanes MakeLanes(Function function) {
    Lanes lanes = {};
    for (int i = 0; i < 64; ++i) {
        lanes.a[i] = LowByte(function(i));
    }
    return lanes;
}

template <typename Function>
consteval __mmask64 MakeMask(Function function) {
    __mmask64 nMask = 0;
    for (int i = 0; i < 64; ++i) {
        nMask |= __mmask64{function(i)} << i;
    }
    return nMask;
}

// The first nBytes of 64.
KEL_AVX512 __mmask64 First(std::size_t nBytes) {
    return nBytes >= 64 ? ~__mmask64{0} : (__mmask64{1} << nBytes) - 1;
}

KEL_AVX512 __m512i Load(const Byte* p) {
    return _mm512_loadu_si512(p);
}
KEL_AVX512 __m512i Load(const Lanes& lanes) {
    return _mm512_load_si512(lanes.a);
}
KEL_AVX512 void Store(Byte* p, __m512i v) {
    _mm512_storeu_si512(p, v);
}

// ---- 24 bits reversed. 64 pixels are three vectors. Output byte j comes from input byte
// 3 * (j / 3) + 2 - j % 3, at most two bytes away. The middle vector takes one byte from the third.
constexpr int ReversedFrom(int j) {
    return 3 * (j / 3) + 2 - j % 3;
}
constexpr Lanes kReverse0 = MakeLanes([](int i) { return ReversedFrom(i); });
constexpr Lanes kReverse1 = MakeLanes([](int i) { return ReversedFrom(64 + i) % 128; });
constexpr Lanes kReverse2 = MakeLanes([](int i) { return ReversedFrom(128 + i) - 64; });
constexpr __mmask64 kReverse1Third = MakeMask([](int i) { return ReversedFrom(64 + i) >= 128; });

KEL_AVX512 void Reverse24(const Byte* pSrc, Byte* pDst, std::size_t nPixels) {
    const __m512i s0 = Load(kReverse0), s1 = Load(kReverse1), s2 = Load(kReverse2);
    for (; nPixels >= 64; nPixels -= 64, pSrc += 192, pDst += 192) {
        // All of a block is read before any of it is written, so pDst may be pSrc.
        const __m512i a = Load(pSrc), b = Load(pSrc + 64), c = Load(pSrc + 128);
        const __m512i middle = _mm512_permutex2var_epi8(a, s1, b);
        Store(pDst, _mm512_permutex2var_epi8(a, s0, b));
        Store(pDst + 64, _mm512_mask_permutexvar_epi8(middle, kReverse1Third, s1, c));
        Store(pDst + 128, _mm512_permutex2var_epi8(b, s2, c));
    }
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < 21 ? nPixels : 21;
        const __mmask64 bytes = First(3 * nStep);
        const __m512i packed = _mm512_maskz_loadu_epi8(bytes, pSrc);
        _mm512_mask_storeu_epi8(pDst, bytes, _mm512_permutexvar_epi8(s0, packed));
        nPixels -= nStep, pSrc += 3 * nStep, pDst += 3 * nStep;
    }
}

// ---- 32 to 24 bits. 64 pixels are four vectors, packed into three. Output byte j comes from input
// byte 4 * (j / 3) + j % 3, or 4 * (j / 3) + 2 - j % 3 when reversed. Output vector k takes bytes
// of input vectors k and k + 1 only.
template <bool kReversed, int kOut>
constexpr Lanes kPack32 = MakeLanes([](int i) {
    const int j = 64 * kOut + i;
    return 4 * (j / 3) + (kReversed ? 2 - j % 3 : j % 3) - 64 * kOut;
});

template <bool kReversed>
KEL_AVX512 void Pack32(const Byte* pSrc, Byte* pDst, std::size_t nPixels) {
    const __m512i s0 = Load(kPack32<kReversed, 0>);
    const __m512i s1 = Load(kPack32<kReversed, 1>);
    const __m512i s2 = Load(kPack32<kReversed, 2>);
    for (; nPixels >= 64; nPixels -= 64, pSrc += 256, pDst += 192) {
        const __m512i a = Load(pSrc), b = Load(pSrc + 64);
        const __m512i c = Load(pSrc + 128), d = Load(pSrc + 192);
        Store(pDst, _mm512_permutex2var_epi8(a, s0, b));
        Store(pDst + 64, _mm512_permutex2var_epi8(b, s1, c));
        Store(pDst + 128, _mm512_permutex2var_epi8(c, s2, d));
    }
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < 16 ? nPixels : 16;
        const __m512i pixels = _mm512_maskz_loadu_epi8(First(4 * nStep), pSrc);
        _mm512_mask_storeu_epi8(pDst, First(3 * nStep), _mm512_permutexvar_epi8(s0, pixels));
        nPixels -= nStep, pSrc += 4 * nStep, pDst += 3 * nStep;
    }
}

// ---- 24 to 32 bits. 16 pixels are 48 of 64 loaded bytes.
constexpr Lanes kExpand = MakeLanes([](int i) { return i / 4 * 3 + i % 4; });
constexpr __mmask64 kColorBytes = MakeMask([](int i) { return i % 4 != 3; });

KEL_AVX512 void Expand24(const Byte* pSrc, Byte* pDst, std::size_t nPixels) {
    const __m512i shuffle = Load(kExpand);
    for (; nPixels >= 22; nPixels -= 16, pSrc += 48, pDst += 64) {
        Store(pDst, _mm512_maskz_permutexvar_epi8(kColorBytes, shuffle, Load(pSrc)));
    }
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < 16 ? nPixels : 16;
        const __m512i packed = _mm512_maskz_loadu_epi8(First(3 * nStep), pSrc);
        _mm512_mask_storeu_epi8(pDst, First(4 * nStep),
                                _mm512_maskz_permutexvar_epi8(kColorBytes, shuffle, packed));
        nPixels -= nStep, pSrc += 3 * nStep, pDst += 4 * nStep;
    }
}

// ---- Three channels of 64 pixels to 192 bytes. Output byte j is channel j % 3 of pixel j / 3.
// Channels 0 and 1 are the two tables of one permutation, told apart by bit 6 of the index. A
// second permutation, which ignores bit 6, puts channel 2 in its places.
template <int kOut>
constexpr Lanes kInterleave = MakeLanes([](int i) {
    const int j = 64 * kOut + i;
    return j / 3 + (j % 3 == 1 ? 64 : 0);
});
template <int kOut>
constexpr __mmask64 kChannel2 = MakeMask([](int i) { return (64 * kOut + i) % 3 == 2; });

template <int kOut>
KEL_AVX512 __m512i Interleave(__m512i c0, __m512i c1, __m512i c2) {
    const __m512i from = Load(kInterleave<kOut>);
    return _mm512_mask_permutexvar_epi8(_mm512_permutex2var_epi8(c0, from, c1), kChannel2<kOut>,
                                        from, c2);
}

KEL_AVX512 void StoreChannels(__m512i c0, __m512i c1, __m512i c2, Byte* pDst, std::size_t nPixels) {
    if (nPixels >= 64) {
        Store(pDst, Interleave<0>(c0, c1, c2));
        Store(pDst + 64, Interleave<1>(c0, c1, c2));
        Store(pDst + 128, Interleave<2>(c0, c1, c2));
        return;
    }
    const std::size_t nBytes = 3 * nPixels;
    _mm512_mask_storeu_epi8(pDst, First(nBytes), Interleave<0>(c0, c1, c2));
    if (nBytes > 64) {
        _mm512_mask_storeu_epi8(pDst + 64, First(nBytes - 64), Interleave<1>(c0, c1, c2));
    }
    if (nBytes > 128) {
        _mm512_mask_storeu_epi8(pDst + 128, First(nBytes - 128), Interleave<2>(c0, c1, c2));
    }
}

// Channel nChannel of 16 and of 64 colour words.
KEL_AVX512 __m128i ChannelOf16(const std::uint32_t* pWords, unsigned int nChannel) {
    return _mm512_cvtepi32_epi8(_mm512_srli_epi32(_mm512_loadu_si512(pWords), 8 * nChannel));
}

KEL_AVX512 __m512i ChannelOf64(const std::uint32_t* pWords, unsigned int nChannel) {
    __m512i channel = _mm512_castsi128_si512(ChannelOf16(pWords, nChannel));
    channel = _mm512_inserti32x4(channel, ChannelOf16(pWords + 16, nChannel), 1);
    channel = _mm512_inserti32x4(channel, ChannelOf16(pWords + 32, nChannel), 2);
    return _mm512_inserti32x4(channel, ChannelOf16(pWords + 48, nChannel), 3);
}

// ---- 8 bits. The 256 bytes of a channel are two tables of 128. The top bit of the index chooses.
KEL_AVX512 __m512i LookUp256(__m512i indices, __m512i t0, __m512i t1, __m512i t2, __m512i t3) {
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(indices),
                                  _mm512_permutex2var_epi8(t0, indices, t1),
                                  _mm512_permutex2var_epi8(t2, indices, t3));
}

KEL_AVX512 void Palette8(const Byte* pSrc, const std::uint32_t* pWords, Byte* pDst,
                         std::size_t nPixels) {
    const __m512i t00 = ChannelOf64(pWords, 0), t01 = ChannelOf64(pWords + 64, 0);
    const __m512i t02 = ChannelOf64(pWords + 128, 0), t03 = ChannelOf64(pWords + 192, 0);
    const __m512i t10 = ChannelOf64(pWords, 1), t11 = ChannelOf64(pWords + 64, 1);
    const __m512i t12 = ChannelOf64(pWords + 128, 1), t13 = ChannelOf64(pWords + 192, 1);
    const __m512i t20 = ChannelOf64(pWords, 2), t21 = ChannelOf64(pWords + 64, 2);
    const __m512i t22 = ChannelOf64(pWords + 128, 2), t23 = ChannelOf64(pWords + 192, 2);
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < 64 ? nPixels : 64;
        const __m512i indices = _mm512_maskz_loadu_epi8(First(nStep), pSrc);
        StoreChannels(LookUp256(indices, t00, t01, t02, t03),
                      LookUp256(indices, t10, t11, t12, t13),
                      LookUp256(indices, t20, t21, t22, t23), pDst, nStep);
        nPixels -= nStep, pSrc += nStep, pDst += 3 * nStep;
    }
}

// ---- 4 bits. 64 pixels are 32 bytes. A byte becomes two indices, its high half first.
KEL_AVX512 void Palette4(const Byte* pSrc, const std::uint32_t* pWords, Byte* pDst,
                         std::size_t nPixels) {
    const __m512i t0 = _mm512_castsi128_si512(ChannelOf16(pWords, 0));
    const __m512i t1 = _mm512_castsi128_si512(ChannelOf16(pWords, 1));
    const __m512i t2 = _mm512_castsi128_si512(ChannelOf16(pWords, 2));
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < 64 ? nPixels : 64;
        const auto pairs = Low32(First((nStep + 1) / 2));
        const __m512i wide = _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(pairs, pSrc));
        const __m512i indices = _mm512_and_si512(
            _mm512_or_si512(_mm512_srli_epi16(wide, 4), _mm512_slli_epi16(wide, 8)),
            _mm512_set1_epi8(15));
        StoreChannels(_mm512_permutexvar_epi8(indices, t0), _mm512_permutexvar_epi8(indices, t1),
                      _mm512_permutexvar_epi8(indices, t2), pDst, nStep);
        nPixels -= nStep, pSrc += 32, pDst += 3 * nStep;
    }
}

// ---- 1 bit. 64 pixels become three vectors. Each output byte tests the bit of its pixel and takes
// its channel of one colour or the other.
template <int kOut>
constexpr Lanes kByteOfPixel = MakeLanes([](int i) { return (64 * kOut + i) / 3 / 8; });
template <int kOut>
constexpr Lanes kBitOfPixel = MakeLanes([](int i) { return 0x80 >> ((64 * kOut + i) / 3 % 8); });
template <int kOut>
constexpr Lanes kChannelOfByte = MakeLanes([](int i) { return (64 * kOut + i) % 3; });

template <int kOut>
KEL_AVX512 __m512i Choose(__m512i bits, __m512i words0, __m512i words1) {
    const __m512i mine = _mm512_permutexvar_epi8(Load(kByteOfPixel<kOut>), bits);
    const __m512i channel = Load(kChannelOfByte<kOut>);
    return _mm512_mask_blend_epi8(_mm512_test_epi8_mask(mine, Load(kBitOfPixel<kOut>)),
                                  _mm512_permutexvar_epi8(channel, words0),
                                  _mm512_permutexvar_epi8(channel, words1));
}

KEL_AVX512 void Palette1(const Byte* pSrc, const std::uint32_t* pWords, Byte* pDst,
                         std::size_t nPixels) {
    const __m512i words0 = Repeat32Wide(pWords[0]);
    const __m512i words1 = Repeat32Wide(pWords[1]);
    for (; nPixels >= 64; nPixels -= 64, pSrc += 8, pDst += 192) {
        const __m512i bits =
            _mm512_broadcastq_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(pSrc)));
        Store(pDst, Choose<0>(bits, words0, words1));
        Store(pDst + 64, Choose<1>(bits, words0, words1));
        Store(pDst + 128, Choose<2>(bits, words0, words1));
    }
    portable::Palette1(pSrc, pWords, pDst, nPixels);
}

// ---- Channel fields. Shifts with a count in each lane are one operation, shifts of all lanes by
// one count are two. Shift counts of 16 and more give 0 in 16-bit lanes, as they do for a 16-bit
// pixel in the formula. The low 8 bits of a channel are the same in lanes of any width.
KEL_AVX512 __m512i Channel16(__m512i pixels, const ChannelField& field) {
    const __m512i masked = _mm512_and_si512(pixels, Repeat16Wide(field.nMask));
    return _mm512_sllv_epi16(_mm512_srlv_epi16(masked, Repeat16Wide(field.nRight)),
                             Repeat16Wide(field.nLeft));
}

// 32 pixels. Channels 0 and 1 are the bytes of one vector of words, channel 2 is the low bytes of
// another.
template <int kOut>
constexpr Lanes kFromWords = MakeLanes([](int i) {
    const int j = 64 * kOut + i;
    return j % 3 == 2 ? 64 + 2 * (j / 3) % 64 : (2 * (j / 3) + j % 3) % 64;
});
constexpr __mmask64 kOddBytes = MakeMask([](int i) { return i % 2 == 1; });

KEL_AVX512 void Fields16(const Byte* pSrc, const PixelFields& fields, Byte* pDst,
                         std::size_t nPixels) {
    const __m512i from0 = Load(kFromWords<0>), from1 = Load(kFromWords<1>);
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < 32 ? nPixels : 32;
        const __m512i pixels = _mm512_maskz_loadu_epi8(First(2 * nStep), pSrc);
        const __m512i c1 = _mm512_slli_epi16(Channel16(pixels, fields.aChannels[1]), 8);
        const __m512i c01 =
            _mm512_mask_mov_epi8(Channel16(pixels, fields.aChannels[0]), kOddBytes, c1);
        const __m512i c2 = Channel16(pixels, fields.aChannels[2]);
        const __m512i out0 = _mm512_permutex2var_epi8(c01, from0, c2);
        const __m256i out1 = _mm512_castsi512_si256(_mm512_permutex2var_epi8(c01, from1, c2));
        if (nStep == 32) {
            Store(pDst, out0);
            Store256(pDst + 64, out1);
        } else {
            _mm512_mask_storeu_epi8(pDst, First(3 * nStep), out0);
            if (3 * nStep > 64) {
                const auto rest = Low32(First(3 * nStep - 64));
                _mm256_mask_storeu_epi8(pDst + 64, rest, out1);
            }
        }
        nPixels -= nStep, pSrc += 2 * nStep, pDst += 3 * nStep;
    }
}

KEL_AVX512 __m512i Channel32(__m512i pixels, const ChannelField& field) {
    const __m512i masked = _mm512_and_si512(pixels, Repeat32Wide(field.nMask));
    return _mm512_sllv_epi32(_mm512_srlv_epi32(masked, Repeat32Wide(field.nRight)),
                             Repeat32Wide(field.nLeft));
}

constexpr __mmask64 kSecondBytes = MakeMask([](int i) { return i % 4 == 1; });
constexpr __mmask64 kThirdBytes = MakeMask([](int i) { return i % 4 == 2; });

KEL_AVX512 void Fields32(const Byte* pSrc, const PixelFields& fields, Byte* pDst,
                         std::size_t nPixels) {
    const __m512i shuffle = Load(kPack32<false, 0>);
    while (nPixels > 0) {
        const std::size_t nStep = nPixels < 16 ? nPixels : 16;
        const __m512i pixels = _mm512_maskz_loadu_epi8(First(4 * nStep), pSrc);
        const __m512i c1 = _mm512_slli_epi32(Channel32(pixels, fields.aChannels[1]), 8);
        const __m512i c2 = _mm512_slli_epi32(Channel32(pixels, fields.aChannels[2]), 16);
        const __m512i c01 =
            _mm512_mask_mov_epi8(Channel32(pixels, fields.aChannels[0]), kSecondBytes, c1);
        const __m512i packed =
            _mm512_permutexvar_epi8(shuffle, _mm512_mask_mov_epi8(c01, kThirdBytes, c2));
        if (nStep == 16) {
            Store256(pDst, _mm512_castsi512_si256(packed));
            Store128(pDst + 32, _mm512_extracti32x4_epi32(packed, 2));
        } else {
            _mm512_mask_storeu_epi8(pDst, First(3 * nStep), packed);
        }
        nPixels -= nStep, pSrc += 4 * nStep, pDst += 3 * nStep;
    }
}

}  // namespace

const RowFunctions kRowsAvx512 = {Reverse24, Pack32<false>, Pack32<true>, Expand24, Palette8,
                                  Palette4,  Palette1,      Fields16,     Fields32};

}  // namespace kel

#endif  // __x86_64__
