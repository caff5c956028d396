// A packed tree of boxes (sort-tile-recursive packing, Leutenegger, Lopez and Edgington 1997), so that
// marking thousands of contours does not compare every pair of them.
#include "shaping/clip/box_index.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarvex::clip {

void Box::Include(const Box& other) {
    left = std::min(left, other.left);
    right = std::max(right, other.right);
    bottom = std::min(bottom, other.bottom);
    top = std::max(top, other.top);
}

BoxIndex::BoxIndex(std::vector<Box> boxes) {
    std::sort(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.left < b.left; });
    const auto slices = static_cast<std::size_t>(std::sqrt(static_cast<double>(boxes.size()) / fanOut)) + 1;
    const std::size_t sliceSize = boxes.size() / slices + 1;
    for (std::size_t i = 0; i < boxes.size(); i += sliceSize) {
        const std::size_t end = std::min(i + sliceSize, boxes.size());
        std::sort(boxes.begin() + static_cast<std::ptrdiff_t>(i),
                  boxes.begin() + static_cast<std::ptrdiff_t>(end),
                  [](const Box& a, const Box& b) { return a.bottom < b.bottom; });
    }
    m_levels.push_back(std::move(boxes));
    while (m_levels.back().size() > 1) {
        const std::vector<Box>& below = m_levels.back();
        std::vector<Box> level;
        level.reserve(below.size() / fanOut + 1);
        for (std::size_t i = 0; i < below.size(); ++i) {
            if (i % fanOut == 0)
                level.push_back(below[i]);
            else
                level.back().Include(below[i]);
        }
        m_levels.push_back(std::move(level));
    }
}

bool BoxIndex::AnyMeets(const Box& box) const {
    if (m_levels.front().empty()) return false;
    std::vector<std::pair<std::size_t, std::size_t>> open{{m_levels.size() - 1, 0}};  // level, number
    while (!open.empty()) {
        const auto [level, number] = open.back();
        open.pop_back();
        if (!m_levels[level][number].Meets(box)) continue;
        if (level == 0) return true;
        const std::size_t first = number * fanOut;
        const std::size_t end = std::min(first + fanOut, m_levels[level - 1].size());
        for (std::size_t i = first; i < end; ++i) open.emplace_back(level - 1, i);
    }
    return false;
}

}  // namespace tarvex::clip
