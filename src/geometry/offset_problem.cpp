// Placing contours on the grid, and judging what comes off it.
#include "geometry/offset_problem.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tarvex::offsetting {

namespace {

constexpr double LARGEST = 1e100;
constexpr double LONGEST_MITRE = 100;
constexpr double FINEST_TOLERANCE = 1e-6;  // of the distance
constexpr double ROUNDING_STEPS = 64;      // of the grid: what a part must be wider than to be one

bool IsUsable(double v) { return std::fabs(v) < LARGEST; }

/// The rectangle of all points; nothing when one is not usable or there is none.
std::optional<DRECT> FrameOf(std::span<const std::span<const DPOINT>> contours) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    DRECT frame{infinity, -infinity, infinity, -infinity};
    for (const auto& points : contours) {
        for (const DPOINT& p : points) {
            if (!IsUsable(p.x) || !IsUsable(p.y)) return std::nullopt;
            frame.left = std::min(frame.left, p.x);
            frame.right = std::max(frame.right, p.x);
            frame.top = std::min(frame.top, p.y);
            frame.bottom = std::max(frame.bottom, p.y);
        }
    }
    if (!(frame.left <= frame.right)) return std::nullopt;
    return frame;
}

/// The points on the grid, tagged with their number, of which the first has `firstTag`.
Path Placed(std::span<const DPOINT> points, Closing closing, const Grid& grid, int firstTag) {
    Path path;
    path.reserve(points.size());
    const DPOINT* last = nullptr;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (last != nullptr && *last == points[i]) continue;
        const GridPoint at = grid.ToGrid(points[i]);
        if (!path.empty() && path.back().at == at) continue;
        last = &points[i];
        path.push_back({at, firstTag + static_cast<int>(i)});
    }
    if (closing == Closing::closed) {
        const auto repeatsFirst = [&](const Corner& corner) {
            return corner.at == path.front().at ||
                   points[static_cast<std::size_t>(corner.tag - firstTag)] == points.front();
        };
        while (path.size() > 1 && repeatsFirst(path.back())) path.pop_back();
    }
    return path;
}

/// The unit in the last place of the frame's largest coordinate.
double UnitOfCoordinates(const DRECT& frame) {
    const double largest = std::max(std::max(std::fabs(frame.left), std::fabs(frame.right)),
                                    std::max(std::fabs(frame.top), std::fabs(frame.bottom)));
    return largest * std::numeric_limits<double>::epsilon();
}

}  // namespace

std::optional<Problem> Pose(std::span<const std::span<const DPOINT>> contours, Closing closing,
                            double distance, const OffsetOptions& options) {
    const std::optional<DRECT> frame = FrameOf(contours);
    if (!frame || !IsUsable(distance)) return std::nullopt;
    const double limit = options.mitreLimit >= 1 ? std::min(options.mitreLimit, LONGEST_MITRE) : 1.0;
    const double reach = std::fabs(distance);
    Problem problem{Grid(*frame, 2 * limit * reach), {}, {}, 0};
    const Grid& grid = problem.grid;
    const double finest = FINEST_TOLERANCE * reach;
    const double tolerance = options.tolerance >= finest ? std::min(options.tolerance, LARGEST) : finest;
    problem.manner = {grid.ToGrid(distance), limit, grid.ToGrid(tolerance), options.corner};
    problem.narrowest =
        std::max(ROUNDING_STEPS, grid.ToGrid(std::max(POINT_EPSILON, 4 * UnitOfCoordinates(*frame))));
    int firstTag = 0;
    for (const auto& points : contours) {
        Path path = Placed(points, closing, grid, firstTag);
        firstTag += static_cast<int>(points.size());
        if (path.size() >= 2) problem.paths.push_back(std::move(path));
    }
    if (problem.paths.empty()) return std::nullopt;
    return problem;
}

bool IsClosed(std::span<const DPOINT> points) { return points.size() > 1 && points.front() == points.back(); }

double DoubleArea(const Path& path) {
    double area = 0;
    const GridPoint& origin = path.front().at;
    for (std::size_t i = 1; i + 1 < path.size(); ++i) {
        area += (path[i].at.x - origin.x) * (path[i + 1].at.y - origin.y) -
                (path[i].at.y - origin.y) * (path[i + 1].at.x - origin.x);
    }
    return area;
}

void DropNarrow(std::vector<Contour>& contours, double width) {
    std::erase_if(contours, [&](const Contour& contour) {
        double length = 0;
        for (std::size_t i = 0; i < contour.size(); ++i) {
            const GridPoint& next = contour[i + 1 < contour.size() ? i + 1 : 0].at;
            length += std::hypot(next.x - contour[i].at.x, next.y - contour[i].at.y);
        }
        return std::fabs(DoubleArea(contour)) <= width * length;
    });
}

}  // namespace tarvex::offsetting
