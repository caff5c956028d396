// CEllipse: an ellipse in the plane, measured, met by lines, transformed, fitted to points and drawn.
//
// Model. Centre, two radii and a rotation: the first radius lies along the direction `Rotation()` from +x
// towards +y, the second a quarter turn further. Lengths are in the caller's unit, angles are radians and
// turn from +x towards +y (clockwise on a screen where y grows downwards). Either radius may be the larger.
//
// An "angle" of a point on the ellipse is always its eccentric parameter t,
//     centre + RadiusX() cos t u + RadiusY() sin t v      (u, v: the directions of the two radii),
// and not the direction in which the point is seen from the centre; for a circle the two agree up to the
// rotation.
//
// Degenerate input. A negative radius counts as its absolute value. With one radius 0 the ellipse is a
// segment run through twice, with both a point: points, tangents, bounds, lengths and outlines are then those
// of the segment or point, while nothing is contained and no line meets it. With a NaN or infinite number
// anywhere `IsFinite` is false: values come out as NaN or infinite, containment as false, the nearest angle
// as 0, and intersections and outlines as empty. Nothing raises, except an array that cannot hold its
// points. Numbers beyond 1e150 may overflow to infinity on the way.
//
// A value: copies are cheap and different objects are independent. All functions are constant time, except
// the fit and the outlines, which are linear in their points.
//
//     CEllipse ellipse({10, 20}, 5, 3);
//     const CEllipse::Hits hits = ellipse.Intersect(DLINE{{0, 20}, {1, 20}});  // (5, 20), (15, 20)
//     CArray<BPOINT, BPOINT> nodes;
//     const double deviation = ellipse.GetBeziers(nodes);  // 5 nodes, off by less than 5 * 2.8e-4
#pragma once

#include <numbers>
#include <span>

#include "tarvex/export.h"
#include "tarvex/records.h"

namespace tarvex {

class CView3D;

class TARVEX_API CEllipse {
  public:
    /// The points in which a line meets the ellipse, in the order in which the line runs.
    struct Hits {
        int count = 0;  ///< 0, 1 (a tangent) or 2; for a segment 1 may also be one crossing
        DPOINT points[2];
    };

    static constexpr double FULL_TURN = 2 * std::numbers::pi;
    static constexpr int MOST_BEZIERS = 1024;    ///< cubics in one outline
    static constexpr int MOST_SEGMENTS = 16384;  ///< segments in one polyline

    /// The point (0, 0).
    CEllipse() = default;
    /// A circle.
    CEllipse(DPOINT centre, double radius) : CEllipse(centre, radius, radius) {}
    CEllipse(DPOINT centre, double radiusX, double radiusY, double rotation = 0);
    /// The unrotated ellipse that touches the four sides; sides may be given in either order.
    explicit CEllipse(const DRECT& bounds);

    /// Makes this the ellipse through five points, or the one nearest to more than five; false, changing
    /// nothing, when there is none.
    ///
    /// Exactly five points give their one conic, if it is an ellipse: false for a hyperbola, a parabola
    /// (or an ellipse so long that it can hardly be told from one: radii beyond 1 : 1e5), and when points
    /// repeat or four lie on a line. More give the ellipse of least algebraic error, by the direct method of
    /// Fitzgibbon, Pilu and Fisher (1999) in the stable form of Halir and Flusser (1998), on coordinates
    /// that are centred and scaled first. It always is an ellipse, so points of a hyperbola get a bad one
    /// rather than false; short noisy arcs get one that is too small, as is known of the method. Fewer than
    /// five points, points on one line and NaN or infinite coordinates give false; fewer than five different
    /// ones among more give one of the many ellipses near them. `RadiusX()` of the result
    /// is the larger one, and the rotation lies in (-pi/2, pi/2].
    bool FitPoints(std::span<const DPOINT> points);

    DPOINT Centre() const { return m_centre; }
    double RadiusX() const { return m_radiusX; }
    double RadiusY() const { return m_radiusY; }
    double Rotation() const { return m_rotation; }
    bool IsFinite() const;

    /// The point at an angle (eccentric parameter).
    DPOINT GetPoint(double angle) const;
    /// The derivative of `GetPoint` by the angle: along the tangent, towards growing angles, not of unit
    /// length.
    DPOINT GetTangent(double angle) const;
    /// The angle, in [-pi, pi], of the ellipse's point nearest to `p`. Of several equally near ones the one
    /// with the positive cosine or sine; a circle's centre gives 0. By bisection of the equation that the
    /// foot of the perpendicular solves, as Eberly describes ("Distance from a point to an ellipse"): it
    /// converges for every point, those near the centre and the axes included.
    double NearestAngle(DPOINT p) const;
    /// The distance from `p` to the curve, 0 on it and positive on both sides.
    double GetDistance(DPOINT p) const;
    /// Whether `p` lies inside or on the curve, without tolerance.
    bool Contains(DPOINT p) const;

    /// The smallest rectangle around the ellipse, rotation included.
    DRECT GetBounds() const;
    double GetArea() const;
    /// The circumference, by the arithmetic-geometric mean, within 1e-14 of it; 4 radii of a segment.
    double GetCircumference() const;

    /// Where the infinite line through both points meets the ellipse.
    ///
    /// A line no farther than GEOMETRY_EPSILON from the parallel tangent, on either side, counts as that
    /// tangent and gives its point of contact. A line shorter than the tolerance gives none.
    Hits Intersect(const DLINE& line) const;
    /// The same for the segment: the points of its line that lie on it, its ends widened by the tolerance.
    Hits IntersectSegment(const DLINE& segment) const;

    /// The image under a view, whose third coordinate is left out: z = 0 goes in and the image's z is
    /// dropped. The larger radius comes first and the rotation lies in (-pi/2, pi/2]; so angles of points
    /// and the sense of the outline are not kept. A view that flattens the plane gives a segment (within
    /// rounding). Computed from the images of the centre and of the two radii by singular values.
    CEllipse Transformed(const CView3D& view) const;

    /// Appends the nodes of the arc from angle `start` over `sweep` (negative: backwards; beyond a full turn
    /// cut to it) and returns a bound of their deviation from the ellipse.
    ///
    /// One cubic per quarter turn begun, each within 2.8e-4 of the larger radius; more, up to
    /// MOST_BEZIERS, when `tolerance` is positive and smaller than that gives. A full turn is closed: its
    /// last anchor equals its first exactly. The outermost control points lie on their anchors. Nothing is
    /// appended, and 0 returned, for a sweep of 0 or numbers that are not finite.
    double GetBeziers(CArray<BPOINT, BPOINT>& nodes, double start = 0, double sweep = FULL_TURN,
                      double tolerance = 0) const;
    /// Appends the arc as points of the ellipse whose polyline stays within `deviation` of it, and returns
    /// the bound that holds, which is larger than asked only where MOST_SEGMENTS ends the refinement (so
    /// for 0, negative and NaN). At least 8 segments per turn; otherwise as GetBeziers.
    double GetPolyline(CArray<DPOINT, DPOINT>& points, double deviation, double start = 0,
                       double sweep = FULL_TURN) const;

  private:
    DPOINT ToLocal(DPOINT p) const;  ///< relative to the centre, along the two radii
    DPOINT ToWorld(DPOINT local) const;

    DPOINT m_centre;
    double m_radiusX = 0;
    double m_radiusY = 0;
    double m_rotation = 0;
};

}  // namespace tarvex
