// The row functions for AVX2. rows_portable.cpp defines each of them and does the last pixels.
//
// Bytes are only moved, masked and shifted, so the results are exact. Some steps store a whole
// vector whose end the next step overwrites. They run only while that end lies inside the row.
#if defined(__x86_64__)

#include "kelbitmap/integers.h"
#include "kelbitmap/rows.h"
#include "kelcpu/x86.h"

namespace kel {

namespace {

using Byte = unsigned char;

// A byte shuffle of 16 or 32 lanes. kNone gives 0.
template <int N>
struct alignas(N) Lanes {
    Byte a[N];
};
constexpr int kNone = 0x80;

template <int N, typename Function>
consteval Lanes<N> MakeLanes(Function function) {
    Lanes<N> lanes = {};
    for (int i = 0; i < N; ++i) {
        lanes.a[i] = LowByte(function(i));
    }
    return lanes;
}

KEL_AVX2 __m128i Load(const Lanes<16>& lanes) {
    return Load128(lanes.a);
}

KEL_AVX2 __m256i Load(const Lanes<32>& lanes) {
    return Load256(lanes.a);
}

// ---- 24 bits reversed. 16 pixels are three vectors of 16 bytes. Output byte j comes from input
// byte 3 * (j / 3) + 2 - j % 3, at most two bytes away, so an output vector also takes bytes of its
// neighbours. A step does 32 pixels, the second 16 in the upper halves.
template <int kOut, int kIn>
constexpr Lanes<32> kReverse = MakeLanes<32>([](int i) {
    const int j = 16 * kOut + i % 16;
    const int nFrom = 3 * (j / 3) + 2 - j % 3 - 16 * kIn;
    return nFrom >= 0 && nFrom < 16 ? nFrom : kNone;
});

KEL_AVX2 void StoreHalves(Byte* pLow, Byte* pHigh, __m256i v) {
    Store128(pLow, _mm256_castsi256_si128(v));
    Store128(pHigh, _mm256_extracti128_si256(v, 1));
}

KEL_AVX2 void Reverse24(const Byte* pSrc, Byte* pDst, std::size_t nPixels) {
    const __m256i s00 = Load(kReverse<0, 0>), s01 = Load(kReverse<0, 1>);
    const __m256i s10 = Load(kReverse<1, 0>), s11 = Load(kReverse<1, 1>),
                  s12 = Load(kReverse<1, 2>);
    const __m256i s21 = Load(kReverse<2, 1>), s22 = Load(kReverse<2, 2>);
    for (; nPixels >= 32; nPixels -= 32, pSrc += 96, pDst += 96) {
        // All of a block is read before any of it is written, so pDst may be pSrc.
        const __m256i a = LoadHalves(pSrc, pSrc + 48);
        const __m256i b = LoadHalves(pSrc + 16, pSrc + 64);
        const __m256i c = LoadHalves(pSrc + 32, pSrc + 80);
        StoreHalves(pDst, pDst + 48,
                    _mm256_or_si256(_mm256_shuffle_epi8(a, s00), _mm256_shuffle_epi8(b, s01)));
        StoreHalves(pDst + 16, pDst + 64,
                    _mm256_or_si256(
                        _mm256_or_si256(_mm256_shuffle_epi8(a, s10), _mm256_shuffle_epi8(b, s11)),
                        _mm256_shuffle_epi8(c, s12)));
        StoreHalves(pDst + 32, pDst + 80,
                    _mm256_or_si256(_mm256_shuffle_epi8(b, s21), _mm256_shuffle_epi8(c, s22)));
    }
    portable::Reverse24(pSrc, pDst, nPixels);
}

// ---- 32 to 24 bits, eight pixels at a time. Each half of a vector is packed to 12 bytes, then the
// halves are joined. A step stores 32 bytes of which 24 count, so it needs 11 pixels.
constexpr std::size_t kPackNeeds = 11;

template <bool kReversed>
constexpr Lanes<32> kPack = MakeLanes<32>([](int i) {
    const int j = i % 16;
    return j >= 12 ? kNone : 4 * (j / 3) + (kReversed ? 2 - j % 3 : j % 3);
});

KEL_AVX2 void StorePacked(__m256i pixels, __m256i shuffle, Byte* pDst) {
    const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
    Store256(pDst, _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(pixels, shuffle), join));
}

template <bool kReversed>
KEL_AVX2 void Pack32(const Byte* pSrc, Byte* pDst, std::size_t nPixels) {
    const __m256i shuffle = Load(kPack<kReversed>);
    for (; nPixels >= kPackNeeds; nPixels -= 8, pSrc += 32, pDst += 24) {
        StorePacked(Load256(pSrc), shuffle, pDst);
    }
    (kReversed ? portable::PackReverse32 : portable::Pack32)(pSrc, pDst, nPixels);
}

// ---- 24 to 32 bits, eight pixels at a time. Each half takes 12 of 16 loaded bytes. A step loads
// 28 bytes, so it needs 10 pixels.
constexpr Lanes<32> kExpand =
    MakeLanes<32>([](int i) { return i % 4 == 3 ? kNone : i % 16 / 4 * 3 + i % 4; });

KEL_AVX2 void Expand24(const Byte* pSrc, Byte* pDst, std::size_t nPixels) {
    const __m256i shuffle = Load(kExpand);
    for (; nPixels >= 10; nPixels -= 8, pSrc += 24, pDst += 32) {
        Store256(pDst, _mm256_shuffle_epi8(LoadHalves(pSrc, pSrc + 12), shuffle));
    }
    portable::Expand24(pSrc, pDst, nPixels);
}

// ---- 8 bits. Four words are looked up one by one and packed to 12 bytes. Gathers are slower, and
// so are stores of single words. A store writes 16 bytes for 12, so that the last of a step's four
// ends 4 bytes after the step. A step therefore needs 18 pixels.
KEL_AVX2 __m128i LookUpFour(const Byte* pSrc, const std::uint32_t* pWords) {
    const auto nIndices = static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_loadu_si32(pSrc)));
    const auto word = [=](int i) { return static_cast<int>(pWords[nIndices >> 8 * i & 0xFF]); };
    return _mm_setr_epi32(word(0), word(1), word(2), word(3));
}

KEL_AVX2 void Palette8(const Byte* pSrc, const std::uint32_t* pWords, Byte* pDst,
                       std::size_t nPixels) {
    const __m128i shuffle = _mm256_castsi256_si128(Load(kPack<false>));
    for (; nPixels >= 18; nPixels -= 16, pSrc += 16, pDst += 48) {
        for (int i = 0; i < 4; ++i) {
            Store128(pDst + 12 * i, _mm_shuffle_epi8(LookUpFour(pSrc + 4 * i, pWords), shuffle));
        }
    }
    portable::Palette8(pSrc, pWords, pDst, nPixels);
}

// ---- 4 bits. The sixteen bytes of a channel are the table of one shuffle. The three channels of
// 16 pixels are then interleaved. Output byte j is channel j % 3 of pixel j / 3.
template <int kOut, int kChannel>
constexpr Lanes<16> kInterleave = MakeLanes<16>([](int i) {
    const int j = 16 * kOut + i;
    return j % 3 == kChannel ? j / 3 : kNone;
});

template <int kOut>
KEL_AVX2 __m128i Interleave(__m128i c0, __m128i c1, __m128i c2) {
    return _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(c0, Load(kInterleave<kOut, 0>)),
                                     _mm_shuffle_epi8(c1, Load(kInterleave<kOut, 1>))),
                        _mm_shuffle_epi8(c2, Load(kInterleave<kOut, 2>)));
}

KEL_AVX2 __m128i ChannelOf16(const std::uint32_t* pWords, int nChannel) {
    Lanes<16> channel;
    for (int i = 0; i < 16; ++i) {
        channel.a[i] = LowByte(pWords[i] >> (8 * nChannel));
    }
    return Load(channel);
}

KEL_AVX2 void Palette4(const Byte* pSrc, const std::uint32_t* pWords, Byte* pDst,
                       std::size_t nPixels) {
    const __m128i t0 = ChannelOf16(pWords, 0);
    const __m128i t1 = ChannelOf16(pWords, 1);
    const __m128i t2 = ChannelOf16(pWords, 2);
    const __m128i low = _mm_set1_epi8(15);
    for (; nPixels >= 16; nPixels -= 16, pSrc += 8, pDst += 48) {
        const __m128i pairs = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(pSrc));
        const __m128i first = _mm_and_si128(_mm_srli_epi16(pairs, 4), low);
        const __m128i indices = _mm_unpacklo_epi8(first, _mm_and_si128(pairs, low));
        const __m128i c0 = _mm_shuffle_epi8(t0, indices);
        const __m128i c1 = _mm_shuffle_epi8(t1, indices);
        const __m128i c2 = _mm_shuffle_epi8(t2, indices);
        Store128(pDst, Interleave<0>(c0, c1, c2));
        Store128(pDst + 16, Interleave<1>(c0, c1, c2));
        Store128(pDst + 32, Interleave<2>(c0, c1, c2));
    }
    portable::Palette4(pSrc, pWords, pDst, nPixels);
}

// ---- 1 bit. 32 pixels become three vectors. Each output byte tests the bit of its pixel and takes
// its channel of one colour or the other.
template <int kOut>
constexpr Lanes<32> kByteOfPixel = MakeLanes<32>([](int i) { return (32 * kOut + i) / 3 / 8; });
template <int kOut>
constexpr Lanes<32> kBitOfPixel = MakeLanes<32>([](int i) {
    return 0x80 >> ((32 * kOut + i) / 3 % 8);
});
template <int kOut>
constexpr Lanes<32> kChannelOfByte = MakeLanes<32>([](int i) { return (32 * kOut + i) % 3; });

template <int kOut>
KEL_AVX2 __m256i Choose(__m256i bits, __m256i words0, __m256i words1) {
    const __m256i bit = Load(kBitOfPixel<kOut>);
    const __m256i mine = _mm256_and_si256(_mm256_shuffle_epi8(bits, Load(kByteOfPixel<kOut>)), bit);
    return _mm256_blendv_epi8(_mm256_shuffle_epi8(words0, Load(kChannelOfByte<kOut>)),
                              _mm256_shuffle_epi8(words1, Load(kChannelOfByte<kOut>)),
                              _mm256_cmpeq_epi8(mine, bit));
}

KEL_AVX2 void Palette1(const Byte* pSrc, const std::uint32_t* pWords, Byte* pDst,
                       std::size_t nPixels) {
    const __m256i words0 = Repeat32(pWords[0]);
    const __m256i words1 = Repeat32(pWords[1]);
    for (; nPixels >= 32; nPixels -= 32, pSrc += 4, pDst += 96) {
        const __m256i bits = _mm256_broadcastd_epi32(_mm_loadu_si32(pSrc));
        Store256(pDst, Choose<0>(bits, words0, words1));
        Store256(pDst + 32, Choose<1>(bits, words0, words1));
        Store256(pDst + 64, Choose<2>(bits, words0, words1));
    }
    portable::Palette1(pSrc, pWords, pDst, nPixels);
}

// ---- Channel fields. Shift counts of 16 and more give 0 in 16-bit lanes, as they do for a 16-bit
// pixel in the formula. The low 8 bits of a channel are the same in lanes of any width.
KEL_AVX2 __m256i Channel16(__m256i pixels, const ChannelField& field) {
    const __m256i masked = _mm256_and_si256(pixels, Repeat16(field.nMask));
    return _mm256_and_si256(
        _mm256_sll_epi16(_mm256_srl_epi16(masked, _mm_cvtsi32_si128(field.nRight)),
                         _mm_cvtsi32_si128(field.nLeft)),
        _mm256_set1_epi16(0xFF));
}

KEL_AVX2 void Fields16(const Byte* pSrc, const PixelFields& fields, Byte* pDst,
                       std::size_t nPixels) {
    const __m256i shuffle = Load(kPack<false>);
    // The two stores at 0 and 24 write 56 bytes of which 48 count.
    for (; nPixels >= 19; nPixels -= 16, pSrc += 32, pDst += 48) {
        const __m256i pixels = Load256(pSrc);
        const __m256i c01 =
            _mm256_or_si256(Channel16(pixels, fields.aChannels[0]),
                            _mm256_slli_epi16(Channel16(pixels, fields.aChannels[1]), 8));
        const __m256i c2 = Channel16(pixels, fields.aChannels[2]);
        const __m256i low = _mm256_unpacklo_epi16(c01, c2);   // pixels 0-3, 8-11
        const __m256i high = _mm256_unpackhi_epi16(c01, c2);  // pixels 4-7, 12-15
        StorePacked(_mm256_permute2x128_si256(low, high, 0x20), shuffle, pDst);
        StorePacked(_mm256_permute2x128_si256(low, high, 0x31), shuffle, pDst + 24);
    }
    portable::Fields16(pSrc, fields, pDst, nPixels);
}

KEL_AVX2 __m256i Channel32(__m256i pixels, const ChannelField& field) {
    const __m256i masked = _mm256_and_si256(pixels, Repeat32(field.nMask));
    return _mm256_and_si256(
        _mm256_sll_epi32(_mm256_srl_epi32(masked, _mm_cvtsi32_si128(field.nRight)),
                         _mm_cvtsi32_si128(field.nLeft)),
        _mm256_set1_epi32(0xFF));
}

KEL_AVX2 void Fields32(const Byte* pSrc, const PixelFields& fields, Byte* pDst,
                       std::size_t nPixels) {
    const __m256i shuffle = Load(kPack<false>);
    for (; nPixels >= kPackNeeds; nPixels -= 8, pSrc += 32, pDst += 24) {
        const __m256i pixels = Load256(pSrc);
        const __m256i c1 = _mm256_slli_epi32(Channel32(pixels, fields.aChannels[1]), 8);
        const __m256i c2 = _mm256_slli_epi32(Channel32(pixels, fields.aChannels[2]), 16);
        const __m256i c01 = _mm256_or_si256(Channel32(pixels, fields.aChannels[0]), c1);
        StorePacked(_mm256_or_si256(c01, c2), shuffle, pDst);
    }
    portable::Fields32(pSrc, fields, pDst, nPixels);
}

}  // namespace

const RowFunctions kRowsAvx2 = {Reverse24, Pack32<false>, Pack32<true>, Expand24, Palette8,
                                Palette4,  Palette1,      Fields16,     Fields32};

}  // namespace kel

#endif  // __x86_64__
