// Corners of a closed chain of points: where a smooth curve would not do.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "raster/contours/level_set.h"

namespace tarvex::contours {

/// A closed chain whose points can be asked for by any index from -margin to size + margin.
class CyclicChain {
  public:
    static constexpr int margin = 48;

    void Assign(std::span<const Crossing> points);
    int Size() const { return m_size; }
    const Crossing& operator[](int i) const { return m_points[static_cast<std::size_t>(i + margin)]; }

  private:
    int m_size = 0;
    std::vector<Crossing> m_points;
};

/// A straight line through `centre`; `direction` is a unit vector.
struct Line {
    Crossing centre;
    Crossing direction;
};

/// The line with the least sum of squared distances from points that are added one by one.
class LineSums {
  public:
    void Add(Crossing p) {
        if (m_count == 0) m_origin = p;
        const double x = p.x - m_origin.x;
        const double y = p.y - m_origin.y;
        m_x += x;
        m_y += y;
        m_xx += x * x;
        m_xy += x * y;
        m_yy += y * y;
        ++m_count;
    }
    int Count() const { return m_count; }
    /// Directed with the acute angle to `along`.
    Line Best(Crossing along) const;

  private:
    Crossing m_origin{};
    double m_x = 0, m_y = 0, m_xx = 0, m_xy = 0, m_yy = 0;
    int m_count = 0;
};

struct Corner {
    int index;     ///< the chain's point that stands for the corner
    Crossing tip;  ///< where its two arms meet
    Line back;     ///< the arm that ends here, directed away from the corner
    Line forward;  ///< the arm that begins here
};

/// Where two arms meet, if that is near `point` of the chain; otherwise `point` itself, or as far
/// towards the meeting point as is believed.
Crossing MeetingPoint(const Line& a, const Line& b, Crossing point);

/// How far a straight line or a curve may pass from the points, in their unit.
struct Looseness {
    double straight;  ///< the reach of stairs or noise around a straight edge
    double curve;     ///< what a fitted curve may miss a point by
    int window;       ///< how many points on either side tell where the edge really runs
};

/// Finds corners in the order of their index.
///
/// At a point where the chain turns most in its neighbourhood, the two arms are the longest straight
/// pieces (within `straight`) on either side, at most 16 units each. A smooth curve that follows both
/// arms to their middles would miss the point by l/4 · sin(turn/2), l being the shorter arm. On a
/// circle of any radius this comes to the looseness itself, since a tighter circle has shorter
/// straight pieces; at a corner it grows with the arms. So one limit, a small multiple of the
/// looseness, separates corners from curves at every size.
class CornerFinder {
  public:
    const std::vector<Corner>& Find(const CyclicChain& chain, double straight);

  private:
    std::vector<double> m_turn;
    std::vector<Corner> m_corners;
};

}  // namespace tarvex::contours
