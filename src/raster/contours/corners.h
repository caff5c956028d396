// Corners of a chain of points: where a smooth curve would not do.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "raster/contours/level_set.h"

namespace tarvex::contours {

/// A chain whose points can be asked for by any index from -margin to size + margin - 1. A closed one goes
/// round; beyond the ends of an open one it goes on turned by half a circle about the end, so that what is
/// straight there stays straight.
class Chain {
  public:
    void AssignLoop(std::span<const Crossing> points, int margin);
    /// At least two points.
    void AssignOpen(std::span<const Crossing> points, int margin);
    int Size() const { return m_size; }
    bool IsLoop() const { return m_loop; }
    const Crossing& operator[](int i) const { return m_points[static_cast<std::size_t>(i + m_margin)]; }

  private:
    int m_size = 0;
    int m_margin = 0;
    bool m_loop = true;
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

/// Points this near to a corner, in pixels, lie on the bevel that the grid cuts there and not on its arms.
inline constexpr double bevel = 0.6;

struct Corner {
    int index;       ///< the chain's point that stands for the corner
    Crossing end;    ///< where the arm before it ends
    Crossing begin;  ///< where the arm after it begins: the same place, but at the blunt end of a bar
    int capBefore;   ///< points before the index that lie across a blunt end, not along the arm
    int capAfter;    ///< the same after the index
    Line back;       ///< the arm that ends here, directed away from the corner
    Line forward;    ///< the arm that begins here
};

/// Sets where a corner's arms end and begin: where they meet, unless that is too far away; or for the blunt
/// end of a bar, whose two corners are too near to each other to be told apart, both corners.
void PlaceTips(const Chain& chain, int unit, Corner& corner);

/// When a point is a corner: its arms are the longest pieces whose points lie within `looseness` of a
/// line, and it sticks out of the smoothest curve along them by more than `bulge`.
struct ArmTest {
    double looseness;
    double bulge;
};

/// What the points of a chain are like, and so how closely lines and curves should follow them. Lengths
/// are in the chain's unit.
struct Tuning {
    ArmTest clean;      ///< for corners between edges that are straight as they stand
    ArmTest rough;      ///< for corners between edges that are stairs
    double straight;    ///< points lie this near to a straight edge
    double shortCurve;  ///< points lie this near to a fitted curve of 8 pixels or less
    double longCurve;   ///< the same for one of 32 pixels or more; between, in proportion
    int window;         ///< how many points on either side tell where the edge really runs
    int unit;           ///< the size of one of the picture's own pixels

    /// The same for a chain in units `factor` times smaller.
    Tuning Enlarged(int factor) const {
        return {{clean.looseness * factor, clean.bulge * factor},
                {rough.looseness * factor, rough.bulge * factor},
                straight * factor,
                shortCurve * factor,
                longCurve * factor,
                window * factor,
                unit * factor};
    }
};

/// Finds corners in the order of their index.
///
/// At a point where the chain turns most in its neighbourhood, the two arms are the longest straight
/// pieces on either side, at most 16 pixels each. A smooth curve that follows both arms to their
/// middles would miss the point by l/4 · sin(turn/2), l being the shorter arm. On a circle of any
/// radius this comes to one and a half times the looseness or a little more, since a tighter circle has
/// shorter straight pieces; at a corner it grows with the arms. So one limit separates corners from curves at
/// every size. Edges that lie on the grid are clean even where all others are stairs, and show smaller
/// corners: either test will do.
class CornerFinder {
  public:
    /// How far beyond its ends a chain of `size` points is asked for: arms begin a pixel beside a point and
    /// go at most half the way around.
    static int MarginFor(int size, int unit);

    /// The chain must have that margin.
    const std::vector<Corner>& Find(const Chain& chain, const Tuning& tuning);

  private:
    bool TryArms(const Chain& chain, int i, const ArmTest& test, int unit);

    std::vector<double> m_turn;
    std::vector<Corner> m_corners;
};

}  // namespace tarvex::contours
