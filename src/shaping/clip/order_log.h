// What a run of the sweep decided about the order of its pieces, kept so that it can be checked against
// the pieces as they came to be.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "shaping/clip/point.h"

namespace tarvex::clip {

/// Notes between which two pieces each vertex was found, and which pieces start there from left to right.
/// Pieces are numbered as they start.
class OrderLog {
  public:
    static constexpr std::int32_t none = -1;

    void Reserve(std::size_t vertexCount, std::size_t pieceCount) {
        m_beside.reserve(vertexCount);
        m_pieces.reserve(pieceCount);
    }
    /// To be called for the vertices in turn: the pieces beside the vertex, or none.
    void AddVertex(std::int32_t left, std::int32_t right) { m_beside.push_back({left, right}); }
    /// Notes that the next piece to the right starts at the vertex added last, and numbers it.
    std::int32_t Start() {
        m_pieces.push_back({static_cast<std::int32_t>(m_beside.size()) - 1, none});
        return static_cast<std::int32_t>(m_pieces.size()) - 1;
    }
    void End(std::int32_t piece, std::int32_t vertex) {
        m_pieces[static_cast<std::size_t>(piece)].b = vertex;
    }

    /// Whether the order noted is that of the pieces as they have become, exactly.
    bool Holds(const std::vector<Point>& vertices) const;

  private:
    struct Beside {
        std::int32_t left;
        std::int32_t right;
    };
    struct Ends {
        std::int32_t a;
        std::int32_t b;
    };
    std::vector<Beside> m_beside;  ///< of each vertex
    std::vector<Ends> m_pieces;    ///< in the order of starts
};

}  // namespace tarvex::clip
