/// @file
/// CKelJpegDecoder, the JPEG reader, and its source manager.
#ifndef KELDECODER_KELJPEGDECODER_H
#define KELDECODER_KELJPEGDECODER_H

#include <ikelex/export.h>
#include <ikelex/result.h>

#include <cstdio>

#include <jpeglib.h>

class CVamArchive;
class CKelImage;

/// Takes no parameters and has no base. Each call of Do needs a new reader.
class IKELEX_API CKelJpegDecoder {
  public:
    /// What jpeg_error_exit throws and Do catches.
    class IKELEX_API MyJpegException {
      public:
        /// Carries libjpeg's msg_code.
        explicit MyJpegException(int nMsgCode) : m_nMsgCode(nMsgCode) {}
        int m_nMsgCode;  ///< libjpeg's msg_code
    };

    CKelJpegDecoder();
    virtual ~CKelJpegDecoder();

    /// Reads a JPEG from pArchive, which stands at its start, into pImage. One or three components
    /// give 24 bits in the order blue, green, red. Four components give 32 bits as libjpeg delivers
    /// them. An exception that pArchive throws passes on after all was released.
    ///
    /// - KEL_ERR_CODEC: libjpeg reported an error, or found more than four components. The image is
    ///   empty, or keeps its size and the rows read so far.
    /// - KEL_ERR_MEMORY: the image is empty.
    virtual KelResult Do(CVamArchive* pArchive, CKelImage* pImage);

    /// libjpeg's error handler. It traces libjpeg's message and throws MyJpegException.
    static void jpeg_error_exit(jpeg_common_struct* pInfo);
};

/// Feeds libjpeg from an archive in blocks of 4096 bytes. Past the end of the data it delivers
/// end-of-image markers.
class IKELEX_API CKelJpegSrcMgr : public jpeg_source_mgr {
  public:
    /// Reads from pArchive, which must outlive the manager and is not owned.
    explicit CKelJpegSrcMgr(CVamArchive* pArchive);
    CKelJpegSrcMgr(const CKelJpegSrcMgr&) = delete;
    CKelJpegSrcMgr& operator=(const CKelJpegSrcMgr&) = delete;
    virtual ~CKelJpegSrcMgr();

    /// libjpeg's callbacks.
    /// @{
    static void InitSource(jpeg_decompress_struct* pInfo);
    static boolean FillInputBuffer(jpeg_decompress_struct* pInfo);
    static void SkipInputData(jpeg_decompress_struct* pInfo, long nBytes);
    static void TermSource(jpeg_decompress_struct* pInfo);
    /// @}

    unsigned char* m_pBuffer;  ///< 4096 bytes, or null when their allocation failed
    CVamArchive* m_pArchive;   ///< not owned
};

#endif  // KELDECODER_KELJPEGDECODER_H
