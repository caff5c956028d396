// Which of many boxes meet: a tree of boxes, and the walk over pairs of its nodes.
//
// The tree halves its boxes at the median of their centres along the longer side, down to four. Two
// subtrees whose boxes do not meet are passed over together, so finding all k pairs among n boxes of
// outlines takes about n log n + k.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "bezier/nodes_cubic.h"

namespace tarvex::shaping {

struct Box {
    double left, right, top, bottom;
};

inline Box BoxOf(const Cubic& c) {
    const auto [left, right] = std::minmax({c.p0.x, c.p1.x, c.p2.x, c.p3.x});
    const auto [top, bottom] = std::minmax({c.p0.y, c.p1.y, c.p2.y, c.p3.y});
    return {left, right, top, bottom};
}

inline Box Grown(const Box& b, double by) { return {b.left - by, b.right + by, b.top - by, b.bottom + by}; }

inline Box Union(const Box& a, const Box& b) {
    return {std::min(a.left, b.left), std::max(a.right, b.right), std::min(a.top, b.top),
            std::max(a.bottom, b.bottom)};
}

inline bool Meet(const Box& a, const Box& b) {
    return a.left <= b.right && b.left <= a.right && a.top <= b.bottom && b.top <= a.bottom;
}

class BoxTree {
  public:
    /// The boxes must outlive the tree. All of their coordinates are finite.
    explicit BoxTree(std::span<const Box> boxes);

    /// Calls `found(i, j)` for every box i of this tree that meets box j of the other.
    template <class Found>
    void ForPairs(const BoxTree& other, Found found) const {
        if (!m_nodes.empty() && !other.m_nodes.empty()) Walk(other, {{0, 0}}, found);
    }

    /// Calls `found(i, j)`, once and in no special order, for every two different boxes that meet.
    template <class Found>
    void ForOwnPairs(Found found) const {
        for (const Node& node : m_nodes) {
            if (node.right < 0) {
                for (int k = node.first; k < node.last; ++k) OwnPairsOf(k, node.last, found);
            } else {
                Walk(*this, {{node.left, node.right}}, found);
            }
        }
    }

    /// Calls `found(i)` for every box that meets this one.
    template <class Found>
    void ForMeeting(const Box& box, Found found) const {
        std::vector<int> open;
        if (!m_nodes.empty()) open.push_back(0);
        while (!open.empty()) {
            const Node& node = m_nodes[static_cast<std::size_t>(open.back())];
            open.pop_back();
            if (!Meet(node.box, box)) continue;
            if (node.right >= 0) {
                open.push_back(node.left);
                open.push_back(node.right);
                continue;
            }
            for (int k = node.first; k < node.last; ++k) {
                if (Meet(BoxAt(k), box)) found(m_order[static_cast<std::size_t>(k)]);
            }
        }
    }

  private:
    struct Node {
        Box box;
        int first, last;  ///< of m_order
        int left = -1;
        int right = -1;
    };
    using NodePair = std::pair<int, int>;

    const Box& BoxAt(int k) const {
        return m_boxes[static_cast<std::size_t>(m_order[static_cast<std::size_t>(k)])];
    }
    int Build(int first, int last);

    template <class Found>
    void OwnPairsOf(int k, int last, Found& found) const {
        for (int m = k + 1; m < last; ++m) {
            if (Meet(BoxAt(k), BoxAt(m)))
                found(m_order[static_cast<std::size_t>(k)], m_order[static_cast<std::size_t>(m)]);
        }
    }

    template <class Found>
    void Walk(const BoxTree& other, std::vector<NodePair> open, Found& found) const {
        while (!open.empty()) {
            const auto [i, j] = open.back();
            open.pop_back();
            const Node& a = m_nodes[static_cast<std::size_t>(i)];
            const Node& b = other.m_nodes[static_cast<std::size_t>(j)];
            if (!Meet(a.box, b.box)) continue;
            const bool halvesA = a.right >= 0 && (b.right < 0 || a.last - a.first >= b.last - b.first);
            if (halvesA) {
                open.push_back({a.left, j});
                open.push_back({a.right, j});
            } else if (b.right >= 0) {
                open.push_back({i, b.left});
                open.push_back({i, b.right});
            } else {
                LeafPairs(a, other, b, found);
            }
        }
    }

    template <class Found>
    void LeafPairs(const Node& a, const BoxTree& other, const Node& b, Found& found) const {
        for (int k = a.first; k < a.last; ++k) {
            for (int m = b.first; m < b.last; ++m) {
                if (Meet(BoxAt(k), other.BoxAt(m)))
                    found(m_order[static_cast<std::size_t>(k)], other.m_order[static_cast<std::size_t>(m)]);
            }
        }
    }

    std::span<const Box> m_boxes;
    std::vector<int> m_order;
    std::vector<Node> m_nodes;
};

}  // namespace tarvex::shaping
