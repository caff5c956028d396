// Snap rounding (Hobby 1999; Guibas and Marimont 1998), in the grid of the doubles themselves: a vertex
// stands for all that rounds to it, and a piece that passes through there passes through the vertex.
// Where edges run almost along a row or a column of that grid, each crossing that is rounded onto it
// can otherwise make another one a hair further on, and that without an end in sight.
//
// A piece only goes to vertices within its bounding box, and in one direction in both coordinates. So
// what it becomes stays in that box, and there are only so many vertices that it can ever take in.
#include "shaping/clip/snap.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "shaping/clip/box_index.h"
#include "shaping/clip/double_double.h"

namespace tarvex::clip {
namespace {

std::size_t Index(std::int32_t i) { return static_cast<std::size_t>(i); }

/// The line that a piece is on, asked for its distance from points.
class Line {
  public:
    Line(const Point& a, const Point& b, double reach)
        : m_a(a), m_dx(b.x - a.x), m_dy(b.y - a.y), m_reach(reach * std::numeric_limits<double>::epsilon()) {}

    /// Whether it passes through the rectangle of `reach` units in the last place around a point.
    bool PassesNear(const Point& p) const {
        const DoubleDouble turn =
            DoubleDouble{m_dx, 0} * Difference(p.y, m_a.y) - DoubleDouble{m_dy, 0} * Difference(p.x, m_a.x);
        return std::fabs(turn.high) <= m_reach * (std::fabs(p.x * m_dy) + std::fabs(p.y * m_dx));
    }

    /// Whether it might do so for some point in a box.
    bool MayPassNearIn(const Box& box) const {
        const double farX = std::max(std::fabs(box.left), std::fabs(box.right));
        const double farY = std::max(std::fabs(box.bottom), std::fabs(box.top));
        const double bound = m_reach * (std::fabs(farX * m_dy) + std::fabs(farY * m_dx));
        bool allLeft = true;
        bool allRight = true;
        for (const double x : {box.left, box.right}) {
            for (const double y : {box.bottom, box.top}) {
                const double left = m_dx * (y - m_a.y);
                const double right = m_dy * (x - m_a.x);
                const double slack = bound + 1e-15 * (std::fabs(left) + std::fabs(right));
                allLeft = allLeft && left - right > slack;
                allRight = allRight && right - left > slack;
            }
        }
        return !allLeft && !allRight;
    }

  private:
    Point m_a;
    double m_dx;
    double m_dy;
    double m_reach;
};

}  // namespace

void LeadThroughVertices(Arrangement& arrangement, double reach) {
    const std::vector<Point>& vertices = arrangement.vertices;
    std::vector<Box> boxes;
    boxes.reserve(vertices.size());
    for (const Point& v : vertices) boxes.push_back({v.x, v.x, v.y, v.y});
    const BoxIndex index(boxes);

    std::vector<Piece> pieces;
    pieces.reserve(arrangement.pieces.size());
    std::vector<std::int32_t> near;
    for (const Piece& piece : arrangement.pieces) {
        const Point& a = vertices[Index(piece.a)];
        const Point& b = vertices[Index(piece.b)];
        const Line line(a, b, reach);
        const Box box{std::min(a.x, b.x), std::max(a.x, b.x), a.y, b.y};
        near.clear();
        index.Search([&](const Box& other) { return box.Meets(other) && line.MayPassNearIn(other); },
                     [&](std::uint32_t number) {
                         const auto v = static_cast<std::int32_t>(number);
                         if (v != piece.a && v != piece.b && line.PassesNear(vertices[number]))
                             near.push_back(v);
                         return false;
                     });
        // From a to b: by height, and in a row in the direction of the piece.
        const double towards = b.x < a.x ? -1 : 1;
        std::sort(near.begin(), near.end(), [&](std::int32_t v, std::int32_t w) {
            const Point& p = vertices[Index(v)];
            const Point& q = vertices[Index(w)];
            return p.y != q.y ? p.y < q.y : towards * p.x < towards * q.x;
        });
        std::int32_t from = piece.a;
        const auto leadTo = [&](std::int32_t to) {
            Piece part = piece;
            part.a = std::min(from, to);
            part.b = std::max(from, to);
            pieces.push_back(part);
            from = to;
        };
        for (const std::int32_t v : near) {
            if (towards * vertices[Index(v)].x >= towards * vertices[Index(from)].x) leadTo(v);
        }
        leadTo(piece.b);
    }
    arrangement.pieces = std::move(pieces);
}

}  // namespace tarvex::clip
