// The arrays and lists that cross the library's boundary, compiled once for everyone: their declarations in
// the headers keep other code from making copies.
#include "tarvex/containers.h"
#include "tarvex/imagetrace.h"

namespace tarvex {

template class CArray<void*, void*>;
template class CArray<DWORD, DWORD>;
template class CArray<double, double>;
template class CArray<tagPOINT, tagPOINT>;
template class CArray<DPOINT, DPOINT>;
template class CArray<BPOINT, BPOINT>;
template class CArray<DLINE, DLINE>;
template class CArray<BEZIER, BEZIER>;
template class CArray<TRIG, TRIG>;

template class COwningList<CArray<double, double>>;
template class COwningList<CDWordArray>;
template class COwningList<CArray<tagPOINT, tagPOINT>>;
template class COwningList<CArray<DPOINT, DPOINT>>;
template class COwningList<CArray<BPOINT, BPOINT>>;
template class COwningList<CPolyPolyBezier>;

namespace {

/// Is never called. The lists have no virtual function in any file to go by, so the compiler leaves out the
/// tables that their objects point to, which programs look for in a DLL, unless something here makes objects.
[[gnu::used]] std::unique_ptr<CObject> MakeList(int which) {
    switch (which) {
        case 0:
            return std::make_unique<CPolyPolyInclination>();
        case 1:
            return std::make_unique<CPolyPolyDWord>();
        case 2:
            return std::make_unique<CPolyPolyPoint>();
        case 3:
            return std::make_unique<CPolyPolyDPoint>();
        case 4:
            return std::make_unique<CPolyPolyBezier>();
        case 5:
            return std::make_unique<COutlines>();
        case 6:
            return std::make_unique<CTrigArray>();
        default:
            return std::make_unique<CPolyPolyWidth>();
    }
}

}  // namespace

}  // namespace tarvex
