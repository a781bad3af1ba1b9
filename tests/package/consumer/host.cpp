// A foreign program over the installed package, C++11: makes a picture, saves it, opens it through
// an archive of its own, scales it with options, and saves the result. Public names only. Exits
// with 0 when every step gave what it should.
#include <ikelex/handle.h>
#include <platform/vamplatform.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>

namespace {

// A stream of the host's own, over a string.
class HostArchive : public CVamArchive {
  public:
    explicit HostArchive(const std::string& strBytes = std::string()) : m_strBytes(strBytes) {}

    unsigned int Read(void* pBuffer, unsigned int nCount) override {
        const std::string strPart = m_strBytes.substr(m_nAt, nCount);
        std::memcpy(pBuffer, strPart.data(), strPart.size());
        m_nAt += strPart.size();
        return static_cast<unsigned int>(strPart.size());
    }
    unsigned int Write(const void* pBuffer, unsigned int nCount) override {
        m_strBytes.append(static_cast<const char*>(pBuffer), nCount);
        return nCount;
    }
    bool Seek(long long nPosition, int) override {
        m_nAt = static_cast<std::size_t>(nPosition);
        return true;
    }
    long long GetPosition() override { return static_cast<long long>(m_nAt); }
    bool Flush() override { return true; }

    std::string m_strBytes;

  private:
    std::size_t m_nAt = 0;
};

// 16 x 8 pixels of one colour, so that every kernel keeps it.
bool Paint(IKelImage* pImage) {
    BITMAPINFO* pBMI = pImage->AllocateBMI(sizeof(BITMAPINFOHEADER));
    unsigned char* pBits = pImage->AllocateBits(16 * 3 * 8);
    if (pBMI == nullptr || pBits == nullptr) {
        return false;
    }
    pBMI->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    pBMI->bmiHeader.biWidth = 16;
    pBMI->bmiHeader.biHeight = 8;
    pBMI->bmiHeader.biPlanes = 1;
    pBMI->bmiHeader.biBitCount = 24;
    for (int i = 0; i < 16 * 3 * 8; ++i) {
        pBits[i] = 77;
    }
    return pImage->Open() == KEL_OK;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string strPath = std::string(argc > 1 ? argv[1] : ".") + "/host.png";
    const KelImagePtr image = KelNewImage();
    if (image == nullptr || !Paint(image.get())) {
        return 2;
    }
    KelParameters size = KelParameters{}.Set("width", 4).Set("height", 0.5).Set("width", 5);
    KelParameters copy;
    (copy = size).Set("width", 7);
    KelImagePtr other;
    const KelStatus saved = image->Save(strPath.c_str(), KEL_IMAGE_PNG, nullptr);
    std::ostringstream file;
    file << std::ifstream(strPath.c_str(), std::ios::binary).rdbuf();
    HostArchive input(file.str()), archive;
    const KelStatus results[] = {saved,
                                 image->Open(strPath.c_str()),
                                 image->Open(&input),
                                 KelApplyFilter(image, other, KEL_FILTER_SCALE, copy),
                                 image->ApplyFilter(KEL_FILTER_SCALE, size),
                                 image->Save(&archive, KEL_IMAGE_JPEG, KelParameters{})};
    bool bRight = image->GetWidth() == 5 && image->GetHeight() == 4 && image->GetBits()[0] == 77 &&
                  other->GetWidth() == 7 && archive.m_strBytes.size() > 100 &&
                  GetKelVersion() == IKELEX_VERSION;
    for (const KelStatus& status : results) {
        bRight = bRight && status && status == KEL_OK && status.Code() == 0;
    }
    const KelStatus failed =
        KelApplyFilter(image, other, KEL_FILTER_SCALE, KelParameters{}.Set("width", 0));
    std::ostringstream text;
    text << failed;
    std::printf("%s, with version %d\n", text.str().c_str(), GetKelVersion());
    bRight = bRight && !failed && failed != KEL_OK && other == nullptr &&
             text.str() == failed.ToString() && text.str().find("KEL_ERR_PARAM: ") == 0;
    std::ofstream(strPath + ".jpg", std::ios::binary) << archive.m_strBytes;
    return bRight ? 0 : 1;
}
