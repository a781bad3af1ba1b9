#include "support/plainpng.h"

#include <cstdio>
#include <cstdlib>

#include "support/pictures.h"

namespace support {

namespace {

std::vector<png_bytep> RowPointers(PlainPng& picture) {
    std::vector<png_bytep> pointers;
    for (std::size_t i = 0; i < picture.nHeight; ++i) {
        pointers.push_back(picture.rows.data() + i * picture.RowBytes());
    }
    return pointers;
}

}  // namespace

PlainPng RandomPng(int nColorType, int nBitDepth, int nInterlace, unsigned int nWidth,
                   unsigned int nHeight) {
    PlainPng picture{nWidth, nHeight, nBitDepth, nColorType, nInterlace, {}, {}};
    const bool bIndexed = nColorType == PNG_COLOR_TYPE_PALETTE;
    const unsigned int nChannels = ((nColorType & PNG_COLOR_MASK_COLOR) != 0 && !bIndexed ? 3 : 1) +
                                   ((nColorType & PNG_COLOR_MASK_ALPHA) != 0 ? 1 : 0);
    const unsigned int nBits = nWidth * nChannels * static_cast<unsigned int>(nBitDepth);
    picture.rows.resize(std::size_t{(nBits + 7) / 8} * nHeight);
    Random random(nBits + nHeight);
    random.Fill(picture.rows.data(), picture.rows.size());
    for (int i = 0; bIndexed && i < 1 << nBitDepth; ++i) {
        picture.palette.push_back({random.Byte(), random.Byte(), random.Byte()});
    }
    return picture;
}

Bytes EncodePlainPng(PlainPng picture, const PngRequest& request) {
    char* pText = nullptr;
    std::size_t nSize = 0;
    std::FILE* pFile = open_memstream(&pText, &nSize);
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    png_init_io(pPng, pFile);
    png_set_IHDR(pPng, pInfo, picture.nWidth, picture.nHeight, picture.nBitDepth,
                 picture.nColorType, picture.nInterlace, 0, 0);
    if (!picture.palette.empty()) {
        png_set_PLTE(pPng, pInfo, picture.palette.data(), static_cast<int>(picture.palette.size()));
    }
    if (request) {
        request(pPng, pInfo);
    }
    png_write_info(pPng, pInfo);
    png_write_image(pPng, RowPointers(picture).data());
    png_write_end(pPng, pInfo);
    png_destroy_write_struct(&pPng, &pInfo);
    std::fclose(pFile);
    Bytes file(pText, pText + nSize);
    std::free(pText);
    return file;
}

PlainPng DecodePlainPng(Bytes file, const PngRequest& request) {
    PlainPng picture;
    std::FILE* pFile = fmemopen(file.data(), file.size(), "rb");
    png_structp pPng = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    png_init_io(pPng, pFile);
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
    png_read_image(pPng, RowPointers(picture).data());
    png_read_end(pPng, pInfo);
    png_destroy_read_struct(&pPng, &pInfo, nullptr);
    std::fclose(pFile);
    return picture;
}

}  // namespace support
