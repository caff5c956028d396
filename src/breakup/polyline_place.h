// Places on a polyline: nearest to a point, and by distance from the start.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "tarvex/records.h"

namespace tarvex {

/// A place on a polyline: a segment, how far along it (0 to 1), and its point.
struct Place {
    std::size_t segment = 0;
    double t = 0;
    DPOINT at;
    double distance = std::numeric_limits<double>::infinity();  ///< from what it was sought for
};

inline double Length(const DPOINT& v) { return std::hypot(v.x, v.y); }
inline DPOINT Minus(const DPOINT& a, const DPOINT& b) { return {a.x - b.x, a.y - b.y}; }
inline DPOINT Between(const DPOINT& a, const DPOINT& b, double t) {
    return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
}
inline double Dot(const DPOINT& a, const DPOINT& b) { return a.x * b.x + a.y * b.y; }
inline double CrossProduct(const DPOINT& a, const DPOINT& b) { return a.x * b.y - a.y * b.x; }

/// The place of a segment nearest to p.
inline Place NearestOnSegment(const DPOINT& a, const DPOINT& b, const DPOINT& p, std::size_t segment) {
    const DPOINT d = Minus(b, a);
    const double square = Dot(d, d);
    const double t = square > 0 ? std::clamp(Dot(Minus(p, a), d) / square, 0.0, 1.0) : 0.0;
    const DPOINT at = t == 1 ? b : Between(a, b, t);
    return {segment, t, at, Length(Minus(p, at))};
}

/// The place nearest to p; the first of equally near ones.
inline Place NearestPlace(std::span<const DPOINT> polyline, const DPOINT& p) {
    Place best;
    for (std::size_t i = 0; i + 1 < polyline.size(); ++i) {
        const Place place = NearestOnSegment(polyline[i], polyline[i + 1], p, i);
        if (place.distance < best.distance) best = place;
    }
    return best;
}

/// The distance of every point from the start.
inline std::vector<double> Distances(std::span<const DPOINT> polyline) {
    std::vector<double> distances(polyline.size());
    for (std::size_t i = 1; i < polyline.size(); ++i)
        distances[i] = distances[i - 1] + Length(Minus(polyline[i], polyline[i - 1]));
    return distances;
}

/// The distance of a place from the start.
inline double DistanceOf(const Place& place, std::span<const double> distances) {
    return distances[place.segment] + place.t * (distances[place.segment + 1] - distances[place.segment]);
}

/// The place at a distance from the start.
inline Place PlaceAt(std::span<const DPOINT> polyline, std::span<const double> distances, double s) {
    const auto it = std::upper_bound(distances.begin(), distances.end(), s);
    const auto after = std::clamp<std::ptrdiff_t>(it - distances.begin(), 1,
                                                  static_cast<std::ptrdiff_t>(distances.size()) - 1);
    const auto segment = static_cast<std::size_t>(after - 1);
    const double step = distances[segment + 1] - distances[segment];
    const double t = step > 0 ? std::clamp((s - distances[segment]) / step, 0.0, 1.0) : 0.0;
    return {segment, t, Between(polyline[segment], polyline[segment + 1], t), 0};
}

}  // namespace tarvex
