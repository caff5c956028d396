// The native outline is a chain of polygons, each a head with its size and start point followed by records of
// points: lines, or quadratic curves whose ends between control points are left out. It is walked by offsets
// that only grow, each checked against what is left, because its sizes come from font files.
//
// Every segment becomes three whole-numbered points: two control points and an end. The order of rounding is
// part of the contract: points are rounded to whole numbers first and control points computed from those in
// integers, while a curve's implied end is computed from the unrounded points.
#include "transform/glyph_parser.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "core/append.h"

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

/// One contour's points in the making.
class ContourBuilder {
  public:
    explicit ContourBuilder(const GridPoint& start) : m_points{start} {}

    void Line(const GridPoint& end) {
        // Handles on the far ends mark a straight segment until the nodes are cleaned.
        const GridPoint from = m_points.back();
        m_points.insert(m_points.end(), {end, from, end});
    }

    void Quadratic(const GridPoint& control, const GridPoint& end) {
        const GridPoint from = m_points.back();
        m_points.push_back({from.x + 2 * (control.x - from.x) / 3, from.y + 2 * (control.y - from.y) / 3});
        m_points.push_back({control.x + (end.x - control.x) / 3, control.y + (end.y - control.y) / 3});
        m_points.push_back(end);
    }

    void Close() {
        const GridPoint start = m_points.front();
        if (m_points.back() != start) Line(start);
    }

    /// The nodes, y downwards: the start once more in front and the last point once more behind make triples
    /// of control in, anchor and control out.
    std::vector<BPOINT> Nodes() const {
        std::vector<BPOINT> nodes(m_points.size() / 3 + 1);
        const auto point = [this](std::size_t i) {
            const GridPoint& p = i == 0                ? m_points.front()
                                 : i > m_points.size() ? m_points.back()
                                                       : m_points[i - 1];
            return DPOINT{static_cast<double>(p.x), static_cast<double>(-p.y)};
        };
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            nodes[i].cp1 = point(3 * i);
            nodes[i].pt = point(3 * i + 1);
            nodes[i].cp2 = point(3 * i + 2);
        }
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            if (i > 0 && nodes[i].cp1 == nodes[i - 1].pt) nodes[i].cp1 = nodes[i].pt;
            if (i + 1 < nodes.size() && nodes[i].cp2 == nodes[i + 1].pt) nodes[i].cp2 = nodes[i].pt;
        }
        return nodes;
    }

  private:
    std::vector<GridPoint> m_points;
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

/// Walks the records of one polygon.
void AddRecords(std::span<const std::byte> records, ContourBuilder& contour) {
    while (records.size() >= kCurveHead) {
        const auto type = Read<WORD>(records);
        const auto count = Read<WORD>(records.subspan(sizeof(WORD)));
        records = records.subspan(kCurveHead);
        if (type != TT_PRIM_LINE && type != TT_PRIM_QSPLINE) continue;
        const std::size_t size =
            std::min(std::size_t{count}, records.size() / sizeof(POINTFX)) * sizeof(POINTFX);
        (type == TT_PRIM_LINE ? AddLines : AddQuadratics)(records.first(size), contour);
        records = records.subspan(size);
    }
}

}  // namespace

void AppendNativeOutline(std::span<const std::byte> bytes, CPolyPolyBezier& out) {
    std::vector<std::unique_ptr<CArray<BPOINT, BPOINT>>> contours;
    while (bytes.size() >= sizeof(TTPOLYGONHEADER)) {
        const auto head = Read<TTPOLYGONHEADER>(bytes);
        if (head.dwType != TT_POLYGON_TYPE || head.cb < sizeof head) break;
        const std::size_t size = std::min<std::size_t>(head.cb, bytes.size());
        ContourBuilder contour(RoundedOf(RawOf(head.pfxStart)));
        AddRecords(bytes.first(size).subspan(sizeof head), contour);
        contour.Close();
        contours.push_back(std::make_unique<CArray<BPOINT, BPOINT>>());
        AppendAll(*contours.back(), contour.Nodes());
        bytes = bytes.subspan(size);
    }
    const int before = out.GetSize();
    out.SetSize(before + static_cast<int>(contours.size()));
    for (std::size_t i = 0; i < contours.size(); ++i)
        out.SetAt(before + static_cast<int>(i), contours[i].release());
}

}  // namespace tarvex
