// The whole-shape operations of the contour lists. The list operations themselves are in the header.
#include "tarvex/containers.h"

#include <type_traits>

#include "bezier/flatten.h"
#include "tarvex/envelope.h"
#include "tarvex/polygons.h"
#include "tarvex/view.h"

namespace tarvex {

namespace {

void Apply(CView3D& view, DPOINT& p) {
    view.Transfer(p.x, p.y, 0);
    p = {view.x(), view.y()};
}

void Apply(CEnvelop& envelope, DPOINT& p) { p.y = envelope.envelop(p.x, p.y); }

template <class Map>
void Apply(Map& map, BPOINT& node) {
    Apply(map, node.pt);
    Apply(map, node.cp1);
    Apply(map, node.cp2);
}

/// Applies a map to everything in a list of contours, or of shapes.
template <class Map, class Element>
void ApplyToAll(Map& map, COwningList<Element>& list) {
    for (int i = 0; i < list.GetCount(); ++i) {
        Element* element = list.GetAt(i);
        if (element == nullptr) continue;
        if constexpr (std::is_same_v<Element, CPolyPolyBezier>) {
            ApplyToAll(map, *element);
        } else {
            for (auto& point : *element) Apply(map, point);
        }
    }
}

}  // namespace

void CPolyPolyDPoint::ApplyTransformation(CView3D& view) { ApplyToAll(view, *this); }
void CPolyPolyBezier::ApplyTransformation(CView3D& view) { ApplyToAll(view, *this); }
void COutlines::ApplyTransformation(CView3D& view) { ApplyToAll(view, *this); }

void CPolyPolyDPoint::ApplyEnvelop(CEnvelop& envelope) { ApplyToAll(envelope, *this); }
void CPolyPolyBezier::ApplyEnvelop(CEnvelop& envelope) { ApplyToAll(envelope, *this); }
void COutlines::ApplyEnvelop(CEnvelop& envelope) { ApplyToAll(envelope, *this); }

void CPolyPolyBezier::CalcFrame(DRECT& frame, double resolution) const {
    PointFrame grown;
    for (int c = 0; c < GetCount(); ++c) {
        const auto* contour = GetAt(c);
        if (contour == nullptr || contour->GetCount() < 2) continue;
        grown.Include(contour->GetAt(0).pt);
        for (int i = 0; i + 1 < contour->GetCount(); ++i) {
            CBezier segment(contour->GetAt(i), contour->GetAt(i + 1));
            segment.SetResolution(resolution);
            IncludeFlattened(segment, grown);
        }
    }
    frame = grown.BoxOr(frame);
}

void COutlines::CalcFrame(DRECT& frame, double resolution) const {
    PointFrame grown;
    for (int k = 0; k < GetCount(); ++k) {
        if (GetAt(k) == nullptr) continue;
        DRECT box{0, 0, 0, 0};
        GetAt(k)->CalcFrame(box, resolution);
        grown.Include(box);
    }
    frame = grown.BoxOr({0, 1, 0, 1});
}

void CPolyPolyBezier::SetOrientation(bool clockwise) {
    for (int c = 0; c < GetCount(); ++c) {
        if (auto* contour = GetAt(c); contour != nullptr) tarvex::SetOrientation(*contour, clockwise);
    }
}

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
