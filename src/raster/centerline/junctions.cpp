// Mending junctions.
//
// A skeleton bends near a junction: within the largest disc there its lines are drawn towards each other, and
// where two strokes cross at a slant it has two junctions and a short bridge between them. What lies within
// the disc says nothing about the strokes, so it is cut away: each line is an arm that ends where it enters
// the disc, with the direction that it has there. Two arms are one stroke when going straight from one to the
// other turns little at both.
//
// At a slant of f a crossing of strokes of half width r has its junctions r (1 - s) / (s (1 + s)) from its
// centre and discs of 2 r / (1 + s) there, s = sin(f / 2), so a bridge eight times as long as both discs'
// radii is one of strokes that cross at 7 degrees. Within that, strokes that cross a crossing or end in it
// make more junctions with more bridges. So junctions that hang together by such lines are one cluster, the
// shortest lines first, as long as it has few enough arms to be looked at as a whole.
//
// In a cluster any two arms may be one stroke, at one junction or across bridges that lie within the stroke
// that would run there. Each such pair has a price, what it turns; an arm left over has one too, and so have
// the ends of a line between junctions, unless a stroke runs over it: then it was a bridge. The cheapest
// choice of pairs is found by trying all, the cheap ones first, without those that cannot beat the best known
// (and no more than a fixed number, which in a tangle leaves a good choice instead of the best).
//
// An arm left over runs on straight to the stroke that passes, or where none does its line stays as it was.
// But where all arms of a junction or a cluster run into one point and none goes on in another, as where a
// line ends in a corner, all of them end there (meeting.h).
#include "raster/centerline/junctions.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "core/rounding.h"
#include "raster/centerline/meeting.h"

namespace tarvex::centerline {
namespace {

using skeleton::Line;

constexpr double kBridge = 8;             // times the sum of the radii, as above
constexpr double kCrossTurn = 0.35;       // the same over a bridge
constexpr double kLeastAcross = 0.2;      // sine of the angle of a corner whose sides meet surely
constexpr double kLeastBeyond = 0.75;     // pixels that an arm must stick out by on the far side of a stroke
constexpr double kMostBeyond = 4;         // times its half width, by which it does at most
constexpr double kReach = 4;              // times a disc's radius, to where an arm may run on beyond it
constexpr double kAlone = kMostTurn / 2;  // the price of an arm left over
constexpr double kOverPrice = 0.04;       // of running over a bridge: the bridge itself may be the stroke
constexpr double kWidthPrice = 0.3;       // times the part by which one arm is thinner than the other
constexpr std::size_t kMostArms = 16;     // of a cluster
constexpr int kMostSteps = 20000;         // of the search in one
constexpr int kLeastSteps = 100;          // when those of all are spent: enough for the cheapest pairs
constexpr int kAllSteps = 2'000'000;      // of all searches in a picture

/// Two arms that may be one stroke.
struct Pair {
    int a, b;
    double price;
    std::vector<int> under;  // the cluster's bridges that the stroke runs over
};

/// Junctions with the lines between them.
struct Cluster {
    std::vector<int> nodes;
    std::vector<int> bridges;
    std::vector<Arm> arms;  // cut; those of the bridges too
};

/// A point on a stroke that goes through, its direction there, and half its width.
struct Passing {
    DPOINT at;
    DPOINT along;
    double radius;
};

void AddPassing(const Arm& a, const Arm& b, std::vector<Passing>& passing) {
    const Join join(a, b);
    const int count = join.Count();
    const double length = Distance(a.at, b.at);
    const DPOINT along = length > 0 ? Times(Minus(b.at, a.at), 1 / length) : a.towards;
    for (int i = 0; i <= count + 1; ++i) {
        const double t = static_cast<double>(i) / (count + 1);
        passing.push_back({join.At(t), along, std::max(a.radius, b.radius)});
    }
}

/// The cheapest choice among pairs.
class PairSearch {
  public:
    PairSearch(const Cluster& cluster, const std::vector<Pair>& pairs, int mostSteps)
        : m_pairs(pairs),
          m_mostSteps(mostSteps),
          m_isTaken(cluster.arms.size()),
          m_covers(cluster.bridges.size()) {
        for (const int bridge : cluster.bridges) {
            std::vector<std::size_t> ends;
            for (std::size_t i = 0; i < cluster.arms.size(); ++i) {
                if (cluster.arms[i].line == bridge) ends.push_back(i);
            }
            m_bridgeEnds.push_back(std::move(ends));
        }
        m_free = static_cast<double>(cluster.arms.size());
    }

    /// Indices of pairs.
    std::vector<std::size_t> Best() {
        Try(0, 0);
        return std::move(m_best);
    }
    int Steps() const { return m_steps; }

  private:
    /// `saved` is by how much the pairs chosen are cheaper than leaving all arms alone.
    void Try(std::size_t k, double saved) {
        if (saved > m_mostSaved) {
            m_mostSaved = saved;
            m_best = m_chosen;
        }
        if (k == m_pairs.size() || saved + m_free * kAlone <= m_mostSaved || ++m_steps > m_mostSteps) return;
        const Pair& pair = m_pairs[k];
        if (CanTake(pair)) {
            const double gain = Take(pair);
            m_chosen.push_back(k);
            Try(k + 1, saved + gain);
            m_chosen.pop_back();
            Release(pair);
        }
        Try(k + 1, saved);
    }

    bool CanTake(const Pair& pair) const {
        if (m_isTaken[Index(pair.a)] || m_isTaken[Index(pair.b)]) return false;
        return std::none_of(pair.under.begin(), pair.under.end(), [this](int bridge) {
            if (m_covers[Index(bridge)] > 0) return false;
            const auto& ends = m_bridgeEnds[Index(bridge)];
            return std::any_of(ends.begin(), ends.end(), [this](std::size_t end) { return m_isTaken[end]; });
        });
    }

    double Take(const Pair& pair) {
        const double before = m_free;
        m_isTaken[Index(pair.a)] = m_isTaken[Index(pair.b)] = true;
        m_free -= 2;
        for (const int bridge : pair.under) {
            if (m_covers[Index(bridge)]++ == 0) Mark(bridge, true);
        }
        return (before - m_free) * kAlone - pair.price;
    }

    void Release(const Pair& pair) {
        m_isTaken[Index(pair.a)] = m_isTaken[Index(pair.b)] = false;
        m_free += 2;
        for (const int bridge : pair.under) {
            if (--m_covers[Index(bridge)] == 0) Mark(bridge, false);
        }
    }

    void Mark(int bridge, bool isTaken) {
        for (const std::size_t end : m_bridgeEnds[Index(bridge)]) {
            m_isTaken[end] = isTaken;
            m_free += isTaken ? -1 : 1;
        }
    }

    static std::size_t Index(int i) { return static_cast<std::size_t>(i); }

    const std::vector<Pair>& m_pairs;
    int m_mostSteps;
    std::vector<std::vector<std::size_t>> m_bridgeEnds;
    std::vector<bool> m_isTaken;
    std::vector<int> m_covers;
    std::vector<std::size_t> m_chosen;
    std::vector<std::size_t> m_best;
    double m_free = 0;
    double m_mostSaved = 0;
    int m_steps = 0;
};

class Mender {
  public:
    Mender(ArmGraph& graph, const skeleton::BitPlane& shape)
        : m_graph(graph), m_shape(shape), m_isMended(static_cast<std::size_t>(graph.NodeCount())) {}

    void Run() {
        for (int i = 0; i < m_graph.NodeCount(); ++i)
            m_isMended[static_cast<std::size_t>(i)] = Gather(ClusterOf(i));
        for (Cluster& cluster : FindClusters()) Mend(cluster);
    }

  private:
    // -----------------------------------------------------------------------------------------
    // Clusters

    bool IsMended(int node) const { return m_isMended[static_cast<std::size_t>(node)]; }

    /// A junction by itself.
    Cluster ClusterOf(int node) const {
        Cluster cluster{{node}, {}, {}};
        for (const Arm& arm : m_graph.ArmsAt(node)) cluster.arms.push_back(m_graph.Cut(arm));
        return cluster;
    }

    /// How long a line between two junctions is in terms of their discs; nothing for other lines.
    std::optional<double> BridgeLength(int i) const {
        const Line& line = m_graph.LineAt(i);
        if (line.IsClosed() || line.from == line.to || m_graph.IsDropped(i)) return std::nullopt;
        if (IsMended(line.from) || IsMended(line.to)) return std::nullopt;
        const std::size_t from = m_graph.ArmsAt(line.from).size();
        const std::size_t to = m_graph.ArmsAt(line.to).size();
        if (std::min(from, to) < 2 || std::max(from, to) < 3) return std::nullopt;
        const double radii = m_graph.NodeAt(line.from).radius + m_graph.NodeAt(line.to).radius;
        if (m_graph.LengthOf(i) > kBridge * radii) return std::nullopt;
        return m_graph.LengthOf(i) / radii;
    }

    std::vector<Cluster> FindClusters() const {
        const auto count = static_cast<std::size_t>(m_graph.NodeCount());
        std::vector<std::size_t> leader(count);
        std::iota(leader.begin(), leader.end(), std::size_t{0});
        const auto find = [&leader](int node) {
            auto i = static_cast<std::size_t>(node);
            while (leader[i] != i) i = leader[i] = leader[leader[i]];
            return i;
        };
        std::vector<std::size_t> arms;
        for (int i = 0; i < m_graph.NodeCount(); ++i) arms.push_back(m_graph.ArmsAt(i).size());
        std::vector<std::pair<double, int>> bridges;
        for (int i = 0; i < m_graph.LineCount(); ++i) {
            if (const auto length = BridgeLength(i)) bridges.emplace_back(*length, i);
        }
        std::sort(bridges.begin(), bridges.end());
        for (const auto& [length, i] : bridges) {
            const std::size_t a = find(m_graph.LineAt(i).from);
            const std::size_t b = find(m_graph.LineAt(i).to);
            if (a == b || arms[a] + arms[b] > kMostArms) continue;
            leader[a] = b;
            arms[b] += arms[a];
        }
        std::vector<Cluster> clusters;
        std::vector<std::size_t> place(count, count);  // of a leader's cluster
        for (int i = 0; i < m_graph.NodeCount(); ++i) {
            if (m_graph.ArmsAt(i).size() < 2 || IsMended(i)) continue;
            std::size_t& at = place[find(i)];
            if (at == count) {
                at = clusters.size();
                clusters.emplace_back();
            }
            Cluster& cluster = clusters[at];
            cluster.nodes.push_back(i);
            for (const Arm& arm : m_graph.ArmsAt(i)) cluster.arms.push_back(m_graph.Cut(arm));
        }
        for (const auto& [length, i] : bridges) {
            const std::size_t a = find(m_graph.LineAt(i).from);
            if (a == find(m_graph.LineAt(i).to)) clusters[place[a]].bridges.push_back(i);
        }
        return clusters;
    }

    // -----------------------------------------------------------------------------------------
    // Pairs

    /// The bridges, by their indices in the cluster, on the shortest way from one junction to another one.
    std::optional<std::vector<int>> WayBetween(const Cluster& cluster, int from, int to) const {
        std::vector<std::pair<double, int>> known(cluster.nodes.size(), {1e300, -1});
        const auto at = [&](int node) -> std::pair<double, int>& {
            const auto found = std::find(cluster.nodes.begin(), cluster.nodes.end(), node);
            return known[static_cast<std::size_t>(found - cluster.nodes.begin())];
        };
        at(from).first = 0;
        for (bool hasChanged = true; hasChanged;) {
            hasChanged = false;
            for (std::size_t k = 0; k < cluster.bridges.size(); ++k) {
                const Line& line = m_graph.LineAt(cluster.bridges[k]);
                const double length = m_graph.LengthOf(cluster.bridges[k]);
                for (const auto& [a, b] : {std::pair(line.from, line.to), {line.to, line.from}}) {
                    if (at(a).first + length >= at(b).first) continue;
                    at(b) = {at(a).first + length, static_cast<int>(k)};
                    hasChanged = true;
                }
            }
        }
        std::vector<int> way;
        for (int node = to; node != from;) {
            const int k = at(node).second;
            if (k < 0) return std::nullopt;
            way.push_back(k);
            const Line& line = m_graph.LineAt(cluster.bridges[static_cast<std::size_t>(k)]);
            node = line.from == node ? line.to : line.from;
        }
        return way;
    }

    /// Whether strokes run over a bridge: for each point of it there is one near enough, as `reach` tells for
    /// the stroke and the bridge's half width.
    template <class Reach>
    bool LiesUnder(const std::vector<Passing>& strokes, int bridge, Reach reach) const {
        const Line& line = m_graph.LineAt(bridge);
        for (std::size_t i = 0; i < line.points.size(); i += 2) {
            const auto isNear = [&](const Passing& stroke) {
                return Distance(stroke.at, line.points[i]) <= reach(stroke, line.radii[i]);
            };
            if (std::none_of(strokes.begin(), strokes.end(), isNear)) return false;
        }
        return true;
    }

    /// An arm as it is when it is one stroke with another. Of a short one the tip alone is kept.
    Arm Aimed(Arm arm, const Arm& other) const {
        if (!arm.isShort) return arm;
        arm.cut = m_graph.LengthOf(arm.line);
        arm.at = arm.tip;
        const DPOINT from = Minus(arm.tip, other.isShort ? other.tip : other.at);
        if (const double length = Length(from); length > 0) arm.towards = Times(from, 1 / length);
        return arm;
    }

    /// The pair that two arms would be.
    std::optional<Pair> PairOf(const Cluster& cluster, int i, int j) const {
        const Arm& a = cluster.arms[static_cast<std::size_t>(i)];
        const Arm& b = cluster.arms[static_cast<std::size_t>(j)];
        const bool isOneJunction = m_graph.NodeOf(a) == m_graph.NodeOf(b);
        if (a.line == b.line && !isOneJunction) return std::nullopt;
        const double turn = TurnBetween(a, b);
        if (turn > (isOneJunction ? kMostTurn : kCrossTurn)) return std::nullopt;
        const double thinner = std::fabs(a.radius - b.radius) / std::max(a.radius, b.radius);
        Pair pair{i, j, turn + kWidthPrice * thinner, {}};
        if (isOneJunction) return pair;
        const auto way = WayBetween(cluster, m_graph.NodeOf(a), m_graph.NodeOf(b));
        if (!way) return std::nullopt;
        std::vector<Passing> stroke;
        AddPassing(Aimed(a, b), Aimed(b, a), stroke);
        const auto middleIsInside = [](const Passing&, double radius) { return radius + 0.5; };
        for (const int k : *way) {
            const int bridge = cluster.bridges[static_cast<std::size_t>(k)];
            if (bridge == a.line || bridge == b.line || !LiesUnder(stroke, bridge, middleIsInside))
                return std::nullopt;
        }
        pair.under = *way;
        pair.price += kOverPrice;
        return pair;
    }

    std::vector<Pair> PairsOf(const Cluster& cluster) const {
        std::vector<Pair> pairs;
        const auto count = static_cast<int>(cluster.arms.size());
        if (cluster.arms.size() > 2 * kMostArms) return pairs;
        for (int i = 0; i < count; ++i) {
            for (int j = i + 1; j < count; ++j) {
                if (auto pair = PairOf(cluster, i, j)) pairs.push_back(std::move(*pair));
            }
        }
        std::stable_sort(pairs.begin(), pairs.end(),
                         [](const Pair& p, const Pair& q) { return p.price < q.price; });
        return pairs;
    }

    // -----------------------------------------------------------------------------------------
    // Decisions

    void Mend(const Cluster& cluster) {
        if (cluster.nodes.size() > 1 && Gather(cluster)) return;
        const std::vector<Pair> pairs = PairsOf(cluster);
        std::vector<bool> isDone(cluster.arms.size());
        std::vector<Passing> passing;
        std::vector<int> dropped;
        PairSearch search(cluster, pairs, std::clamp(m_stepsLeft, kLeastSteps, kMostSteps));
        const std::vector<std::size_t> best = search.Best();
        m_stepsLeft -= std::min(m_stepsLeft, search.Steps());
        for (const std::size_t k : best) {
            const Pair& pair = pairs[k];
            const Arm& first = cluster.arms[static_cast<std::size_t>(pair.a)];
            const Arm& second = cluster.arms[static_cast<std::size_t>(pair.b)];
            const Arm a = Aimed(first, second);
            const Arm b = Aimed(second, first);
            isDone[static_cast<std::size_t>(pair.a)] = isDone[static_cast<std::size_t>(pair.b)] = true;
            m_graph.EndAt(a.line, a.atEnd) = {a, b.line, b.atEnd, {}};
            m_graph.EndAt(b.line, b.atEnd) = {b, a.line, a.atEnd, {}};
            AddPassing(a, b, passing);
            AddBeyond(a, passing);
            AddBeyond(b, passing);
            for (const int bridge : pair.under)
                dropped.push_back(cluster.bridges[static_cast<std::size_t>(bridge)]);
        }
        for (const int bridge : cluster.bridges) {
            const auto isPaired = [&](const Arm& arm) {
                return arm.line == bridge && isDone[static_cast<std::size_t>(&arm - cluster.arms.data())];
            };
            if (std::any_of(cluster.arms.begin(), cluster.arms.end(), isPaired)) continue;
            const auto isInside = [](const Passing& stroke, double) { return stroke.radius + 1; };
            if (LiesUnder(passing, bridge, isInside)) dropped.push_back(bridge);
        }
        for (std::size_t i = 0; i < cluster.arms.size(); ++i) {
            const Arm& arm = cluster.arms[i];
            if (!isDone[i] && !IsAmong(dropped, arm.line)) Settle(cluster, arm, dropped, passing);
        }
        for (const int line : dropped) {
            if (!m_graph.IsDropped(line)) m_graph.Drop(line);
        }
    }

    /// The beginning of what lies beyond a cut.
    void AddBeyond(const Arm& arm, std::vector<Passing>& passing) const {
        const double end = std::min(3 * arm.cut, m_graph.LengthOf(arm.line) / 2);
        for (double along = arm.cut; along < end; along += 1)
            passing.push_back({m_graph.PointAt(arm, along), arm.towards, arm.radius});
    }

    static bool IsAmong(const std::vector<int>& lines, int line) {
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }

    /// Lets all arms that leave a cluster end in one point if they run into one and none goes on in another.
    /// The two that turn the least are the sides of a corner.
    bool Gather(const Cluster& cluster) {
        std::vector<Arm> arms;
        for (const Arm& arm : cluster.arms) {
            if (!IsAmong(cluster.bridges, arm.line)) arms.push_back(arm);
        }
        if (arms.size() < 3) return false;
        const auto meeting = FindMeeting(m_graph, arms);
        if (!meeting || meeting->turn < kMostTurn) return false;
        std::vector<Passing> within;
        for (const Arm& arm : meeting->arms) {
            if (!CanReach(arm, meeting->at)) return false;
            const double length = Distance(arm.at, meeting->at);
            for (double along = 0; along < length; along += 1)
                within.push_back({Minus(arm.at, Times(arm.towards, along)), arm.towards, arm.radius});
        }
        const auto isInside = [](const Passing& stroke, double) { return stroke.radius + 1; };
        if (!std::all_of(cluster.bridges.begin(), cluster.bridges.end(),
                         [&](int bridge) { return LiesUnder(within, bridge, isInside); }))
            return false;
        for (const Arm& arm : meeting->arms)
            m_graph.EndAt(arm.line, arm.atEnd) = {arm, -1, false, meeting->at};
        const auto& [a, b] = meeting->sides;
        m_graph.EndAt(a.line, a.atEnd) = {a, b.line, b.atEnd, meeting->at};
        m_graph.EndAt(b.line, b.atEnd) = {b, a.line, a.atEnd, meeting->at};
        for (const int bridge : cluster.bridges) m_graph.Drop(bridge);
        return true;
    }

    /// An arm left over, among lines of which some are about to be dropped.
    void Settle(const Cluster& cluster, const Arm& arm, const std::vector<int>& dropped,
                const std::vector<Passing>& passing) {
        if (m_graph.EndAt(arm.line, arm.atEnd).partner >= 0) return;  // by the other arm of its corner
        const int node = m_graph.NodeOf(arm);
        if (m_graph.ArmsAt(node).size() == 2) {
            const auto other = std::find_if(cluster.arms.begin(), cluster.arms.end(), [&](const Arm& a) {
                return m_graph.NodeOf(a) == node && (a.line != arm.line || a.atEnd != arm.atEnd) &&
                       !IsAmong(dropped, a.line);
            });
            if (other != cluster.arms.end() && m_graph.EndAt(other->line, other->atEnd).partner < 0) {
                MendCorner(arm, *other, node);
                return;
            }
        }
        if (passing.empty()) return;
        const Passing& stroke = Meet(arm, passing);
        std::optional<DPOINT> goal;
        if (CanReach(arm, stroke.at)) {
            goal = EndBeyond(arm, stroke).value_or(stroke.at);
        } else {
            goal = EndBefore(arm);
        }
        if (goal) m_graph.EndAt(arm.line, arm.atEnd) = {arm, -1, false, goal};
    }

    /// Where an arm ends that only touches another stroke with its end.
    std::optional<DPOINT> EndBefore(const Arm& arm) const {
        double reach = 0;
        while (reach < arm.cut + arm.radius && IsShape(Minus(arm.at, Times(arm.towards, reach))))
            reach += 0.25;
        if (reach < arm.radius || reach >= arm.cut + arm.radius) return std::nullopt;
        return Minus(arm.at, Times(arm.towards, reach - 0.125 - arm.radius));
    }

    /// Whether an arm runs into a point inside the shape when it goes straight on.
    bool CanReach(const Arm& arm, DPOINT goal) const {
        const DPOINT to = Minus(goal, arm.at);
        const double length = Length(to);
        const double disc = m_graph.NodeAt(m_graph.NodeOf(arm)).radius;
        if (length > arm.cut + kReach * disc + 2) return false;
        if (std::fabs(to.x * arm.towards.y - to.y * arm.towards.x) > disc + 2) return false;
        for (double along = 1; along < length; along += 1) {
            if (!IsShape(Plus(arm.at, Times(to, along / length)))) return false;
        }
        return true;
    }

    /// Two arms left over where a corner's tip was dropped go straight on to where they meet.
    void MendCorner(const Arm& a, const Arm& b, int node) {
        DPOINT corner = m_graph.NodeAt(node).at;
        const double across = a.towards.x * b.towards.y - a.towards.y * b.towards.x;
        if (std::fabs(across) > kLeastAcross) {
            const DPOINT over = Minus(b.at, a.at);
            const double along = (over.x * b.towards.y - over.y * b.towards.x) / across;
            const DPOINT meeting = Plus(a.at, Times(a.towards, along));
            if (Distance(meeting, corner) < kMiter * m_graph.NodeAt(node).radius) corner = meeting;
        }
        m_graph.EndAt(a.line, a.atEnd) = {a, b.line, b.atEnd, corner};
        m_graph.EndAt(b.line, b.atEnd) = {b, a.line, a.atEnd, corner};
    }

    /// The point of a passing stroke that an arm runs into when it goes straight on.
    static const Passing& Meet(const Arm& arm, const std::vector<Passing>& passing) {
        const auto missing = [&arm](const Passing& p) {
            const DPOINT to = Minus(p.at, arm.at);
            const double ahead = -Dot(to, arm.towards);
            return std::fabs(to.x * arm.towards.y - to.y * arm.towards.x) +
                   (ahead < 0 ? -4 * ahead : 0.1 * ahead);
        };
        return *std::min_element(passing.begin(), passing.end(),
                                 [&](const Passing& p, const Passing& q) { return missing(p) < missing(q); });
    }

    /// Where an arm ends that sticks out on the other side of the stroke that it runs into, by less than a
    /// branch does.
    std::optional<DPOINT> EndBeyond(const Arm& arm, const Passing& stroke) const {
        const double across = std::fabs(arm.towards.x * stroke.along.y - arm.towards.y * stroke.along.x);
        if (across < kLeastAcross) return std::nullopt;
        const double body = Distance(arm.at, stroke.at) + stroke.radius / across;
        double reach = body;
        while (reach < body + kMostBeyond * arm.radius && IsShape(Minus(arm.at, Times(arm.towards, reach))))
            reach += 0.25;
        if (reach < body + kLeastBeyond || reach >= body + kMostBeyond * arm.radius) return std::nullopt;
        return Minus(arm.at, Times(arm.towards, reach - 0.125 - arm.radius));
    }

    bool IsShape(DPOINT p) const {
        const int x = RoundToInt(p.x);
        const int y = RoundToInt(p.y);
        return x >= 0 && y >= 0 && x < m_shape.Width() && y < m_shape.Height() &&
               m_shape.Get(m_shape.At(x, y));
    }

    ArmGraph& m_graph;
    const skeleton::BitPlane& m_shape;
    std::vector<bool> m_isMended;  // of nodes by themselves
    int m_stepsLeft = kAllSteps;
};

}  // namespace

void MendJunctions(ArmGraph& graph, const skeleton::BitPlane& shape) { Mender(graph, shape).Run(); }

}  // namespace tarvex::centerline
