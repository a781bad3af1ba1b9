// The BMP reader: files made here, whole, cut short, and with crafted headers.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include "kelbitmap/bmplayout.h"
#include "keldecoder/kelbmpdecoder.h"
#include "support/pictures.h"
#include "support/readers.h"

namespace {

using support::Bytes;

// A BMP file built by hand, and the parts the image must come to hold.
struct BmpFile {
    Bytes bytes, table, rows;  // the table as the image holds it; rows in file order
    int nStride;

    void Put(std::size_t nAt, unsigned int nValue) { kel::Store32(&bytes[nAt], nValue); }
    void PutHeader(int nBits, int nWidth, int nHeight, unsigned int nCompression,
                   unsigned int nEntries) {
        Put(18, static_cast<unsigned int>(nWidth));
        Put(22, static_cast<unsigned int>(nHeight));
        Put(26, static_cast<unsigned int>(1 | nBits << 16));
        Put(30, nCompression);
        Put(46, nEntries);
    }
};

Bytes Noise(std::size_t nSize, unsigned int nSeed) {
    Bytes bytes(nSize);
    support::Random(nSeed).Fill(bytes.data(), nSize);
    return bytes;
}

// A gap of 5 bytes lies before the rows and 7 bytes after them, so that only the offset finds
// them.
BmpFile Finish(BmpFile file, const Bytes& fileTable, int nBits, int nWidth, int nRows) {
    file.nStride = (nBits * nWidth + 31) / 32 * 4;
    file.rows = Noise(static_cast<std::size_t>(file.nStride * nRows), 99);
    file.bytes.insert(file.bytes.end(), fileTable.begin(), fileTable.end());
    file.bytes.resize(file.bytes.size() + 5, 0xEE);
    file.Put(0, 'B' | 'M' << 8);
    file.Put(10, static_cast<unsigned int>(file.bytes.size()));
    file.bytes.insert(file.bytes.end(), file.rows.begin(), file.rows.end());
    file.bytes.resize(file.bytes.size() + 7, 0xEE);
    return file;
}

BmpFile InfoFile(int nBits, int nWidth, int nHeight, unsigned int nCompression = BI_RGB,
                 unsigned int nEntries = 0) {
    BmpFile file{Bytes(54), {}, {}, 0};
    file.Put(14, 40);
    file.PutHeader(nBits, nWidth, nHeight, nCompression, nEntries);
    const unsigned int nTable = nCompression == BI_BITFIELDS  ? 3
                                : nEntries == 0 && nBits <= 8 ? 1u << nBits
                                                              : nEntries;
    file.table = Noise(std::size_t{nTable} * 4, 7);
    return Finish(file, file.table, nBits, nWidth, std::abs(nHeight));
}

BmpFile CoreFile(int nBits, int nWidth, int nHeight, unsigned int nHeaderSize = 12) {
    BmpFile file{Bytes(26), {}, {}, 0};
    file.Put(14, nHeaderSize);
    file.Put(18, static_cast<unsigned int>(nWidth | nHeight << 16));
    file.Put(22, static_cast<unsigned int>(1 | nBits << 16));
    const Bytes triples = Noise(nBits <= 8 ? std::size_t{3} << nBits : 0, 5);
    for (std::size_t i = 0; i < triples.size(); i += 3) {
        file.table.insert(file.table.end(), {triples[i], triples[i + 1], triples[i + 2], 0});
    }
    return Finish(file, triples, nBits, nWidth, nHeight);
}

constexpr auto Decode = support::Decode<CKelBMPDecoder>;

// Opens the file and compares everything; nSizeImage 0 stands for the bytes of all rows.
void ExpectOpens(const BmpFile& file, int nBits, int nWidth, int nRows, bool bReversed,
                 std::size_t nSizeImage = 0) {
    CKelImage image;
    ASSERT_EQ(KEL_OK, Decode(file.bytes, image));
    const BITMAPINFOHEADER& header = *image.GetBitmapInfoHeader();
    EXPECT_EQ(nSizeImage != 0 ? nSizeImage : file.rows.size(), header.biSizeImage);
    EXPECT_EQ(40u, header.biSize);
    EXPECT_EQ(
        (std::vector<int>{nWidth, nRows, 1, nBits}),
        (std::vector<int>{header.biWidth, header.biHeight, header.biPlanes, header.biBitCount}));
    const auto* pTable = reinterpret_cast<unsigned char*>(image.GetPalette());
    EXPECT_EQ(file.table, Bytes(pTable, pTable + image.GetPaletteNum() * 4));
    for (int i = 0; i < nRows; ++i) {
        const auto pFrom = file.rows.begin() + (bReversed ? nRows - 1 - i : i) * file.nStride;
        EXPECT_TRUE(std::equal(pFrom, pFrom + file.nStride, image.GetLineArray()[i])) << i;
    }
}

}  // namespace

TEST(BmpReader, EveryLayoutBothDirectionsBothHeaders) {
    const support::Kind kinds[] = {{1, BI_RGB, 0},   {4, BI_RGB, 5},        {8, BI_RGB, 0},
                                   {8, BI_RGB, 300}, {16, BI_RGB, 0},       {24, BI_RGB, 3},
                                   {32, BI_RGB, 0},  {16, BI_BITFIELDS, 0}, {32, BI_BITFIELDS, 0},
                                   {8, BI_RLE8, 0},  {4, BI_RLE4, 0}};
    for (const auto& [nBits, nCompression, nEntries] : kinds) {
        const bool bRunLength = nCompression == BI_RLE8 || nCompression == BI_RLE4;
        for (const int nWidth : {1, 9, 33}) {
            for (const int nRows : {1, 2, 5}) {
                SCOPED_TRACE(testing::Message() << nBits << " " << nWidth << " " << nRows);
                const BmpFile up = InfoFile(nBits, nWidth, nRows, nCompression, nEntries);
                ExpectOpens(up, nBits, nWidth, nRows, !bRunLength);
                const BmpFile down = InfoFile(nBits, nWidth, -nRows, nCompression, nEntries);
                ExpectOpens(down, nBits, nWidth, nRows, false);
                ExpectOpens(CoreFile(nBits, nWidth, nRows), nBits, nWidth, nRows, true);
            }
        }
    }
    for (const unsigned int nHeaderSize : {0u, 39u, 41u, 108u, 124u}) {  // read as 12 bytes
        ExpectOpens(CoreFile(4, 9, 3, nHeaderSize), 4, 9, 3, true);
    }
}

// biSizeImage against the bytes the rows take: 7 x 4 pixels at 8 bits, 32 bytes. 7 more follow.
TEST(BmpReader, ClaimedSizeOfTheRows) {
    const unsigned int cases[][3] = {{BI_RGB, 31, 32},  {BI_RGB, 3000000, 39}, {BI_RLE8, 10, 10},
                                     {BI_RLE8, 37, 37}, {BI_RLE8, 40, 39},     {BI_RLE8, 0, 32}};
    for (const auto& [nCompression, nClaimed, nKept] : cases) {
        SCOPED_TRACE(nClaimed);
        BmpFile file = InfoFile(8, 7, -4, nCompression);
        file.Put(34, nClaimed);
        std::fill(file.rows.begin() + std::min(nKept, 32u), file.rows.end(), Bytes::value_type());
        const support::AllocFill fill(0xA5);
        ExpectOpens(file, 8, 7, 4, false, nKept);
    }
}

// Headers no picture can have. The refusals by size come before anything of that size is taken.
TEST(BmpReader, CraftedHeaders) {
    struct Case {
        const char* pszWhat;
        int nWidth, nHeight, nBits;
        unsigned int nCompression, nEntries;
        KelResult nResult;
        bool bKeepsBuffers;
    };
    const Case cases[] = {
        {"depth 2", 3, 2, 2, 0, 0, KEL_ERR_PARAM, true},
        {"compression 4", 3, 2, 24, 4, 0, KEL_ERR_PARAM, true},
        {"depth 2, rows longer than the file", 300, 2000, 2, 0, 0, KEL_ERR_PARAM, false},
        {"depth 2, 2^28 rows", 0, 1 << 28, 2, 0, 0, KEL_ERR_PARAM, true},
        {"compression 4, 2^28 rows", 1, 1 << 28, 8, 4, 0, KEL_ERR_PARAM, false},
        {"negative width", -3, 2, 24, 0, 0, KEL_ERR_PARAM, false},
        {"height without absolute value", 3, INT_MIN, 24, 0, 0, KEL_ERR_PARAM, false},
        {"65,537 entries", 3, 2, 8, 0, 65537, KEL_ERR_PARAM, false},
        {"65,537 entries where none is needed", 3, 2, 16, 0, 65537, KEL_OK, true},
        {"table size wraps to 0", 3, 2, 24, 0, 0x40000000, KEL_OK, true},
        {"masks, whatever the count", 3, 2, 32, 3, 0xFFFFFFFF, KEL_OK, true},
        {"rows over 31 bits", 30000, 30000, 24, 0, 0, KEL_ERR_PARAM, false},
        {"stride wraps", 0x10000001, 2, 32, 0, 0, KEL_ERR_PARAM, false},
        {"no columns, too many row pointers", 0, INT_MAX, 24, 0, 0, KEL_ERR_MEMORY, false},
        {"65,536 entries", 3, 2, 8, 0, 65536, KEL_OK, true},
        {"no rows", 3, 0, 24, 0, 0, KEL_OK, true},
        {"no columns", 0, 3, 24, 0, 0, KEL_OK, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.pszWhat);
        BmpFile file = InfoFile(24, 3, 2);
        file.PutHeader(c.nBits, c.nWidth, c.nHeight, c.nCompression, c.nEntries);
        const support::RecordingTrace trace;
        CKelImage image;
        ASSERT_EQ(KEL_OK, Decode(CoreFile(1, 3, 3).bytes, image));  // to be replaced
        EXPECT_EQ(c.nResult, Decode(file.bytes, image));
        EXPECT_EQ(c.nResult == KEL_ERR_MEMORY, !trace.Lines().empty());
        EXPECT_EQ(c.bKeepsBuffers, image.GetBits() != nullptr);
        EXPECT_EQ(c.nResult == KEL_OK ? c.nHeight : 0, image.GetHeight());
        EXPECT_EQ(c.nResult == KEL_OK, image.GetLineArray() != nullptr);
    }
    BmpFile longer = InfoFile(24, 3, 2);
    longer.Put(14, 124);
    CKelImage image;
    EXPECT_EQ(KEL_ERR_PARAM, Decode(longer.bytes, image));
}

// Pixel data of a refused header are kept when all but the last piece arrive, however many there
// are, and are not kept when memory runs out on the way.
TEST(BmpReader, RefusedPixelsAreKept) {
    for (const int nRows : {1, 65536, 65537, 131073, 300001}) {
        BmpFile file = InfoFile(8, 1, nRows);
        file.bytes[30] = 9;  // the compression
        file.bytes.resize(file.bytes.size() - 8);
        file.rows.back() = 0;  // the one byte of a row that does not arrive
        const support::AllocFill fill(0xA5);
        CKelImage image;
        EXPECT_EQ(KEL_ERR_PARAM, Decode(file.bytes, image));
        ASSERT_NE(nullptr, image.GetBits()) << nRows;
        EXPECT_EQ(nRows, image.GetBitmapInfo()->bmiHeader.biHeight);
        EXPECT_TRUE(std::equal(file.rows.begin(), file.rows.end(), image.GetBits()));
        bool bFired = true;
        for (int k = 1; bFired; ++k) {
            support::FaultyArchive archive(file.bytes);
            CKelImage other;
            const support::AllocFaults faults(k);
            EXPECT_NE(KEL_OK, CKelBMPDecoder().Do(&archive, &other));
            bFired = faults.Fired();
            EXPECT_TRUE(!bFired || other.GetBits() == nullptr);
        }
    }
}

// A stream that answers -1 delivers nothing, even where as many bytes were asked for.
TEST(BmpReader, MinusOneIsNothing) {
    BmpFile file = InfoFile(8, 7, -4);
    file.Put(34, 0xFFFFFFFF);
    support::FaultyArchive archive(file.bytes);
    archive.FailAt(support::Op::kRead, 5, support::Fault::kMinusOne);
    CKelImage image;
    if (CKelBMPDecoder().Do(&archive, &image) == KEL_ERR_MEMORY) {
        GTEST_SKIP() << "no 4 GiB of address space";
    }
    EXPECT_TRUE(archive.Fired());
    EXPECT_EQ(32u, image.GetBitmapInfoHeader()->biSizeImage);
    EXPECT_EQ(Bytes(32), Bytes(image.GetBits(), image.GetBits() + 32));
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
            const support::AllocFill fill(nLength % 2 == 0 ? 0xA5 : 0x5A);
            ASSERT_EQ(nResult, Decode(prefix, image)) << nLength;
            EXPECT_EQ(support::Snapshot(expected), support::Snapshot(image)) << nLength;
        }
    }
}

// The header is read twice; the second one is what counts, and its table must lie in what the first
// one made room for.
TEST(BmpReader, HeaderThatChangesBetweenTwoReads) {
    for (const BmpFile& other : {InfoFile(8, 3, 2), InfoFile(8, -3, 2), InfoFile(24, 3, 2)}) {
        struct : CVamArchiveMemory {
            unsigned int Read(void* pBuffer, unsigned int nCount) override {
                // The fourth read: the block, after file header, size and header.
                if (++nReads == 4) {
                    Put(after);
                }
                return CVamArchiveMemory::Read(pBuffer, nCount);
            }
            void Put(const Bytes& bytes) {
                const long long nPosition = GetPosition();
                Seek(0, 0);
                Write(bytes.data(), static_cast<unsigned int>(bytes.size()));
                Seek(nPosition, 0);
            }
            int nReads = 0;
            Bytes after;
        } archive;
        archive.after = other.bytes;
        archive.Put(InfoFile(8, 3, 2, BI_RGB, 2).bytes);
        CKelImage image;
        const bool bFits = other.table.empty();
        EXPECT_EQ(bFits ? KEL_OK : KEL_ERR_PARAM, CKelBMPDecoder().Do(&archive, &image));
        EXPECT_EQ(bFits, image.GetBits() != nullptr);
    }
}
