// A host program: loads an extension that uses the library, lets it call each family, unloads it, and does so
// again and again. The same figures come out on every system, bit for bit, and nothing is left behind.
//
//     host EXTENSION
#include <cstdio>

#include "families.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

#ifdef _WIN32
using Library = HMODULE;
Library Load(const char* path) { return LoadLibraryA(path); }
HostCall Find(Library library) {
    return reinterpret_cast<HostCall>(reinterpret_cast<void*>(GetProcAddress(library, "CallFamilies")));
}
bool Unload(Library library) { return FreeLibrary(library) != 0; }
bool IsLoaded() { return GetModuleHandleA("Tarvex.dll") != nullptr; }
unsigned long CountHandles() { return GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS); }
#else
using Library = void*;
Library Load(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
HostCall Find(Library library) { return reinterpret_cast<HostCall>(dlsym(library, "CallFamilies")); }
bool Unload(Library library) { return dlclose(library) == 0; }
bool IsLoaded() {
    void* const library = dlopen(TARVEX_LIBRARY, RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr) dlclose(library);
    return library != nullptr;
}
unsigned long CountHandles() { return 0; }
#endif

constexpr int kMoreLoads = 100;

bool LoadCallUnload(const char* path, HostPrint print) {
    const Library library = Load(path);
    const HostCall call = library != nullptr ? Find(library) : nullptr;
    if (call == nullptr) {
        std::fprintf(stderr, "host: %s is no extension that can be loaded\n", path);
        return false;
    }
    call(print, nullptr);
    if (!Unload(library) || IsLoaded()) {
        std::fprintf(stderr, "host: %s stays loaded\n", path);
        return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: host EXTENSION\n", stderr);
        return 2;
    }
    if (!LoadCallUnload(argv[1], [](void*, const char* line) { std::puts(line); })) return 1;
    const unsigned long handles = CountHandles();
    if (!LoadCallUnload(argv[1], [](void*, const char*) {})) return 1;
    for (int i = 0; i < kMoreLoads; ++i) {
        const Library library = Load(argv[1]);
        if (library == nullptr || !Unload(library) || IsLoaded()) {
            std::fprintf(stderr, "host: loading it for the %dth time went wrong\n", i + 3);
            return 1;
        }
    }
    if (CountHandles() > handles) {
        std::fputs("host: loading it again left handles behind\n", stderr);
        return 1;
    }
    return 0;
}
