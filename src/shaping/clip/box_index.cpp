// A packed tree of boxes (sort-tile-recursive packing, Leutenegger, Lopez and Edgington 1997), so that
// marking thousands of contours does not compare every pair of them.
#include "shaping/clip/box_index.h"

#include <cmath>
#include <numeric>

namespace tarvex::clip {

void Box::Include(const Box& other) {
    left = std::min(left, other.left);
    right = std::max(right, other.right);
    bottom = std::min(bottom, other.bottom);
    top = std::max(top, other.top);
}

BoxIndex::BoxIndex(const std::vector<Box>& boxes) : m_order(boxes.size()) {
    std::iota(m_order.begin(), m_order.end(), 0U);
    std::sort(m_order.begin(), m_order.end(),
              [&boxes](std::uint32_t i, std::uint32_t j) { return boxes[i].left < boxes[j].left; });
    const auto slices = static_cast<std::size_t>(std::sqrt(static_cast<double>(boxes.size()) / fanOut)) + 1;
    const std::size_t sliceSize = boxes.size() / slices + 1;
    for (std::size_t i = 0; i < boxes.size(); i += sliceSize) {
        const auto begin = m_order.begin() + static_cast<std::ptrdiff_t>(i);
        const auto end = m_order.begin() + static_cast<std::ptrdiff_t>(std::min(i + sliceSize, boxes.size()));
        std::sort(begin, end,
                  [&boxes](std::uint32_t k, std::uint32_t l) { return boxes[k].bottom < boxes[l].bottom; });
    }
    std::vector<Box> lowest;
    lowest.reserve(boxes.size());
    for (const std::uint32_t i : m_order) lowest.push_back(boxes[i]);
    m_levels.push_back(std::move(lowest));
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

}  // namespace tarvex::clip
