// Matching a region's trace with the exact pieces of the shape, by place and by size.
#include "breakup/region_maker.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "breakup/polyline_place.h"
#include "core/rounding.h"

namespace tarvex {
namespace {

constexpr double kBesideCut = 2.0;  ///< a traced pixel this near to a cut lies along it
constexpr double kMostAreaRatio = 1.25;
constexpr double kLeastOrphan = 1.0;   ///< in area; smaller pieces are slivers
constexpr double kLeastRegion = 40.0;  ///< a smaller piece is no region of its own
constexpr double kEdgeBand = 2.5;      ///< how far around a trace the piece it is of may reach

double PolylineLength(const PointList& line) {
    double length = 0;
    for (std::size_t i = 1; i < line.size(); ++i) length += Length(Minus(line[i], line[i - 1]));
    return length;
}

/// The line, without the way back where it ends where it began: two pixels beside each other are traced there
/// and back.
PointList WithoutReturn(const PointList& line) {
    if (line.size() < 3 || !(line.front() == line.back())) return line;
    std::size_t farthest = 0;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (Length(Minus(line[i], line[0])) > Length(Minus(line[farthest], line[0]))) farthest = i;
    }
    return {line.begin(), line.begin() + static_cast<std::ptrdiff_t>(farthest) + 1};
}

/// The middle half of the longest straight line through the centroid along the longer principal axis; empty
/// when the centroid lies outside.
PointList LongAxis(const PointList& polygon) {
    // Moments of the triangles between the first point and each edge.
    const DPOINT origin = polygon[0];
    double area = 0, sumX = 0, sumY = 0, sumXX = 0, sumYY = 0, sumXY = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const DPOINT a = Minus(polygon[i], origin);
        const DPOINT b = Minus(polygon[(i + 1) % polygon.size()], origin);
        const double part = CrossProduct(a, b) / 2;
        area += part;
        sumX += part * (a.x + b.x) / 3;
        sumY += part * (a.y + b.y) / 3;
        sumXX += part * (a.x * a.x + a.x * b.x + b.x * b.x) / 6;
        sumYY += part * (a.y * a.y + a.y * b.y + b.y * b.y) / 6;
        sumXY += part * (2 * a.x * a.y + a.x * b.y + b.x * a.y + 2 * b.x * b.y) / 12;
    }
    if (!(area > 0)) return {};
    const DPOINT mean{sumX / area, sumY / area};
    const double xx = sumXX / area - mean.x * mean.x, yy = sumYY / area - mean.y * mean.y;
    const double angle = 0.5 * std::atan2(2 * (sumXY / area - mean.x * mean.y), xx - yy);
    const DPOINT centre{origin.x + mean.x, origin.y + mean.y};
    const DPOINT along{std::cos(angle), std::sin(angle)};
    if (!IsInside(polygon, centre)) return {};
    double ahead = std::numeric_limits<double>::infinity(), behind = ahead;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const DPOINT edge = Minus(polygon[(i + 1) % polygon.size()], polygon[i]);
        const DPOINT offset = Minus(polygon[i], centre);
        const double det = CrossProduct(along, edge);
        const double t = CrossProduct(offset, along) / det;
        if (det == 0 || t < 0 || t > 1) continue;
        const double away = CrossProduct(offset, edge) / det;
        if (away >= 0) ahead = std::min(ahead, away);
        if (away <= 0) behind = std::min(behind, -away);
    }
    if (!std::isfinite(ahead) || !std::isfinite(behind)) return {};
    PointList line;
    const int steps = std::clamp(SaturatingInt((ahead + behind) / 2), 2, 1 << 16);
    for (int i = 0; i <= steps; ++i) {
        const double s = std::lerp(-behind / 2, ahead / 2, static_cast<double>(i) / steps);
        line.push_back({centre.x + s * along.x, centre.y + s * along.y});
    }
    return line;
}

PointList Open(const CArray<DPOINT, DPOINT>& outline) {
    PointList points(outline.begin(), outline.end());
    while (points.size() > 1 && points.back() == points.front()) points.pop_back();
    return points;
}

}  // namespace

PointList LinePoints(const CArray<POINT, POINT>& line) {
    PointList points;
    points.reserve(static_cast<std::size_t>(line.GetSize()));
    for (const POINT& p : line) points.push_back({static_cast<double>(p.x), static_cast<double>(p.y)});
    return points;
}

/// The piece that holds the seed.
const Piece* RegionMaker::PieceAt(POINT seed) const {
    const DPOINT p{static_cast<double>(seed.x), static_cast<double>(seed.y)};
    const Piece* found = nullptr;
    for (const Piece& piece : m_pieces) {
        if (IsInside(piece.outer.points, p) && (found == nullptr || piece.outer.area < found->outer.area))
            found = &piece;
    }
    return found;
}

/// The piece that holds the seed, if it is about as large as what was traced.
const Piece* RegionMaker::PieceAt(POINT seed, double tracedArea) const {
    const Piece* found = PieceAt(seed);
    if (found == nullptr) return nullptr;
    PointList around = found->outer.points;
    around.push_back(around.front());
    const double band = kEdgeBand * PolylineLength(around);
    const double area = found->outer.area;
    const bool fits = tracedArea < area * kMostAreaRatio + band && area < tracedArea * kMostAreaRatio + band;
    return fits ? found : nullptr;
}

/// The trace as a boundary, with the edges that lie along cuts named.
Boundary RegionMaker::TracedBoundary(const CArray<DPOINT, DPOINT>& outline) const {
    Boundary boundary;
    boundary.points = Open(outline);
    boundary.area = SignedArea(boundary.points);
    if (boundary.area < 0) {
        std::reverse(boundary.points.begin(), boundary.points.end());
        boundary.area = -boundary.area;
    }
    boundary.cuts.assign(boundary.points.size(), -1);
    for (std::size_t i = 0; i < boundary.points.size(); ++i) {
        const DPOINT& a = boundary.points[i];
        const DPOINT& b = boundary.points[(i + 1) % boundary.points.size()];
        for (std::size_t k = 0; k < m_cuts.size() && boundary.cuts[i] < 0; ++k) {
            const DPOINT from{static_cast<double>(m_cuts[k].x1), static_cast<double>(m_cuts[k].y1)};
            const DPOINT to{static_cast<double>(m_cuts[k].x2), static_cast<double>(m_cuts[k].y2)};
            if (NearestOnSegment(from, to, a, 0).distance <= kBesideCut &&
                NearestOnSegment(from, to, b, 0).distance <= kBesideCut)
                boundary.cuts[i] = static_cast<int>(k);
        }
    }
    return boundary;
}

std::optional<Rails> RegionMaker::RailsOf(const Piece& piece, const PointList& line) const {
    if (piece.holes.size() == 1) return RingRails(piece.outer, piece.holes.front(), line);
    if (!piece.holes.empty()) return std::nullopt;
    return SplitAlong(piece.outer, WithoutReturn(line), m_settings);
}

/// Takes a region in, unless the same region is there already: then the longer line makes it. True when it is
/// new.
bool RegionMaker::Keep(Region region) {
    for (Region& other : m_regions) {
        if (!(other.identity == region.identity) || other.tracedArea != region.tracedArea) continue;
        if (PolylineLength(region.line) > PolylineLength(other.line)) other = std::move(region);
        return false;
    }
    m_regions.push_back(std::move(region));
    return true;
}

bool RegionMaker::AddOutlines(int index, const PointList& line, POINT seed,
                              const CArray<DPOINT, DPOINT>& outline) {
    if (outline.IsEmpty()) return false;
    Region region{index, line, seed, outline[0], std::fabs(SignedArea(Open(outline))), true, {}};
    const Piece* piece = PieceAt(seed, region.tracedArea);
    auto rails = piece != nullptr ? RailsOf(*piece, line) : std::nullopt;
    if (!rails) {
        region.isExact = false;
        rails = SplitAlong(TracedBoundary(outline), WithoutReturn(line), m_settings);
    }
    if (!rails) return false;
    region.rails = std::move(*rails);
    return Keep(std::move(region));
}

bool RegionMaker::AddOutlines(int index, const PointList& line, POINT seed,
                              const CArray<DPOINT, DPOINT>& first, const CArray<DPOINT, DPOINT>& second) {
    if (first.IsEmpty() || second.IsEmpty()) return false;
    const double firstArea = std::fabs(SignedArea(Open(first)));
    const double secondArea = std::fabs(SignedArea(Open(second)));
    const auto& outer = firstArea >= secondArea ? first : second;
    const auto& inner = firstArea >= secondArea ? second : first;
    Region region{index, line, seed, outer[0], std::max(firstArea, secondArea), true, {}};
    const Piece* piece = PieceAt(seed, region.tracedArea);
    std::optional<Rails> rails;
    if (piece != nullptr && piece->holes.size() == 1) rails = RailsOf(*piece, line);
    if (!rails) {
        region.isExact = false;
        rails = RingRails(TracedBoundary(outer), TracedBoundary(inner), line);
    }
    if (!rails) return false;
    region.rails = std::move(*rails);
    return Keep(std::move(region));
}

/// The longest cut between a piece without a line and one with.
std::optional<CUTLINE> RegionMaker::WayOut(const Piece& orphan) const {
    const auto lastOf = [](const Boundary& b, std::size_t i) { return b.points[(i + 1) % b.points.size()]; };
    std::optional<CUTLINE> way;
    double longest = 0;
    for (const Region& region : m_regions) {
        const Piece* piece = PieceAt(region.seed);
        if (!region.isExact || piece == nullptr) continue;
        for (std::size_t i = 0; i < orphan.outer.points.size(); ++i) {
            const int cut = orphan.outer.cuts[i];
            const double length = Length(Minus(lastOf(orphan.outer, i), orphan.outer.points[i]));
            if (cut < 0 || length <= longest) continue;
            for (std::size_t k = 0; k < piece->outer.points.size(); ++k) {
                if (piece->outer.cuts[k] != cut || !(piece->outer.points[k] == lastOf(orphan.outer, i)))
                    continue;
                longest = length;
                way = m_cuts[static_cast<std::size_t>(cut)];
            }
        }
    }
    return way;
}

/// Leaves out a cut, and all made at the same place, unless that makes one piece of two regions.
bool RegionMaker::LeaveOut(const CUTLINE& cut) {
    const std::vector<CUTLINE> kept = m_cuts;
    const CUTLINE reversed{cut.x2, cut.y2, cut.x1, cut.y1};
    for (CUTLINE& other : m_cuts) {
        if (other == cut || other == reversed) other = {};
    }
    std::vector<Piece> former = std::move(m_pieces);
    m_pieces = MakePieces(m_outline, m_cuts);
    std::vector<const Piece*> taken;
    for (const Region& region : m_regions) {
        if (region.isExact) taken.push_back(PieceAt(region.seed));
    }
    std::sort(taken.begin(), taken.end());
    if (std::adjacent_find(taken.begin(), taken.end()) == taken.end()) return true;
    m_cuts = kept;
    m_pieces = std::move(former);
    return false;
}

std::vector<const Piece*> RegionMaker::Taken() const {
    std::vector<const Piece*> taken;
    for (const Region& region : m_regions) taken.push_back(PieceAt(region.seed));
    return taken;
}

void RegionMaker::TakeInOrphans() {
    JoinSmallOrphans();
    SplitOrphans();
}

void RegionMaker::JoinSmallOrphans() {
    bool changed = false;
    for (std::size_t tries = m_cuts.size(); tries > 0; --tries) {
        const std::vector<const Piece*> taken = Taken();
        std::optional<CUTLINE> way;
        for (std::size_t i = 0; i < m_pieces.size() && !way; ++i) {
            const double area = m_pieces[i].outer.area;
            if (area < kLeastOrphan || area >= kLeastRegion) continue;
            if (std::find(taken.begin(), taken.end(), &m_pieces[i]) == taken.end()) way = WayOut(m_pieces[i]);
        }
        if (!way || !LeaveOut(*way)) break;
        changed = true;
    }
    if (!changed) return;
    for (Region& region : m_regions) {
        const Piece* piece = PieceAt(region.seed);
        if (!region.isExact || piece == nullptr) continue;
        if (auto rails = RailsOf(*piece, region.line)) region.rails = std::move(*rails);
    }
}

void RegionMaker::SplitOrphans() {
    const std::vector<const Piece*> taken = Taken();
    for (const Piece& piece : m_pieces) {
        if (piece.outer.area < kLeastRegion || !piece.holes.empty()) continue;
        if (std::find(taken.begin(), taken.end(), &piece) != taken.end()) continue;
        Region region;
        region.line = LongAxis(piece.outer.points);
        if (region.line.empty()) continue;
        const DPOINT& middle = region.line[region.line.size() / 2];
        region.seed = {RoundToInt(middle.x), RoundToInt(middle.y)};
        region.isExact = true;
        auto rails = SplitAlong(piece.outer, region.line, m_settings);
        if (!rails) continue;
        region.rails = std::move(*rails);
        m_regions.push_back(std::move(region));
    }
}

}  // namespace tarvex
