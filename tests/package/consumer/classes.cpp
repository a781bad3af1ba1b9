// A foreign program that uses the classes behind the interface, by their own headers.
#include <kelimage.h>

#include <keldecoder.h>
#include <kelencoder.h>
#include <kelfilter.h>
#include <kelparameters.h>
#include <kelscale.h>

#if defined(NO_OTHER_HEADERS) && (__has_include("plan.h") || __has_include("kelscale/plan.h"))
#error "a header of the library's own can be included"
#endif

int main() {
    CKelImage image;
    CKelBMPEncoder encoder;
    CKelEncoder* pWriter = &encoder;
    PLBoxContribDef kernel(0.5);
    C2PassScale<CDataRGB_UBYTE> scaler(&kernel);
    LineContribType* pTable = scaler.CalcContributions(4, 8, 0.5);
    const bool bRight = pTable != nullptr && pTable->nLineLength == 4 &&
                        image.Create(3, 2, 24) != nullptr &&
                        dynamic_cast<CKelBMPEncoder*>(pWriter) != nullptr;
    scaler.FreeContributions(pTable);
    return bRight ? 0 : 1;
}
