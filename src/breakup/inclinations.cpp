// Laying inclinations across a column.
//
// From a point in the middle the nearest places on the two rails lie opposite each other wherever the rails
// are parallel, and symmetrically where the column tapers; the inclination between them is square to the
// column. At a bend this fails: many points of the middle are nearest to one inner corner, and beside an
// uneven stretch of a rail the nearest places jump. So
//   - of all samples the longest sequence is kept in which the ends advance along both rails (found by
//     comparing each sample with those before it, as for a longest increasing subsequence). What lies out of
//     order is left out, rather than everything after the first jump forwards;
//   - where two neighbours then differ in direction by more than a stitch should turn, others are put between
//     them, dividing the stretch of the outer rail evenly. So a bend gets its fan, with ends that advance on
//     the inner rail as well.
// Ends become points of the rails, so that positions are exact although they count points.
#include "breakup/inclinations.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <numeric>
#include <optional>

#include "breakup/polyline_place.h"

namespace tarvex {
namespace {

constexpr double kLeastAdvance = 1.0;  ///< of both ends from one inclination to the next
constexpr double kEndMargin = 1.0;     ///< from the rails' ends
constexpr double kMostTurn = 15 * std::numbers::pi / 180;
constexpr int kMostHalvings = 6;
constexpr double kInnerMargin = 0.1;      ///< of the inner rail's stretch, by which inclinations advance
constexpr std::size_t kNeighbours = 16;   ///< before an inclination that it is kept from crossing
constexpr std::size_t kLookedBack = 128;  ///< candidates compared with each; jumps are local
constexpr int kDirectionReach = 6;        ///< points of the line to each side that give its direction
constexpr int kNearestWeight = 4;         ///< of nearest places, against
constexpr int kSquareWeight = 3;          ///< what lies straight across
constexpr double kLeastSine = 0.17;       ///< between an inclination and the line: it must cross the column

/// An inclination by the distances of its ends along the rails.
struct Chord {
    double first;
    double second;
};

class Layer {
  public:
    Layer(const Rails& rails, std::span<const DPOINT> line, ColumnKind kind)
        : m_rails(rails),
          m_line(line),
          m_kind(kind),
          m_first(Distances(rails.first)),
          m_second(Distances(rails.second)) {}

    std::vector<Chord> Lay(int step) const {
        std::vector<Chord> chords = LongestSequence(Sample(step));
        if (chords.empty() && m_first.back() > 2 * kEndMargin && m_second.back() > 2 * kEndMargin)
            chords.push_back({m_first.back() / 2, m_second.back() / 2});
        // What the first round leaves out can leave a gap, which the second fills.
        return Uncrossed(Fanned(Uncrossed(Fanned(chords))));
    }

    DPOINT FirstAt(double s) const { return PlaceAt(m_rails.first, m_first, s).at; }
    DPOINT SecondAt(double s) const { return PlaceAt(m_rails.second, m_second, s).at; }

  private:
    /// A chord that may be taken for a sample of the line; of those of one sample at most one is.
    struct Candidate {
        Chord chord;
        int sample;
        int weight;
    };

    /// Candidates for every step of the line, in both directions from its middle point.
    std::vector<Candidate> Sample(int step) const {
        std::vector<Candidate> candidates;
        const int count = static_cast<int>(m_line.size());
        int start = count / 2;
        if (step < count - step) {
            while (start - step > (m_kind == ColumnKind::Ring ? -1 : 0)) start -= step;
        }
        for (std::int64_t i = start; i < count; i += step) {
            const int sample = static_cast<int>(i);
            const DPOINT& p = m_line[static_cast<std::size_t>(sample)];
            Offer(candidates, sample, kNearestWeight,
                  {DistanceOf(NearestPlace(m_rails.first, p), m_first),
                   DistanceOf(NearestPlace(m_rails.second, p), m_second)});
            const DPOINT across = AcrossAt(sample);
            const auto a = Shoot(p, across, m_rails.first, m_first);
            const auto b = Shoot(p, across, m_rails.second, m_second);
            if (a && b) Offer(candidates, sample, kSquareWeight, {*a, *b});
        }
        return candidates;
    }

    void Offer(std::vector<Candidate>& candidates, int sample, int weight, const Chord& chord) const {
        if (IsWithin(chord) && CrossesLine(chord, sample)) candidates.push_back({chord, sample, weight});
    }

    bool IsWithin(const Chord& chord) const {
        const double margin = kEndMargin;
        return chord.first >= margin && chord.first <= m_first.back() - margin && chord.second >= margin &&
               chord.second <= m_second.back() - margin;
    }

    /// The line's direction at a sample, over some points to both sides.
    DPOINT AlongAt(int sample) const {
        const int last = static_cast<int>(m_line.size()) - 1;
        const auto from = static_cast<std::size_t>(std::max(sample - kDirectionReach, 0));
        const auto to = static_cast<std::size_t>(std::min(sample + kDirectionReach, last));
        return Minus(m_line[to], m_line[from]);
    }
    DPOINT AcrossAt(int sample) const {
        const DPOINT along = AlongAt(sample);
        return {-along.y, along.x};
    }

    bool CrossesLine(const Chord& chord, int sample) const {
        const DPOINT along = AlongAt(sample);
        const DPOINT across = DirectionOf(chord);
        return std::fabs(CrossProduct(along, across)) > kLeastSine * Length(along) * Length(across);
    }

    /// Where the straight line through p meets a rail nearest to p, by distance from the rail's start.
    static std::optional<double> Shoot(const DPOINT& p, const DPOINT& direction, const PointList& rail,
                                       const std::vector<double>& distances) {
        std::optional<double> found;
        double nearest = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i + 1 < rail.size(); ++i) {
            const DPOINT edge = Minus(rail[i + 1], rail[i]);
            const DPOINT offset = Minus(rail[i], p);
            const double det = CrossProduct(direction, edge);
            if (det == 0) continue;
            const double t = CrossProduct(offset, direction) / det;
            const double away = std::fabs(CrossProduct(offset, edge) / det);
            if (!(t >= 0 && t <= 1 && away < nearest)) continue;
            nearest = away;
            found = distances[i] + t * (distances[i + 1] - distances[i]);
        }
        return found;
    }

    static bool Follows(const Chord& next, const Chord& last) {
        return next.first - last.first >= kLeastAdvance && next.second - last.second >= kLeastAdvance;
    }

    std::vector<Chord> LongestSequence(const std::vector<Candidate>& chords) const {
        const std::size_t none = chords.size();
        std::vector<std::size_t> before(chords.size(), none);
        std::vector<int> length(chords.size());
        std::size_t best = none;
        for (std::size_t i = 0; i < chords.size(); ++i) {
            length[i] = chords[i].weight;
            for (std::size_t k = i; k-- > 0 && i - k <= kLookedBack;) {
                if (chords[k].sample == chords[i].sample || length[k] + chords[i].weight <= length[i] ||
                    !Follows(chords[i].chord, chords[k].chord) || Cross(chords[i].chord, chords[k].chord))
                    continue;
                length[i] = length[k] + chords[i].weight;
                before[i] = k;
            }
            if (best == none || length[i] > length[best]) best = i;
        }
        std::vector<Chord> sequence;
        for (std::size_t i = best; i != none; i = before[i]) sequence.push_back(chords[i].chord);
        std::reverse(sequence.begin(), sequence.end());
        return sequence;
    }

    bool Cross(const Chord& c, const Chord& d) const {
        const DPOINT a = FirstAt(c.first), b = SecondAt(c.second), p = FirstAt(d.first),
                     q = SecondAt(d.second);
        const auto side = [](const DPOINT& from, const DPOINT& to, const DPOINT& at) {
            return CrossProduct(Minus(to, from), Minus(at, from));
        };
        return side(a, b, p) * side(a, b, q) < 0 && side(p, q, a) * side(p, q, b) < 0;
    }

    /// Leaves out what crosses one before it: where a rail is notched, places in order need not be enough.
    std::vector<Chord> Uncrossed(const std::vector<Chord>& chords) const {
        std::vector<Chord> kept;
        for (const Chord& chord : chords) {
            const std::size_t count = std::min(kept.size(), kNeighbours);
            const bool crosses = std::any_of(kept.end() - static_cast<std::ptrdiff_t>(count), kept.end(),
                                             [&](const Chord& other) { return Cross(chord, other); });
            if (!crosses) kept.push_back(chord);
        }
        return kept;
    }

    DPOINT DirectionOf(const Chord& chord) const {
        return Minus(SecondAt(chord.second), FirstAt(chord.first));
    }

    /// Chords between neighbours that differ too much in direction.
    std::vector<Chord> Fanned(const std::vector<Chord>& chords) const {
        std::vector<Chord> fanned, seam;
        for (const Chord& chord : chords) {
            if (!fanned.empty()) AddBetween(fanned, Chord(fanned.back()), chord);
            fanned.push_back(chord);
        }
        if (m_kind != ColumnKind::Ring || chords.size() < 2) return fanned;
        // Around a ring's seam: what comes to lie behind it belongs to the beginning.
        const double first = m_first.back(), second = m_second.back();
        AddBetween(seam, chords.back(), {chords.front().first + first, chords.front().second + second});
        std::vector<Chord> ahead;
        for (const Chord& chord : seam) {
            if (chord.first < first && chord.second < second) fanned.push_back(chord);
            if (chord.first >= first && chord.second >= second)
                ahead.push_back({chord.first - first, chord.second - second});
        }
        fanned.insert(fanned.begin(), ahead.begin(), ahead.end());
        return fanned;
    }

    /// Halves the stretch between two chords for as long as they turn too much.
    void AddBetween(std::vector<Chord>& to, const Chord& last, const Chord& next, int depth = 0) const {
        const DPOINT u = DirectionOf(Wrapped(last)), v = DirectionOf(Wrapped(next));
        const double turn = std::fabs(std::atan2(CrossProduct(u, v), Dot(u, v)));
        if (turn <= kMostTurn || depth == kMostHalvings) return;
        const Chord middle = MiddleOf(last, next);
        AddBetween(to, last, middle, depth + 1);
        to.push_back(middle);
        AddBetween(to, middle, next, depth + 1);
    }

    /// Half way on the rail with the longer stretch, the outer one of a bend, and opposite that on the other.
    /// Half way on both would lead across the corner that the inner rail has in a sharp bend.
    Chord MiddleOf(const Chord& last, const Chord& next) const {
        const double first = next.first - last.first, second = next.second - last.second;
        Chord middle{std::midpoint(last.first, next.first), std::midpoint(last.second, next.second)};
        if (next.first > m_first.back() || next.second > m_second.back()) return middle;
        if (first >= second) {
            middle.second =
                Opposite(FirstAt(middle.first), m_rails.second, m_second, last.second, next.second);
        } else {
            middle.first = Opposite(SecondAt(middle.second), m_rails.first, m_first, last.first, next.first);
        }
        return middle;
    }

    /// Where between two places of a rail it is nearest to p, but at neither of them.
    static double Opposite(const DPOINT& p, const PointList& rail, const std::vector<double>& distances,
                           double from, double to) {
        const double margin = kInnerMargin * (to - from);
        const Place start = PlaceAt(rail, distances, from), end = PlaceAt(rail, distances, to);
        double best = from, least = std::numeric_limits<double>::infinity();
        for (std::size_t i = start.segment; i <= end.segment; ++i) {
            const Place place = NearestOnSegment(i == start.segment ? start.at : rail[i],
                                                 i == end.segment ? end.at : rail[i + 1], p, i);
            if (place.distance >= least) continue;
            least = place.distance;
            best = distances[i] + Length(Minus(place.at, rail[i]));
        }
        return std::clamp(best, from + margin, to - margin);
    }

    Chord Wrapped(const Chord& chord) const {
        return {chord.first > m_first.back() ? chord.first - m_first.back() : chord.first,
                chord.second > m_second.back() ? chord.second - m_second.back() : chord.second};
    }

    const Rails& m_rails;
    std::span<const DPOINT> m_line;
    ColumnKind m_kind;
    std::vector<double> m_first;
    std::vector<double> m_second;
};

/// Puts the places at these growing distances into the rail as points, and returns their indices.
std::vector<int> PutInto(PointList& rail, const std::vector<double>& at) {
    const std::vector<double> distances = Distances(rail);
    PointList dense;
    dense.reserve(rail.size() + at.size());
    std::vector<int> indices;
    std::size_t next = 0;
    for (const double s : at) {
        while (next < rail.size() && distances[next] <= s) dense.push_back(rail[next++]);
        const DPOINT p = PlaceAt(rail, distances, s).at;
        if (dense.empty() || !(dense.back() == p)) dense.push_back(p);
        indices.push_back(static_cast<int>(dense.size()) - 1);
    }
    dense.insert(dense.end(), rail.begin() + static_cast<std::ptrdiff_t>(next), rail.end());
    rail = std::move(dense);
    return indices;
}

}  // namespace

std::vector<Inclination> LayInclinations(Rails& rails, std::span<const DPOINT> line, int step,
                                         ColumnKind kind) {
    if (rails.first.size() < 2 || rails.second.size() < 2 || line.empty()) return {};
    const std::vector<Chord> chords = Layer(rails, line, kind).Lay(std::max(step, 1));
    std::vector<double> first, second;
    for (const Chord& chord : chords) {
        first.push_back(chord.first);
        second.push_back(chord.second);
    }
    const std::vector<int> firstIndices = PutInto(rails.first, first);
    const std::vector<int> secondIndices = PutInto(rails.second, second);
    std::vector<Inclination> inclinations;
    for (std::size_t i = 0; i < chords.size(); ++i) {
        const Inclination next{firstIndices[i], secondIndices[i]};
        // Ends so near each other that they are one point would not advance.
        if (inclinations.empty() ||
            (next.first > inclinations.back().first && next.second > inclinations.back().second))
            inclinations.push_back(next);
    }
    return inclinations;
}

}  // namespace tarvex
