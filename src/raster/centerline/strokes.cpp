// Mending junctions.
//
// A skeleton bends near a junction: within the largest disc there its lines are drawn towards each other, and
// where two strokes cross at a slant it has two junctions and a short bridge between them. What lies within
// the disc says nothing about the strokes, so it is cut away: each line is an arm that ends where it enters
// the disc, with the direction that it has there. Two arms are one stroke when going straight from one to the
// other turns little at both. The best pairs are taken first and joined by a smooth curve. An arm left over
// runs on straight to the stroke that passes, or where none does its line stays as it was.
//
// Bridges: junctions whose line is not much longer than their discs are wide may be one crossing. They are,
// when taken together all their arms find partners across; otherwise each junction is mended by itself. At a
// slant of f a crossing of strokes of half width r has its junctions r (1 - s) / (s (1 + s)) from its centre
// and discs of 2 r / (1 + s) there, s = sin(f / 2), so a bridge four times as long as both discs' radii is
// one of strokes that cross at 13 degrees.
#include "raster/centerline/strokes.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>
#include <utility>

#include "bezier/vector.h"

namespace tarvex::centerline {
namespace {

using skeleton::Line;
using skeleton::LineGraph;
using skeleton::Node;

constexpr double kBridge = 4;         // times the sum of the radii, as above
constexpr double kCutFactor = 1.4;    // of a junction's disc: its pull reaches a little beyond
constexpr double kMiter = 2.5;        // times the half width: what a corner's tip may stick out by
constexpr double kLeastPart = 0.8;    // of the half width, for a branch to stick out by
constexpr double kTaper = 0.25;       // by how much of its length a corner's tip tapers at least
constexpr std::size_t kMostArms = 8;  // of a group of junctions taken together
constexpr double kMostTurn = 0.6;     // radians at either end of a join
constexpr double kCrossTurn = 0.35;   // the same over a bridge
constexpr double kLeastAcross = 0.2;  // sine of the angle of a corner whose sides meet surely
constexpr double kDotLength = 0.7;    // times the radius: shorter lines are dots

struct Arm {
    int line = -1;
    bool atEnd = false;  // whether it is the line's last point that lies at the junction
    double cut = 0;      // how much of the line's length lies in the junction's disc
    DPOINT at{};         // where the cut is
    DPOINT towards{};    // unit vector, from the junction outwards
    double radius = 0;   // half the stroke's width there
};

/// What becomes of one end of a line.
struct LineEnd {
    Arm arm;
    int partner = -1;            // the line that it continues in
    bool partnerAtEnd = false;   // and by which end
    std::optional<DPOINT> goal;  // where it goes straight to: another stroke, or a corner
};

double AngleBetween(DPOINT a, DPOINT b) { return std::atan2(std::fabs(a.x * b.y - a.y * b.x), Dot(a, b)); }

/// A line's length up to each of its points.
std::vector<double> LengthsOf(const Line& line) {
    std::vector<double> lengths(line.points.size());
    for (std::size_t i = 1; i < lengths.size(); ++i)
        lengths[i] = lengths[i - 1] + Distance(line.points[i], line.points[i - 1]);
    return lengths;
}

/// A smooth curve from one point and direction to another.
class Join {
  public:
    Join(DPOINT from, DPOINT leaving, DPOINT to, DPOINT arriving) : m_from(from), m_to(to) {
        const double handle = Distance(from, to) / 3;
        m_c1 = Plus(from, Times(leaving, handle));
        m_c2 = Minus(to, Times(arriving, handle));
    }
    DPOINT At(double t) const {
        const double s = 1 - t;
        return Plus(Plus(Times(m_from, s * s * s), Times(m_c1, 3 * s * s * t)),
                    Plus(Times(m_c2, 3 * s * t * t), Times(m_to, t * t * t)));
    }
    /// Points between the ends, about a pixel apart.
    int Count() const { return static_cast<int>(std::min(1e6, Distance(m_from, m_to))); }

  private:
    DPOINT m_from, m_to, m_c1, m_c2;
};

class StrokeFinder {
  public:
    StrokeFinder(const LineGraph& graph, const StrokeRules& rules)
        : m_graph(graph),
          m_rules(rules),
          m_ends(2 * graph.lines.size()),
          m_arms(graph.nodes.size()),
          m_dropped(graph.lines.size()),
          m_used(graph.lines.size()),
          m_isMended(graph.nodes.size()),
          m_isLone(graph.nodes.size(), true) {
        for (const Line& line : graph.lines) m_lengths.push_back(LengthsOf(line));
    }

    std::vector<Stroke> Find() {
        for (int i = 0; i < LineCount(); ++i) {
            if (!LineAt(i).IsClosed()) AddArms(i);
        }
        DropShortBranches();
        if (m_rules.joinsStraight) MendJunctions();
        for (std::size_t i = 0; i < m_graph.nodes.size(); ++i) {
            if (m_isLone[i]) AddDot(m_graph.nodes[i].at, m_graph.nodes[i].radius);
        }
        Assemble();
        return std::move(m_strokes);
    }

  private:
    int NodeCount() const { return static_cast<int>(m_graph.nodes.size()); }
    int LineCount() const { return static_cast<int>(m_graph.lines.size()); }
    const Line& LineAt(int i) const { return m_graph.lines[static_cast<std::size_t>(i)]; }
    double LengthOf(int i) const { return m_lengths[static_cast<std::size_t>(i)].back(); }
    LineEnd& EndAt(int line, bool atEnd) {
        return m_ends[2 * static_cast<std::size_t>(line) + (atEnd ? 1 : 0)];
    }
    std::vector<Arm>& ArmsAt(int node) { return m_arms[static_cast<std::size_t>(node)]; }
    const Node& NodeAt(int i) const { return m_graph.nodes[static_cast<std::size_t>(i)]; }
    int NodeOf(const Arm& arm) const { return arm.atEnd ? LineAt(arm.line).to : LineAt(arm.line).from; }

    void AddArms(int i) {
        for (const bool atEnd : {false, true}) {
            const Arm arm{i, atEnd};
            ArmsAt(NodeOf(arm)).push_back(arm);
            m_isLone[static_cast<std::size_t>(NodeOf(arm))] = false;
        }
    }

    void DropShortBranches() {
        if (!(m_rules.leastBranch > 0)) return;
        std::vector<int> degrees;
        for (const auto& arms : m_arms) degrees.push_back(static_cast<int>(arms.size()));
        for (int i = 0; i < LineCount(); ++i) {
            const Line& line = LineAt(i);
            if (line.IsClosed() || line.from == line.to) continue;
            const int from = degrees[static_cast<std::size_t>(line.from)];
            const int to = degrees[static_cast<std::size_t>(line.to)];
            if ((from == 1) == (to == 1)) continue;
            const double tip = NodeAt(from == 1 ? line.from : line.to).radius;
            const double body = NodeAt(from == 1 ? line.to : line.from).radius;
            const double out = LengthOf(i) + tip - body;
            const bool isMiter = body - tip > kTaper * LengthOf(i) && out < kMiter * body;
            if (out < std::max(m_rules.leastBranch, kLeastPart * body) || isMiter) Drop(i);
        }
    }

    void Drop(int i) {
        m_dropped[static_cast<std::size_t>(i)] = true;
        for (const int node : {LineAt(i).from, LineAt(i).to})
            std::erase_if(ArmsAt(node), [i](const Arm& arm) { return arm.line == i; });
    }

    // -----------------------------------------------------------------------------------------
    // Junctions

    void MendJunctions() {
        for (const int bridge : BridgesByLength()) MendUnlessDone({LineAt(bridge).from, LineAt(bridge).to});
        for (const std::vector<int>& group : GroupJunctions()) {
            if (group.size() > 2) MendUnlessDone(group);
        }
        for (int node = 0; node < NodeCount(); ++node) {
            if (ArmsAt(node).size() > 1 && !m_isMended[static_cast<std::size_t>(node)]) MendAlone(node);
        }
    }

    void MendUnlessDone(const std::vector<int>& group) {
        const auto isMended = [this](int node) { return m_isMended[static_cast<std::size_t>(node)]; };
        if (std::any_of(group.begin(), group.end(), isMended) || !MendAsOne(group)) return;
        for (const int node : group) m_isMended[static_cast<std::size_t>(node)] = true;
    }

    void MendAlone(int node) {
        std::vector<Arm> arms = ArmsAt(node);
        for (Arm& arm : arms) Cut(arm, NodeAt(node).radius);
        if (arms.size() == 2 && TurnBetween(arms[0], arms[1]) > kMostTurn) {
            MendCorner(arms, node);
            return;
        }
        Settle(arms, PairUp(arms, kMostTurn));
    }

    /// Two arms left over where a corner's tip was dropped go straight on to where they meet.
    void MendCorner(const std::vector<Arm>& arms, int node) {
        const Arm& a = arms[0];
        const Arm& b = arms[1];
        DPOINT corner = NodeAt(node).at;
        const double across = a.towards.x * b.towards.y - a.towards.y * b.towards.x;
        if (std::fabs(across) > kLeastAcross) {
            const DPOINT over = Minus(b.at, a.at);
            const double along = (over.x * b.towards.y - over.y * b.towards.x) / across;
            const DPOINT meeting = Plus(a.at, Times(a.towards, along));
            if (Distance(meeting, corner) < kMiter * NodeAt(node).radius) corner = meeting;
        }
        EndAt(a.line, a.atEnd) = {a, b.line, b.atEnd, corner};
        EndAt(b.line, b.atEnd) = {b, a.line, a.atEnd, corner};
    }

    /// How long a line between two junctions is in terms of their discs; nothing for other lines.
    std::optional<double> BridgeLength(int i) {
        const Line& line = LineAt(i);
        if (line.IsClosed() || line.from == line.to || m_dropped[static_cast<std::size_t>(i)])
            return std::nullopt;
        if (ArmsAt(line.from).size() < 3 || ArmsAt(line.to).size() < 3) return std::nullopt;
        const double radii = NodeAt(line.from).radius + NodeAt(line.to).radius;
        if (LengthOf(i) > kBridge * radii) return std::nullopt;
        return LengthOf(i) / radii;
    }

    /// Lines that may be bridges, the shortest first.
    std::vector<int> BridgesByLength() {
        std::vector<std::pair<double, int>> bridges;
        for (int i = 0; i < LineCount(); ++i) {
            if (const auto length = BridgeLength(i)) bridges.emplace_back(*length, i);
        }
        std::sort(bridges.begin(), bridges.end());
        std::vector<int> sorted;
        for (const auto& [length, line] : bridges) sorted.push_back(line);
        return sorted;
    }

    /// Junctions that hang together by lines inside their discs.
    std::vector<std::vector<int>> GroupJunctions() {
        std::vector<int> leader(m_graph.nodes.size());
        std::iota(leader.begin(), leader.end(), 0);
        const auto find = [&leader](int i) {
            while (leader[static_cast<std::size_t>(i)] != i) {
                int& up = leader[static_cast<std::size_t>(i)];
                up = leader[static_cast<std::size_t>(up)];
                i = up;
            }
            return i;
        };
        for (int i = 0; i < LineCount(); ++i) {
            if (BridgeLength(i).value_or(2) < 1)
                leader[static_cast<std::size_t>(find(LineAt(i).from))] = find(LineAt(i).to);
        }
        std::vector<std::vector<int>> groups(m_graph.nodes.size());
        for (int i = 0; i < NodeCount(); ++i) {
            if (ArmsAt(i).size() > 1) groups[static_cast<std::size_t>(find(i))].push_back(i);
        }
        return groups;
    }

    /// Takes a group of junctions for one, if all its arms but an odd one then find partners.
    bool MendAsOne(const std::vector<int>& group) {
        std::vector<Arm> arms;
        std::vector<int> bridges;
        for (const int node : group) {
            for (Arm arm : ArmsAt(node)) {
                const bool isInside = std::count(group.begin(), group.end(), LineAt(arm.line).from) != 0 &&
                                      std::count(group.begin(), group.end(), LineAt(arm.line).to) != 0;
                if (isInside && !BridgeLength(arm.line)) return false;
                if (isInside) {
                    bridges.push_back(arm.line);
                } else {
                    Cut(arm, NodeAt(node).radius);
                    arms.push_back(arm);
                }
                if (arms.size() > kMostArms) return false;
            }
        }
        const std::vector<std::pair<int, int>> pairs = PairUp(arms, kCrossTurn);
        if (arms.size() < 4 || 2 * pairs.size() < arms.size() - arms.size() % 2) return false;
        const auto across = std::count_if(pairs.begin(), pairs.end(), [&](const std::pair<int, int>& pair) {
            return NodeOf(arms[static_cast<std::size_t>(pair.first)]) !=
                   NodeOf(arms[static_cast<std::size_t>(pair.second)]);
        });
        if (2 * static_cast<std::size_t>(across) < pairs.size()) return false;
        Settle(arms, pairs);
        for (const int bridge : bridges) m_dropped[static_cast<std::size_t>(bridge)] = true;
        return true;
    }

    /// Finds where an arm leaves its junction's disc and in which direction.
    void Cut(Arm& arm, double disc) const {
        const Line& line = LineAt(arm.line);
        const double length = LengthOf(arm.line);
        const int other = arm.atEnd ? line.from : line.to;
        const bool isFree = m_arms[static_cast<std::size_t>(other)].size() < 2;
        arm.cut = std::min(kCutFactor * disc + 1.5, (isFree ? 0.7 : 0.4) * length);
        arm.at = PointAt(arm, arm.cut);
        arm.radius = RadiusAt(arm, arm.cut);
        const double span = std::max({8.0, 4 * arm.radius, arm.cut});
        const DPOINT out = Minus(PointAt(arm, std::min(arm.cut + span, length)), arm.at);
        const double reach = Length(out);
        arm.towards = reach > 0 ? Times(out, 1 / reach) : DPOINT{1, 0};
    }

    /// The index of the last point of the arm's line that is no farther along it, from the arm's end, than
    /// `along`, and the part of the way to the next one.
    std::pair<std::size_t, double> Locate(const Arm& arm, double along) const {
        const std::vector<double>& lengths = m_lengths[static_cast<std::size_t>(arm.line)];
        const double from = arm.atEnd ? lengths.back() - along : along;
        const auto next = std::upper_bound(lengths.begin(), lengths.end(), from);
        if (next == lengths.begin()) return {0, 0};
        if (next == lengths.end()) return {lengths.size() - 1, 0};
        const auto i = static_cast<std::size_t>(next - lengths.begin()) - 1;
        return {i, (from - lengths[i]) / (lengths[i + 1] - lengths[i])};
    }
    DPOINT PointAt(const Arm& arm, double along) const {
        const auto [i, part] = Locate(arm, along);
        const std::vector<DPOINT>& points = LineAt(arm.line).points;
        return part > 0 ? Plus(points[i], Times(Minus(points[i + 1], points[i]), part)) : points[i];
    }
    double RadiusAt(const Arm& arm, double along) const {
        return LineAt(arm.line).radii[Locate(arm, along).first];
    }

    /// How much a stroke that goes in by one arm and out by the other turns at worst.
    static double TurnBetween(const Arm& a, const Arm& b) {
        const DPOINT inwards = Times(a.towards, -1);
        const DPOINT over = Minus(b.at, a.at);
        const double whole = AngleBetween(inwards, b.towards);
        if (Length(over) < 1) return whole;
        return std::max({AngleBetween(inwards, over), AngleBetween(over, b.towards), whole / 2});
    }

    /// Pairs of arms that are one stroke, the straightest first.
    static std::vector<std::pair<int, int>> PairUp(const std::vector<Arm>& arms, double mostTurn) {
        struct Candidate {
            double turn;
            int a, b;
        };
        std::vector<Candidate> candidates;
        if (arms.size() == 2) return {{0, 1}};
        if (arms.size() > 2 * kMostArms) return {};
        for (int a = 0; a < static_cast<int>(arms.size()); ++a) {
            for (int b = a + 1; b < static_cast<int>(arms.size()); ++b) {
                const double turn =
                    TurnBetween(arms[static_cast<std::size_t>(a)], arms[static_cast<std::size_t>(b)]);
                if (turn <= mostTurn) candidates.push_back({turn, a, b});
            }
        }
        std::stable_sort(candidates.begin(), candidates.end(),
                         [](const Candidate& p, const Candidate& q) { return p.turn < q.turn; });
        std::vector<bool> isTaken(arms.size());
        std::vector<std::pair<int, int>> pairs;
        for (const auto& [turn, a, b] : candidates) {
            if (isTaken[static_cast<std::size_t>(a)] || isTaken[static_cast<std::size_t>(b)]) continue;
            isTaken[static_cast<std::size_t>(a)] = isTaken[static_cast<std::size_t>(b)] = true;
            pairs.emplace_back(a, b);
        }
        return pairs;
    }

    void Settle(const std::vector<Arm>& arms, const std::vector<std::pair<int, int>>& pairs) {
        if (pairs.empty()) return;
        std::vector<bool> isPaired(arms.size());
        std::vector<DPOINT> passing;
        for (const auto& [first, second] : pairs) {
            const Arm& a = arms[static_cast<std::size_t>(first)];
            const Arm& b = arms[static_cast<std::size_t>(second)];
            isPaired[static_cast<std::size_t>(first)] = isPaired[static_cast<std::size_t>(second)] = true;
            EndAt(a.line, a.atEnd) = {a, b.line, b.atEnd, {}};
            EndAt(b.line, b.atEnd) = {b, a.line, a.atEnd, {}};
            const Join join = JoinOf(a, b);
            const int count = join.Count();
            for (int k = 0; k <= count + 1; ++k)
                passing.push_back(join.At(static_cast<double>(k) / (count + 1)));
        }
        for (std::size_t i = 0; i < arms.size(); ++i) {
            if (!isPaired[i])
                EndAt(arms[i].line, arms[i].atEnd) = {arms[i], -1, false, Meet(arms[i], passing)};
        }
    }

    static Join JoinOf(const Arm& a, const Arm& b) { return {a.at, Times(a.towards, -1), b.at, b.towards}; }

    /// The point of a passing stroke that an arm runs into when it goes straight on.
    static DPOINT Meet(const Arm& arm, const std::vector<DPOINT>& passing) {
        const auto missing = [&arm](DPOINT p) {
            const DPOINT to = Minus(p, arm.at);
            const double ahead = -Dot(to, arm.towards);
            return std::fabs(to.x * arm.towards.y - to.y * arm.towards.x) + (ahead < 0 ? -4 * ahead : 0);
        };
        return *std::min_element(passing.begin(), passing.end(),
                                 [&](DPOINT p, DPOINT q) { return missing(p) < missing(q); });
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
            if (EndAt(i, false).partner < 0) {
                FollowFrom(i, false);
            } else if (EndAt(i, true).partner < 0) {
                FollowFrom(i, true);
            }
        }
        for (int i = 0; i < LineCount(); ++i) {
            if (!IsDone(i)) FollowFrom(i, false);  // a closed stroke
        }
    }

    bool IsDone(int i) const {
        return m_used[static_cast<std::size_t>(i)] || m_dropped[static_cast<std::size_t>(i)];
    }

    /// Adds the stroke that begins with a line's end and follows partners until there is none.
    void FollowFrom(int line, bool atEnd) {
        Stroke stroke;
        const bool isAlone = ArmsAt(LineAt(line).from).size() == 1 && ArmsAt(LineAt(line).to).size() == 1;
        for (;;) {
            m_used[static_cast<std::size_t>(line)] = true;
            AppendLine(stroke, line, atEnd);
            const LineEnd& end = EndAt(line, !atEnd);
            if (end.partner < 0) break;
            if (!end.goal) AppendJoin(stroke, end.arm, EndAt(end.partner, end.partnerAtEnd).arm);
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
        const LineEnd& first = EndAt(line, atEnd);
        const LineEnd& last = EndAt(line, !atEnd);
        const Arm in{line, atEnd};
        const double length = LengthOf(line);
        if (first.goal) Append(stroke, *first.goal, RadiusAt(in, first.arm.cut));
        Append(stroke, PointAt(in, first.arm.cut), RadiusAt(in, first.arm.cut));
        const std::vector<double>& lengths = m_lengths[static_cast<std::size_t>(line)];
        const std::size_t count = lengths.size();
        for (std::size_t k = 0; k < count; ++k) {
            const std::size_t i = atEnd ? count - 1 - k : k;
            const double along = atEnd ? length - lengths[i] : lengths[i];
            if (along > first.arm.cut && along < length - last.arm.cut)
                Append(stroke, LineAt(line).points[i], LineAt(line).radii[i]);
        }
        Append(stroke, PointAt(in, length - last.arm.cut), RadiusAt(in, length - last.arm.cut));
        if (last.goal) Append(stroke, *last.goal, RadiusAt(in, length - last.arm.cut));
    }

    static void AppendJoin(Stroke& stroke, const Arm& in, const Arm& out) {
        const Join join = JoinOf(in, out);
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

    const LineGraph& m_graph;
    const StrokeRules& m_rules;
    std::vector<LineEnd> m_ends;           // two of each line
    std::vector<std::vector<Arm>> m_arms;  // of each node
    std::vector<std::vector<double>> m_lengths;
    std::vector<bool> m_dropped;
    std::vector<bool> m_used;
    std::vector<bool> m_isMended;  // nodes whose junction is settled
    std::vector<bool> m_isLone;    // nodes without lines
    std::vector<Stroke> m_strokes;
};

}  // namespace

std::vector<Stroke> FindStrokes(const LineGraph& graph, const StrokeRules& rules) {
    return StrokeFinder(graph, rules).Find();
}

}  // namespace tarvex::centerline
