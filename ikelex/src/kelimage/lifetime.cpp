#include "kelimage.h"

IKelImage::~IKelImage() = default;
CKelImage::CKelImage()
    : m_nPaletteNum(0), m_nPaletteSize(0), m_ppLineArray(nullptr), m_pBits(nullptr),
      m_pPalette(nullptr), m_pBMI(nullptr), m_bOwnBuffers(1), m_bmih() {}
CKelImage::~CKelImage() {}
unsigned char* CKelImage::GetBits() { return m_pBits; }
unsigned char** CKelImage::GetLineArray() { return m_ppLineArray; }
tagKelRGBQUAD* CKelImage::GetPalette() { return m_pPalette; }
BITMAPINFOHEADER* CKelImage::GetBitmapInfoHeader() { return &m_bmih; }
int CKelImage::GetPaletteNum() { return m_nPaletteNum; }
int CKelImage::GetWidth() { return m_bmih.biWidth; }
int CKelImage::GetHeight() { return m_bmih.biHeight; }
int CKelImage::GetBitsPerPixel() { return m_bmih.biBitCount; }
void CKelImage::Clean() {}
void CKelImage::Init() {}
void CKelImage::Borrow(CKelImage*) {}
void CKelImage::Destroy() {}
