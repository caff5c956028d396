// The whole-shape operations of the contour lists. The list operations themselves are in the header.
#include "tarvex/containers.h"

namespace tarvex {

void CPolyPolyBezier::EnsureClosed() {
    for (int c = 0; c < GetCount(); ++c) {
        auto* contour = GetAt(c);
        if (contour == nullptr || contour->GetCount() < 2) continue;
        BPOINT& first = contour->GetAt(0);
        BPOINT& last = contour->GetAt(contour->GetUpperBound());
        if (first.pt == last.pt) continue;
        first.cp1 = first.pt;
        last.cp2 = last.pt;
        const DPOINT start = first.pt;
        contour->Add({start, start, start});
    }
}

}  // namespace tarvex
