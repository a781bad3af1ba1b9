#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>

#include "kelbitmap/bmplayout.h"
#include "keldecoder/kelbmpdecoder.h"
#include "support/pictures.h"
#include "support/readers.h"

namespace {

using Bytes = std::vector<unsigned char>;

// A BMP file built by hand, and the parts the image must come to hold.
struct BmpFile {
    Bytes bytes;
    Bytes table;  // as the image holds it, 4 bytes an entry
    Bytes rows;   // in file order
    std::size_t nStride;

    void Put(std::size_t nAt, unsigned int nValue) { kel::Store32(&bytes[nAt], nValue); }
    void Put16(std::size_t nAt, int nValue) {
        kel::Store16(&bytes[nAt], static_cast<std::uint16_t>(nValue));
    }
};

Bytes Noise(std::size_t nSize, unsigned int nSeed) {
    Bytes bytes(nSize);
    support::Random(nSeed).Fill(bytes.data(), nSize);
    return bytes;
}

// A gap of 5 bytes lies before the rows and 7 bytes behind them, so that only the offset finds
// them.
BmpFile Finish(BmpFile file, const Bytes& fileTable, int nBits, int nWidth, int nRows) {
    file.nStride = static_cast<std::size_t>((nBits * nWidth + 31) / 32 * 4);
    file.rows = Noise(file.nStride * static_cast<std::size_t>(nRows), 99);
    file.bytes.insert(file.bytes.end(), fileTable.begin(), fileTable.end());
    file.bytes.resize(file.bytes.size() + 5, 0xEE);
    file.bytes[0] = 'B';
    file.bytes[1] = 'M';
    file.Put(10, static_cast<unsigned int>(file.bytes.size()));
    file.bytes.insert(file.bytes.end(), file.rows.begin(), file.rows.end());
    file.bytes.resize(file.bytes.size() + 7, 0xEE);
    return file;
}

BmpFile InfoFile(int nBits, int nWidth, int nHeight, unsigned int nCompression = BI_RGB,
                 unsigned int nEntries = 0) {
    BmpFile file{Bytes(54), {}, {}, 0};
    file.Put(14, 40);
    file.Put(18, static_cast<unsigned int>(nWidth));
    file.Put(22, static_cast<unsigned int>(nHeight));
    file.Put16(26, 1);
    file.Put16(28, nBits);
    file.Put(30, nCompression);
    file.Put(46, nEntries);
    const unsigned int nTable = nCompression == BI_BITFIELDS  ? 3
                                : nBits == 1                  ? 2
                                : nEntries == 0 && nBits <= 8 ? 1u << nBits
                                                              : nEntries;
    file.table = Noise(std::size_t{nTable} * 4, 7);
    return Finish(file, file.table, nBits, nWidth, std::abs(nHeight));
}

BmpFile CoreFile(int nBits, int nWidth, int nHeight) {
    BmpFile file{Bytes(26), {}, {}, 0};
    file.Put(14, 12);
    file.Put16(18, nWidth);
    file.Put16(20, nHeight);
    file.Put16(22, 1);
    file.Put16(24, nBits);
    const Bytes triples = Noise(nBits <= 8 ? std::size_t{3} << nBits : 0, 5);
    for (std::size_t i = 0; i < triples.size(); ++i) {
        file.table.push_back(triples[i]);
        if (i % 3 == 2) {
            file.table.push_back(0);
        }
    }
    return Finish(file, triples, nBits, nWidth, nHeight);
}

constexpr auto Decode = support::Decode<CKelBMPDecoder>;

// Opens the file and compares everything; nSizeImage 0 stands for the bytes of all rows.
void ExpectOpens(const BmpFile& file, int nBits, int nWidth, int nRows, bool bReversed,
                 std::size_t nSizeImage = 0) {
    CKelImage image;
    ASSERT_EQ(KEL_OK, Decode(file.bytes, image));
    EXPECT_EQ(nSizeImage != 0 ? nSizeImage : file.rows.size(),
              image.GetBitmapInfoHeader()->biSizeImage);
    const BITMAPINFOHEADER& header = *image.GetBitmapInfoHeader();
    EXPECT_EQ((std::vector<int>{40, nWidth, nRows, 1, nBits}),
              (std::vector<int>{static_cast<int>(header.biSize), header.biWidth, header.biHeight,
                                header.biPlanes, header.biBitCount}));
    ASSERT_EQ(file.table.size(), static_cast<std::size_t>(image.GetPaletteNum()) * 4);
    if (!file.table.empty()) {
        EXPECT_EQ(0, std::memcmp(file.table.data(), image.GetPalette(), file.table.size()));
    }
    for (int i = 0; i < nRows; ++i) {
        const auto nFrom = static_cast<std::size_t>(bReversed ? nRows - 1 - i : i);
        EXPECT_EQ(0, std::memcmp(file.rows.data() + nFrom * file.nStride, image.GetLineArray()[i],
                                 file.nStride))
            << i;
    }
}

}  // namespace

TEST(BmpReader, EveryLayoutBothDirectionsBothHeaders) {
    struct Layout {
        int nBits;
        unsigned int nCompression, nEntries;
    };
    for (const Layout& layout :
         {Layout{1, BI_RGB, 0}, Layout{4, BI_RGB, 0}, Layout{4, BI_RGB, 5}, Layout{8, BI_RGB, 0},
          Layout{8, BI_RGB, 300}, Layout{16, BI_RGB, 0}, Layout{16, BI_BITFIELDS, 0},
          Layout{24, BI_RGB, 0}, Layout{24, BI_RGB, 3}, Layout{32, BI_RGB, 0},
          Layout{32, BI_BITFIELDS, 0}, Layout{8, BI_RLE8, 0}, Layout{4, BI_RLE4, 0}}) {
        const auto [nBits, nCompression, nEntries] = layout;
        for (const int nWidth : {1, 2, 3, 9, 33}) {
            for (const int nRows : {1, 2, 5}) {
                SCOPED_TRACE(testing::Message() << nBits << " " << nWidth << " " << nRows);
                const BmpFile up = InfoFile(nBits, nWidth, nRows, nCompression, nEntries);
                const bool bRunLength = nCompression == BI_RLE8 || nCompression == BI_RLE4;
                ExpectOpens(up, nBits, nWidth, nRows, !bRunLength);
                const BmpFile down = InfoFile(nBits, nWidth, -nRows, nCompression, nEntries);
                ExpectOpens(down, nBits, nWidth, nRows, false);
                ExpectOpens(CoreFile(nBits, nWidth, nRows), nBits, nWidth, nRows, true);
            }
        }
    }
}

// biSizeImage against the bytes the rows take: 7 x 4 pixels at 8 bits, 32 bytes.
TEST(BmpReader, ClaimedSizeOfTheRows) {
    struct Case {
        unsigned int nCompression, nClaimed, nKept, nArrived;
    };
    for (const Case& c : {Case{BI_RGB, 0, 32, 32}, Case{BI_RGB, 31, 32, 32},
                          Case{BI_RGB, 35, 35, 32}, Case{BI_RLE8, 10, 10, 10},
                          Case{BI_RLE8, 0, 32, 32}, Case{BI_RGB, 3000000, 3000000, 32}}) {
        SCOPED_TRACE(c.nClaimed);
        BmpFile file = InfoFile(8, 7, -4, c.nCompression);
        file.Put(34, c.nClaimed);
        std::fill(file.rows.begin() + c.nArrived, file.rows.end(), static_cast<unsigned char>(0));
        const support::AllocFill fill(0xA5);
        ExpectOpens(file, 8, 7, 4, false, c.nKept);
    }
}

// Headers no picture can have. The refusals by size come before anything of that size is taken.
TEST(BmpReader, CraftedHeaders) {
    struct Case {
        const char* pszWhat;
        int nWidth, nHeight;
        int nBits;
        unsigned int nCompression, nEntries;
        KelResult nResult;
        bool bKeepsBuffers;
    };
    const Case cases[] = {
        {"depth 2", 3, 2, 2, 0, 0, KEL_ERR_PARAM, true},
        {"depth 0", 3, 2, 0, 0, 0, KEL_ERR_PARAM, true},
        {"compression 4", 3, 2, 24, 4, 0, KEL_ERR_PARAM, true},
        {"negative width", -3, 2, 24, 0, 0, KEL_ERR_PARAM, false},
        {"height without absolute value", 3, INT_MIN, 24, 0, 0, KEL_ERR_PARAM, false},
        {"65,537 entries", 3, 2, 8, 0, 65537, KEL_ERR_PARAM, false},
        {"table size wraps to 0", 3, 2, 24, 0, 0x40000000, KEL_ERR_PARAM, false},
        {"table size wraps to 1 entry", 3, 2, 8, 0, 0x40000001, KEL_ERR_PARAM, false},
        {"rows over 31 bits", 30000, 30000, 24, 0, 0, KEL_ERR_PARAM, false},
        {"stride wraps", 0x10000001, 2, 32, 0, 0, KEL_ERR_PARAM, false},
        {"depth 65535", INT_MAX, INT_MAX, 65535, 0, 0, KEL_ERR_PARAM, false},
        {"no columns, too many row pointers", 0, INT_MAX, 24, 0, 0, KEL_ERR_MEMORY, false},
        {"65,536 entries", 3, 2, 8, 0, 65536, KEL_OK, true},
        {"no rows", 3, 0, 24, 0, 0, KEL_OK, true},
        {"no columns", 0, 3, 24, 0, 0, KEL_OK, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pszWhat);
        BmpFile file = InfoFile(24, 3, 2);
        file.Put(18, static_cast<unsigned int>(c.nWidth));
        file.Put(22, static_cast<unsigned int>(c.nHeight));
        file.Put16(28, c.nBits);
        file.Put(30, c.nCompression);
        file.Put(46, c.nEntries);
        support::RecordingTrace trace(-1);
        CKelImage image;
        ASSERT_EQ(KEL_OK, Decode(CoreFile(1, 3, 3).bytes, image));  // to be replaced
        EXPECT_EQ(c.nResult, Decode(file.bytes, image));
        EXPECT_EQ(c.bKeepsBuffers, image.GetBits() != nullptr);
        EXPECT_EQ(c.nResult == KEL_OK ? c.nHeight : 0, image.GetHeight());
        EXPECT_EQ(c.nResult == KEL_OK, image.GetLineArray() != nullptr);
    }
    for (const unsigned int nSize : {0u, 16u, 64u, 108u, 124u}) {
        BmpFile file = InfoFile(24, 3, 2);
        file.Put(14, nSize);
        CKelImage image;
        EXPECT_EQ(KEL_ERR_PARAM, Decode(file.bytes, image)) << nSize;
    }
}

// Every prefix gives the same picture whatever fresh memory holds, and zero where nothing arrived.
TEST(BmpReader, PrefixesAreFilledWithZero) {
    const BmpFile files[] = {InfoFile(24, 3, 4), InfoFile(4, 9, -4, BI_RGB, 3),
                             InfoFile(16, 3, 4, BI_BITFIELDS), CoreFile(1, 9, 4),
                             InfoFile(8, 9, 4, BI_RLE8, 6)};
    for (const BmpFile& file : files) {
        for (std::size_t nLength = 0; nLength < file.bytes.size(); ++nLength) {
            const Bytes prefix(file.bytes.data(), file.bytes.data() + nLength);
            Bytes padded = prefix;
            padded.resize(file.bytes.size(), 0);
            CKelImage image, expected;
            const KelResult nResult = Decode(padded, expected);
            for (const int nFill : {0xA5, 0x5A}) {
                const support::AllocFill fill(static_cast<unsigned char>(nFill));
                ASSERT_EQ(nResult, Decode(prefix, image)) << nLength;
                ASSERT_TRUE(nResult == KEL_OK || nResult == KEL_ERR_PARAM) << nLength;
                EXPECT_EQ(support::Snapshot(expected), support::Snapshot(image)) << nLength;
            }
        }
    }
}

namespace {

// Notes each call and, before the nChange-th Read, replaces the bytes: a file that changes.
class WatchedArchive : public CVamArchiveMemory {
  public:
    explicit WatchedArchive(Bytes& bytes, const Bytes& after = {}, int nChange = 0)
        : CVamArchiveMemory(bytes.data(), bytes.size()),
          m_Bytes(bytes),
          m_After(after),
          m_nChange(nChange) {}

    unsigned int Read(void* pBuffer, unsigned int nCount) override {
        m_strCalls += 'R' + std::to_string(nCount) + ' ';
        if (--m_nChange == 0) {
            std::copy_n(m_After.begin(), std::min(m_After.size(), m_Bytes.size()), m_Bytes.begin());
        }
        return CVamArchiveMemory::Read(pBuffer, nCount);
    }
    bool Seek(long long nPosition, int nOrigin) override {
        m_strCalls += (nOrigin == 0 ? 'S' : '!') + std::to_string(nPosition) + ' ';
        return CVamArchiveMemory::Seek(nPosition, nOrigin);
    }
    long long GetPosition() override {
        m_strCalls += "P ";
        return CVamArchiveMemory::GetPosition();
    }

    std::string m_strCalls;

  private:
    Bytes& m_Bytes;
    const Bytes m_After;
    int m_nChange;
};

}  // namespace

TEST(BmpReader, CallsOfTheArchive) {
    const struct {
        BmpFile file;
        const char* pszCalls;
    } cases[] = {{InfoFile(8, 7, 4, BI_RGB, 5), "R14 P R4 S14 R40 S14 R60 S79 R32 "},
                 {CoreFile(4, 7, 4), "R14 P R4 S14 R12 R48 S79 R16 "}};
    for (const auto& [file, pszCalls] : cases) {
        Bytes bytes = file.bytes;
        WatchedArchive archive(bytes);
        CKelImage image;
        EXPECT_EQ(KEL_OK, CKelBMPDecoder().Do(&archive, &image));
        EXPECT_EQ(pszCalls, archive.m_strCalls);
    }
}

// The header is read twice; the second one is what counts, and its table must lie in what the first
// one made room for.
TEST(BmpReader, HeaderThatChangesBetweenTwoReads) {
    for (const BmpFile& other : {InfoFile(8, 3, 2), InfoFile(8, -3, 2), InfoFile(24, 3, 2)}) {
        Bytes bytes = InfoFile(8, 3, 2, BI_RGB, 2).bytes;
        WatchedArchive archive(bytes, other.bytes, 4);
        CKelImage image;
        const bool bFits = other.table.empty();
        EXPECT_EQ(bFits ? KEL_OK : KEL_ERR_PARAM, CKelBMPDecoder().Do(&archive, &image));
        EXPECT_EQ(bFits, image.GetBits() != nullptr);
    }
}
