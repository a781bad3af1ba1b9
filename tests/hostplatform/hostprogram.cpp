// Opens, scales and saves over the host's own platform layer. Prints what failed.
#include <ikelex/ikelex.h>
#include <kelimage.h>
#include <kelparameters.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <filesystem>

static int g_nFailed = 0;

#define EXPECT(condition) \
    static_cast<void>((condition) || (++g_nFailed, std::puts("failed: " #condition)))

int main() {
    CKelImage image;
    unsigned char* const pBits = image.Create(60, 40, 24);
    for (unsigned int i = 0; i < 60 * 3 * 40; ++i) {
        pBits[i] = static_cast<unsigned char>(i * i >> 5);
    }
    for (const auto& [pszPath, eFormat] :
         {std::pair{"host.bmp", KEL_IMAGE_BMP}, std::pair{"host.png", KEL_IMAGE_PNG}}) {
        CKelImage read;
        EXPECT(image.Save(pszPath, eFormat, nullptr) == KEL_OK);
        EXPECT(read.Open(pszPath) == KEL_OK);
        EXPECT(read.GetHeight() == 40 && std::memcmp(read.GetBits(), pBits, 7200) == 0);
    }

    // The host's own rule of comparison finds the option, and the copy shares nothing.
    tagKelParameterItem items[2];
    items[0].strName = CVamString("QUALITY");
    items[0].varValue.m_byType = items[1].varValue.m_byType = VAM_INT32;
    items[0].varValue.m_Value.nInt = 5;
    items[1].strName = CVamString("Width");
    items[1].varValue.m_Value.nInt = 30;
    tagKelParameters params{2, items};
    EXPECT(image.Save("default.jpg", KEL_IMAGE_JPEG, nullptr) == KEL_OK);
    EXPECT(image.Save("host.jpg", KEL_IMAGE_JPEG, &params) == KEL_OK);
    EXPECT(std::filesystem::file_size("host.jpg") < std::filesystem::file_size("default.jpg"));
    EXPECT(image.Open("host.jpg") == KEL_OK && image.GetWidth() == 60);
    EXPECT(image.ApplyFilter(KEL_FILTER_SCALE, &params) == KEL_OK && image.GetWidth() == 30);
    tagKelParameters copy;
    CopyParameters(&params, &copy);
    items[0].strName.Overwrite('x');
    EXPECT(GetParameter(copy, "quality") == &copy.pItems[0].varValue);
    DestroyParameters(copy);
    {
        CKelParameterMgr manager;
        EXPECT(manager.SetParameters(&params) == 1);
        g_bThrow = true;
    }
    EXPECT(!g_bThrow);

    EXPECT(image.Open("none/host.bmp") == KEL_ERR_FILE);
    EXPECT(image.Save("none/host.bmp", KEL_IMAGE_BMP, nullptr) == KEL_ERR_FILE);
    EXPECT(g_strTrace.empty());
    image.AllocateBits(0);
    EXPECT(g_strTrace == "0dwSize is invalid: 0\n0dwSize is invalid: 0\n");
    g_strTrace.clear();
    g_nTraceLevel = 1;
    g_nSecureResult = 34;
    CKelImage constructed;
    EXPECT(g_strTrace.rfind("1[ikelex/src/kelimage;", 0) == 0);
    EXPECT(g_strTrace.find("] secure function return=34\n") == g_strTrace.size() - 28);
    g_nSecureResult = 0;
    std::ofstream("broken.png", std::ios::binary) << "\x89PNG\r\n\x1a\nnothing that follows";
    EXPECT(image.Open("broken.png") == KEL_ERR_CODEC);
    EXPECT(g_strTrace.find("%$s") != std::string::npos);
    EXPECT(g_nForeignCalls == 0);
    return g_nFailed;
}
