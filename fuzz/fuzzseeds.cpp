// Makes the seeds and dictionaries of the fuzzers: ikelex_fuzz_seeds DIRECTORY.
//
// One small picture of every kind the readers know, written by plain libjpeg and libpng and by the
// library, under DIRECTORY/<reader>; one dictionary DIRECTORY/<reader>.dict each.
#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz.h"
#include "support/reference/codecs.h"

namespace {

std::filesystem::path g_Directory;

void Write(const std::string& strName, const void* pData, std::size_t nSize) {
    const auto path = g_Directory / strName;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(static_cast<const char*>(pData), static_cast<std::streamsize>(nSize));
}

// Nonsense that compresses a little, long enough for any row here.
fuzz::Bytes Noise() {
    fuzz::Bytes noise(4096);
    for (std::size_t i = 0; i < noise.size(); ++i) {
        noise[i] = static_cast<unsigned char>(i * i / 7);
    }
    return noise;
}

void Write(const std::string& strName, const fuzz::Bytes& bytes) {
    Write(strName, bytes.data(), bytes.size());
}

void MakeJpeg(int nComponents, bool bProgressive, unsigned int nRestart) {
    fuzz::Bytes file;
    reference::EncodeJpeg(Noise().data(),
                          {19, 13, nComponents, 75, bProgressive, JCS_UNKNOWN, 0, nRestart}, &file);
    Write("jpeg/" + std::to_string(nComponents) + (bProgressive ? "p" : "b") +
              std::to_string(nRestart),
          file);
}

void MakePng(int nType, int nDepth, int nInterlace) {
    const fuzz::Bytes noise = Noise();
    reference::PngFormat format{11, 9, nDepth, nType, nInterlace, {}};
    if (nType == PNG_COLOR_TYPE_PALETTE) {
        const auto* pColors = reinterpret_cast<const png_color*>(noise.data());
        format.palette.assign(pColors, pColors + (1 << nDepth));
    }
    Write("png/" + std::to_string(nType) + "-" + std::to_string(nDepth) + "-" +
              std::to_string(nInterlace),
          reference::EncodePng(noise.data(), 100, format));
}

// nHeader 40 or 12; rows from the bottom, or from the top where nHeight is negative.
void MakeBmp(int nHeader, int nBits, int nCompression, int nHeight) {
    const fuzz::Bytes noise = Noise();
    const int nColours = nBits <= 8 ? 1 << nBits : nCompression == BI_BITFIELDS ? 3 : 0;
    const int nTable = 14 + nHeader + nColours * (nHeader == 40 ? 4 : 3);
    fuzz::Bytes file(noise.begin(), noise.begin() + nTable + (nBits * 10 + 31) / 32 * 4 * 7);
    const auto put = [&file](std::size_t i, int nBytes, int nValue) {
        for (int k = 0; k < nBytes; ++k) {
            file[i++] = static_cast<unsigned char>(nValue >> 8 * k);
        }
    };
    put(0, 2, 0x4D42);
    put(10, 4, nTable);
    put(14, 4, nHeader);
    const int nField = nHeader == 40 ? 4 : 2;
    put(18, nField, 10);
    put(static_cast<std::size_t>(18 + nField), nField, nHeight);
    put(static_cast<std::size_t>(18 + 2 * nField), 2, 1);
    put(static_cast<std::size_t>(20 + 2 * nField), 2, nBits);
    if (nHeader == 40) {
        put(30, 4, nCompression);
        for (std::size_t i = 34; i < 54; i += 4) {
            put(i, 4, 0);
        }
        for (std::size_t i = 0; i < 3 && nCompression == BI_BITFIELDS; ++i) {
            put(54 + 4 * i, 4, 0xF8 << 4 * i);
        }
    }
    Write("bmp/" + std::to_string(nHeader) + "-" + std::to_string(nBits) + "-" +
              std::to_string(nCompression) + (nHeight < 0 ? "-top" : ""),
          file);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    g_Directory = argv[1];
    for (const int nComponents : {1, 3, 4}) {
        MakeJpeg(nComponents, false, 0);
        MakeJpeg(nComponents, true, 0);
        MakeJpeg(nComponents, false, 2);
    }
    constexpr int kKinds[][2] = {{0, 1}, {0, 2}, {0, 4}, {0, 8}, {0, 16}, {2, 8}, {2, 16}, {3, 1},
                                 {3, 2}, {3, 4}, {3, 8}, {4, 8}, {4, 16}, {6, 8}, {6, 16}};
    for (const auto& kind : kKinds) {
        MakePng(kind[0], kind[1], 0);
        MakePng(kind[0], kind[1], 1);
    }
    for (const int nBits : {1, 4, 8, 16, 24, 32}) {
        for (const int nHeight : {7, -7}) {
            MakeBmp(40, nBits, BI_RGB, nHeight);
        }
        if (nBits != 16 && nBits != 32) {
            MakeBmp(12, nBits, BI_RGB, 7);
        }
        if (nBits == 16 || nBits == 32) {
            MakeBmp(40, nBits, BI_BITFIELDS, 7);
        }
    }
    MakeBmp(40, 8, BI_RLE8, 7);
    MakeBmp(40, 4, BI_RLE4, 7);
    const std::string strJpeg =
        R"("\xFF\xD8\xFF" "\xFF\xC0" "\xFF\xC2" "\xFF\xC4" "\xFF\xDA" "\xFF\xDB" "\xFF\xDD" "\xFF\xD9" "\xFF\xEE" "Adobe" "JFIF")";
    const std::string strPng =
        R"("\x89PNG" "IHDR" "PLTE" "IDAT" "IEND" "tRNS" "gAMA" "bKGD" "sBIT" "iCCP" "zTXt")";
    const std::string strBmp =
        R"("BM" "\x28\x00\x00\x00" "\x0C\x00\x00\x00" "\x01\x00\x18\x00" "\x03\x00\x00\x00" "\xFF\xFF\xFF\x7F" "\x00\x00\x00\x80")";
    for (std::string strWords : {"jpeg" + strJpeg, "png" + strPng, "bmp" + strBmp,
                                 "open" + strJpeg + " " + strPng + " " + strBmp}) {
        std::string strLines = strWords.substr(strWords.find('"'));
        for (std::size_t i = 0; (i = strLines.find("\" \"", i)) != std::string::npos;) {
            strLines[i + 1] = '\n';
        }
        Write(strWords.substr(0, strWords.find('"')) + ".dict", strLines.data(), strLines.size());
    }
    return 0;
}
