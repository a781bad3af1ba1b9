// A foreign program that is not linked with the library: it loads it and finds the factory by name.
#include <ikelex/ikelex.h>

#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv) {
    void* pLibrary = dlopen(argc > 1 ? argv[1] : "libikelex.so.1", RTLD_NOW);
    if (pLibrary == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    typedef void (*CreateFunction)(IKelImage**);
    typedef void (*DestroyFunction)(IKelImage*);
    CreateFunction pfnCreate = (CreateFunction)dlsym(pLibrary, "CreateImageObject");
    DestroyFunction pfnDestroy = (DestroyFunction)dlsym(pLibrary, "DestroyImageObject");
    if (pfnCreate == nullptr || pfnDestroy == nullptr) {
        return 2;
    }
    IKelImage* pImage = nullptr;
    pfnCreate(&pImage);
    const bool bRight = pImage != nullptr && pImage->GetBitmapInfoHeader()->biWidth == 0 &&
                        pImage->Open("no such file") == KEL_ERR_FILE;
    pfnDestroy(pImage);
    return bRight && dlclose(pLibrary) == 0 ? 0 : 3;
}
