#include "kelimage.h"

unsigned char* CKelImage::AllocateBits(unsigned int) { return nullptr; }
unsigned int CKelImage::GetBmpDataSize() { return 0; }
unsigned char* CKelImage::Create(int, int, int) { return nullptr; }
unsigned char* CKelImage::AllocateBits1() { return nullptr; }
void CKelImage::DeleteBits() {}
void CKelImage::DeleteBMI() {}
void CKelImage::DeleteLineArray() {}
unsigned char** CKelImage::CreateLineArray() { return nullptr; }
bool CKelImage::IsValidPixelDepth(int) const { return false; }
bool CKelImage::IsValidWINCompression(unsigned int) const { return false; }
bool CKelImage::ReplaceBits(unsigned char*) { return false; }
