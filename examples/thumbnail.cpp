// thumbnail: makes a small picture of a large one.
//
//   thumbnail IN OUT [WIDTH HEIGHT] [--kernel bilinear|box|gaussian|hamming] [--quality N]
//             [--format bmp|jpeg|png]
//   thumbnail --paint OUT [WIDTH HEIGHT] [--quality N] [--format bmp|jpeg|png]
//
// The second form paints a scene to try the first one on.
#include <ikelex/ikelex.h>
#include <platform/vamplatform.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "paintscene.h"
#include "safesave.h"

namespace {

struct Request {
    bool bPaint = false;
    std::string strIn;
    std::string strOut;
    int nWidth = 0;  // 0 until given
    int nHeight = 0;
    KelScaleType eKernel = KEL_SCALE_BILINEAR;
    int nQuality = 75;
    KelImageFormat eFormat = KEL_IMAGE_UNKNOWN;
};

struct Named {
    const char* pszName;
    int nValue;
};
constexpr Named kKernels[] = {{"bilinear", KEL_SCALE_BILINEAR},
                              {"box", KEL_SCALE_BOX},
                              {"gaussian", KEL_SCALE_GAUSSIAN},
                              {"hamming", KEL_SCALE_HAMMING}};
constexpr Named kFormats[] = {
    {"bmp", KEL_IMAGE_BMP}, {"jpeg", KEL_IMAGE_JPEG}, {"png", KEL_IMAGE_PNG}};

template <std::size_t nCount>
int ValueOf(const Named (&names)[nCount], const char* pszName) {
    for (const Named& named : names) {
        if (std::strcmp(named.pszName, pszName) == 0) {
            return named.nValue;
        }
    }
    return 0;
}

template <std::size_t nCount>
const char* NameOf(const Named (&names)[nCount], int nValue) {
    for (const Named& named : names) {
        if (named.nValue == nValue) {
            return named.pszName;
        }
    }
    return "?";
}

// A whole number from 1 to nMost, or 0.
int Number(const char* pszText, int nMost) {
    char* pEnd = nullptr;
    const long n = std::strtol(pszText, &pEnd, 10);
    return *pEnd == '\0' && n >= 1 && n <= nMost ? static_cast<int>(n) : 0;
}

bool Option(const std::string& strName, const char* pszValue, Request* pRequest) {
    if (strName == "--kernel") {
        pRequest->eKernel = static_cast<KelScaleType>(ValueOf(kKernels, pszValue));
        return pRequest->eKernel != 0;
    }
    if (strName == "--format") {
        pRequest->eFormat = static_cast<KelImageFormat>(ValueOf(kFormats, pszValue));
        return pRequest->eFormat != KEL_IMAGE_UNKNOWN;
    }
    pRequest->nQuality = Number(pszValue, 100);
    return strName == "--quality" && pRequest->nQuality != 0;
}

bool Parse(int nCount, char** ppArguments, Request* pRequest) {
    std::vector<const char*> places;
    for (int i = 1; i < nCount; ++i) {
        if (std::strcmp(ppArguments[i], "--paint") == 0) {
            pRequest->bPaint = true;
        } else if (std::strncmp(ppArguments[i], "--", 2) != 0) {
            places.push_back(ppArguments[i]);
        } else if (i + 1 == nCount || !Option(ppArguments[i], ppArguments[i + 1], pRequest)) {
            return false;
        } else {
            ++i;
        }
    }
    const std::size_t nFiles = pRequest->bPaint ? 1 : 2;
    if (places.size() != nFiles && places.size() != nFiles + 2) {
        return false;
    }
    pRequest->strIn = places[0];
    pRequest->strOut = places[nFiles - 1];
    pRequest->nWidth = pRequest->bPaint ? 4000 : 320;
    pRequest->nHeight = pRequest->bPaint ? 3000 : 240;
    if (places.size() > nFiles) {
        pRequest->nWidth = Number(places[nFiles], 1000000);
        pRequest->nHeight = Number(places[nFiles + 1], 1000000);
    }
    if (pRequest->eFormat == KEL_IMAGE_UNKNOWN) {
        pRequest->eFormat = FormatOfName(pRequest->strOut);
    }
    return pRequest->nWidth != 0 && pRequest->nHeight != 0 &&
           pRequest->eFormat != KEL_IMAGE_UNKNOWN;
}

// Keeps what the library traces, for the message of a failure.
void KeepTrace(void* pContext, ZT_TraceCall eCall, int, const char* pszText) {
    if (eCall !=
        ZT_TRACE_INPUT_ERROR) {  // an input error's text came before through ZT_TRACE_WRITE
        try {
            static_cast<std::string*>(pContext)->append("\n  trace:   ").append(pszText);
        } catch (const std::bad_alloc&) {
            // A trace that cannot be kept is lost; a sink must not throw.
        }
    }
}

class Thumbnail {
  public:
    Thumbnail(const Request& request, const std::string* pTrace)
        : m_Request(request), m_pTrace(pTrace), m_Image(NewImage()) {}

    // The whole job; returns whether it succeeded and has then said so step by step.
    bool Run() {
        if (m_Image == nullptr) {
            return Failed("make an image", "", KEL_ERR_MEMORY);
        }
        return (m_Request.bPaint ? Paint() : Open() && Scale()) && Save();
    }

  private:
    // Ends a step: milliseconds since the last one.
    double Lap() {
        const auto now = std::chrono::steady_clock::now();
        const std::chrono::duration<double, std::milli> passed = now - m_Start;
        m_Start = now;
        return passed.count();
    }

    bool Failed(const char* pszStep, const std::string& strWhat, KelResult nResult) const {
        std::fprintf(stderr, "thumbnail: cannot %s %s\n  result:  %s (%d)\n  meaning: %s%s\n",
                     pszStep, strWhat.c_str(), KelResultName(nResult), nResult,
                     KelResultMeaning(nResult), m_pTrace->c_str());
        return false;
    }

    bool Open() {
        const KelResult nResult = m_Image->Open(m_Request.strIn.c_str());
        if (nResult != KEL_OK) {
            return Failed("open", m_Request.strIn, nResult);
        }
        if (m_Image->GetBits() == nullptr) {
            return Failed("open", m_Request.strIn + ": accepted, but not read",
                          KEL_ERR_OPEN_FORMAT);
        }
        std::printf("opened  %s: %d x %d, %d bits per pixel, %.1f ms\n", m_Request.strIn.c_str(),
                    m_Image->GetWidth(), m_Image->GetHeight(), m_Image->GetBitsPerPixel(), Lap());
        return true;
    }

    bool Scale() {
        tagKelParameterItem items[] = {{"width", m_Request.nWidth},
                                       {"height", m_Request.nHeight},
                                       {"type", static_cast<int>(m_Request.eKernel)}};
        tagKelParameters params = {3, items};
        const KelResult nResult = m_Image->ApplyFilter(KEL_FILTER_SCALE, &params);
        if (nResult != KEL_OK) {
            return Failed("scale", m_Request.strIn, nResult);
        }
        std::printf("scaled  to %d x %d, %s, %.1f ms\n", m_Image->GetWidth(), m_Image->GetHeight(),
                    NameOf(kKernels, m_Request.eKernel), Lap());
        return true;
    }

    bool Paint() {
        const long long nStride = (m_Request.nWidth * 24LL + 31) / 32 * 4;
        const long long nSize = nStride * m_Request.nHeight;
        BITMAPINFO* pInfo = m_Image->AllocateBMI(sizeof(BITMAPINFOHEADER));
        unsigned char* pBits =
            nSize < 0x7FFFFFFF ? m_Image->AllocateBits(static_cast<unsigned int>(nSize)) : nullptr;
        if (pInfo == nullptr || pBits == nullptr) {
            return Failed("make", "room for the scene", KEL_ERR_MEMORY);
        }
        pInfo->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
        pInfo->bmiHeader.biWidth = m_Request.nWidth;
        pInfo->bmiHeader.biHeight = m_Request.nHeight;
        pInfo->bmiHeader.biPlanes = 1;
        pInfo->bmiHeader.biBitCount = 24;
        const KelResult nResult = m_Image->Open();
        if (nResult != KEL_OK) {
            return Failed("set up", "the scene", nResult);
        }
        PaintScene(pBits, m_Request.nWidth, m_Request.nHeight, static_cast<int>(nStride));
        std::printf("painted a scene: %d x %d, %.1f ms\n", m_Image->GetWidth(),
                    m_Image->GetHeight(), Lap());
        return true;
    }

    bool Save() {
        tagKelParameterItem item = {"quality", m_Request.nQuality};
        tagKelParameters params = {1, &item};
        const KelResult nResult = SafeSave(*m_Image, m_Request.strOut, m_Request.eFormat, &params);
        if (nResult != KEL_OK) {
            return Failed("write", m_Request.strOut, nResult);
        }
        std::error_code error;
        const auto nBytes = std::filesystem::file_size(m_Request.strOut, error);
        std::printf("wrote   %s: %s, %lld bytes, %.1f ms\n", m_Request.strOut.c_str(),
                    NameOf(kFormats, m_Request.eFormat),
                    error ? 0LL : static_cast<long long>(nBytes), Lap());
        return true;
    }

    const Request& m_Request;
    const std::string* m_pTrace;
    ImagePtr m_Image;
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
};

}  // namespace

int main(int nCount, char** ppArguments) {
    Request request;
    if (!Parse(nCount, ppArguments, &request)) {
        std::fputs(
            "usage: thumbnail IN OUT [WIDTH HEIGHT] [--kernel bilinear|box|gaussian|hamming]\n"
            "                 [--quality 1..100] [--format bmp|jpeg|png]\n"
            "       thumbnail --paint OUT [WIDTH HEIGHT] [--quality 1..100] [--format ...]\n"
            "Without --format, OUT ends in .bmp, .jpg, .jpeg or .png.\n",
            stderr);
        return 2;
    }
    // A write that a size limit or a closed pipe refuses is to fail, not to end the program.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    std::string strTrace;
    zt_trace_set_sink(&KeepTrace, &strTrace);
    const bool bDone = Thumbnail(request, &strTrace).Run();
    zt_trace_set_sink(nullptr, nullptr);
    return bDone ? 0 : 1;
}
