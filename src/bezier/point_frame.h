// A box that grows around points.
#pragma once

#include "tarvex/records.h"

namespace tarvex {

/// A box that grows from its first point. Comparisons are such that NaN never widens it.
class PointFrame {
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

    bool Holds(const DPOINT& p) const {
        return p.x >= m_box.left && p.x <= m_box.right && p.y >= m_box.top && p.y <= m_box.bottom;
    }

    /// Whether no side is farther than that from 0.
    bool IsWithin(double most) const {
        return m_box.left >= -most && m_box.right <= most && m_box.top >= -most && m_box.bottom <= most;
    }

    DRECT BoxOr(const DRECT& ifEmpty) const { return m_isEmpty ? ifEmpty : m_box; }

  private:
    DRECT m_box;
    bool m_isEmpty = true;
};

}  // namespace tarvex
