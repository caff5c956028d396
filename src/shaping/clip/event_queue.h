// What the sweep has still to look after, the nearest first: a binary heap whose way down is chosen
// without branches, because which of two events comes first is anybody's guess.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "shaping/clip/point.h"

namespace tarvex::clip {

/// Something to be looked after at a point: items that start or end there, or none (-1).
struct Event {
    Point at;
    std::int32_t first = -1;
    std::int32_t second = -1;
};

class EventQueue {
  public:
    bool IsEmpty() const { return m_heap.empty(); }
    const Event& Next() const { return m_heap.front(); }

    void Push(const Event& event) {
        m_heap.push_back(event);
        Rise(m_heap.size() - 1, event);
    }

    void Pop() {
        const Event last = m_heap.back();
        m_heap.pop_back();
        if (m_heap.empty()) return;
        const std::size_t size = m_heap.size();
        std::size_t hole = 0;
        for (std::size_t right = 2; right < size; right = 2 * hole + 2) {
            const std::size_t nearer = right - IsBefore(m_heap[right - 1].at, m_heap[right].at);
            m_heap[hole] = m_heap[nearer];
            hole = nearer;
        }
        if (2 * hole + 2 == size) {  // a left child without a right one
            m_heap[hole] = m_heap[size - 1];
            hole = size - 1;
        }
        Rise(hole, last);
    }

  private:
    /// Before, as a number.
    static std::size_t IsBefore(const Point& a, const Point& b) {
        const auto below = static_cast<std::size_t>(a.y < b.y);
        const auto level = static_cast<std::size_t>(a.y == b.y);
        return below | (level & static_cast<std::size_t>(a.x < b.x));
    }

    /// Puts an event into a hole, or above it until nothing above is later.
    void Rise(std::size_t hole, const Event& event) {
        while (hole > 0) {
            const std::size_t parent = (hole - 1) / 2;
            if (!Before(event.at, m_heap[parent].at)) break;
            m_heap[hole] = m_heap[parent];
            hole = parent;
        }
        m_heap[hole] = event;
    }

    std::vector<Event> m_heap;
};

}  // namespace tarvex::clip
