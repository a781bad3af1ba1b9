// A foreign program that is not linked with the library: it loads it and finds the factory by name.
#include <ikelex/handle.h>

#ifdef _WIN32
#include <windows.h>
#define RTLD_NOW 0
#define dlopen(name, how) LoadLibraryA(name)
#define dlsym(library, name) \
    reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name))
#define dlclose(library) (!FreeLibrary(static_cast<HMODULE>(library)))
#define dlerror() "it cannot be loaded"
#else
#include <dlfcn.h>
#endif

#include <cstdio>

int main(int argc, char** argv) {
    void* pLibrary = dlopen(argc > 1 ? argv[1] : "libikelex.so.1", RTLD_NOW);
    if (pLibrary == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    KelCreateFunction pfnCreate = (KelCreateFunction)dlsym(pLibrary, "CreateImageObject");
    KelDestroyFunction pfnDestroy = (KelDestroyFunction)dlsym(pLibrary, "DestroyImageObject");
    if (pfnCreate == nullptr || pfnDestroy == nullptr) {
        return 2;
    }
    KelImagePtr image = KelNewImage(pfnCreate, pfnDestroy);
    const bool bRight = image != nullptr && image->GetBitmapInfoHeader()->biWidth == 0 &&
                        KelStatus(image->Open("no such file")) == KEL_ERR_FILE;
    image.reset();
    return bRight && dlclose(pLibrary) == 0 ? 0 : 3;
}
