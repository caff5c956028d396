// Default inclinations of satin: pairs of places on two rails, kept in order along both and free of
// crossings.
//
// Lines are accepted one by one, the most certain first: the ends, corners that face each other, other
// corners by their closest points, and at last what fills the gaps. A line is refused when it would go back
// on a rail against one that is there, or cross it. Order alone does not do: where rails bend sharply, lines
// in order can cross all the same.
#include <algorithm>
#include <cmath>
#include <vector>

#include "bezier/vector.h"
#include "tarvex/stitch.h"

namespace tarvex {

namespace {

/// Lengths along the rails, and the line between the points there.
struct Pair {
    double s1;
    double s2;
    DLINE line;
};

double Side(const DLINE& line, const DPOINT& p) {
    const DPOINT a = Minus(line.p2, line.p1);
    const DPOINT b = Minus(p, line.p1);
    return a.x * b.y - a.y * b.x;
}

/// Whether the two pass through each other. Lines that only touch do not.
bool Cross(const DLINE& a, const DLINE& b) {
    if (std::max(a.p1.x, a.p2.x) < std::min(b.p1.x, b.p2.x) ||
        std::max(b.p1.x, b.p2.x) < std::min(a.p1.x, a.p2.x))
        return false;
    if (std::max(a.p1.y, a.p2.y) < std::min(b.p1.y, b.p2.y) ||
        std::max(b.p1.y, b.p2.y) < std::min(a.p1.y, a.p2.y))
        return false;
    const auto areOpposite = [](double u, double v) { return (u < 0 && v > 0) || (u > 0 && v < 0); };
    return areOpposite(Side(a, b.p1), Side(a, b.p2)) && areOpposite(Side(b, a.p1), Side(b, a.p2));
}

struct Corner {
    double s;
    DPOINT at;
};

class Rail {
  public:
    explicit Rail(const CArray<BPOINT, BPOINT>& nodes) : m_math(nodes) {
        for (int i = 1; i + 1 < nodes.GetSize(); ++i) {
            if (IsSmooth(nodes, i) == 0) corners.push_back({m_math.GetLengthAt({i, 0}), nodes[i].pt});
        }
    }

    double Length() const { return m_math.GetLength(); }
    DPOINT At(double s) const { return m_math.GetPoint(s); }
    double Nearest(const DPOINT& p) const { return m_math.GetLengthAt(m_math.GetNearest(p)); }

    /// The index of the corner at a length, or -1.
    int CornerAt(double s) const {
        constexpr double same = 1e-6;
        const auto found = std::lower_bound(corners.begin(), corners.end(), s - same,
                                            [](const Corner& corner, double v) { return corner.s < v; });
        if (found != corners.end() && found->s < s + same) return static_cast<int>(found - corners.begin());
        return -1;
    }

    std::vector<Corner> corners;

  private:
    CBPointArrayMath m_math;
};

class Inclinations {
  public:
    Inclinations(const CArray<BPOINT, BPOINT>& rail1, const CArray<BPOINT, BPOINT>& rail2)
        : m_rail1(rail1), m_rail2(rail2) {}

    void AddEnds() {
        Accept({0, 0, {}});
        Accept({m_rail1.Length(), m_rail2.Length(), {}});
    }

    void AddCorners() {
        std::vector<Candidate> candidates;
        Collect(m_rail1, m_rail2, First::Rail1, candidates);
        Collect(m_rail2, m_rail1, First::Rail2, candidates);
        std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
            if (a.isBetweenCorners != b.isBetweenCorners) return a.isBetweenCorners;
            return Distance(a.pair.line.p1, a.pair.line.p2) < Distance(b.pair.line.p1, b.pair.line.p2);
        });
        std::vector<bool> done1(m_rail1.corners.size()), done2(m_rail2.corners.size());
        const auto isDone = [](const std::vector<bool>& done, int i) {
            return i >= 0 && done[static_cast<std::size_t>(i)];
        };
        const auto finish = [](std::vector<bool>& done, int i) {
            if (i >= 0) done[static_cast<std::size_t>(i)] = true;
        };
        for (const Candidate& c : candidates) {
            if (isDone(c.from == First::Rail1 ? done1 : done2, c.corner)) continue;
            if (!Accept(c.pair)) continue;
            finish(done1, m_rail1.CornerAt(c.pair.s1));
            finish(done2, m_rail2.CornerAt(c.pair.s2));
        }
    }

    void AddBetween(double spacing) {
        if (!(spacing > 0)) return;
        const std::vector<Pair> fixed = m_pairs;
        const auto extent = [](const Pair& a, const Pair& b) { return std::max(b.s1 - a.s1, b.s2 - a.s2); };
        double whole = 0;
        for (std::size_t i = 0; i + 1 < fixed.size(); ++i) whole += extent(fixed[i], fixed[i + 1]);
        // Each gap rounds its number of steps up.
        const double room = MAX_SATIN_INCLINATIONS - 2.0 * static_cast<double>(fixed.size());
        const double step = room > 0 ? std::max(spacing, whole / room) : whole;
        for (std::size_t i = 0; i + 1 < fixed.size(); ++i) {
            const Pair& a = fixed[i];
            const Pair& b = fixed[i + 1];
            const double steps = std::ceil(extent(a, b) / step);
            for (double k = 1; k < steps; ++k)
                Accept({a.s1 + (b.s1 - a.s1) * (k / steps), a.s2 + (b.s2 - a.s2) * (k / steps), {}});
        }
    }

    void CopyTo(CArray<DLINE, DLINE>& lines) const {
        lines.SetSize(static_cast<int>(m_pairs.size()));
        std::transform(m_pairs.begin(), m_pairs.end(), lines.GetData(), [](const Pair& p) { return p.line; });
    }

  private:
    enum class First { Rail1, Rail2 };
    struct Candidate {
        Pair pair;
        First from;
        int corner;
        bool isBetweenCorners;
    };

    void Collect(const Rail& from, const Rail& to, First first, std::vector<Candidate>& candidates) const {
        for (std::size_t i = 0; i < from.corners.size(); ++i) {
            const Corner& corner = from.corners[i];
            const double s = to.Nearest(corner.at);
            const DPOINT at = to.At(s);
            const bool isBetweenCorners = to.CornerAt(s) >= 0;
            const Pair pair = first == First::Rail1 ? Pair{corner.s, s, {corner.at, at}}
                                                    : Pair{s, corner.s, {at, corner.at}};
            candidates.push_back({pair, first, static_cast<int>(i), isBetweenCorners});
        }
    }

    /// Takes the pair into its place unless it is there already, goes back, or crosses a line.
    bool Accept(Pair pair) {
        if (m_pairs.size() >= MAX_SATIN_INCLINATIONS) return false;
        pair.line = {m_rail1.At(pair.s1), m_rail2.At(pair.s2)};
        const auto isBefore = [](const Pair& a, const Pair& b) {
            return a.s1 < b.s1 || (a.s1 == b.s1 && a.s2 < b.s2);
        };
        const auto next = std::lower_bound(m_pairs.begin(), m_pairs.end(), pair, isBefore);
        const auto isSame = [&pair](const Pair& other) {
            return std::fabs(other.s1 - pair.s1) < GEOMETRY_EPSILON &&
                   std::fabs(other.s2 - pair.s2) < GEOMETRY_EPSILON;
        };
        if (next != m_pairs.end() && (next->s2 < pair.s2 || isSame(*next))) return false;
        if (next != m_pairs.begin() && (next[-1].s2 > pair.s2 || isSame(next[-1]))) return false;
        for (const Pair& other : m_pairs) {
            if (Cross(other.line, pair.line)) return false;
        }
        m_pairs.insert(next, pair);
        return true;
    }

    Rail m_rail1;
    Rail m_rail2;
    std::vector<Pair> m_pairs;  ///< in order along both rails
};

/// Whether the second rail's ends lie nearer to the first one's the other way round.
bool RunsAgainst(const CArray<BPOINT, BPOINT>& rail1, const CArray<BPOINT, BPOINT>& rail2) {
    const DPOINT start1 = rail1[0].pt, end1 = rail1[rail1.GetUpperBound()].pt;
    const DPOINT start2 = rail2[0].pt, end2 = rail2[rail2.GetUpperBound()].pt;
    return Distance(start1, end2) + Distance(end1, start2) < Distance(start1, start2) + Distance(end1, end2);
}

bool HasLength(const CArray<BPOINT, BPOINT>& rail) { return GetBezierLength(rail) >= GEOMETRY_EPSILON; }

}  // namespace

bool GetDefaultSatinInclinations(const CArray<BPOINT, BPOINT>& rail1, const CArray<BPOINT, BPOINT>& rail2,
                                 double spacing, CArray<DLINE, DLINE>& inclinations) {
    inclinations.RemoveAll();
    if (!HasLength(rail1) || !HasLength(rail2)) return false;
    CArray<BPOINT, BPOINT> second;
    second.Copy(rail2);
    if (RunsAgainst(rail1, rail2)) SwapPoints(second);
    Inclinations all(rail1, second);
    all.AddEnds();
    all.AddCorners();
    all.AddBetween(spacing);
    all.CopyTo(inclinations);
    return true;
}

}  // namespace tarvex
