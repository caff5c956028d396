// Which of many boxes a thing meets: a packed tree.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tarvex::clip {

struct Box {
    double left = 0;
    double right = 0;
    double bottom = 0;
    double top = 0;

    /// Boxes that touch meet.
    bool Meets(const Box& other) const {
        return left <= other.right && other.left <= right && bottom <= other.top && other.bottom <= top;
    }
    void Include(const Box& other);
};

/// A tree of boxes, packed once: neighbours in x, then in y, share nodes.
class BoxIndex {
  public:
    explicit BoxIndex(const std::vector<Box>& boxes);

    /// Calls `found(i)` for every box i that `meets(box)`, until it returns true, and returns whether it
    /// did. `meets` must hold for a box around another for which it holds.
    template <class Meets, class Found>
    bool Search(Meets&& meets, Found&& found) const {
        if (m_levels.front().empty()) return false;
        std::vector<std::pair<std::size_t, std::size_t>> open{{m_levels.size() - 1, 0}};  // level, number
        while (!open.empty()) {
            const auto [level, number] = open.back();
            open.pop_back();
            if (!meets(m_levels[level][number])) continue;
            if (level == 0) {
                if (found(m_order[number])) return true;
                continue;
            }
            const std::size_t first = number * fanOut;
            const std::size_t end = std::min(first + fanOut, m_levels[level - 1].size());
            for (std::size_t i = first; i < end; ++i) open.emplace_back(level - 1, i);
        }
        return false;
    }

  private:
    static constexpr std::size_t fanOut = 8;
    std::vector<std::uint32_t> m_order;      ///< the boxes' numbers, as they stand in the lowest level
    std::vector<std::vector<Box>> m_levels;  ///< the boxes first, then what each eight of them cover
};

}  // namespace tarvex::clip
