// Where arms are cut off their junctions and what they look like beyond: the lines of a skeleton are drawn
// towards each other within a junction's disc and a little beyond it, and say nothing about the strokes
// there.
#include "raster/centerline/arms.h"

#include <algorithm>
#include <cmath>

namespace tarvex::centerline {
namespace {

using skeleton::Line;

constexpr double kCutFactor = 1.4;  // of a junction's disc: its pull reaches a little beyond
constexpr double kLeastSpan = 8;    // pixels that tell a direction
constexpr double kShort = 2;        // times what is cut off: less is bent all along
constexpr double kBend = 0.4;       // radians within twice as many pixels as this:
constexpr double kBendSpan = 4;
constexpr double kShortTurn = 0.1;  // what is taken for the turn where there is no direction

std::vector<double> MeasureAlong(const Line& line) {
    std::vector<double> lengths(line.points.size());
    for (std::size_t i = 1; i < lengths.size(); ++i)
        lengths[i] = lengths[i - 1] + Distance(line.points[i], line.points[i - 1]);
    return lengths;
}

}  // namespace

double AngleBetween(DPOINT a, DPOINT b) { return std::atan2(std::fabs(a.x * b.y - a.y * b.x), Dot(a, b)); }

double TurnBetween(const Arm& a, const Arm& b) {
    if (a.isShort && b.isShort) return kShortTurn;
    if (a.isShort) return TurnBetween(b, a);
    const DPOINT inwards = Times(a.towards, -1);
    if (b.isShort) return kShortTurn + AngleBetween(inwards, Minus(b.tip, a.at));
    const DPOINT over = Minus(b.at, a.at);
    const double whole = AngleBetween(inwards, b.towards);
    if (Length(over) < 1) return whole;
    return std::max({AngleBetween(inwards, over), AngleBetween(over, b.towards), whole / 2});
}

Join::Join(const Arm& in, const Arm& out) : m_from(in.at), m_to(out.at) {
    const double handle = Distance(in.at, out.at) / 3;
    m_c1 = Minus(in.at, Times(in.towards, handle));
    m_c2 = Minus(out.at, Times(out.towards, handle));
}

DPOINT Join::At(double t) const {
    const double s = 1 - t;
    return Plus(Plus(Times(m_from, s * s * s), Times(m_c1, 3 * s * s * t)),
                Plus(Times(m_c2, 3 * s * t * t), Times(m_to, t * t * t)));
}

int Join::Count() const { return static_cast<int>(std::min(1e6, Distance(m_from, m_to))); }

ArmGraph::ArmGraph(const skeleton::LineGraph& graph)
    : m_graph(graph),
      m_arms(graph.nodes.size()),
      m_dropped(graph.lines.size()),
      m_ends(2 * graph.lines.size()) {
    m_lengths.reserve(graph.lines.size());
    for (const Line& line : graph.lines) m_lengths.push_back(MeasureAlong(line));
    for (int i = 0; i < LineCount(); ++i) {
        if (LineAt(i).IsClosed()) continue;
        for (const bool atEnd : {false, true}) {
            Arm arm;
            arm.line = i;
            arm.atEnd = atEnd;
            m_arms[static_cast<std::size_t>(NodeOf(arm))].push_back(arm);
        }
    }
}

void ArmGraph::Drop(int line) {
    m_dropped[static_cast<std::size_t>(line)] = true;
    for (const int node : {LineAt(line).from, LineAt(line).to}) {
        if (node >= 0)
            std::erase_if(m_arms[static_cast<std::size_t>(node)],
                          [line](const Arm& arm) { return arm.line == line; });
    }
}

/// A stroke that only touches another one with its end turns sharply towards it there: behind that.
double ArmGraph::BeyondBend(const Arm& arm, double cut, double length) const {
    const double most = std::min(cut + 2 * RadiusAt(arm, cut) + 2, 0.4 * length);
    for (double along = cut; along < most; along += 1) {
        const DPOINT turn = PointAt(arm, along + kBendSpan);
        const DPOINT near = Minus(turn, PointAt(arm, along));
        const DPOINT far = Minus(PointAt(arm, along + 2 * kBendSpan), turn);
        if (AngleBetween(near, far) < kBend) return along;
    }
    return cut;
}

Arm ArmGraph::Cut(const Arm& arm) const {
    Arm cut = arm;
    const double disc = NodeAt(NodeOf(arm)).radius;
    const double length = LengthOf(arm.line);
    const bool isFree = ArmsAt(FarNodeOf(arm)).size() < 2;
    cut.cut = BeyondBend(arm, std::min(kCutFactor * disc + 1.5, (isFree ? 0.7 : 0.4) * length), length);
    cut.at = PointAt(arm, cut.cut);
    std::vector<double> radii;
    const double reach = std::max({kLeastSpan, 4 * RadiusAt(arm, cut.cut), cut.cut});
    const double end = std::min(cut.cut + reach, length);
    for (double along = cut.cut; along <= end; along += 1) radii.push_back(RadiusAt(arm, along));
    const auto middle = radii.begin() + static_cast<std::ptrdiff_t>(radii.size() / 2);
    std::nth_element(radii.begin(), middle, radii.end());
    cut.radius = *middle;
    cut.isShort = isFree && length - cut.cut < std::max(kLeastSpan, kShort * cut.cut);
    cut.tip = PointAt(arm, length);
    const DPOINT out = Minus(PointAt(arm, end), cut.at);
    const double outLength = Length(out);
    cut.towards = outLength > 0 ? Times(out, 1 / outLength) : DPOINT{1, 0};
    return cut;
}

std::pair<std::size_t, double> ArmGraph::Locate(const Arm& arm, double along) const {
    const std::vector<double>& lengths = LengthsOf(arm.line);
    const double from = arm.atEnd ? lengths.back() - along : along;
    const auto next = std::upper_bound(lengths.begin(), lengths.end(), from);
    if (next == lengths.begin()) return {0, 0};
    if (next == lengths.end()) return {lengths.size() - 1, 0};
    const auto i = static_cast<std::size_t>(next - lengths.begin()) - 1;
    return {i, (from - lengths[i]) / (lengths[i + 1] - lengths[i])};
}

DPOINT ArmGraph::PointAt(const Arm& arm, double along) const {
    const auto [i, part] = Locate(arm, along);
    const std::vector<DPOINT>& points = LineAt(arm.line).points;
    return part > 0 ? Plus(points[i], Times(Minus(points[i + 1], points[i]), part)) : points[i];
}

double ArmGraph::RadiusAt(const Arm& arm, double along) const {
    return LineAt(arm.line).radii[Locate(arm, along).first];
}

}  // namespace tarvex::centerline
