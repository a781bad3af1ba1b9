// thumbnail: makes a small picture of a large one.
//
//   thumbnail IN OUT [WIDTH HEIGHT] [--kernel bilinear|box|gaussian|hamming] [--quality N]
//             [--format bmp|jpeg|png]
//   thumbnail --paint OUT [WIDTH HEIGHT] [--quality N] [--format bmp|jpeg|png]
//
// The second form paints a scene to try the first one on.
#include <ikelex/handle.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "newpicture.h"
#include "paintscene.h"
#include "safesave.h"
#include "tracelines.h"
#include "utf8.h"

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

class Thumbnail {
  public:
    explicit Thumbnail(const Request& request) : m_Request(request), m_Image(KelNewImage()) {}

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

    bool Failed(const char* pszStep, const std::string& strWhat, KelStatus status) {
        std::fprintf(stderr, "thumbnail: cannot %s %s\n  result:  %s (%d)\n  meaning: %s\n",
                     pszStep, strWhat.c_str(), status.Name(), status.Code(), status.Meaning());
        for (const std::string& strLine : m_Trace.Take()) {
            std::fprintf(stderr, "  trace:   %s\n", strLine.c_str());
        }
        return false;
    }

    bool Open() {
        const KelStatus status = m_Image->Open(m_Request.strIn.c_str());
        if (!status) {
            return Failed("open", m_Request.strIn, status);
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
        const KelStatus status =
            m_Image->ApplyFilter(KEL_FILTER_SCALE, KelParameters{}
                                                       .Set("width", m_Request.nWidth)
                                                       .Set("height", m_Request.nHeight)
                                                       .Set("type", m_Request.eKernel));
        if (!status) {
            return Failed("scale", m_Request.strIn, status);
        }
        std::printf("scaled  to %d x %d, %s, %.1f ms\n", m_Image->GetWidth(), m_Image->GetHeight(),
                    NameOf(kKernels, m_Request.eKernel), Lap());
        return true;
    }

    bool Paint() {
        m_Image = NewPicture(m_Request.nWidth, m_Request.nHeight, 24);
        if (m_Image == nullptr) {
            return Failed("make", "room for the scene", KEL_ERR_MEMORY);
        }
        PaintScene(m_Image->GetBits(), m_Request.nWidth, m_Request.nHeight,
                   (m_Request.nWidth * 24 + 31) / 32 * 4);
        std::printf("painted a scene: %d x %d, %.1f ms\n", m_Image->GetWidth(),
                    m_Image->GetHeight(), Lap());
        return true;
    }

    bool Save() {
        const KelStatus status = SafeSave(*m_Image, m_Request.strOut, m_Request.eFormat,
                                          KelParameters{}.Set("quality", m_Request.nQuality));
        if (!status) {
            return Failed("write", m_Request.strOut, status);
        }
        std::error_code error;
        const auto nBytes = std::filesystem::file_size(PathOf(m_Request.strOut), error);
        std::printf("wrote   %s: %s, %lld bytes, %.1f ms\n", m_Request.strOut.c_str(),
                    NameOf(kFormats, m_Request.eFormat),
                    error ? 0LL : static_cast<long long>(nBytes), Lap());
        return true;
    }

    const Request& m_Request;
    TraceLines m_Trace;
    KelImagePtr m_Image;
    std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
};

}  // namespace

int main(int nCount, char** ppArguments) {
    TakeUtf8Arguments(nCount, ppArguments);
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
#ifndef _WIN32
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
#endif
    return Thumbnail(request).Run() ? 0 : 1;
}
