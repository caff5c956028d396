// The lines of a skeleton as seen from its junctions: arms, which end where a junction's disc begins.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "bezier/vector.h"
#include "raster/skeleton/line_graph.h"

namespace tarvex::centerline {

struct Arm {
    int line = -1;
    bool atEnd = false;    // whether it is the line's last point that lies at the junction
    bool isShort = false;  // with a free end so near that only the tip tells where it goes
    double cut = 0;        // how much of the line's length lies in the junction's disc
    DPOINT at{};           // where the cut is
    DPOINT towards{};      // unit vector, from the junction outwards
    double radius = 0;     // half the stroke's width beyond the cut
    DPOINT tip{};          // a short one's free end
};

/// The angle between two directions, in radians.
double AngleBetween(DPOINT a, DPOINT b);

/// The angle, in radians, by which a stroke that goes in by one arm and out by the other turns at worst.
double TurnBetween(const Arm& a, const Arm& b);

/// The turn, in radians at either end, up to which two arms at one junction may be one stroke.
inline constexpr double kMostTurn = 0.6;
/// How far a corner's tip may stick out, in half widths.
inline constexpr double kMiter = 2.5;

/// What becomes of one end of a line.
struct LineEnd {
    Arm arm;
    int partner = -1;            // the line that it continues in
    bool partnerAtEnd = false;   // and by which end
    std::optional<DPOINT> goal;  // where it goes straight to: another stroke, or a corner
};

/// A smooth curve from one point and direction to another.
class Join {
  public:
    /// From where one arm is cut to where another is.
    Join(const Arm& in, const Arm& out);
    DPOINT At(double t) const;
    /// Points between the ends, about a pixel apart.
    int Count() const;

  private:
    DPOINT m_from, m_to, m_c1, m_c2;
};

/// A skeleton's lines, which can be dropped, and their arms at each node.
class ArmGraph {
  public:
    explicit ArmGraph(const skeleton::LineGraph& graph);

    int NodeCount() const { return static_cast<int>(m_graph.nodes.size()); }
    int LineCount() const { return static_cast<int>(m_graph.lines.size()); }
    const skeleton::Line& LineAt(int i) const { return m_graph.lines[static_cast<std::size_t>(i)]; }
    const skeleton::Node& NodeAt(int i) const { return m_graph.nodes[static_cast<std::size_t>(i)]; }
    const std::vector<Arm>& ArmsAt(int node) const { return m_arms[static_cast<std::size_t>(node)]; }
    int NodeOf(const Arm& arm) const { return arm.atEnd ? LineAt(arm.line).to : LineAt(arm.line).from; }
    int FarNodeOf(const Arm& arm) const { return arm.atEnd ? LineAt(arm.line).from : LineAt(arm.line).to; }

    /// A line's length up to each of its points.
    const std::vector<double>& LengthsOf(int line) const { return m_lengths[static_cast<std::size_t>(line)]; }
    double LengthOf(int line) const { return LengthsOf(line).back(); }
    DPOINT PointAt(const Arm& arm, double along) const;
    double RadiusAt(const Arm& arm, double along) const;

    bool IsDropped(int line) const { return m_dropped[static_cast<std::size_t>(line)]; }
    /// Leaves a line out of all strokes.
    void Drop(int line);

    /// Finds where an arm leaves its junction's disc and in which direction.
    Arm Cut(const Arm& arm) const;

    LineEnd& EndAt(int line, bool atEnd) {
        return m_ends[2 * static_cast<std::size_t>(line) + (atEnd ? 1 : 0)];
    }
    const LineEnd& EndAt(int line, bool atEnd) const {
        return m_ends[2 * static_cast<std::size_t>(line) + (atEnd ? 1 : 0)];
    }

  private:
    double BeyondBend(const Arm& arm, double cut, double length) const;

    /// The index of the last point of the arm's line that is no farther along it, from the arm's end, than
    /// `along`, and the part of the way to the next one.
    std::pair<std::size_t, double> Locate(const Arm& arm, double along) const;

    const skeleton::LineGraph& m_graph;
    std::vector<std::vector<Arm>> m_arms;  // of each node
    std::vector<std::vector<double>> m_lengths;
    std::vector<bool> m_dropped;
    std::vector<LineEnd> m_ends;  // two of each line
};

}  // namespace tarvex::centerline
