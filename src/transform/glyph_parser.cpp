// The native outline is a chain of polygons, each a head with its size and start point followed by records of
// points: lines, or quadratic curves whose ends between control points are left out. It is walked by offsets
// that only grow, each checked against what is left, because its sizes come from font files.
//
// Every segment becomes three whole-numbered points: two control points and an end. The order of rounding is
// part of the contract: points are rounded to whole numbers first and control points computed from those in
// integers, while a curve's implied end is computed from the unrounded points.
#include "transform/glyph_parser.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace tarvex {
namespace {

constexpr std::size_t kCurveHead = sizeof(TTPOLYCURVE) - sizeof(POINTFX);

template <class T>
T Read(std::span<const std::byte> bytes) {
    T value;
    std::memcpy(&value, bytes.data(), sizeof value);
    return value;
}

/// A coordinate with 16 bits after the point; 64 bits wide, so that sums of two cannot overflow.
std::int64_t Raw(const FIXED& f) { return std::int64_t{f.value} * 65536 + f.fract; }

/// Nearest, halves upwards.
std::int64_t Rounded(std::int64_t raw) { return (raw >> 16) + ((raw & 0xFFFF) >= 0x8000 ? 1 : 0); }

struct RawPoint {
    std::int64_t x;
    std::int64_t y;
};

RawPoint RawOf(const POINTFX& p) { return {Raw(p.x), Raw(p.y)}; }

struct GridPoint {
    std::int64_t x;
    std::int64_t y;
    friend bool operator==(const GridPoint&, const GridPoint&) = default;
};

GridPoint RoundedOf(const RawPoint& p) { return {Rounded(p.x), Rounded(p.y)}; }

DPOINT PointOf(const GridPoint& p) { return {static_cast<double>(p.x), static_cast<double>(-p.y)}; }

using Nodes = CArray<BPOINT, BPOINT>;

/// Nodes of one contour in the making, y downwards.
class ContourBuilder {
  public:
    /// There is room for `most` nodes in all.
    ContourBuilder(const GridPoint& start, int most)
        : m_nodes(std::make_unique<Nodes>()), m_start(start), m_last(start) {
        m_nodes->SetSize(most);
        m_next = m_nodes->GetData();
        Node(PointOf(start), start);
    }

    void Line(const GridPoint& end) { Segment(end, m_last, end); }

    void Quadratic(const GridPoint& control, const GridPoint& end) {
        const GridPoint& from = m_last;
        Segment({from.x + 2 * (control.x - from.x) / 3, from.y + 2 * (control.y - from.y) / 3},
                {control.x + (end.x - control.x) / 3, control.y + (end.y - control.y) / 3}, end);
    }

    /// The contour, closed.
    std::unique_ptr<Nodes> Finish() && {
        if (m_last != m_start) Line(m_start);
        m_nodes->SetSize(static_cast<int>(m_next - m_nodes->GetData()));
        return std::move(m_nodes);
    }

  private:
    /// A control point at the far end of its segment stands for none.
    void Segment(const GridPoint& first, const GridPoint& second, const GridPoint& end) {
        m_next[-1].cp2 = PointOf(first == end ? m_last : first);
        Node(PointOf(second == m_last ? end : second), end);
        m_last = end;
    }

    void Node(const DPOINT& in, const GridPoint& at) { *m_next++ = {in, PointOf(at), PointOf(at)}; }

    std::unique_ptr<Nodes> m_nodes;
    BPOINT* m_next = nullptr;
    GridPoint m_start;
    GridPoint m_last;
};

void AddLines(std::span<const std::byte> points, ContourBuilder& contour) {
    for (; points.size() >= sizeof(POINTFX); points = points.subspan(sizeof(POINTFX)))
        contour.Line(RoundedOf(RawOf(Read<POINTFX>(points))));
}

void AddQuadratics(std::span<const std::byte> points, ContourBuilder& contour) {
    const std::size_t count = points.size() / sizeof(POINTFX);
    const auto point = [points](std::size_t i) {
        return RawOf(Read<POINTFX>(points.subspan(i * sizeof(POINTFX))));
    };
    for (std::size_t i = 0; i + 1 < count; ++i) {
        const RawPoint control = point(i);
        RawPoint end = point(i + 1);
        if (i + 2 < count) end = {(control.x + end.x) / 2, (control.y + end.y) / 2};
        contour.Quadratic(RoundedOf(control), RoundedOf(end));
    }
}

/// Calls `visit` with the type and the points' bytes of each record of one polygon that has any.
template <class Visit>
void ForEachRecord(std::span<const std::byte> records, Visit visit) {
    while (records.size() >= kCurveHead) {
        const auto type = Read<WORD>(records);
        const auto count = Read<WORD>(records.subspan(sizeof(WORD)));
        records = records.subspan(kCurveHead);
        if (type != TT_PRIM_LINE && type != TT_PRIM_QSPLINE) continue;
        const std::size_t size =
            std::min(std::size_t{count}, records.size() / sizeof(POINTFX)) * sizeof(POINTFX);
        visit(type, records.first(size));
        records = records.subspan(size);
    }
}

/// The nodes that the records ask for, with those of the start and of the closing line.
std::size_t MostNodes(std::span<const std::byte> records) {
    std::size_t most = 2;
    ForEachRecord(records, [&most](WORD type, std::span<const std::byte> points) {
        const std::size_t count = points.size() / sizeof(POINTFX);
        most += type == TT_PRIM_LINE || count == 0 ? count : count - 1;
    });
    return most;
}

std::unique_ptr<Nodes> ContourOf(const POINTFX& start, std::span<const std::byte> records) {
    ContourBuilder contour(RoundedOf(RawOf(start)), static_cast<int>(MostNodes(records)));
    ForEachRecord(records, [&contour](WORD type, std::span<const std::byte> points) {
        (type == TT_PRIM_LINE ? AddLines : AddQuadratics)(points, contour);
    });
    return std::move(contour).Finish();
}

}  // namespace

void AppendNativeOutline(std::span<const std::byte> bytes, CPolyPolyBezier& out) {
    std::vector<std::unique_ptr<Nodes>> contours;
    contours.reserve(4);  // more than most letters have
    while (bytes.size() >= sizeof(TTPOLYGONHEADER)) {
        const auto head = Read<TTPOLYGONHEADER>(bytes);
        if (head.dwType != TT_POLYGON_TYPE || head.cb < sizeof head) break;
        const std::size_t size = std::min<std::size_t>(head.cb, bytes.size());
        contours.push_back(ContourOf(head.pfxStart, bytes.first(size).subspan(sizeof head)));
        bytes = bytes.subspan(size);
    }
    const int before = out.GetSize();
    out.SetSize(before + static_cast<int>(contours.size()));
    for (std::size_t i = 0; i < contours.size(); ++i)
        out.SetAt(before + static_cast<int>(i), contours[i].release());
}

}  // namespace tarvex
