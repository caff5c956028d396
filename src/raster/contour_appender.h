// Appending many contours to a list whose own growth step is capped.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>

#include "tarvex/containers.h"

namespace tarvex {

/// Appends to a list, making room in proportion to what it holds, so that a million contours do not copy
/// the list a thousand times. The list is complete after each `Add`.
template <class Element>
class ContourAppender {
  public:
    explicit ContourAppender(COwningList<Element>& list) : m_list(list), m_room(list.GetCount() + 1) {}

    void Add(std::unique_ptr<Element> contour) {
        const int count = m_list.GetCount();
        if (count >= m_room) {
            m_room = count > INT32_MAX / 2 ? INT32_MAX : std::max(16, 2 * count);
            m_list.SetSize(m_room);
            m_list.SetSize(count);  // shrinking keeps the room
        }
        m_list.Add(std::move(contour));
    }

  private:
    COwningList<Element>& m_list;
    int m_room;
};

}  // namespace tarvex
