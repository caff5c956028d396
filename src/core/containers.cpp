// The whole-shape operations of the contour lists. The list operations themselves are in the header.
#include "tarvex/containers.h"

#include <vector>

#include "bezier/flatten.h"

namespace tarvex {

namespace {

/// A box that grows from its first point. Comparisons are such that NaN never widens it.
class Frame {
  public:
    void Include(const DPOINT& p) { Include({p.x, p.x, p.y, p.y}); }

    void Include(const DRECT& box) {
        if (m_isEmpty) m_box = box;
        m_isEmpty = false;
        if (box.left < m_box.left) m_box.left = box.left;
        if (box.right > m_box.right) m_box.right = box.right;
        if (box.top < m_box.top) m_box.top = box.top;
        if (box.bottom > m_box.bottom) m_box.bottom = box.bottom;
    }

    DRECT BoxOr(const DRECT& ifEmpty) const { return m_isEmpty ? ifEmpty : m_box; }

  private:
    DRECT m_box;
    bool m_isEmpty = true;
};

}  // namespace

void CPolyPolyBezier::CalcFrame(DRECT& frame, double resolution) const {
    Frame grown;
    std::vector<DPOINT> points;
    for (int c = 0; c < GetCount(); ++c) {
        const auto* contour = GetAt(c);
        if (contour == nullptr || contour->GetCount() < 2) continue;
        grown.Include(contour->GetAt(0).pt);
        for (int i = 0; i + 1 < contour->GetCount(); ++i) {
            CBezier segment(contour->GetAt(i), contour->GetAt(i + 1));
            segment.SetResolution(resolution);
            points.clear();
            AppendFlattened(segment, points);
            for (const DPOINT& p : points) grown.Include(p);
        }
    }
    frame = grown.BoxOr(frame);
}

void COutlines::CalcFrame(DRECT& frame, double resolution) const {
    Frame grown;
    for (int k = 0; k < GetCount(); ++k) {
        if (GetAt(k) == nullptr) continue;
        DRECT box{0, 0, 0, 0};
        GetAt(k)->CalcFrame(box, resolution);
        grown.Include(box);
    }
    frame = grown.BoxOr({0, 1, 0, 1});
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
