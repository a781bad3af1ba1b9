// One decode and one encode for each library, at its defaults.
#include "support/reference/codecs.h"

#include <cstdlib>
#include <cstring>

namespace reference {

namespace {

void Throw(j_common_ptr) {
    throw JpegError();
}
void KeepQuiet(j_common_ptr, int) {}

jpeg_error_mgr* UseErrors(jpeg_error_mgr* pErrors) {
    jpeg_std_error(pErrors);
    pErrors->error_exit = &Throw;
    pErrors->emit_message = &KeepQuiet;
    return pErrors;
}

}  // namespace

JpegPicture DecodeJpeg(const Bytes& file) {
    jpeg_decompress_struct info = {};
    const std::unique_ptr<jpeg_decompress_struct, decltype(&jpeg_destroy_decompress)> owner(
        &info, &jpeg_destroy_decompress);
    jpeg_error_mgr errors;
    info.err = UseErrors(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    if (info.num_components < 3) {
        info.out_color_space = JCS_RGB;
    }
    jpeg_start_decompress(&info);
    const auto nStride = static_cast<std::size_t>(info.output_components) * info.output_width;
    JpegPicture picture{static_cast<int>(info.output_width), static_cast<int>(info.output_height),
                        info.output_components, nStride * info.output_height,
                        FreshRows(new unsigned char[nStride * info.output_height])};
    while (info.output_scanline < info.output_height) {
        JSAMPROW pRow = picture.pRows.get() + nStride * info.output_scanline;
        jpeg_read_scanlines(&info, &pRow, 1);
    }
    jpeg_finish_decompress(&info);
    return picture;
}

Bytes EncodeJpeg(const unsigned char* pRows, const JpegFormat& format) {
    constexpr J_COLOR_SPACE kSpaces[] = {JCS_UNKNOWN, JCS_GRAYSCALE, JCS_UNKNOWN,
                                         JCS_RGB,     JCS_CMYK,      JCS_UNKNOWN};
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    info.err = UseErrors(&errors);
    jpeg_create_compress(&info);
    unsigned char* pOut = nullptr;
    unsigned long nOut = 0;
    jpeg_mem_dest(&info, &pOut, &nOut);
    info.image_width = static_cast<JDIMENSION>(format.nWidth);
    info.image_height = static_cast<JDIMENSION>(format.nHeight);
    info.input_components = format.nComponents;
    info.in_color_space = kSpaces[format.nComponents];
    jpeg_set_defaults(&info);
    if (format.eStored != JCS_UNKNOWN) {
        jpeg_set_colorspace(&info, format.eStored);
    }
    jpeg_set_quality(&info, format.nQuality, TRUE);
    if (format.bProgressive) {
        jpeg_simple_progression(&info);
    }
    info.restart_interval = format.nRestart;
    jpeg_start_compress(&info, TRUE);
    if (format.nComment > 0) {
        const Bytes comment(format.nComment, 'c');
        jpeg_write_marker(&info, JPEG_COM, comment.data(), format.nComment);
    }
    const std::size_t nStride =
        static_cast<std::size_t>(format.nComponents) * std::size_t{info.image_width};
    while (info.next_scanline < info.image_height) {
        JSAMPROW pRow = const_cast<unsigned char*>(pRows) + nStride * info.next_scanline;
        jpeg_write_scanlines(&info, &pRow, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    Bytes file(pOut, pOut + nOut);
    std::free(pOut);
    return file;
}

namespace {

struct Reader {
    const Bytes& file;
    std::size_t nPosition;
};

void Read(png_structp pPng, png_bytep pData, png_size_t nLength) {
    auto* pReader = static_cast<Reader*>(png_get_io_ptr(pPng));
    if (nLength > pReader->file.size() - pReader->nPosition) {
        png_error(pPng, "short");
    }
    std::memcpy(pData, pReader->file.data() + pReader->nPosition, nLength);
    pReader->nPosition += nLength;
}

void Write(png_structp pPng, png_bytep pData, png_size_t nLength) {
    auto* pOut = static_cast<Bytes*>(png_get_io_ptr(pPng));
    pOut->insert(pOut->end(), pData, pData + nLength);
}

}  // namespace

PngPicture DecodePng(const Bytes& file, const PngRequest& request) {
    png_structp pPng = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    Reader reader{file, 0};
    png_set_read_fn(pPng, &reader, Read);
    png_read_info(pPng, pInfo);
    PngPicture picture;
    picture.nWidth = static_cast<int>(png_get_image_width(pPng, pInfo));
    picture.nHeight = static_cast<int>(png_get_image_height(pPng, pInfo));
    picture.nBitDepth = png_get_bit_depth(pPng, pInfo);
    picture.nColorType = png_get_color_type(pPng, pInfo);
    picture.nInterlace = png_get_interlace_type(pPng, pInfo);
    png_colorp pEntries = nullptr;
    int nEntries = 0;
    png_get_PLTE(pPng, pInfo, &pEntries, &nEntries);
    picture.palette.assign(pEntries, pEntries + nEntries);
    if (request) {
        request(pPng, pInfo);
    }
    const int nPasses = png_set_interlace_handling(pPng);
    png_read_update_info(pPng, pInfo);
    const auto nHeight = static_cast<std::size_t>(picture.nHeight);
    picture.nStride = png_get_rowbytes(pPng, pInfo);
    picture.pRows.reset(new unsigned char[picture.nStride * nHeight]);
    for (int nPass = 0; nPass < nPasses; ++nPass) {
        for (std::size_t y = 0; y < nHeight; ++y) {
            png_read_row(pPng, picture.pRows.get() + y * picture.nStride, nullptr);
        }
    }
    png_read_end(pPng, nullptr);
    png_destroy_read_struct(&pPng, &pInfo, nullptr);
    return picture;
}

Bytes EncodePng(const unsigned char* pRows, std::size_t nStride, const PngFormat& format,
                const PngRequest& request) {
    png_structp pPng = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop pInfo = png_create_info_struct(pPng);
    Bytes out;
    png_set_write_fn(pPng, &out, Write, nullptr);
    png_set_IHDR(pPng, pInfo, static_cast<png_uint_32>(format.nWidth),
                 static_cast<png_uint_32>(format.nHeight), format.nBitDepth, format.nColorType,
                 format.nInterlace, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (!format.palette.empty()) {
        png_set_PLTE(pPng, pInfo, format.palette.data(), static_cast<int>(format.palette.size()));
    }
    if (request) {
        request(pPng, pInfo);
    }
    png_write_info(pPng, pInfo);
    const int nPasses = png_set_interlace_handling(pPng);
    for (int nPass = 0; nPass < nPasses; ++nPass) {
        for (std::size_t y = 0; y < static_cast<std::size_t>(format.nHeight); ++y) {
            png_write_row(pPng, pRows + y * nStride);
        }
    }
    png_write_end(pPng, pInfo);
    png_destroy_write_struct(&pPng, &pInfo);
    return out;
}

}  // namespace reference
