// The clipper's three stages: edges between sorted vertices, pieces that only meet, contours.
#include "shaping/clip/clip.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

#include "shaping/clip/sweep.h"
#include "tarvex/framework.h"

namespace tarvex::clip {
namespace {

bool IsFinite(std::span<const DPOINT> contour) {
    return std::all_of(contour.begin(), contour.end(),
                       [](const DPOINT& p) { return std::isfinite(p.x) && std::isfinite(p.y); });
}

/// Of zeros of both signs at one place, the positive one stands, in whatever order they come.
void MergeZeros(Point& kept, const Point& same) {
    if (kept.x == 0) kept.x += same.x;
    if (kept.y == 0) kept.y += same.y;
}

/// Collects the contours' vertices and edges, and gives out the arrangement of the edges, uncut.
class Gatherer {
  public:
    void Add(Contours contours, std::uint8_t bit) {
        for (const std::span<const DPOINT> contour : contours) {
            if (contour.empty() || !IsFinite(contour)) continue;
            if (contour.size() > std::size_t{std::numeric_limits<std::int32_t>::max()} - m_corners.size())
                AfxThrowMemoryException();
            const auto first = static_cast<std::int32_t>(m_corners.size());
            const auto count = static_cast<std::int32_t>(contour.size());
            for (std::int32_t i = 0; i < count; ++i) {
                const DPOINT& p = contour[static_cast<std::size_t>(i)];
                m_corners.push_back({{p.x, p.y}, first + i});
                m_next.push_back(first + (i + 1) % count);
                m_bits.push_back(bit);
            }
        }
    }

    /// In an order that does not tell which set an edge comes from, each edge once; edges that coincide
    /// in pairs of one set bound nothing.
    Arrangement Edges() {
        SortCorners();
        Arrangement result;
        result.vertices.reserve(m_corners.size());
        std::vector<std::int32_t> vertexOf(m_corners.size());
        for (const Corner& corner : m_corners) {
            if (result.vertices.empty() || !Same(result.vertices.back(), corner.at))
                result.vertices.push_back(corner.at);
            else
                MergeZeros(result.vertices.back(), corner.at);
            vertexOf[static_cast<std::size_t>(corner.number)] =
                static_cast<std::int32_t>(result.vertices.size()) - 1;
        }
        std::vector<Piece> pieces = SortedPieces(vertexOf, result.vertices.size());
        result.pieces.reserve(pieces.size());
        result.edges.reserve(pieces.size());
        for (std::size_t i = 0; i < pieces.size();) {
            Piece piece = pieces[i];
            for (++i; i < pieces.size() && pieces[i].a == piece.a && pieces[i].b == piece.b; ++i)
                piece.parity ^= pieces[i].parity;
            if (piece.parity == 0 || piece.a == piece.b) continue;
            piece.edge = static_cast<std::int32_t>(result.edges.size());
            result.pieces.push_back(piece);
            result.edges.push_back({result.vertices[static_cast<std::size_t>(piece.a)],
                                    result.vertices[static_cast<std::size_t>(piece.b)]});
        }
        return result;
    }

  private:
    struct Corner {
        Point at;
        std::int32_t number;
    };

    /// In sweep order. They are first dealt out to rows of equal height, a few to each when they are
    /// spread evenly.
    void SortCorners() {
        const auto before = [](const Corner& c, const Corner& d) { return Before(c.at, d.at); };
        const auto lower = [](const Corner& c, const Corner& d) { return c.at.y < d.at.y; };
        if (m_corners.empty()) return;
        const auto [lowest, highest] = std::minmax_element(m_corners.begin(), m_corners.end(), lower);
        const double bottom = lowest->at.y;
        const std::size_t rows = m_corners.size() / 4 + 1;
        const auto rowCount = static_cast<double>(rows);
        const double rowsPerUnit = rowCount / (highest->at.y - bottom);
        if (!std::isfinite(rowsPerUnit) || rowsPerUnit == 0) {  // all level, or too far apart
            std::sort(m_corners.begin(), m_corners.end(), before);
            return;
        }
        const auto row = [&](const Corner& c) {
            return static_cast<std::size_t>(std::min((c.at.y - bottom) * rowsPerUnit, rowCount));
        };
        std::vector<std::int32_t> first(rows + 2);
        for (const Corner& corner : m_corners) ++first[row(corner)];
        std::partial_sum(first.begin(), first.end(), first.begin());
        std::vector<Corner> sorted(m_corners.size());
        for (std::size_t i = m_corners.size(); i-- > 0;)
            sorted[static_cast<std::size_t>(--first[row(m_corners[i])])] = m_corners[i];
        for (std::size_t i = 1; i < first.size(); ++i)
            std::sort(sorted.begin() + first[i - 1], sorted.begin() + first[i], before);
        m_corners = std::move(sorted);
    }

    /// The pieces by their first vertex and then by their second.
    std::vector<Piece> SortedPieces(const std::vector<std::int32_t>& vertexOf,
                                    std::size_t vertexCount) const {
        std::vector<std::int32_t> first(vertexCount + 1);
        const auto ends = [&](std::size_t i) {
            return std::minmax(vertexOf[i], vertexOf[static_cast<std::size_t>(m_next[i])]);
        };
        for (std::size_t i = 0; i < m_next.size(); ++i) ++first[static_cast<std::size_t>(ends(i).first)];
        std::partial_sum(first.begin(), first.end(), first.begin());
        std::vector<Piece> pieces(m_next.size());
        for (std::size_t i = m_next.size(); i-- > 0;) {
            const auto [a, b] = ends(i);
            pieces[static_cast<std::size_t>(--first[static_cast<std::size_t>(a)])] = {a, b, 0, m_bits[i], 0};
        }
        for (std::size_t v = 0; v < vertexCount; ++v) {
            std::sort(pieces.begin() + first[v], pieces.begin() + first[v + 1],
                      [](const Piece& p, const Piece& q) { return p.b < q.b; });
        }
        return pieces;
    }

    std::vector<Corner> m_corners;
    std::vector<std::int32_t> m_next;
    std::vector<std::uint8_t> m_bits;
};

bool IsInside(Operation operation, bool inSubject, bool inClip) {
    switch (operation) {
        case Operation::difference:
            return inSubject && !inClip;
        case Operation::intersection:
            return inSubject && inClip;
        case Operation::exclusiveOr:
            return inSubject != inClip;
        case Operation::unite:
            return inSubject || inClip;
    }
    return false;
}

}  // namespace

std::vector<Contour> Clip(Operation operation, Contours subject, Contours clip) {
    Gatherer gatherer;
    gatherer.Add(subject, subjectBit);
    gatherer.Add(clip, clipBit);
    Arrangement arrangement = gatherer.Edges();
    Arrange(arrangement);
    Region region;
    for (std::uint8_t side = 0; side < 4; ++side)
        region[side] = IsInside(operation, (side & subjectBit) != 0, (side & clipBit) != 0);
    return TraceBoundary(arrangement, region);
}

}  // namespace tarvex::clip
