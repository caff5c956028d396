// Building the tree of boxes: top down, at medians, so that it is balanced whatever the boxes.
#include "shaping/box_tree.h"

#include <numeric>

namespace tarvex::shaping {

namespace {

constexpr int LEAF_SIZE = 4;

}  // namespace

BoxTree::BoxTree(std::span<const Box> boxes) : m_boxes(boxes), m_order(boxes.size()) {
    std::iota(m_order.begin(), m_order.end(), 0);
    if (boxes.empty()) return;
    m_nodes.reserve(boxes.size());
    Build(0, static_cast<int>(boxes.size()));
}

int BoxTree::Build(int first, int last) {
    Box box = BoxAt(first);
    for (int k = first + 1; k < last; ++k) box = Union(box, BoxAt(k));
    const int index = static_cast<int>(m_nodes.size());
    m_nodes.push_back({box, first, last});
    if (last - first <= LEAF_SIZE) return index;
    const bool alongX = box.right - box.left >= box.bottom - box.top;
    const auto twiceCentre = [this, alongX](int i) {
        const Box& b = m_boxes[static_cast<std::size_t>(i)];
        return alongX ? b.left + b.right : b.top + b.bottom;
    };
    const int middle = first + (last - first) / 2;
    std::nth_element(m_order.begin() + first, m_order.begin() + middle, m_order.begin() + last,
                     [&](int i, int j) { return twiceCentre(i) < twiceCentre(j); });
    const int left = Build(first, middle);
    const int right = Build(middle, last);
    Node& node = m_nodes[static_cast<std::size_t>(index)];
    node.left = left;
    node.right = right;
    return index;
}

}  // namespace tarvex::shaping
