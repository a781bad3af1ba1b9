#include "support/plainpng.h"

#include <cstring>
#include <random>

namespace support {

namespace {

struct Source {
    const Bytes* pFile;
    std::size_t nPosition;
};

void ReadBytes(png_structp pPng, png_bytep pData, std::size_t nLength) {
    auto* pSource = static_cast<Source*>(png_get_io_ptr(pPng));
    if (nLength > pSource->pFile->size() - pSource->nPosition) {
        png_error(pPng, "end of file");
    }
    std::memcpy(pData, pSource->pFile->data() + pSource->nPosition, nLength);
    pSource->nPosition += nLength;
}

void WriteBytes(png_structp pPng, png_bytep pData, std::size_t nLength) {
    auto* pFile = static_cast<Bytes*>(png_get_io_ptr(pPng));
    pFile->insert(pFile->end(), pData, pData + nLength);
}

std::vector<png_bytep> RowPointers(Bytes& rows, std::size_t nRowBytes) {
    std::vector<png_bytep> pointers;
    for (std::size_t nAt = 0; nAt < rows.size(); nAt += nRowBytes) {
        pointers.push_back(rows.data() + nAt);
    }
    return pointers;
}

}  // namespace

PlainPng RandomPng(int nColorType, int nBitDepth, int nInterlace, unsigned int nWidth,
                   unsigned int nHeight) {
    PlainPng picture{nWidth, nHeight, nBitDepth, nColorType, nInterlace, {}, {}};
    const unsigned int nChannels = nColorType == PNG_COLOR_TYPE_RGB          ? 3
                                   : nColorType == PNG_COLOR_TYPE_RGB_ALPHA  ? 4
                                   : nColorType == PNG_COLOR_TYPE_GRAY_ALPHA ? 2
                                                                             : 1;
    std::mt19937 random(nWidth * 131 + nHeight + static_cast<unsigned int>(nBitDepth));
    const auto nBits = nWidth * nChannels * static_cast<unsigned int>(nBitDepth);
    picture.rows.resize(std::size_t{(nBits + 7) / 8} * nHeight);
    const bool bIndexed = nColorType == PNG_COLOR_TYPE_PALETTE;
    for (unsigned char& byte : picture.rows) {
        byte = static_cast<unsigned char>(bIndexed && nBitDepth == 8 ? random() % 200 : random());
    }
    if (bIndexed) {
        const unsigned int nEntries = nBitDepth == 8 ? 200 : 1u << nBitDepth;
        for (unsigned int i = 0; i < nEntries; ++i) {
            const auto nValue = random();
            picture.palette.push_back({static_cast<png_byte>(nValue),
                                       static_cast<png_byte>(nValue >> 8),
                                       static_cast<png_byte>(nValue >> 16)});
        }
    }
    return picture;
}

Bytes EncodePlainPng(const PlainPng& picture, const PngRequest& request) {
    Bytes file;
    Bytes rows = picture.rows;
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    png_set_write_fn(pPng, &file, WriteBytes, nullptr);
    png_set_IHDR(pPng, pInfo, picture.nWidth, picture.nHeight, picture.nBitDepth,
                 picture.nColorType, picture.nInterlace, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    if (!picture.palette.empty()) {
        png_set_PLTE(pPng, pInfo, picture.palette.data(), static_cast<int>(picture.palette.size()));
    }
    if (request) {
        request(pPng, pInfo);
    }
    png_write_info(pPng, pInfo);
    png_write_image(pPng, RowPointers(rows, picture.RowBytes()).data());
    png_write_end(pPng, pInfo);
    png_destroy_write_struct(&pPng, &pInfo);
    return file;
}

PlainPng DecodePlainPng(const Bytes& file, const PngRequest& request) {
    PlainPng picture;
    Source source{&file, 0};
    png_structp pPng = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    png_set_read_fn(pPng, &source, ReadBytes);
    png_read_info(pPng, pInfo);
    png_get_IHDR(pPng, pInfo, &picture.nWidth, &picture.nHeight, &picture.nBitDepth,
                 &picture.nColorType, &picture.nInterlace, nullptr, nullptr);
    png_colorp pEntries = nullptr;
    int nEntries = 0;
    png_get_PLTE(pPng, pInfo, &pEntries, &nEntries);
    picture.palette.assign(pEntries, pEntries + nEntries);
    if (request) {
        request(pPng, pInfo);
    }
    png_set_interlace_handling(pPng);
    png_read_update_info(pPng, pInfo);
    picture.rows.resize(png_get_rowbytes(pPng, pInfo) * picture.nHeight);
    png_read_image(pPng, RowPointers(picture.rows, picture.RowBytes()).data());
    png_read_end(pPng, pInfo);
    png_destroy_read_struct(&pPng, &pInfo, nullptr);
    return picture;
}

}  // namespace support
