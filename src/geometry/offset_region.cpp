// From raw offsets to regions.
//
// The region R of the closed paths is found first: its outlines do not cross. Then what is within the
// distance d of them is taken away from R, or added to it. Both are winding numbers of one curve, the
// raw offset (offset_raw.h): the path's own number, 1 in R, less or plus 1 for each rectangle or
// sector of the band along the path that covers a place. A place within d of the path is covered: by the
// rectangle of the edge on which its nearest point lies, or by the sector of the corner that is its nearest
// point. So R less the band, or R with the band, is where the number is positive, and one sweep
// (offset_sweep.h) finds its outline. There is no rule of thumb about which loops are right.
//
// That is quick while d is small beside the path's edges. Where many edges lie within d of one another
// their rectangles overlap in heaps, and a sweep that counts them all would meet about n·m crossings, m
// of them for each edge. The union of the heaps, though, is no longer than the sum of the edges' own
// bands: the sets of points within d of two segments cross in two points at most, and a union of n such
// sets has an outline of O(n) corners (Kedem, Livne, Pach and Sharir, 1986). So for crowded paths the
// band is built from both sides of each edge, and in parts: the bands of an eighth of the chain each, built
// the same way, are united by a sweep that finds only O(n) crossings. With log n levels this makes
// O(n log² n), and in practice, as the details vanish at the lowest levels, little more than those.
// Parts end flat, with the very edges that the sector of the corner between them begins and ends with.
//
// What is outside R does not count when R shrinks, so bands around its outlines do; when R grows, bands
// around the paths themselves are added, which give width to strokes that enclose nothing: with the corners
// asked for on the wanted side, and plainly on both, since a stroke that is run through twice the same way
// has no wanted side of its own.
#include "geometry/offset_region.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tarvex::offsetting {

namespace {

constexpr std::size_t LEAF_EDGES = 16;  // swept at once, whatever crosses
constexpr std::size_t PARTS = 8;
/// Expected crossings for each edge from which building in parts is quicker.
constexpr double CROWD = 12;
constexpr std::size_t CROSSINGS_PER_EDGE = 40;

double Distance(const GridPoint& a, const GridPoint& b) { return std::hypot(b.x - a.x, b.y - a.y); }

using Side = std::pair<GridPoint, GridPoint>;

bool IsBefore(const Side& a, const Side& b) {
    return a.first == b.first ? Before(a.second, b.second) : Before(a.first, b.first);
}

/// The sides of all loops in the order of the plane, each with the end that comes first there in front.
std::vector<Side> SortedSides(const std::vector<Path>& loops) {
    std::vector<Side> sides;
    for (const Path& loop : loops) {
        GridPoint from = loop.back().at;
        for (const Corner& corner : loop) {
            const GridPoint& to = corner.at;
            sides.push_back(Before(from, to) ? Side{from, to} : Side{to, from});
            from = to;
        }
    }
    std::sort(sides.begin(), sides.end(), IsBefore);
    return sides;
}

/// The loop as a chain that ends where it starts.
Path Unrolled(const Path& loop) {
    Path chain = loop;
    chain.push_back(loop.front());
    return chain;
}

/// The convex hull, counter-clockwise (y upwards), by Andrew's monotone chains.
Contour HullOf(std::span<const Corner> chain) {
    std::vector<Corner> points(chain.begin(), chain.end());
    std::sort(points.begin(), points.end(),
              [](const Corner& a, const Corner& b) { return Before(a.at, b.at); });
    Contour hull;
    const auto append = [&](const Corner& corner, std::size_t start) {
        while (hull.size() >= start + 2 && SideOf(hull[hull.size() - 2].at, hull.back().at, corner.at) <= 0)
            hull.pop_back();
        hull.push_back(corner);
    };
    for (const Corner& corner : points) append(corner, 0);
    hull.pop_back();
    const std::size_t upper = hull.size();
    for (auto corner = points.rbegin(); corner != points.rend(); ++corner) append(*corner, upper);
    hull.pop_back();
    return hull;
}

void AppendAllEdges(const std::vector<Contour>& contours, Sense sense, std::vector<Edge>& edges) {
    for (const Contour& contour : contours) AppendEdges(contour, sense, edges);
}

}  // namespace

std::vector<Contour> OutlinesOf(const std::vector<Path>& paths, Inside rule) {
    std::vector<Edge> edges;
    AppendAllEdges(paths, Sense::forwards, edges);
    return *Outline(edges, rule);
}

/// Whether a raw offset would cross itself much more often than it has edges. Corners whose rectangles do
/// not fit beside one another do that: each crosses about as many edges as lie within the distance.
bool RegionOffset::IsCrowded(std::span<const Corner> chain) const {
    const std::size_t edges = chain.size() - 1;
    const double reach = std::fabs(m_manner.distance);
    std::vector<double> lengths(chain.size());
    for (std::size_t i = 0; i < edges; ++i)
        lengths[i + 1] = lengths[i] + Distance(chain[i].at, chain[i + 1].at);
    double crossings = 0;
    std::size_t first = 0;
    std::size_t last = 0;
    for (std::size_t i = 1; i < edges; ++i) {
        while (lengths[i] - lengths[first] > reach) ++first;
        while (last < edges && lengths[last] - lengths[i] < reach) ++last;
        const GridPoint& p = chain[i - 1].at;
        const GridPoint& q = chain[i].at;
        const GridPoint& r = chain[i + 1].at;
        const double in = lengths[i] - lengths[i - 1];
        const double out = lengths[i + 1] - lengths[i];
        const double cross = (q.x - p.x) * (r.y - q.y) - (q.y - p.y) * (r.x - q.x);
        const double dot = (q.x - p.x) * (r.x - q.x) + (q.y - p.y) * (r.y - q.y);
        if (reach * std::fabs(cross) > std::min(in, out) / 2 * (in * out + dot))
            crossings += static_cast<double>(last - first);
    }
    return crossings > CROWD * static_cast<double>(edges);
}

Contour RegionOffset::RawBand(std::span<const Corner> chain, const Extent& extent) {
    if (extent.sides == Extent::Sides::wanted) return m_raw.BesideChain(chain);
    return m_raw.AroundChain(chain, extent.start, extent.end);
}

/// Adds the hull of a chain that is small beside the distance: all of it lies within the distance, and it
/// hides the chain.
void RegionOffset::AppendHull(std::span<const Corner> chain, std::vector<Edge>& edges) {
    const auto byX = [](const Corner& a, const Corner& b) { return Before(a.at, b.at); };
    const auto byY = [](const Corner& a, const Corner& b) { return a.at.y < b.at.y; };
    const auto [left, right] = std::minmax_element(chain.begin(), chain.end(), byX);
    const auto [low, high] = std::minmax_element(chain.begin(), chain.end(), byY);
    const double extent = std::hypot(right->at.x - left->at.x, high->at.y - low->at.y);
    if (extent > std::fabs(m_manner.distance)) return;
    Contour hull = HullOf(chain);
    for (Corner& corner : hull) corner.tag = m_raw.AddEdge(corner.tag);
    AppendEdges(hull, Sense::forwards, edges);
}

/// What two parts of a band that meet at the middle corner leave out there.
void RegionOffset::AppendSectors(std::span<const Corner> corners, const Extent& extent,
                                 std::vector<Edge>& edges) {
    AppendEdges(m_raw.Sector(corners, RawEdge::Side::wanted), Sense::forwards, edges);
    if (extent.sides == Extent::Sides::both)
        AppendEdges(m_raw.Sector(corners, RawEdge::Side::other), Sense::forwards, edges);
}

std::vector<Contour> RegionOffset::Band(std::span<const Corner> chain, const Extent& extent) {
    const std::size_t edges = chain.size() - 1;
    std::vector<Edge> tangle;
    if (edges <= LEAF_EDGES || !IsCrowded(chain)) {
        AppendEdges(RawBand(chain, extent), Sense::forwards, tangle);
        AppendHull(chain, tangle);
        const std::size_t most = edges <= LEAF_EDGES ? NO_LIMIT : CROSSINGS_PER_EDGE * tangle.size();
        if (auto outline = Outline(tangle, Inside::positive, most)) return *std::move(outline);
        tangle.clear();
    }
    const std::size_t part = std::max(LEAF_EDGES / 2, (edges + PARTS - 1) / PARTS);
    for (std::size_t from = 0; from < edges; from += part) {
        const std::size_t to = std::min(from + part, edges);
        const Extent inner{extent.sides, from == 0 ? extent.start : Tip::flat,
                           to == edges ? extent.end : Tip::flat};
        AppendAllEdges(Band(chain.subspan(from, to - from + 1), inner), Sense::forwards, tangle);
        if (to < edges) AppendSectors(chain.subspan(to - 1, 3), extent, tangle);
    }
    AppendHull(chain, tangle);
    return *Outline(tangle, Inside::positive);
}

std::vector<Contour> RegionOffset::AroundChain(std::span<const Corner> chain) {
    return Band(chain, {Extent::Sides::both, Tip::round, Tip::round});
}

std::vector<Contour> RegionOffset::OfLoops(const std::vector<Path>& paths, Inside rule) {
    const std::vector<Contour> region = OutlinesOf(paths, rule);
    const bool isInwards = m_manner.distance > 0;
    // Strokes count when growing; there are none when the region's outlines are the paths themselves.
    const bool hasNoStrokes = isInwards || SortedSides(region) == SortedSides(paths);
    const auto isCrowded = [&](const Path& path) { return IsCrowded(Unrolled(path)); };
    std::vector<Edge> tangle;
    if (hasNoStrokes && std::none_of(region.begin(), region.end(), isCrowded)) {
        for (const Contour& contour : region) AppendEdges(m_raw.OfLoop(contour), Sense::forwards, tangle);
        const std::size_t most = CROSSINGS_PER_EDGE * (tangle.size() + 1);
        if (auto outline = Outline(tangle, Inside::positive, most)) return *std::move(outline);
        tangle.clear();
    }

    const Sense sense = isInwards ? Sense::backwards : Sense::forwards;
    std::vector<Path> sources = region;
    if (!hasNoStrokes) {
        sources.insert(sources.end(), paths.begin(), paths.end());
        for (const Path& path : paths) AppendAllEdges(AroundChain(Unrolled(path)), sense, tangle);
    }
    const Extent beside{Extent::Sides::wanted, Tip::flat, Tip::flat};
    for (const Path& path : sources) {
        AppendAllEdges(Band(Unrolled(path), beside), sense, tangle);
        const Corner seam[] = {path.back(), path.front(), path[1]};
        AppendEdges(m_raw.Sector(seam, RawEdge::Side::wanted), sense, tangle);
    }
    for (Contour contour : region) {
        for (Corner& corner : contour) corner.tag = m_raw.AddEdge(corner.tag);
        AppendEdges(contour, Sense::forwards, tangle);
    }
    return *Outline(tangle, Inside::positive);
}

}  // namespace tarvex::offsetting
