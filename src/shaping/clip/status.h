// The pieces that the sweep line meets, from left to right: a list for the neighbours with a treap over
// it for the search. Putting in beside a known place and taking out are O(1) expected, the search
// O(log n). Places keep their numbers while they are in use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace tarvex::clip {

class Status {
  public:
    static constexpr std::int32_t none = -1;

    std::int32_t PieceAt(std::int32_t place) const { return At(place).piece; }
    void SetPiece(std::int32_t place, std::int32_t piece) { At(place).piece = piece; }
    std::int32_t Left(std::int32_t place) const { return At(place).before; }
    std::int32_t Right(std::int32_t place) const { return At(place).after; }

    struct Gap {
        std::int32_t left = none;
        std::int32_t right = none;
        std::int32_t on = none;  ///< the place whose piece holds the point; the others are then unset
    };

    /// Finds where a point belongs; `side(piece)` is positive when the point is left of the piece,
    /// negative when right of it, 0 when on it.
    template <class Side>
    Gap Find(Side&& side) const {
        Gap gap;
        std::int32_t place = m_root;
        while (place != none) {
            const Node& node = At(place);
            const int s = side(node.piece);
            if (s == 0) return {none, none, place};
            (s > 0 ? gap.right : gap.left) = place;
            place = s > 0 ? node.left : node.right;
        }
        return gap;
    }

    /// Puts a piece to the right of `left`, or before all others when that is none.
    std::int32_t InsertAfter(std::int32_t left, std::int32_t piece) {
        const std::int32_t place = NewNode(piece);
        const std::int32_t right = left == none ? m_first : At(left).after;
        At(place).before = left;
        At(place).after = right;
        if (left == none)
            m_first = place;
        else
            At(left).after = place;
        if (right != none) At(right).before = place;
        if (left != none && At(left).right == none) {
            At(left).right = place;
            At(place).parent = left;
        } else if (right != none) {
            At(right).left = place;
            At(place).parent = right;
        } else {
            m_root = place;
        }
        while (At(place).parent != none && At(At(place).parent).priority < At(place).priority)
            RotateUp(place);
        return place;
    }

    void Remove(std::int32_t place) {
        while (At(place).left != none || At(place).right != none) {
            const std::int32_t l = At(place).left;
            const std::int32_t r = At(place).right;
            RotateUp(r == none || (l != none && At(l).priority > At(r).priority) ? l : r);
        }
        const Node& node = At(place);
        ReplaceChild(node.parent, place, none);
        if (node.before == none)
            m_first = node.after;
        else
            At(node.before).after = node.after;
        if (node.after != none) At(node.after).before = node.before;
        m_free.push_back(place);
    }

  private:
    struct Node {
        std::int32_t piece = none;
        std::int32_t left = none;
        std::int32_t right = none;
        std::int32_t parent = none;
        std::int32_t before = none;
        std::int32_t after = none;
        std::uint32_t priority = 0;
    };

    Node& At(std::int32_t place) { return m_nodes[static_cast<std::size_t>(place)]; }
    const Node& At(std::int32_t place) const { return m_nodes[static_cast<std::size_t>(place)]; }

    std::int32_t NewNode(std::int32_t piece) {
        m_random ^= m_random << 13;  // xorshift (Marsaglia 2003)
        m_random ^= m_random >> 17;
        m_random ^= m_random << 5;
        std::int32_t place = 0;
        if (m_free.empty()) {
            place = static_cast<std::int32_t>(m_nodes.size());
            m_nodes.emplace_back();
        } else {
            place = m_free.back();
            m_free.pop_back();
            At(place) = {};
        }
        At(place).piece = piece;
        At(place).priority = m_random;
        return place;
    }

    void ReplaceChild(std::int32_t parent, std::int32_t child, std::int32_t by) {
        if (parent == none)
            m_root = by;
        else if (At(parent).left == child)
            At(parent).left = by;
        else
            At(parent).right = by;
    }

    /// Exchanges a node with its parent, keeping the order.
    void RotateUp(std::int32_t place) {
        const std::int32_t parent = At(place).parent;
        const std::int32_t grandparent = At(parent).parent;
        const bool isLeft = At(parent).left == place;
        const std::int32_t moved = isLeft ? At(place).right : At(place).left;
        (isLeft ? At(parent).left : At(parent).right) = moved;
        if (moved != none) At(moved).parent = parent;
        (isLeft ? At(place).right : At(place).left) = parent;
        At(parent).parent = place;
        At(place).parent = grandparent;
        ReplaceChild(grandparent, parent, place);
    }

    std::vector<Node> m_nodes;
    std::vector<std::int32_t> m_free;
    std::int32_t m_root = none;
    std::int32_t m_first = none;
    std::uint32_t m_random = 2463534242;
};

}  // namespace tarvex::clip
