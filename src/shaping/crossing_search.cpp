// The search over all pairs of segments: arcs whose boxes meet, found with a tree of boxes, are sorted by
// the pair of segments they belong to; then each pair of segments is worked on once.
#include "shaping/crossing_search.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>

#include "shaping/box_tree.h"
#include "shaping/curve_crossings.h"

namespace tarvex::shaping {

namespace {

struct NumberedArc {
    Arc arc;
    int segment;
};

struct ArcCouple {
    int first, second;        // segments
    int firstArc, secondArc;  // of all arcs
    friend bool operator<(const ArcCouple& a, const ArcCouple& b) {
        return std::tie(a.first, a.second, a.firstArc, a.secondArc) <
               std::tie(b.first, b.second, b.firstArc, b.secondArc);
    }
};

class Search {
  public:
    Search(const SegmentList& list, Scope scope) : m_list(list), m_scope(scope) {}

    Meetings Run() {
        CutIntoArcs();
        FindCouples();
        for (auto at = m_couples.begin(); at != m_couples.end();) {
            const auto end = std::find_if(at, m_couples.end(), [&](const ArcCouple& couple) {
                return couple.first != at->first || couple.second != at->second;
            });
            Cross({&*at, static_cast<std::size_t>(end - at)});
            at = end;
        }
        std::sort(m_found.begin(), m_found.end(),
                  [this](const Crossing& a, const Crossing& b) { return Place(a) < Place(b); });
        return {std::move(m_found), std::move(m_stretches)};
    }

  private:
    std::tuple<int, int, int, double, int, double> Place(const Crossing& c) const {
        return {m_list[c.first].contour, m_list[c.second].contour, c.second, c.t, c.first, c.s};
    }

    const Arc& ArcAt(int i) const { return m_arcs[static_cast<std::size_t>(i)].arc; }

    void CutIntoArcs() {
        for (int i = 0; i < m_list.Size(); ++i) {
            for (const Arc& arc : ArcsOf(m_list[i].curve)) {
                m_arcs.push_back({arc, i});
                m_boxes.push_back(Grown(BoxOf(arc.curve), POINT_EPSILON));
            }
        }
    }

    void FindCouples() {
        const auto add = [this](int i, int j) {
            if (i > j) std::swap(i, j);
            const int first = m_arcs[static_cast<std::size_t>(i)].segment;
            const int second = m_arcs[static_cast<std::size_t>(j)].segment;
            if (first == second && j == i + 1) return;  // arcs that hardly turn do not cross the next
            if (IsPlainJoint(i, j) || IsPlainJoint(j, i)) return;
            m_couples.push_back({first, second, i, j});
        };
        const std::span<const Box> boxes(m_boxes);
        if (m_scope == Scope::Everywhere) {
            const BoxTree tree(boxes);
            tree.ForOwnPairs(add);
        } else {
            // The segments of A precede those of B.
            const auto firstOfB = std::find_if(m_arcs.begin(), m_arcs.end(), [this](const NumberedArc& arc) {
                return m_list.ContourOf(arc.segment).operand == Operand::B;
            });
            const auto count = static_cast<std::size_t>(firstOfB - m_arcs.begin());
            const BoxTree treeA(boxes.first(count));
            const BoxTree treeB(boxes.subspan(count));
            treeA.ForPairs(treeB, [&](int i, int j) { add(i, j + static_cast<int>(count)); });
        }
        std::sort(m_couples.begin(), m_couples.end());
    }

    /// Whether arc j goes on where arc i ends, and a line through that end keeps them apart.
    bool IsPlainJoint(int i, int j) const {
        const NumberedArc& a = m_arcs[static_cast<std::size_t>(i)];
        const NumberedArc& b = m_arcs[static_cast<std::size_t>(j)];
        if (a.arc.to != 1 || b.arc.from != 0 || m_list.Next(a.segment) != b.segment) return false;
        const Cubic& before = a.arc.curve;
        const Cubic& after = b.arc.curve;
        const DPOINT joint = before.p3;
        const auto unit = [](DPOINT v) {
            const double length = Length(v);
            return length > 0 ? Times(v, 1 / length) : v;
        };
        const DPOINT onwards = Plus(unit(Minus(joint, before.p0)), unit(Minus(after.p3, joint)));
        const auto ahead = [&](DPOINT p) { return Dot(Minus(p, joint), onwards); };
        return ahead(before.p0) < 0 && ahead(before.p1) <= 0 && ahead(before.p2) <= 0 &&
               ahead(after.p1) >= 0 && ahead(after.p2) >= 0 && ahead(after.p3) > 0;
    }

    void Cross(std::span<const ArcCouple> couples) {
        const int first = couples.front().first;
        const int second = couples.front().second;
        const Cubic& a = m_list[first].curve;
        const Cubic& b = m_list[second].curve;
        std::vector<CurveHit> hits;
        if (first != second) {
            for (const ArcCouple& couple : couples)
                AppendEndHits(a, ArcAt(couple.firstArc), b, ArcAt(couple.secondArc), hits);
            if (const std::optional<CommonStretch> common = StretchBetween(first, second, hits)) {
                m_stretches.push_back(*common);  // however short, both of its ends stay
            } else {
                AppendHits(couples, a, b, hits);
                MergeContacts(a, b, hits);
            }
        } else {
            AppendHits(couples, a, b, hits);
            std::erase_if(hits, [](const CurveHit& hit) { return std::fabs(hit.s - hit.t) < 1e-3; });
            MergeContacts(a, b, hits);
        }
        const std::size_t before = m_found.size();
        for (const CurveHit& hit : hits) {
            if (IsCommonEnd(first, second, hit)) continue;
            const auto isThis = [&](const Crossing& c) {
                return c.point == hit.point && std::fabs(c.s - hit.s) < 0.1 && std::fabs(c.t - hit.t) < 0.1;
            };
            if (std::any_of(m_found.begin() + static_cast<std::ptrdiff_t>(before), m_found.end(), isThis))
                continue;
            m_found.push_back({first, hit.s, second, hit.t, hit.point});
        }
    }

    void AppendHits(std::span<const ArcCouple> couples, const Cubic& a, const Cubic& b,
                    std::vector<CurveHit>& hits) const {
        for (const ArcCouple& couple : couples) {
            AppendArcHits(a, ArcAt(couple.firstArc), b, ArcAt(couple.secondArc), hits);
        }
        for (CurveHit& hit : hits) ToEnds(a, b, hit);
    }

    /// Puts a crossing that is an end of one curve, within the tolerance, exactly there.
    static void ToEnds(const Cubic& a, const Cubic& b, CurveHit& hit) {
        const auto settle = [&hit](const Cubic& c, double& t) {
            if (t < 0.1 && hit.point == c.p0) {
                t = 0;
            } else if (t > 0.9 && hit.point == c.p3) {
                t = 1;
            }
            return t == 0 || t == 1;
        };
        const bool isEndOfB = settle(b, hit.t);
        if (settle(a, hit.s)) {
            hit.point = PointAt(a, hit.s);
        } else if (isEndOfB) {
            hit.point = PointAt(b, hit.t);
        }
    }

    /// The common stretch between two of the hits, if the segments have one.
    std::optional<CommonStretch> StretchBetween(int first, int second, std::vector<CurveHit> hits) const {
        const Cubic& a = m_list[first].curve;
        const Cubic& b = m_list[second].curve;
        for (CurveHit& hit : hits) ToEnds(a, b, hit);
        std::sort(hits.begin(), hits.end(), [](const CurveHit& p, const CurveHit& q) {
            return std::tie(p.s, p.t) < std::tie(q.s, q.t);
        });
        for (std::size_t i = 0; i < hits.size(); ++i) {
            for (std::size_t j = i + 1; j < hits.size(); ++j) {
                if (hits[i].s == hits[j].s || hits[i].t == hits[j].t) continue;
                const Cubic partA = PartOf(a, hits[i].s, hits[j].s);
                const Cubic partB = PartOf(b, hits[i].t, hits[j].t);
                if (SquaredDistance(partA.p0, partA.p3) < POINT_EPSILON * POINT_EPSILON * 100 &&
                    SquaredDistance(partA.p0, partA.p1) < POINT_EPSILON * POINT_EPSILON * 100)
                    continue;
                if (SameCourse(partA, partB))
                    return CommonStretch{first, hits[i].s, hits[j].s, second, hits[i].t, hits[j].t};
            }
        }
        return std::nullopt;
    }

    /// Of hits between which the curves do not leave each other, one is kept, an end if there is one: curves
    /// that leave a node in one direction are within the tolerance of each other for some way.
    static void MergeContacts(const Cubic& a, const Cubic& b, std::vector<CurveHit>& hits) {
        const auto isInside = [](double t) { return t != 0 && t != 1; };
        const auto rank = [&](const CurveHit& hit) { return int{isInside(hit.s)} + int{isInside(hit.t)}; };
        std::stable_sort(hits.begin(), hits.end(),
                         [&](const CurveHit& p, const CurveHit& q) { return rank(p) < rank(q); });
        std::vector<CurveHit> kept;
        for (const CurveHit& hit : hits) {
            const bool isKnown = std::any_of(kept.begin(), kept.end(), [&](const CurveHit& other) {
                return rank(hit) > 0 && AreTogether(a, b, hit, other);
            });
            if (!isKnown) kept.push_back(hit);
        }
        hits = std::move(kept);
    }

    /// Whether the curves are one, to the tolerance, between two hits.
    static bool AreTogether(const Cubic& a, const Cubic& b, const CurveHit& from, const CurveHit& to) {
        constexpr double mostParameter = 0.05;  // what is further away is told by common stretches
        if (!(std::fabs(from.s - to.s) < mostParameter) || !(std::fabs(from.t - to.t) < mostParameter))
            return false;
        const Cubic between = PartOf(b, from.t, to.t);
        for (const double part : {0.5, 0.25, 0.75}) {
            const DPOINT p = PointAt(a, from.s + (to.s - from.s) * part);
            if (!(PointAt(between, NearestParameter(between, p)) == p)) return false;
        }
        return true;
    }

    bool IsCommonEnd(int first, int second, const CurveHit& hit) const {
        return (m_list.Next(first) == second && hit.s == 1 && hit.t == 0) ||
               (m_list.Next(second) == first && hit.s == 0 && hit.t == 1);
    }

    const SegmentList& m_list;
    Scope m_scope;
    std::vector<NumberedArc> m_arcs;
    std::vector<Box> m_boxes;
    std::vector<ArcCouple> m_couples;
    std::vector<Crossing> m_found;
    std::vector<CommonStretch> m_stretches;
};

}  // namespace

Meetings FindMeetings(const SegmentList& list, Scope scope) { return Search(list, scope).Run(); }

}  // namespace tarvex::shaping
