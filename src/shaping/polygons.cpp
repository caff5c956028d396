// The table of flattened points. Points within the tolerance of each other become one here, the first of
// them, so that the clipper is spared what no one can see.
#include "shaping/polygons.h"

#include <algorithm>
#include <utility>

namespace tarvex::shaping {

namespace {

void AppendPiece(const PieceList& pieces, int index, PointIndex& points, std::vector<Vertex>& ring) {
    const Piece& piece = pieces.pieces[static_cast<std::size_t>(index)];
    if (piece.course < 0) return;
    const auto& line = pieces.courses[static_cast<std::size_t>(piece.course)].points;
    for (std::size_t k = 0; k + 1 < line.size(); ++k) {
        const int point = points.FindOrAdd(line[piece.isReversed ? line.size() - 1 - k : k]);
        if (!ring.empty() && ring.back().point == point) {
            // An edge of no length; what starts here is the edge to come.
            ring.back().piece = index;
            ring.back().isStart = ring.back().isStart || k == 0;
        } else {
            ring.push_back({point, index, k == 0});
        }
    }
}

}  // namespace

VertexTable BuildVertexTable(const SegmentList& list, const PieceList& pieces) {
    VertexTable table;
    table.rings.resize(list.contours.size());
    for (std::size_t i = 0; i < pieces.pieces.size(); ++i) {
        const int contour = list[pieces.pieces[i].segment].contour;
        auto& ring = table.rings[static_cast<std::size_t>(contour)].vertices;
        AppendPiece(pieces, static_cast<int>(i), table.points, ring);
    }
    std::vector<int> counts(static_cast<std::size_t>(table.points.Size()) + 1, 0);
    for (VertexRing& ring : table.rings) {
        auto& v = ring.vertices;
        while (v.size() > 1 && v.back().point == v.front().point) v.pop_back();
        if (v.size() < 2) v.clear();
        for (const Vertex& vertex : v) ++counts[static_cast<std::size_t>(vertex.point)];
    }
    int sum = 0;
    for (int& count : counts) sum += std::exchange(count, sum);
    table.m_firsts = counts;
    table.m_occurrences.resize(static_cast<std::size_t>(sum));
    for (std::size_t r = 0; r < table.rings.size(); ++r) {
        const auto& v = table.rings[r].vertices;
        for (std::size_t k = 0; k < v.size(); ++k) {
            const int at = counts[static_cast<std::size_t>(v[k].point)]++;
            table.m_occurrences[static_cast<std::size_t>(at)] = {static_cast<int>(r), static_cast<int>(k)};
        }
    }
    return table;
}

void FillClipSet(const SegmentList& list, const VertexTable& table, Operand operand, ClipPolygon& polygon) {
    std::vector<const VertexRing*> rings;
    for (std::size_t r = 0; r < table.rings.size(); ++r) {
        if (list.contours[r].operand == operand && table.rings[r].vertices.size() >= 3)
            rings.push_back(&table.rings[r]);
    }
    if (rings.empty()) return;
    // Filled in place: adding contours one by one would copy those before each time.
    polygon.holes = new std::int32_t[rings.size()]();
    polygon.contours = new ClipContour[rings.size()]();
    for (const VertexRing* ring : rings) {
        ClipContour& contour = polygon.contours[polygon.contourCount];
        contour.vertices = new DPOINT[ring->vertices.size()];
        contour.vertexCount = static_cast<std::int32_t>(ring->vertices.size());
        ++polygon.contourCount;
        std::transform(ring->vertices.begin(), ring->vertices.end(), contour.vertices,
                       [&table](const Vertex& vertex) { return table.points[vertex.point]; });
    }
}

}  // namespace tarvex::shaping
