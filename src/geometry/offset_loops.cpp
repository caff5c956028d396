// The loops of polylines that have been moved sideways.
//
// A closed contour is a matter of winding numbers: the loops of one moved inwards run against it, so what
// they go round has a number less than 1; those of one moved outwards go round their inside once more than
// the contour. The outline of what has a positive number is free of both.
//
// An open line goes round nothing. All its crossings are found by the same sweep, and the line is then walked
// with a stack of the vertices passed. Where it comes to a vertex on the stack it has closed a loop; the area
// of that, from running sums, has a sign, and a loop with the sign of those that the distance makes is
// taken off the stack. Each vertex goes on and off once.
#include <algorithm>
#include <memory>

#include "geometry/offset_problem.h"
#include "geometry/offset_sweep.h"
#include "tarvex/offset.h"

namespace tarvex {

namespace {

using namespace offsetting;

/// The caller's point where the corner is the start of its edge and so one of them; else the grid's.
DPOINT PointAt(const Corner& corner, std::span<const DPOINT> points, const Grid& grid) {
    const DPOINT& p = points[static_cast<std::size_t>(corner.tag)];
    return grid.ToGrid(p) == corner.at ? p : grid.FromGrid(corner.at);
}

void AddPoints(const std::vector<DPOINT>& points, CPolyPolyDPoint& result) {
    auto polyline = std::make_unique<CArray<DPOINT, DPOINT>>();
    polyline->SetSize(static_cast<int>(points.size()));
    std::copy(points.begin(), points.end(), polyline->begin());
    result.Add(std::move(polyline));
}

/// The outline of what a closed path goes round in its own direction.
CPolyPolyDPoint WithoutLoops(Problem& problem, std::span<const DPOINT> points) {
    const Path& path = problem.paths.front();
    const bool isClockwise = DoubleArea(path) >= 0;
    std::vector<Edge> edges;
    AppendEdges(path, isClockwise ? Sense::forwards : Sense::backwards, edges);
    std::vector<Contour> contours = *Outline(edges, Inside::positive);
    CPolyPolyDPoint result;
    if (contours.size() == 1 && contours.front().size() == path.size()) {
        AddPoints({points.begin(), points.end()}, result);
        return result;
    }
    DropNarrow(contours, problem.narrowest);
    result.SetSize(0);
    for (const Contour& contour : contours) {
        std::vector<DPOINT> outline;
        const std::size_t n = contour.size();
        for (std::size_t i = 0; i < n; ++i) {
            // Backwards the corner is the start of the edge before it, as the contour runs.
            const int tag = contour[isClockwise ? i : (i + n - 1) % n].tag;
            outline.push_back(PointAt({contour[i].at, tag}, points, problem.grid));
        }
        outline.push_back(outline.front());
        if (!isClockwise) std::reverse(outline.begin(), outline.end());
        AddPoints(outline, result);
    }
    return result;
}

/// The corners of an open path with those where it crosses itself.
std::vector<Corner> WithCrossings(const Path& path) {
    std::vector<Edge> edges;
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        edges.push_back({path[i].at, path[i + 1].at, static_cast<int>(i)});
    }
    std::vector<Corner> corners;
    for (std::size_t i = 0; i < path.size(); ++i) corners.push_back({path[i].at, static_cast<int>(i)});
    for (const Edge& cut : CutAtCrossings(edges)) {
        corners.push_back({cut.from, cut.tag});
        corners.push_back({cut.to, cut.tag});
    }
    const auto along = [&](const Corner& corner) {
        const auto i = static_cast<std::size_t>(corner.tag);
        if (i + 1 >= path.size()) return 0.0;
        const GridPoint& from = path[i].at;
        const GridPoint& to = path[i + 1].at;
        return (corner.at.x - from.x) * (to.x - from.x) + (corner.at.y - from.y) * (to.y - from.y);
    };
    std::sort(corners.begin(), corners.end(), [&](const Corner& a, const Corner& b) {
        return a.tag != b.tag ? a.tag < b.tag : along(a) < along(b);
    });
    const auto repeats = [](const Corner& a, const Corner& b) { return a.at == b.at; };
    corners.erase(std::unique(corners.begin(), corners.end(), repeats), corners.end());
    for (Corner& corner : corners) corner.tag = path[static_cast<std::size_t>(corner.tag)].tag;
    return corners;
}

/// Numbers for the corners' places, the same for the same place.
std::vector<std::size_t> PlacesOf(const std::vector<Corner>& corners) {
    std::vector<std::size_t> order(corners.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return corners[a].at == corners[b].at ? a < b : Before(corners[a].at, corners[b].at);
    });
    std::vector<std::size_t> places(corners.size());
    for (std::size_t k = 0; k < order.size(); ++k) {
        const bool isNew = k == 0 || !(corners[order[k]].at == corners[order[k - 1]].at);
        places[order[k]] = isNew ? k : places[order[k - 1]];
    }
    return places;
}

/// Walks the corners and cuts off the loops whose area has the sign opposite to the distance's.
std::vector<Corner> WithoutLoops(const std::vector<Corner>& corners, double distance) {
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    struct Step {
        std::size_t corner;
        std::size_t shadowed;  ///< the step at the same place before it
        double area;           ///< twice that between the origin and the walk so far
    };
    const std::vector<std::size_t> places = PlacesOf(corners);
    std::vector<std::size_t> latest(corners.size(), none);
    std::vector<Step> walk;
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const GridPoint& at = corners[i].at;
        double area = 0;
        if (!walk.empty()) {
            const GridPoint& from = corners[walk.back().corner].at;
            area = walk.back().area + (from.x * at.y - from.y * at.x);
        }
        const std::size_t before = latest[places[i]];
        if (before != none && (area - walk[before].area) * distance < 0) {
            while (walk.size() > before + 1) {
                latest[places[walk.back().corner]] = walk.back().shadowed;
                walk.pop_back();
            }
            // The walk goes on along the edge that leaves here.
            walk.back().corner = i;
            continue;
        }
        latest[places[i]] = walk.size();
        walk.push_back({i, before, area});
    }
    std::vector<Corner> kept;
    for (const Step& step : walk) kept.push_back(corners[step.corner]);
    return kept;
}

}  // namespace

CPolyPolyDPoint RemovePolylineLoops(const CArray<DPOINT, DPOINT>& polyline, double distance) {
    const std::span<const DPOINT> points = polyline;
    CPolyPolyDPoint result;
    const Closing closing = IsClosed(points) ? Closing::closed : Closing::open;
    std::optional<Problem> problem = Pose(std::span(&points, 1), closing, 0, {});
    if (!problem) return result;
    if (!(distance != 0) || std::isnan(distance)) {
        AddPoints({points.begin(), points.end()}, result);
        return result;
    }
    if (closing == Closing::closed) return WithoutLoops(*problem, points);

    const Path& path = problem->paths.front();
    const std::vector<Corner> corners = WithCrossings(path);
    const std::vector<Corner> kept = WithoutLoops(corners, distance);
    if (kept.size() == corners.size()) {
        AddPoints({points.begin(), points.end()}, result);
        return result;
    }
    std::vector<DPOINT> line;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        // A crossing that no loop was cut off at is not a corner.
        const bool isOwn = problem->grid.ToGrid(points[static_cast<std::size_t>(kept[i].tag)]) == kept[i].at;
        const bool goesOn = i > 0 && i + 1 < kept.size() && kept[i].tag == kept[i - 1].tag;
        if (isOwn || !goesOn) line.push_back(PointAt(kept[i], points, problem->grid));
    }
    AddPoints(line, result);
    return result;
}

}  // namespace tarvex
