// A host program over the shared libraries that has a memset_s and a zt_trace_write of its own: the
// library's calls must arrive here.
#include <ikelex/ikelex.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <cstring>
#include <string>

static int g_nSets = 0;
static int g_nFailing = 0;
static std::string g_strTrace;

int memset_s(void* dest, std::size_t, int value, std::size_t count) {
    std::memset(dest, value, count);
    return ++g_nSets == g_nFailing ? 34 : 0;
}

void zt_trace_write(int nLevel, const char* pszText, int nReserved) {
    g_strTrace += std::to_string(nLevel) + pszText + std::to_string(nReserved) + "\n";
}

// The trace of making and ending an image while the first memset_s reports 34.
static std::string TraceOfConstruction(int nLevel) {
    zt_trace_set_level(nLevel);
    g_nFailing = g_nSets + 1;
    g_strTrace.clear();
    IKelImage* pImage = nullptr;
    CreateImageObject(&pImage);
    const bool bMade = pImage != nullptr && pImage->GetWidth() == 0;
    DestroyImageObject(pImage);
    return bMade ? g_strTrace : "no image";
}

// The trace of opening what is no whole JPEG. This zt_trace_write lets everything through.
static std::string TraceOfOpen(int nLevel) {
    zt_trace_set_level(nLevel);
    g_strTrace.clear();
    IKelImage* pImage = nullptr;
    CreateImageObject(&pImage);
    CVamArchiveMemory start("\xFF\xD8\xFF", 3);
    pImage->Open(&start);
    DestroyImageObject(pImage);
    return g_strTrace;
}

int main() {
    const bool bDefault = zt_trace_level() == 0;
    const bool bDetail = TraceOfOpen(1).find("decompress_struct:") == std::string::npos &&
                         TraceOfOpen(2).find("decompress_struct:") != std::string::npos;
    int nLine = 0;
    int nEnd = 0;
    const std::string strOne = TraceOfConstruction(1);
    std::sscanf(strOne.c_str(), "1[ikelex/src/kelimage;%d] secure function return=340\n%n", &nLine,
                &nEnd);
    const bool bOne = nLine > 0 && static_cast<std::size_t>(nEnd) == strOne.size();
    const std::string strNone = TraceOfConstruction(0);
    std::printf("%d calls; level 1: %s; level 0: %s\n", g_nSets, strOne.c_str(), strNone.c_str());
    return bDefault && bDetail && bOne && strNone.empty() && g_nSets >= 2 ? 0 : 1;
}
