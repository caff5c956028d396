// How good a break-up is: what its regions cover, and how its inclinations lie.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "breakup/shapes.h"
#include "tarvex/breakup.h"

namespace tarvex::test {

inline double AreaOf(const Points& polygon) {
    double twice = 0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const DPOINT& a = polygon[i];
        const DPOINT& b = polygon[(i + 1) % polygon.size()];
        twice += a.x * b.y - b.x * a.y;
    }
    return std::fabs(twice) / 2;
}

/// One rail there, the other one back: a region's boundary, a ring's with a seam.
inline Points BoundaryOf(const StitchRegion& region) {
    return Joined(region.first, {region.second.rbegin(), region.second.rend()});
}

/// Parts of a shape's area, counted on a grid of points four to each unit of area.
struct Coverage {
    double missed = 0;
    double doubled = 0;
};

inline Coverage MeasureCoverage(const IslandBreakUp& island) {
    const auto contains = [](const Points& polygon) { return Polygon(polygon); };
    std::vector<Inside> contours, regions;
    double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
    for (const auto& contour : island.contours) {
        contours.push_back(contains(contour));
        for (const DPOINT& p : contour) {
            left = std::min(left, p.x), right = std::max(right, p.x);
            top = std::min(top, p.y), bottom = std::max(bottom, p.y);
        }
    }
    for (const StitchRegion& region : island.regions) regions.push_back(contains(BoundaryOf(region)));
    const auto countOf = [](const std::vector<Inside>& all, double x, double y) {
        return std::count_if(all.begin(), all.end(), [=](const Inside& inside) { return inside(x, y); });
    };
    const double step = std::max((right - left) / 250, 0.5);
    double inside = 0, missed = 0, doubled = 0;
    for (double y = top + 0.37 * step; y < bottom; y += step) {
        for (double x = left + 0.41 * step; x < right; x += step) {
            const bool isInside = countOf(contours, x, y) % 2 != 0;
            const auto covering = countOf(regions, x, y);
            inside += isInside;
            missed += isInside && covering == 0;
            doubled += covering > 1 || (covering > 0 && !isInside);
        }
    }
    return {missed / inside, doubled / inside};
}

struct InclinationMeasures {
    int crossings = 0;      ///< pairs of inclinations of a region that cross
    bool isOrdered = true;  ///< positions grow along both rails
    double medianTilt = 0;  ///< degrees from square to the mean direction of the two rails
    double worstTurn = 0;   ///< degrees between neighbours
    int emptyRegions = 0;
};

inline double Degrees(double radians) { return radians * 180 / std::numbers::pi; }

/// The direction of a rail around a point, over a few units to each side.
inline DPOINT DirectionAt(const Points& rail, int index) {
    constexpr double reach = 2;
    const auto away = [&](int i) {
        const DPOINT &p = rail[static_cast<std::size_t>(i)], &q = rail[static_cast<std::size_t>(index)];
        return std::hypot(p.x - q.x, p.y - q.y);
    };
    int from = index, to = index;
    while (from > 0 && away(from) < reach) --from;
    while (to + 1 < static_cast<int>(rail.size()) && away(to) < reach) ++to;
    const DPOINT &a = rail[static_cast<std::size_t>(from)], &b = rail[static_cast<std::size_t>(to)];
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    return {(b.x - a.x) / length, (b.y - a.y) / length};
}

inline InclinationMeasures MeasureInclinations(const std::vector<StitchRegion>& regions) {
    InclinationMeasures measures;
    std::vector<double> tilts;
    for (const StitchRegion& region : regions) {
        if (region.inclinations.empty()) ++measures.emptyRegions;
        std::vector<std::pair<DPOINT, DPOINT>> chords;
        for (const auto& [a, b] : region.inclinations) {
            const DPOINT p = region.first.at(static_cast<std::size_t>(a));
            const DPOINT q = region.second.at(static_cast<std::size_t>(b));
            const DPOINT u = DirectionAt(region.first, a), v = DirectionAt(region.second, b);
            const double along = std::atan2(u.y + v.y, u.x + v.x), across = std::atan2(q.y - p.y, q.x - p.x);
            tilts.push_back(Degrees(std::fabs(std::asin(std::cos(across - along)))));
            chords.emplace_back(p, q);
        }
        const auto side = [](DPOINT a, DPOINT b, DPOINT p) {
            return (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
        };
        for (std::size_t i = 0; i < chords.size(); ++i) {
            const auto& [a, b] = chords[i];
            for (std::size_t k = i + 1; k < chords.size(); ++k) {
                const auto& [c, d] = chords[k];
                if (side(a, b, c) * side(a, b, d) < 0 && side(c, d, a) * side(c, d, b) < 0)
                    ++measures.crossings;
            }
            if (i == 0) continue;
            const auto &last = region.inclinations[i - 1], &here = region.inclinations[i];
            measures.isOrdered = measures.isOrdered && here.first > last.first && here.second > last.second;
            const DPOINT u{chords[i - 1].second.x - chords[i - 1].first.x,
                           chords[i - 1].second.y - chords[i - 1].first.y};
            const DPOINT v{b.x - a.x, b.y - a.y};
            measures.worstTurn =
                std::max(measures.worstTurn,
                         Degrees(std::fabs(std::atan2(u.x * v.y - u.y * v.x, u.x * v.x + u.y * v.y))));
        }
    }
    std::sort(tilts.begin(), tilts.end());
    if (!tilts.empty()) measures.medianTilt = tilts[tilts.size() / 2];
    return measures;
}

}  // namespace tarvex::test
