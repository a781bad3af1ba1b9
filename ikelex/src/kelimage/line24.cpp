#include "kelimage.h"

unsigned char* CKelImage::CreateLine32() const { return nullptr; }
unsigned char* CKelImage::CreateLine24() const { return nullptr; }
unsigned char* CKelImage::CreateLine16() const { return nullptr; }
unsigned char* CKelImage::GetLine24At(int, int, unsigned char*) { return nullptr; }
unsigned char* CKelImage::GetLine24AsBGRAt(int, unsigned char*) { return nullptr; }
unsigned char* CKelImage::GetLine24AsRGBAt(int, unsigned char*) { return nullptr; }
bool CKelImage::ConvertTo24Bit(int, unsigned char*) { return true; }
void CKelImage::Convert1BitTo24Bit(int, unsigned char*, unsigned char*) {}
void CKelImage::Convert4BitTo24Bit(int, unsigned char*, unsigned char*) {}
void CKelImage::Convert8BitTo24Bit(int, unsigned char*, unsigned char*) {}
void CKelImage::Convert16BitTo24Bit(int, unsigned char*, unsigned char*) {}
void CKelImage::Convert24BitTo24Bit(int, unsigned char*, unsigned char*) const {}
void CKelImage::Convert32BitTo24Bit(int, unsigned char*, unsigned char*) {}
