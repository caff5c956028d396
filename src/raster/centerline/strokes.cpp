// Strokes: lines joined end to end, as far as junctions.cpp found them to be one.
#include "raster/centerline/strokes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "raster/centerline/arms.h"
#include "raster/centerline/junctions.h"

namespace tarvex::centerline {
namespace {

using skeleton::Line;
using skeleton::LineGraph;

constexpr double kLeastPart = 0.8;  // of the half width, for a branch to stick out by
constexpr double kTaper = 0.25;     // by how much of its length a corner's tip tapers at least
constexpr double kDotLength = 0.7;  // times the radius: shorter lines are dots

class StrokeFinder {
  public:
    StrokeFinder(const LineGraph& graph, const skeleton::BitPlane& shape, const StrokeRules& rules)
        : m_graph(graph), m_shape(shape), m_rules(rules), m_used(graph.lines.size()) {}

    std::vector<Stroke> Find() {
        std::vector<bool> isLone;
        for (int i = 0; i < m_graph.NodeCount(); ++i) isLone.push_back(m_graph.ArmsAt(i).empty());
        DropShortBranches();
        if (m_rules.joinsStraight) MendJunctions(m_graph, m_shape);
        for (int i = 0; i < m_graph.NodeCount(); ++i) {
            if (isLone[static_cast<std::size_t>(i)]) AddDot(m_graph.NodeAt(i).at, m_graph.NodeAt(i).radius);
        }
        Assemble();
        return std::move(m_strokes);
    }

  private:
    int LineCount() const { return m_graph.LineCount(); }
    const Line& LineAt(int i) const { return m_graph.LineAt(i); }

    void DropShortBranches() {
        if (!(m_rules.leastBranch > 0)) return;
        std::vector<int> degrees;
        for (int i = 0; i < m_graph.NodeCount(); ++i)
            degrees.push_back(static_cast<int>(m_graph.ArmsAt(i).size()));
        for (int i = 0; i < LineCount(); ++i) {
            const Line& line = LineAt(i);
            if (line.IsClosed() || line.from == line.to) continue;
            const int from = degrees[static_cast<std::size_t>(line.from)];
            const int to = degrees[static_cast<std::size_t>(line.to)];
            if ((from == 1) == (to == 1)) continue;
            const double tip = m_graph.NodeAt(from == 1 ? line.from : line.to).radius;
            const double body = m_graph.NodeAt(from == 1 ? line.to : line.from).radius;
            const double out = m_graph.LengthOf(i) + tip - body;
            const bool isTapered = body - tip > kTaper * m_graph.LengthOf(i) && out < kMiter * body;
            if (out < std::max(m_rules.leastBranch, kLeastPart * body) ||
                (isTapered && IsAtCorner(i, from == 1 ? line.to : line.from)))
                m_graph.Drop(i);
        }
    }

    /// Whether a line ends at a junction of two more arms that are a corner.
    bool IsAtCorner(int line, int node) const {
        std::vector<Arm> others;
        for (const Arm& arm : m_graph.ArmsAt(node)) {
            if (arm.line != line) others.push_back(m_graph.Cut(arm));
        }
        return others.size() == 2 && TurnBetween(others[0], others[1]) > kMostTurn;
    }

    // -----------------------------------------------------------------------------------------
    // Strokes

    void Assemble() {
        for (int i = 0; i < LineCount(); ++i) {
            if (IsDone(i)) continue;
            if (LineAt(i).IsClosed()) {
                m_strokes.push_back({LineAt(i).points, LineAt(i).radii, true});
                m_used[static_cast<std::size_t>(i)] = true;
                continue;
            }
            if (m_graph.EndAt(i, false).partner < 0) {
                FollowFrom(i, false);
            } else if (m_graph.EndAt(i, true).partner < 0) {
                FollowFrom(i, true);
            }
        }
        for (int i = 0; i < LineCount(); ++i) {
            if (!IsDone(i)) FollowFrom(i, false);  // a closed stroke
        }
    }

    bool IsDone(int i) const { return m_used[static_cast<std::size_t>(i)] || m_graph.IsDropped(i); }

    /// Adds the stroke that begins with a line's end and follows partners until there is none.
    void FollowFrom(int line, bool atEnd) {
        Stroke stroke;
        const bool isAlone =
            m_graph.ArmsAt(LineAt(line).from).size() == 1 && m_graph.ArmsAt(LineAt(line).to).size() == 1;
        for (;;) {
            m_used[static_cast<std::size_t>(line)] = true;
            AppendLine(stroke, line, atEnd);
            const LineEnd& end = m_graph.EndAt(line, !atEnd);
            if (end.partner < 0) break;
            if (!end.goal) AppendJoin(stroke, end.arm, m_graph.EndAt(end.partner, end.partnerAtEnd).arm);
            line = end.partner;
            atEnd = end.partnerAtEnd;
            if (m_used[static_cast<std::size_t>(line)]) {
                stroke.points.push_back(stroke.points.front());
                stroke.radii.push_back(stroke.radii.front());
                stroke.isClosed = true;
                break;
            }
        }
        if (!isAlone || !AddIfDot(stroke)) m_strokes.push_back(std::move(stroke));
    }

    /// Appends what the cuts leave of a line, from its end `atEnd` to the other one.
    void AppendLine(Stroke& stroke, int line, bool atEnd) {
        const LineEnd& first = m_graph.EndAt(line, atEnd);
        const LineEnd& last = m_graph.EndAt(line, !atEnd);
        Arm in;
        in.line = line;
        in.atEnd = atEnd;
        const double length = m_graph.LengthOf(line);
        const double firstRadius = first.arm.cut > 0 ? first.arm.radius : m_graph.RadiusAt(in, 0);
        const double lastRadius = last.arm.cut > 0 ? last.arm.radius : m_graph.RadiusAt(in, length);
        if (first.goal) Append(stroke, *first.goal, firstRadius);
        Append(stroke, m_graph.PointAt(in, first.arm.cut), firstRadius);
        const std::vector<double>& lengths = m_graph.LengthsOf(line);
        const std::size_t count = lengths.size();
        for (std::size_t k = 0; k < count; ++k) {
            const std::size_t i = atEnd ? count - 1 - k : k;
            const double along = atEnd ? length - lengths[i] : lengths[i];
            if (along > first.arm.cut && along < length - last.arm.cut)
                Append(stroke, LineAt(line).points[i], LineAt(line).radii[i]);
        }
        Append(stroke, m_graph.PointAt(in, length - last.arm.cut), lastRadius);
        if (last.goal) Append(stroke, *last.goal, lastRadius);
    }

    static void AppendJoin(Stroke& stroke, const Arm& in, const Arm& out) {
        const Join join(in, out);
        const int count = join.Count();
        for (int k = 1; k <= count; ++k) {
            const double t = static_cast<double>(k) / (count + 1);
            Append(stroke, join.At(t), in.radius + (out.radius - in.radius) * t);
        }
    }

    static void Append(Stroke& stroke, DPOINT p, double radius) {
        if (!stroke.points.empty()) {
            const DPOINT from = stroke.points.back();
            if (from == p) return;
            const auto steps = static_cast<int>(std::min(1e4, Distance(from, p)));
            for (int k = 1; k < steps; ++k) {
                const double part = static_cast<double>(k) / steps;
                stroke.points.push_back(Plus(from, Times(Minus(p, from), part)));
                stroke.radii.push_back(radius);
            }
        }
        stroke.points.push_back(p);
        stroke.radii.push_back(radius);
    }

    bool AddIfDot(const Stroke& stroke) {
        const double radius = *std::max_element(stroke.radii.begin(), stroke.radii.end());
        double length = 0;
        for (std::size_t i = 1; i < stroke.points.size(); ++i)
            length += Distance(stroke.points[i], stroke.points[i - 1]);
        if (length > kDotLength * radius) return false;
        AddDot(stroke.points[stroke.points.size() / 2], radius);
        return true;
    }

    void AddDot(DPOINT at, double radius) { m_strokes.push_back({{at}, {radius}, false}); }

    ArmGraph m_graph;
    const skeleton::BitPlane& m_shape;
    const StrokeRules& m_rules;
    std::vector<bool> m_used;
    std::vector<Stroke> m_strokes;
};

}  // namespace

std::vector<Stroke> FindStrokes(const LineGraph& graph, const skeleton::BitPlane& shape,
                                const StrokeRules& rules) {
    return StrokeFinder(graph, shape, rules).Find();
}

}  // namespace tarvex::centerline
