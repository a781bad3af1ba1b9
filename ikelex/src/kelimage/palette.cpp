#include "kelimage.h"

tagKelRGBQUAD* CKelImage::CreatePalette(BITMAPINFO*) { return nullptr; }
void CKelImage::DestroyPaletteTable() {}
bool CKelImage::ExpandPaletteTable() { return false; }
int CKelImage::AddPaletteEntry(unsigned char, unsigned char, unsigned char, unsigned char) {
    return 0;
}
