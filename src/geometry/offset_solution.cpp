// From points to the strands of their offset.
#include "geometry/offset_solution.h"

#include <algorithm>

#include "geometry/offset_region.h"

namespace tarvex::offsetting {

namespace {

enum class Order { kept, reversed };

void Reverse(Strand& strand) {
    std::reverse(strand.points.begin(), strand.points.end());
    std::reverse(strand.tags.begin(), strand.tags.end());
}

/// The path walked the other way, with each edge's own tag.
Path Reversed(const Path& path) {
    Path reversed;
    reversed.reserve(path.size());
    for (std::size_t i = path.size(); i-- > 0;)
        reversed.push_back({path[i].at, path[i > 0 ? i - 1 : path.size() - 1].tag});
    return reversed;
}

Strand ClosedStrand(const Contour& contour) {
    Strand strand;
    for (const Corner& corner : contour) {
        strand.points.push_back(corner.at);
        strand.tags.push_back(corner.tag);
    }
    strand.points.push_back(contour.front().at);
    return strand;
}

Solution SolveLoops(const Problem& problem, Inside rule, Order order) {
    Solution solution{problem.grid, {}, {}};
    std::vector<Contour> contours;
    if (problem.manner.distance == 0) {
        contours = OutlinesOf(problem.paths, rule);
    } else {
        RegionOffset offset(problem.manner);
        contours = offset.OfLoops(problem.paths, rule);
        solution.edges = offset.Edges();
    }
    DropNarrow(contours, problem.narrowest);
    for (const Contour& contour : contours) {
        solution.strands.push_back(ClosedStrand(contour));
        if (order == Order::reversed) Reverse(solution.strands.back());
    }
    return solution;
}

/// Appends the parts of the outline around a chain that lie on the wanted side.
void AppendWanted(const Contour& contour, const std::vector<RawEdge>& edges, Order order,
                  std::vector<Strand>& strands) {
    const std::size_t n = contour.size();
    const auto isWanted = [&](std::size_t i) {
        return edges[static_cast<std::size_t>(contour[i % n].tag)].side == RawEdge::Side::wanted;
    };
    std::size_t start = 0;  // where no part goes on, if there is such a corner
    while (start < n && isWanted(start)) ++start;
    for (std::size_t k = 0; k < n;) {
        if (!isWanted(start + k)) {
            ++k;
            continue;
        }
        Strand strand;
        for (; k < n && isWanted(start + k); ++k) {
            strand.points.push_back(contour[(start + k) % n].at);
            strand.tags.push_back(contour[(start + k) % n].tag);
        }
        strand.points.push_back(contour[(start + k) % n].at);
        if (order == Order::reversed) Reverse(strand);
        strands.push_back(std::move(strand));
    }
}

Solution SolveChain(const Problem& problem) {
    RegionOffset offset(problem.manner);
    std::vector<Contour> contours = offset.AroundChain(problem.paths.front());
    DropNarrow(contours, problem.narrowest);
    Solution solution{problem.grid, offset.Edges(), {}};
    // Around a chain is counter-clockwise, so back on its left side.
    const Order order = problem.manner.distance > 0 ? Order::reversed : Order::kept;
    for (const Contour& contour : contours) AppendWanted(contour, solution.edges, order, solution.strands);
    const auto sourceOf = [&](const Strand& strand) {
        return solution.edges[static_cast<std::size_t>(strand.tags.front())].source;
    };
    std::stable_sort(solution.strands.begin(), solution.strands.end(),
                     [&](const Strand& a, const Strand& b) { return sourceOf(a) < sourceOf(b); });
    return solution;
}

}  // namespace

std::optional<Solution> SolveContour(std::span<const DPOINT> points, double distance,
                                     const OffsetOptions& options) {
    const Closing closing = IsClosed(points) ? Closing::closed : Closing::open;
    std::optional<Problem> problem = Pose(std::span(&points, 1), closing, distance, options);
    if (!problem) return std::nullopt;
    if (closing == Closing::open) return SolveChain(*problem);
    Path& path = problem->paths.front();
    if (DoubleArea(path) >= 0) return SolveLoops(*problem, Inside::nonZero, Order::kept);
    // A counter-clockwise contour is computed as the clockwise one that it is when reversed.
    path = Reversed(path);
    problem->manner.distance = -problem->manner.distance;
    return SolveLoops(*problem, Inside::nonZero, Order::reversed);
}

std::optional<Solution> SolveShape(std::span<const std::span<const DPOINT>> contours, double distance,
                                   const OffsetOptions& options) {
    const std::optional<Problem> problem = Pose(contours, Closing::closed, distance, options);
    if (!problem) return std::nullopt;
    return SolveLoops(*problem, Inside::evenOdd, Order::kept);
}

}  // namespace tarvex::offsetting
