/// @file
/// CKelJpegEncoder, the JPEG writer, and its destination manager.
#ifndef KELENCODER_KELJPEGENCODER_H
#define KELENCODER_KELJPEGENCODER_H

#include <cstdio>

#include <jpeglib.h>

#include "kelencoderbase.h"

/// Takes the parameter "quality". Each call of SetParameters and Do needs a new writer.
class IKELEX_API CKelJpegEncoder : public CKelEncoder {
  public:
    CKelJpegEncoder();
    ~CKelJpegEncoder() override;

    /// Writes a baseline JPEG of three components from the stream's current position. KEL_ERR_CODEC
    /// when libjpeg reported an error (no rows, no columns, too large). KEL_ERR_MEMORY when the
    /// image has no row array, or when the output block or the row buffer cannot be allocated.
    KelResult Do(CVamArchive* pArchive, CKelImage* pImage) override;

    /// The "quality" parameter, not clamped, or 75 without an integer of that name.
    int GetQualityParameter();

    /// libjpeg's error handler. It traces libjpeg's message and throws what Do catches.
    static void jpeg_error_exit(jpeg_common_struct* pInfo);
};

/// Passes libjpeg's output to an archive in blocks of 4096 bytes, one shorter rest, one Flush.
class IKELEX_API CKelJpegDestMgr : public jpeg_destination_mgr {
  public:
    /// Writes to pArchive, which must outlive the manager and is not owned.
    explicit CKelJpegDestMgr(CVamArchive* pArchive);
    CKelJpegDestMgr(const CKelJpegDestMgr&) = delete;
    CKelJpegDestMgr& operator=(const CKelJpegDestMgr&) = delete;
    virtual ~CKelJpegDestMgr();

    /// libjpeg's callbacks.
    /// @{
    static void InitDestination(jpeg_compress_struct* pInfo);
    static boolean EmptyOutputBuffer(jpeg_compress_struct* pInfo);
    static void TermDestination(jpeg_compress_struct* pInfo);
    /// @}

    unsigned char* m_pBuffer;  ///< 4096 bytes, or null when their allocation failed
    CVamArchive* m_pArchive;   ///< not owned
};

#endif  // KELENCODER_KELJPEGENCODER_H
