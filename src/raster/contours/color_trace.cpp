// Regions as contours: borders put together around each region, and what runs on beneath.
//
// Where two regions meet, a renderer that smooths edges paints each by the part of a pixel that it covers;
// the first lets the background through, the second does not cover all of what came through, and a seam
// shows. So the region that is painted first runs on beneath the other: along a border to a region that comes
// later its contour is the border moved into that region, by more than the pixel that smoothing touches,
// or by less where the other region is too thin for that. Moved is each cubic by its control points: the
// result is hidden, so it need not be parallel to the last digit. It stays on the border's own ends
// where a border follows that is not moved, and leaves and reaches those at an angle of 45 degrees. Where
// both are moved it goes past the junction. At an inner corner of the region the moved borders cross; the
// contour then visits the junction itself, so that its winding is never less than 1 there and the nonzero
// rule fills it all.
//
// Holes that hold nothing but regions that come later are left out altogether. Where there is no room to run
// on, the underlay keeps the background from showing.
#include "tarvex/colortrace.h"

#include <algorithm>
#include <optional>

#include "bezier/halve.h"
#include "bezier/vector.h"
#include "raster/contours/border_fit.h"
#include "raster/contours/outline_fitter.h"
#include "raster/contours/region_order.h"
#include "raster/contours/underlay.h"

namespace tarvex {

namespace {

using namespace contours;

constexpr std::int64_t mostCorners = std::int64_t{1} << 29;
/// The first is more than smoothing reaches along an axis and nearly that of a diagonal; the others are for
/// borders beyond which there is one pixel only, and for tight bends.
constexpr double depths[] = {1.25, 0.7, 0.35, 0.15};
constexpr double thinDepth = 0.7;

Crossing Direction(Crossing from, Crossing to) {
    const Crossing along = Minus(to, from);
    const double length = Length(along);
    return length > 0 ? Times(along, 1 / length) : Crossing{0, 0};
}

bool IsSame(Crossing a, Crossing b) { return a.x == b.x && a.y == b.y; }

Crossing StartDirection(const Cubic& c) {
    return Direction(c.p0, !IsSame(c.p0, c.p1) ? c.p1 : !IsSame(c.p0, c.p2) ? c.p2 : c.p3);
}
Crossing EndDirection(const Cubic& c) {
    return Direction(!IsSame(c.p3, c.p2) ? c.p2 : !IsSame(c.p3, c.p1) ? c.p1 : c.p0, c.p3);
}

/// A point moved to the left as seen in a direction.
Crossing Moved(Crossing p, Crossing direction, double depth) {
    return {p.x + depth * direction.y, p.y - depth * direction.x};
}

/// The cubic moved to the left: its ends and their handles, which become shorter or longer as the chord does.
Cubic Moved(const Cubic& c, double depth) {
    const Crossing from = Moved(c.p0, StartDirection(c), depth);
    const Crossing to = Moved(c.p3, EndDirection(c), depth);
    const double chord = Distance(c.p0, c.p3);
    const double scale = chord > 0 ? Distance(from, to) / chord : 1;
    return {from, Plus(from, Times(Minus(c.p1, c.p0), scale)), Plus(to, Times(Minus(c.p2, c.p3), scale)), to};
}

Crossing PointAt(const Cubic& c, double t) {
    const double s = 1 - t;
    return Plus(Plus(Times(c.p0, s * s * s), Times(c.p1, 3 * s * s * t)),
                Plus(Times(c.p2, 3 * s * t * t), Times(c.p3, t * t * t)));
}

Crossing VelocityAt(const Cubic& c, double t) {
    const double s = 1 - t;
    return Plus(Plus(Times(Minus(c.p1, c.p0), s * s), Times(Minus(c.p2, c.p1), 2 * s * t)),
                Times(Minus(c.p3, c.p2), t * t));
}

/// Whether a cubic, moved, goes the way it went and stays on the left of where it was. Otherwise, as where it
/// bends to the left too tightly, what lies between the two would count against the region.
bool CanMove(const Cubic& c, double depth) {
    const Cubic moved = Moved(c, depth);
    constexpr int samples = 16;
    for (int k = 0; k <= samples; ++k) {
        const double t = static_cast<double>(k) / samples;
        const Crossing along = VelocityAt(c, t);
        const Crossing across = Minus(PointAt(moved, t), PointAt(c, t));
        if (Dot(along, VelocityAt(moved, t)) < 0 || across.x * along.y - across.y * along.x < 0) return false;
    }
    return Dot(Minus(c.p3, c.p0), Minus(moved.p3, moved.p0)) > 0;
}

/// Appends the cubic, in two halves again and again where it bends by more than a right angle: gentle bends
/// keep their shape when they are moved.
void AppendGentle(const Cubic& c, int halvings, std::vector<Cubic>& out) {
    const Crossing middle = VelocityAt(c, 0.5);
    const bool isGentle = Dot(StartDirection(c), EndDirection(c)) > 0 && Dot(StartDirection(c), middle) > 0 &&
                          Dot(EndDirection(c), middle) > 0;
    if (isGentle || halvings == 0) {
        out.push_back(c);
        return;
    }
    const CubicHalves h = Halve(c.p0, c.p1, c.p2, c.p3);
    AppendGentle({c.p0, h.p01, h.p012, h.middle}, halvings - 1, out);
    AppendGentle({h.middle, h.p123, h.p23, c.p3}, halvings - 1, out);
}

/// How far from its ends a moved cubic is reached at an angle.
double Approach(const Cubic& c, double depth) { return std::min(depth, 0.4 * Length(Minus(c.p3, c.p0))); }

bool TurnsLeft(Crossing before, Crossing after) { return before.x * after.y - before.y * after.x < -1e-6; }

/// Puts the contours of regions together.
class Painter {
  public:
    Painter(const RegionMap& map, const Borders& borders, const Regions& regions, RegionStyle style)
        : m_map(map), m_borders(borders), m_regions(regions), m_style(style) {}

    void AddRegion(RegionId region, std::vector<std::unique_ptr<CArray<BPOINT, BPOINT>>>& out) {
        const std::size_t first = m_regions.firstLoop[static_cast<std::size_t>(region)];
        const std::size_t end = m_regions.firstLoop[static_cast<std::size_t>(region) + 1];
        for (std::size_t i = first; i < end; ++i) {
            const Loop& loop = m_regions.loops[i];
            if (m_style == RegionStyle::stacked && loop.area < 0 && !loop.showsGround) continue;
            m_path.clear();
            AddLoop(loop);
            if (!m_path.empty()) out.push_back(ToContour(m_path, 1));
        }
    }

  private:
    /// A cubic of the loop at hand, and by how much it is moved to the left.
    struct Piece {
        Cubic cubic;
        double depth;
    };

    void AddLoop(const Loop& loop) {
        m_pieces.clear();
        for (std::size_t i = 0; i < loop.sideCount; ++i) TakePieces(m_regions.sides[loop.firstSide + i]);
        m_at.reset();
        const std::size_t count = m_pieces.size();
        for (std::size_t i = 0; i < count; ++i) {
            const Piece& piece = m_pieces[i];
            if (piece.depth == 0) {
                m_path.push_back(piece.cubic);
                m_at = piece.cubic.p3;
            } else {
                AddMoved(m_pieces[(i + count - 1) % count], piece, m_pieces[(i + 1) % count]);
            }
        }
        if (m_path.empty()) return;
        if (m_pieces.front().depth > 0 && m_pieces.back().depth > 0) Turn(m_pieces.back(), m_pieces.front());
        LineTo(m_path.front().p0);
    }

    void TakePieces(Side side) {
        m_cubics.clear();
        m_borders.AppendCubics(side, m_cubics);
        if (m_style != RegionStyle::stacked || !MayCover(m_borders.RightOf(side), m_borders.LeftOf(side))) {
            for (const Cubic& c : m_cubics) m_pieces.push_back({c, 0});
            return;
        }
        const double most = HasRoom(side, m_borders.all[BorderOf(side)]) ? depths[0] : thinDepth;
        for (const Cubic& c : m_cubics) {
            m_gentle.clear();
            AppendGentle(c, 3, m_gentle);
            for (const Cubic& part : m_gentle) m_pieces.push_back({part, DepthFor(part, most)});
        }
    }

    static double DepthFor(const Cubic& c, double most) {
        for (const double depth : depths) {
            if (depth <= most && CanMove(c, depth)) return depth;
        }
        return 0;
    }

    /// Whether the region may show beneath a pixel of another.
    bool MayCover(RegionId region, RegionId other) const {
        return other == region || (other != ground && m_regions.IsBefore(region, other));
    }

    /// Whether the region may run on for two pixels everywhere beyond the border.
    bool HasRoom(Side side, const Border& border) const {
        const RegionId region = m_borders.RightOf(side);
        int x = border.startX;
        int y = border.startY;
        for (const std::uint8_t heading : m_borders.StepsOf(BorderOf(side))) {
            const int across = (heading + (IsBackwards(side) ? 1 : 3)) & 3;
            // The pixel beside the step, on the side of the other region, and the one beyond it.
            const int aheadX = x + StepX(heading);
            const int aheadY = y + StepY(heading);
            const int nearX = std::min(x, aheadX) + std::min(0, StepX(across));
            const int nearY = std::min(y, aheadY) + std::min(0, StepY(across));
            if (!MayCover(region, m_map.At(nearX + StepX(across), nearY + StepY(across)))) return false;
            x = aheadX;
            y = aheadY;
        }
        return true;
    }

    void LineTo(Crossing p) {
        if (m_at && !IsSame(*m_at, p)) m_path.push_back({*m_at, *m_at, p, p});
        m_at = p;
    }

    /// Visits the place where two pieces meet if, moved, they would cross.
    void Turn(const Piece& before, const Piece& after) {
        if (TurnsLeft(EndDirection(before.cubic), StartDirection(after.cubic))) LineTo(after.cubic.p0);
    }

    void AddMoved(const Piece& before, const Piece& piece, const Piece& after) {
        const Cubic& c = piece.cubic;
        Cubic moved = Moved(c, piece.depth);
        if (before.depth == 0) {
            moved.p0 = Plus(moved.p0, Times(StartDirection(c), Approach(c, piece.depth)));
            LineTo(c.p0);
        } else if (m_at) {
            Turn(before, piece);
        }
        if (after.depth == 0) moved.p3 = Minus(moved.p3, Times(EndDirection(c), Approach(c, piece.depth)));
        LineTo(moved.p0);
        if (IsSame(c.p0, c.p1) && IsSame(c.p2, c.p3)) {
            LineTo(moved.p3);
        } else {
            m_path.push_back(moved);
            m_at = moved.p3;
        }
        if (after.depth == 0) LineTo(c.p3);
    }

    const RegionMap& m_map;
    const Borders& m_borders;
    const Regions& m_regions;
    RegionStyle m_style;
    std::vector<Piece> m_pieces;
    std::vector<Cubic> m_cubics;
    std::vector<Cubic> m_gentle;
    std::vector<Cubic> m_path;
    std::optional<Crossing> m_at;
};

bool IsUsable(const LabelView& picture, const RegionOptions& options) {
    if (picture.labels == nullptr || picture.width <= 0 || picture.height <= 0) return false;
    if ((std::int64_t{picture.width} + 1) * (std::int64_t{picture.height} + 1) > mostCorners) return false;
    if (options.source.empty() != options.colors.empty()) return false;
    const std::size_t pixels =
        static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    if (!options.opacity.empty() && options.opacity.size() != pixels) return false;
    if (options.source.empty()) return true;
    if (options.source.size() != pixels) return false;
    for (int y = 0; y < picture.height; ++y) {
        const std::uint16_t* row = picture.Row(y);
        if (std::any_of(row, row + picture.width, [&](std::uint16_t label) {
                return label != NO_LABEL && label >= options.colors.size();
            }))
            return false;
    }
    return true;
}

/// All regions by label: their order does not matter.
std::vector<std::vector<RegionId>> ByLabel(const RegionMap& map) {
    std::vector<std::vector<RegionId>> ofLabel(std::size_t{NO_LABEL} + 1);
    for (RegionId region = 1; region <= map.Count(); ++region) ofLabel[map.LabelOf(region)].push_back(region);
    std::erase_if(ofLabel, [](const auto& regions) { return regions.empty(); });
    return ofLabel;
}

void AddUnderlay(const RegionMap& map, const Borders& borders, Contours& out) {
    for (const std::vector<Crossing>& polygon : FindUnderlay(map, borders)) {
        out.push_back(ToContour(PolygonOf(polygon), 1));
    }
}

}  // namespace

std::vector<PaintedRegions> TraceRegions(const LabelView& picture, const RegionOptions& options) {
    if (!IsUsable(picture, options)) return {};
    RegionMap map(picture);
    map.RemoveSpecks(options.minPoints);
    Borders borders = FindBorders(map);
    if (!FitBorders(map, options, borders)) return {};
    const Regions regions = FindLoops(map, borders);
    KeepAreas(map, options, regions, borders);
    const bool isStacked = options.style == RegionStyle::stacked;
    Painter painter(map, borders, regions, options.style);
    std::vector<PaintedRegions> out;
    for (const auto& batch : isStacked ? PaintingOrder(map, borders, regions) : ByLabel(map)) {
        Contours contours;
        if (isStacked && out.empty()) AddUnderlay(map, borders, contours);
        for (const RegionId region : batch) painter.AddRegion(region, contours);
        PaintedRegions painted;
        painted.label = map.LabelOf(batch.front());
        painted.outlines.SetSize(static_cast<int>(contours.size()));
        for (std::size_t i = 0; i < contours.size(); ++i)
            painted.outlines.SetAt(static_cast<int>(i), contours[i].release());
        out.push_back(std::move(painted));
    }
    return out;
}

}  // namespace tarvex
