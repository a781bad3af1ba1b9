// The table of picture formats. A new format is a row here.
#include "formats.h"

#include "kelbitmap/integers.h"
#include "keldecoder/keldecoder.h"
#include "kelencoder/kelencoder.h"

namespace kel {

namespace {

using namespace std::literals;

template <typename Decoder>
KelResult Read(CVamArchive* pArchive, CKelImage* pImage) {
    return Decoder().Do(pArchive, pImage);
}

KelResult LeaveEmpty(CVamArchive*, CKelImage*) {
    return KEL_OK;
}

// Runs a writer that takes options.
template <typename Encoder>
KelResult Write(CVamArchive* pArchive, CKelImage* pImage, tagKelParameters* pParams) {
    Encoder encoder;
    encoder.SetParameters(pParams);
    return encoder.Do(pArchive, pImage);
}

KelResult WriteBmp(CVamArchive* pArchive, CKelImage* pImage, tagKelParameters*) {
    return CKelBMPEncoder().Do(pArchive, pImage);
}

constexpr KelResult kUnforeseen = KEL_ERR_SAVE_FORMAT;
constexpr KelResult kForeseen = KEL_ERR_NOT_IMPLEMENTED;

constexpr Format kFormats[] = {
    // Pictures, arrays, icons and pointers, and a header of 40 bytes without a file header.
    {KEL_IMAGE_BMP,
     {"BM", "BA", "CI", "CP", "IC", "\x28\0\0\0"sv},
     Read<CKelBMPDecoder>,
     WriteBmp,
     KEL_OK},
    {KEL_IMAGE_JPEG, {"\xFF\xD8\xFF"}, Read<CKelJpegDecoder>, Write<CKelJpegEncoder>, KEL_OK},
    {KEL_IMAGE_PNG, {"\x89PNG"}, Read<CKelPNGDecoder>, Write<CKelPNGEncoder>, KEL_OK},
    {KEL_IMAGE_GIF, {"GIF8"}, nullptr, nullptr, kForeseen},
    {KEL_IMAGE_TIFF, {"II*\0"sv, "MM\0*"sv}, LeaveEmpty, nullptr, kForeseen},
    {KEL_IMAGE_PCX, {"\x0A?\x01"}, nullptr, nullptr, kUnforeseen},
    {KEL_IMAGE_PSD, {"8BPS"}, nullptr, nullptr, kUnforeseen},
    {KEL_IMAGE_PGM, {"P2", "P5"}, nullptr, nullptr, kUnforeseen},
    {KEL_IMAGE_PPM, {"P3", "P6"}, nullptr, nullptr, kUnforeseen},
};

bool Shows(std::string_view strSignature, const unsigned char* pData, std::size_t nCount) {
    if (strSignature.empty() || strSignature.size() > nCount) {
        return false;
    }
    for (const char c : strSignature) {
        if (c != '?' && LowByte(c) != *pData) {
            return false;
        }
        ++pData;
    }
    return true;
}

}  // namespace

std::span<const Format> Formats() {
    return kFormats;
}

const Format* FormatOfData(const unsigned char* pData, std::size_t nCount) {
    for (const Format& format : kFormats) {
        for (const std::string_view strSignature : format.aSignatures) {
            if (Shows(strSignature, pData, nCount)) {
                return &format;
            }
        }
    }
    return nullptr;
}

const Format* FormatOfValue(KelImageFormat eFormat) {
    for (const Format& format : kFormats) {
        if (format.eFormat == eFormat) {
            return &format;
        }
    }
    return nullptr;
}

}  // namespace kel
