// Construction, release and transfer of what an image holds.
#include <platform/vamplatform.h>

#include "kelimage.h"
#include "keltrace/keltrace.h"

IKelImage::~IKelImage() = default;

CKelImage::CKelImage()
    : m_nPaletteNum(0),
      m_nPaletteSize(0),
      m_ppLineArray(nullptr),
      m_pBits(nullptr),
      m_pPalette(nullptr),
      m_pBMI(nullptr),
      m_bOwnBuffers(1) {
    kel::SecureZero(kel::kSourceImage, &m_bmih, sizeof m_bmih);
}

CKelImage::~CKelImage() {
    try {
        Clean();
    } catch (...) {
        // A host's trace function threw. By then everything was released.
    }
}

unsigned char* CKelImage::GetBits() {
    return m_pBits;
}
unsigned char** CKelImage::GetLineArray() {
    return m_ppLineArray;
}
tagKelRGBQUAD* CKelImage::GetPalette() {
    return m_pPalette;
}
BITMAPINFOHEADER* CKelImage::GetBitmapInfoHeader() {
    return &m_bmih;
}
int CKelImage::GetPaletteNum() {
    return m_nPaletteNum;
}
int CKelImage::GetWidth() {
    return m_bmih.biWidth;
}
int CKelImage::GetHeight() {
    return m_bmih.biHeight;
}
int CKelImage::GetBitsPerPixel() {
    return m_bmih.biBitCount;
}

void CKelImage::Clean() {
    DestroyPaletteTable();
    DeleteLineArray();
    if (m_bOwnBuffers != 0) {
        delete[] m_pBits;
        DeleteBMI();
    }
    m_pBits = nullptr;
    m_pBMI = nullptr;
    kel::SecureZero(kel::kSourceImage, &m_bmih, sizeof m_bmih);
}

void CKelImage::Init() {
    m_ppLineArray = nullptr;
    m_pBits = nullptr;
    m_pPalette = nullptr;
    m_pBMI = nullptr;
    m_bOwnBuffers = 1;
    Clean();
}

void CKelImage::Borrow(CKelImage* pDonor) {
    if (pDonor == this) {
        return;
    }
    Clean();
    m_nPaletteNum = pDonor->m_nPaletteNum;
    m_nPaletteSize = pDonor->m_nPaletteSize;
    m_ppLineArray = pDonor->m_ppLineArray;
    m_pBits = pDonor->m_pBits;
    m_pPalette = pDonor->m_pPalette;
    m_pBMI = pDonor->m_pBMI;
    m_bOwnBuffers = pDonor->m_bOwnBuffers;
    m_bmih = pDonor->m_bmih;
    pDonor->Init();
}

void CKelImage::Destroy() {
    Clean();
    delete this;
}
