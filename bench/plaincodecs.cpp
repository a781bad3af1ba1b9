#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "plain.h"

// After <cstdio>, which it needs.
#include <jpeglib.h>

namespace plain {

void DecodeJpeg(const Bytes& file, unsigned char* pTarget) {
    jpeg_decompress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    jpeg_start_decompress(&info);
    const std::size_t nStride = std::size_t{3} * info.output_width;
    std::unique_ptr<unsigned char[]> pFresh;
    if (pTarget == nullptr) {
        pFresh.reset(new unsigned char[nStride * info.output_height]);
        pTarget = pFresh.get();
    }
    while (info.output_scanline < info.output_height) {
        JSAMPROW pRow = pTarget + nStride * info.output_scanline;
        jpeg_read_scanlines(&info, &pRow, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
}

std::size_t EncodeJpeg(const unsigned char* pPixels, int nWidth, int nHeight, int nQuality) {
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    unsigned char* pOut = nullptr;
    unsigned long nOut = 0;
    jpeg_mem_dest(&info, &pOut, &nOut);
    info.image_width = static_cast<JDIMENSION>(nWidth);
    info.image_height = static_cast<JDIMENSION>(nHeight);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, nQuality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        JSAMPROW pRow = const_cast<unsigned char*>(pPixels) +
                        std::size_t{3} * info.image_width * info.next_scanline;
        jpeg_write_scanlines(&info, &pRow, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    std::free(pOut);
    return nOut;
}

namespace {

struct Reader {
    const Bytes& file;
    std::size_t nPosition;
};

void Read(png_structp pPng, png_bytep pData, png_size_t nLength) {
    auto* pReader = static_cast<Reader*>(png_get_io_ptr(pPng));
    if (nLength > pReader->file.size() - pReader->nPosition)
        png_error(pPng, "short");
    std::memcpy(pData, pReader->file.data() + pReader->nPosition, nLength);
    pReader->nPosition += nLength;
}

void Write(png_structp pPng, png_bytep pData, png_size_t nLength) {
    auto* pOut = static_cast<Bytes*>(png_get_io_ptr(pPng));
    pOut->insert(pOut->end(), pData, pData + nLength);
}

}  // namespace

void DecodePng(const Bytes& file) {
    png_structp pPng = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    Reader reader{file, 0};
    png_set_read_fn(pPng, &reader, Read);
    png_read_info(pPng, pInfo);
    const std::size_t nHeight = png_get_image_height(pPng, pInfo);
    const std::size_t nStride = png_get_rowbytes(pPng, pInfo);
    const std::unique_ptr<unsigned char[]> pPixels(new unsigned char[nStride * nHeight]);
    for (std::size_t y = 0; y < nHeight; y++) {
        png_read_row(pPng, pPixels.get() + y * nStride, nullptr);
    }
    png_read_end(pPng, nullptr);
    png_destroy_read_struct(&pPng, &pInfo, nullptr);
}

Bytes EncodePng(const unsigned char* pPixels, int nWidth, int nHeight, int nStride, int nChannels,
                const unsigned char* pPalette) {
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    Bytes out;
    png_set_write_fn(pPng, &out, Write, nullptr);
    const int nType = nChannels == 4   ? PNG_COLOR_TYPE_RGB_ALPHA
                      : nChannels == 3 ? PNG_COLOR_TYPE_RGB
                                       : PNG_COLOR_TYPE_PALETTE;
    png_set_IHDR(pPng, pInfo, static_cast<png_uint_32>(nWidth), static_cast<png_uint_32>(nHeight),
                 8, nType, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    if (nChannels == 1) {
        png_set_PLTE(pPng, pInfo, reinterpret_cast<png_const_colorp>(pPalette), 256);
    }
    png_write_info(pPng, pInfo);
    for (int y = 0; y < nHeight; y++) {
        png_write_row(pPng, pPixels + static_cast<std::ptrdiff_t>(y) * nStride);
    }
    png_write_end(pPng, pInfo);
    png_destroy_write_struct(&pPng, &pInfo);
    return out;
}

}  // namespace plain
