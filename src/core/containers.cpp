// The whole-shape operations of the contour lists. The list operations themselves are in the header.
#include "tarvex/containers.h"

#include <type_traits>

#include "bezier/flatten.h"
#include "core/lanes.h"
#include "tarvex/envelope.h"
#include "tarvex/polygons.h"
#include "tarvex/view.h"

namespace tarvex {

namespace {

/// `CView3D::Transfer` of points with z = 0, both coordinates at once. The sums are Transform3D's, in its
/// order, without what makes z.
class PlaneView {
  public:
    explicit PlaneView(const CView3D& view)
        : m_forX(Row(view, 0)),
          m_forY(Row(view, 1)),
          m_forZ(Lanes(0.0) * Row(view, 2)),
          m_shift(Row(view, 3)) {}

    DPOINT Image(const DPOINT& p) {
        m_last = p;
        m_isUsed = true;
        const Lanes sum = Lanes(0.0) + Lanes(p.x) * m_forX + Lanes(p.y) * m_forY + m_forZ + m_shift;
        return {sum.Lane(0), sum.Lane(1)};
    }
    /// Leaves the view as Transfer of these points does: with the last one's image.
    void Leave(CView3D& view) const {
        if (m_isUsed) view.Transfer(m_last.x, m_last.y, 0);
    }

  private:
    using Lanes = TwoLanes;
    static Lanes Row(const CView3D& view, int row) { return Lanes::Load(view.mat()[row]); }

    Lanes m_forX, m_forY, m_forZ, m_shift;
    DPOINT m_last;
    bool m_isUsed = false;
};

void Apply(PlaneView& view, DPOINT& p) { p = view.Image(p); }

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

template <class List>
void TransformAll(CView3D& view, List& list) {
    PlaneView plane(view);
    ApplyToAll(plane, list);
    plane.Leave(view);
}

}  // namespace

void CPolyPolyDPoint::ApplyTransformation(CView3D& view) { TransformAll(view, *this); }
void CPolyPolyBezier::ApplyTransformation(CView3D& view) { TransformAll(view, *this); }
void COutlines::ApplyTransformation(CView3D& view) { TransformAll(view, *this); }

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
            const BPOINT& from = contour->GetAt(i);
            const BPOINT& to = contour->GetAt(i + 1);
            if (HoldsFlattened(grown, from.cp2, to.cp1, to.pt)) continue;
            CBezier segment(from, to);
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
