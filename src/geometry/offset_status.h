// The edges that a sweep line crosses, from bottom to top: a list whose middle is found in logarithmic time.
//
// A balanced tree (a treap: priorities drawn from the edges' numbers) threaded by a list. An edge is put
// beside another one and taken out by its number, never looked up by comparing edges; only a search for a
// place compares, and with a predicate of the caller's. So an order that rounding has disturbed can
// give a wrong answer, which the sweep finds out, but not a broken tree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarvex::offsetting {

class Status {
  public:
    static constexpr int NONE = -1;

    explicit Status(std::size_t edges) : m_nodes(edges) {}

    /// Makes room for edges numbered up to below `edges`.
    void Grow(std::size_t edges) { m_nodes.resize(edges); }

    int Above(int edge) const { return Node(edge).next; }
    int Below(int edge) const { return Node(edge).previous; }
    int Highest() const { return m_last; }

    /// The lowest edge for which `isAbove` holds, which must then hold for all that are higher.
    template <class Predicate>
    int Lowest(Predicate&& isAbove) const {
        int found = NONE;
        for (int at = m_root; at != NONE;) {
            if (isAbove(at)) {
                found = at;
                at = Node(at).left;
            } else {
                at = Node(at).right;
            }
        }
        return found;
    }

    /// Puts `edge` directly above `below`; at the bottom for NONE.
    void InsertAbove(int below, int edge) {
        const int above = below == NONE ? m_first : Node(below).next;
        Node(edge) = {.previous = below, .next = above};
        Thread(edge);
        if (below != NONE && Node(below).right == NONE) {
            Node(below).right = edge;
            Node(edge).parent = below;
        } else if (above != NONE) {
            Node(above).left = edge;
            Node(edge).parent = above;
        } else {
            m_root = edge;
        }
        while (Node(edge).parent != NONE && Priority(Node(edge).parent) < Priority(edge)) Lift(edge);
    }

    void Remove(int edge) {
        while (Node(edge).left != NONE && Node(edge).right != NONE) {
            const int l = Node(edge).left;
            const int r = Node(edge).right;
            Lift(Priority(l) > Priority(r) ? l : r);
        }
        const int child = Node(edge).left != NONE ? Node(edge).left : Node(edge).right;
        if (child != NONE) Node(child).parent = Node(edge).parent;
        SetChild(Node(edge).parent, edge, child);
        const int below = Node(edge).previous;
        const int above = Node(edge).next;
        (below != NONE ? Node(below).next : m_first) = above;
        (above != NONE ? Node(above).previous : m_last) = below;
    }

  private:
    struct Links {
        int parent = NONE;
        int left = NONE;
        int right = NONE;
        int previous = NONE;
        int next = NONE;
    };

    Links& Node(int edge) { return m_nodes[static_cast<std::size_t>(edge)]; }
    const Links& Node(int edge) const { return m_nodes[static_cast<std::size_t>(edge)]; }

    /// A number that looks random: the edge's, multiplied by an odd constant and folded.
    static std::uint32_t Priority(int edge) {
        std::uint32_t hash = static_cast<std::uint32_t>(edge) * 0x9E3779B9U;
        hash ^= hash >> 15;
        return hash * 0x85EBCA6BU;
    }

    void Thread(int edge) {
        const Links& links = Node(edge);
        (links.previous != NONE ? Node(links.previous).next : m_first) = edge;
        (links.next != NONE ? Node(links.next).previous : m_last) = edge;
    }

    void SetChild(int parent, int old, int child) {
        if (parent == NONE) {
            m_root = child;
        } else if (Node(parent).left == old) {
            Node(parent).left = child;
        } else {
            Node(parent).right = child;
        }
    }

    /// Rotates the edge above its parent.
    void Lift(int edge) {
        const int parent = Node(edge).parent;
        const int grandparent = Node(parent).parent;
        const bool wasLeft = Node(parent).left == edge;
        int& inner = wasLeft ? Node(edge).right : Node(edge).left;
        (wasLeft ? Node(parent).left : Node(parent).right) = inner;
        if (inner != NONE) Node(inner).parent = parent;
        inner = parent;
        Node(parent).parent = edge;
        Node(edge).parent = grandparent;
        SetChild(grandparent, parent, edge);
    }

    std::vector<Links> m_nodes;
    int m_root = NONE;
    int m_first = NONE;
    int m_last = NONE;
};

}  // namespace tarvex::offsetting
