// Spirals of Archimedes as cubics.
//
// A cubic with its handles along the tangents, (4/3) tan(a/4) of the curve's speed long, follows an arc of
// angle a as the well-known four-node circle does; a spiral, whose radius changes slowly against its angle,
// it follows nearly as well. How well is measured rather than derived: at points along every segment the
// distance from the centre is compared with the spiral's radius in that direction, a bound of the distance to
// the spiral. The number of nodes a turn doubles until that fits.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

#include "bezier/nodes_cubic.h"
#include "tarvex/stitch.h"

namespace tarvex {

namespace {

constexpr double kFullTurn = 2 * std::numbers::pi;
constexpr int kFewestNodesPerTurn = 4;
constexpr int kSamples = 16;
/// What the samples may miss between them.
constexpr double kSafety = 0.95;

/// About the origin, starting on the x axis, from +x towards +y.
class Spiral {
  public:
    Spiral(const SPIRAL& shape, int segments)
        : m_start(shape.startRadius),
          m_growth((shape.endRadius - shape.startRadius) / (kFullTurn * shape.turns)),
          m_step(kFullTurn * shape.turns / segments),
          m_segments(segments) {}

    int Segments() const { return m_segments; }
    double Radius(double angle) const { return m_start + m_growth * angle; }

    BPOINT Node(int i) const {
        const double angle = m_step * i;
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        const double r = Radius(angle);
        const double reach = 4.0 / 3 * std::tan(m_step / 4);
        const DPOINT at = {r * c, r * s};
        const DPOINT handle = {reach * (m_growth * c - r * s), reach * (m_growth * s + r * c)};
        BPOINT node = {Minus(at, handle), at, Plus(at, handle)};
        if (i == 0) node.cp1 = at;
        if (i == m_segments) node.cp2 = at;
        return node;
    }

    /// The greatest difference of radii on the segment after node `i`.
    double Deviation(int i) const {
        const Cubic c = SegmentOf(Node(i), Node(i + 1));
        double worst = 0;
        for (int k = 1; k < kSamples; ++k) {
            const double t = static_cast<double>(k) / kSamples;
            const DPOINT p = PointAt(c, t);
            const double expected = m_step * (i + t);
            const double angle = expected + std::remainder(std::atan2(p.y, p.x) - expected, kFullTurn);
            worst = std::max(worst, std::fabs(Length(p) - Radius(angle)));
        }
        return worst;
    }

    bool Fits(double deviation) const {
        for (int i = 0; i < m_segments; ++i) {
            if (!(Deviation(i) <= kSafety * deviation)) return false;
        }
        return true;
    }

  private:
    double m_start;
    double m_growth;  ///< per radian
    double m_step;
    int m_segments;
};

bool IsSound(const SPIRAL& shape, double deviation) {
    for (const double v : {shape.centre.x, shape.centre.y, shape.startRadius, shape.endRadius, shape.turns,
                           shape.startAngle, deviation}) {
        if (!std::isfinite(v)) return false;
    }
    return shape.startRadius >= 0 && shape.endRadius >= 0 && shape.startRadius + shape.endRadius > 0 &&
           shape.turns > 0 && deviation > 0;
}

/// Turns by an angle and moves, after mirroring in the x axis when asked.
class Placement {
  public:
    Placement(const SPIRAL& shape, bool isMirrored)
        : m_centre(shape.centre),
          m_cos(std::cos(shape.startAngle)),
          m_sin(std::sin(shape.startAngle)),
          m_side(isMirrored ? -1 : 1) {}

    BPOINT operator()(const BPOINT& node) const {
        return {Placed(node.cp1), Placed(node.pt), Placed(node.cp2)};
    }

  private:
    DPOINT Placed(const DPOINT& p) const {
        const double y = m_side * p.y;
        return {m_centre.x + p.x * m_cos - y * m_sin, m_centre.y + p.x * m_sin + y * m_cos};
    }

    DPOINT m_centre;
    double m_cos;
    double m_sin;
    double m_side;
};

void PlaceNodes(const Spiral& spiral, const Placement& placed, CArray<BPOINT, BPOINT>& nodes) {
    nodes.SetSize(spiral.Segments() + 1);
    for (int i = 0; i <= spiral.Segments(); ++i) nodes[i] = placed(spiral.Node(i));
}

}  // namespace

bool GetSymmetricalSpiralBPoints(const SPIRAL& shape, double deviation, CArray<BPOINT, BPOINT>& spiral,
                                 CArray<BPOINT, BPOINT>& twin) {
    spiral.RemoveAll();
    twin.RemoveAll();
    if (!IsSound(shape, deviation)) return false;
    for (double perTurn = kFewestNodesPerTurn;; perTurn *= 2) {
        const double segments = std::max(1.0, std::ceil(perTurn * shape.turns));
        if (!(segments < MAX_SPIRAL_NODES)) return false;
        const Spiral candidate(shape, static_cast<int>(segments));
        if (!candidate.Fits(deviation)) continue;
        PlaceNodes(candidate, Placement(shape, !shape.clockwise), spiral);
        PlaceNodes(candidate, Placement(shape, shape.clockwise), twin);
        return true;
    }
}

}  // namespace tarvex
