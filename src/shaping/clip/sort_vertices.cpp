// What is left to do after a run of the sweep that had to cut below the sweep line: its vertices then
// neither come in order nor only once.
#include "shaping/clip/sort_vertices.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "shaping/clip/incidence.h"

namespace tarvex::clip {

void SortVertices(Arrangement& arrangement) {
    const std::vector<Point> given = std::exchange(arrangement.vertices, {});
    std::vector<std::int32_t> order(given.size());
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&given](std::int32_t i, std::int32_t j) { return Before(given[Index(i)], given[Index(j)]); });
    std::vector<std::int32_t> renumbered(given.size());
    std::vector<Point>& vertices = arrangement.vertices;
    for (const std::int32_t v : order) {
        const Point& p = given[Index(v)];
        if (vertices.empty() || !Same(vertices.back(), p)) vertices.push_back(p);
        renumbered[Index(v)] = static_cast<std::int32_t>(vertices.size()) - 1;
    }
    std::erase_if(arrangement.pieces, [&renumbered](Piece& piece) {
        piece.a = renumbered[Index(piece.a)];
        piece.b = renumbered[Index(piece.b)];
        if (piece.a > piece.b) std::swap(piece.a, piece.b);
        return piece.a == piece.b;
    });
}

}  // namespace tarvex::clip
