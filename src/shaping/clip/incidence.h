// Which pieces start, or end, at each vertex.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <vector>

#include "shaping/clip/sweep.h"

namespace tarvex::clip {

inline std::size_t Index(std::int32_t i) { return static_cast<std::size_t>(i); }

/// For every vertex the pieces that start there (or end there): `items` from `first[v]` to `first[v + 1]`.
struct Incidence {
    std::vector<std::int32_t> first;
    std::vector<std::int32_t> items;

    Incidence(std::size_t vertexCount, const std::vector<Piece>& pieces, std::int32_t Piece::*end)
        : first(vertexCount + 1), items(pieces.size()) {
        for (const Piece& piece : pieces) ++first[Index(piece.*end)];
        std::partial_sum(first.begin(), first.end(), first.begin());
        for (std::size_t i = pieces.size(); i-- > 0;)
            items[Index(--first[Index(pieces[i].*end)])] = static_cast<std::int32_t>(i);
    }

    std::span<const std::int32_t> At(std::size_t vertex) const {
        return std::span(items).subspan(Index(first[vertex]), Index(first[vertex + 1] - first[vertex]));
    }
};

}  // namespace tarvex::clip
