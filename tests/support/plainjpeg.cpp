#include "support/plainjpeg.h"

#include <cstddef>
#include <cstdlib>

namespace support {

namespace {

struct PlainError {};

void Throw(j_common_ptr) {
    throw PlainError();
}
void KeepQuiet(j_common_ptr, int) {}

void UseErrors(jpeg_error_mgr* pErrors) {
    jpeg_std_error(pErrors);
    pErrors->error_exit = &Throw;
    pErrors->emit_message = &KeepQuiet;
}

}  // namespace

Samples MakeSamples(int nWidth, int nHeight, int nComponents) {
    Samples samples{nWidth, nHeight, nComponents, {}};
    unsigned int nNoise = static_cast<unsigned int>(nWidth * 31 + nHeight * 7 + nComponents);
    for (int i = 0; i < nWidth * nHeight * nComponents; ++i) {
        nNoise = nNoise * 1664525u + 1013904223u;
        const int nPixel = i / nComponents;
        const int nSlope = nPixel % nWidth * 3 + nPixel / nWidth * 5 + i % nComponents * 70;
        samples.bytes.push_back(
            static_cast<unsigned char>(nSlope + static_cast<int>(nNoise >> 27)));
    }
    return samples;
}

Bytes PlainEncode(const Samples& samples, const EncodeOptions& options) {
    jpeg_compress_struct info;
    jpeg_error_mgr errors;
    UseErrors(&errors);
    info.err = &errors;
    jpeg_create_compress(&info);
    unsigned char* pFile = nullptr;
    unsigned long nSize = 0;
    jpeg_mem_dest(&info, &pFile, &nSize);
    info.image_width = static_cast<JDIMENSION>(samples.nWidth);
    info.image_height = static_cast<JDIMENSION>(samples.nHeight);
    info.input_components = samples.nComponents;
    info.in_color_space = samples.nComponents == 1   ? JCS_GRAYSCALE
                          : samples.nComponents == 3 ? JCS_RGB
                          : samples.nComponents == 4 ? JCS_CMYK
                                                     : JCS_UNKNOWN;
    jpeg_set_defaults(&info);
    if (options.eStored != JCS_UNKNOWN) {
        jpeg_set_colorspace(&info, options.eStored);
    }
    jpeg_set_quality(&info, options.nQuality, TRUE);
    if (options.bProgressive) {
        jpeg_simple_progression(&info);
    }
    jpeg_start_compress(&info, TRUE);
    if (options.nComment > 0) {
        const Bytes comment(options.nComment, 'c');
        jpeg_write_marker(&info, JPEG_COM, comment.data(), options.nComment);
    }
    const auto nStride = static_cast<std::size_t>(samples.nWidth * samples.nComponents);
    while (info.next_scanline < info.image_height) {
        JSAMPROW pRow = const_cast<JSAMPROW>(&samples.bytes[info.next_scanline * nStride]);
        jpeg_write_scanlines(&info, &pRow, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    const Bytes file(pFile, pFile + nSize);
    std::free(pFile);
    return file;
}

bool PlainDecode(const Bytes& file, Samples* pSamples) {
    jpeg_decompress_struct info = {};
    jpeg_error_mgr errors;
    UseErrors(&errors);
    info.err = &errors;
    bool bDone = false;
    try {
        jpeg_create_decompress(&info);
        jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
        jpeg_read_header(&info, TRUE);
        if (info.num_components < 3) {
            info.out_color_space = JCS_RGB;
        }
        jpeg_start_decompress(&info);
        *pSamples = {static_cast<int>(info.output_width),
                     static_cast<int>(info.output_height),
                     info.output_components,
                     {}};
        const std::size_t nStride =
            std::size_t{info.output_width} * static_cast<std::size_t>(info.output_components);
        pSamples->bytes.resize(nStride * info.output_height);
        while (info.output_scanline < info.output_height) {
            JSAMPROW pRow = &pSamples->bytes[info.output_scanline * nStride];
            jpeg_read_scanlines(&info, &pRow, 1);
        }
        jpeg_finish_decompress(&info);
        bDone = true;
    } catch (const PlainError&) {
    }
    jpeg_destroy_decompress(&info);
    return bDone;
}

}  // namespace support
