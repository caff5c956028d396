// Spurs.
//
// A branch runs from an end to the first pixel with three or more neighbours. It is a spur when it is
// shorter than the half width of the shape where it starts: then it does not even reach the edge of the line
// it leaves. And it is one when the shape around it sticks out of the largest disc at its start by less than
// half that disc's radius and a bit: a bump, a corner, a serif.
//
// All spurs there are go at once, so the two that run into the corners of a stroke's blunt end go both and
// the stroke ends in its middle; of two cut one after the other the second would be taken for the stroke's
// continuation. Where that joins lines or leaves new ends, those are judged in the next round, until a
// round finds none.
//
// Lengths that a skeleton can still have (`kLeastLength`) are above all that can be asked of a line whose
// half width is that of a single pixel, so cutting what has been cut finds nothing more.
#include "raster/skeleton/spurs.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace tarvex::skeleton {
namespace {

constexpr double kDiagonal = 1.4142135623730951;
constexpr double kPart = 0.5;         // of the half width that a branch must stick out by
constexpr double kBit = 0.6;          // and this much more, in pixels: stairs are a pixel high
constexpr double kLeastLength = 1.8;  // at least kDiagonal - 1 + kPart * kDiagonal + kBit

constexpr std::size_t kGap = 3;
constexpr double kPieceFactor = 2;
constexpr double kPieceBit = 2;

constexpr std::size_t kRun = 3;
constexpr double kSteep = 0.6;

class SpurCutter {
  public:
    SpurCutter(BitPlane& plane, const BitPlane& middle, const DistanceMap& distances)
        : m_plane(plane), m_middle(middle), m_distances(distances), m_walked(plane.Width(), plane.Height()) {}

    std::vector<Position> Cut() {
        std::vector<Position> ends;
        m_plane.ForEachSet([&](Position p) {
            if (IsEnd(p)) ends.push_back(p);
        });
        while (!ends.empty()) {
            CutSpursFrom(ends);
            ends = EndsOfChanged();
        }
        return std::move(m_allChanged);
    }

  private:
    std::uint32_t Square(Position p) const { return m_distances.At(p); }
    double Radius(Position p) const { return std::sqrt(static_cast<double>(Square(p))); }

    bool IsEnd(Position p) const { return NeighbourCount(m_plane.Around(p)) == 1; }

    /// Appends the pixels that are to go to `m_spurs`, from the end on: all up to the junction of a branch
    /// that is a spur, else what lies before the first piece that is a line's own.
    void AddSpur(Position end) {
        m_path.clear();
        double length = 0;
        Position former = end;
        Position p = end;
        int count = 1;
        while (count == 1 ? p == end : count == 2) {
            m_path.push_back(p);
            const Position next = Onwards(m_plane, p, former);
            length += IsDiagonal(p, next) ? kDiagonal : 1;
            former = p;
            p = next;
            count = NeighbourCount(m_plane.Around(p));
        }
        const bool isBranch = count > 2;
        std::size_t going = CountSteep(CountForeign(isBranch));
        if (isBranch && IsTooShort(length, Radius(end), RadiusAround(p))) going = m_path.size();
        m_spurs.insert(m_spurs.end(), m_path.begin(), m_path.begin() + static_cast<std::ptrdiff_t>(going));
    }

    /// How many of the path's pixels lie before the first piece of the middle that is long enough for its
    /// width. A line keeps its widest place.
    std::size_t CountForeign(bool isBranch) const {
        std::size_t from = 0;
        for (;;) {
            std::size_t i = from;
            std::size_t pieceEnd = from;
            std::uint32_t square = 0;
            for (; i < m_path.size() && i - pieceEnd < kGap; ++i) {
                if (!m_middle.Get(m_path[i])) continue;
                square = std::max(square, Square(m_path[i]));
                pieceEnd = i + 1;
            }
            if (i - pieceEnd < kGap) return from;  // no gap up to the junction
            const double radius = std::sqrt(static_cast<double>(square));
            if (static_cast<double>(pieceEnd - from) > kPieceFactor * radius + kPieceBit) return from;
            while (i < m_path.size() && !m_middle.Get(m_path[i])) ++i;
            if (i == m_path.size()) return isBranch ? i : std::max(from, WidestOf(from));
            from = i;
        }
    }

    /// The first pixel from `from` on from which the shape does not widen as it does towards a blunt end.
    std::size_t CountSteep(std::size_t from) const {
        while (from + kRun < m_path.size()) {
            const Position p = m_path[from];
            const Position q = m_path[from + kRun];
            const auto [px, py] = m_plane.Where(p);
            const auto [qx, qy] = m_plane.Where(q);
            if (Radius(q) - Radius(p) < kSteep * std::hypot(px - qx, py - qy)) break;
            ++from;
        }
        return from;
    }

    std::size_t WidestOf(std::size_t from) const {
        const auto widest =
            std::max_element(m_path.begin() + static_cast<std::ptrdiff_t>(from), m_path.end(),
                             [this](Position a, Position b) { return Square(a) < Square(b); });
        return static_cast<std::size_t>(widest - m_path.begin());
    }

    static bool IsTooShort(double length, double endRadius, double radius) {
        return length < kLeastLength || length < radius ||
               length + endRadius - radius < kPart * radius + kBit;
    }

    double RadiusAround(Position p) const {
        double radius = Radius(p);
        ForEachNeighbour(m_plane, p, m_plane.Around(p),
                         [&](Position q) { radius = std::max(radius, Radius(q)); });
        return radius;
    }

    bool IsDiagonal(Position a, Position b) const {
        const Position apart = a > b ? a - b : b - a;
        return apart != 1 && apart != m_plane.Down();
    }

    void CutSpursFrom(const std::vector<Position>& ends) {
        m_spurs.clear();
        for (const Position end : ends) AddSpur(end);
        for (const Position p : m_spurs) {
            if (IsSimple(m_plane.Around(p))) Take(p);
        }
        TakeDoubtful();
    }

    void Take(Position p) {
        m_plane.Clear(p);
        ForEachNeighbour(m_plane, p, m_plane.Around(p), [this](Position q) {
            m_doubtful.push_back(q);
            m_changed.push_back(q);
        });
    }

    /// Takes what has become needless.
    void TakeDoubtful() {
        while (!m_doubtful.empty()) {
            const Position p = m_doubtful.back();
            m_doubtful.pop_back();
            if (m_plane.Get(p) && IsNeedless(m_plane.Around(p))) Take(p);
        }
    }

    /// The ends of the lines on which something has gone.
    std::vector<Position> EndsOfChanged() {
        std::vector<Position> ends;
        std::vector<Position> walked;
        for (const Position p : m_changed) {
            if (!m_plane.Get(p) || m_walked.Get(p)) continue;
            const Window window = m_plane.Around(p);
            const int count = NeighbourCount(window);
            if (count == 0 || count > 2) continue;
            m_walked.Set(p);
            walked.push_back(p);
            if (count == 1) ends.push_back(p);
            ForEachNeighbour(m_plane, p, window, [&](Position q) { WalkToEnd(p, q, walked, ends); });
        }
        m_allChanged.insert(m_allChanged.end(), m_changed.begin(), m_changed.end());
        m_changed.clear();
        for (const Position p : walked) m_walked.Clear(p);
        return ends;
    }

    void WalkToEnd(Position former, Position p, std::vector<Position>& walked, std::vector<Position>& ends) {
        for (;;) {
            const int count = NeighbourCount(m_plane.Around(p));
            if (count > 2 || m_walked.Get(p)) return;
            m_walked.Set(p);
            walked.push_back(p);
            if (count == 1) {
                ends.push_back(p);
                return;
            }
            former = std::exchange(p, Onwards(m_plane, p, former));
        }
    }

    BitPlane& m_plane;
    const BitPlane& m_middle;
    const DistanceMap& m_distances;
    BitPlane m_walked;  // in this round
    std::vector<Position> m_path;
    std::vector<Position> m_spurs;
    std::vector<Position> m_doubtful;
    std::vector<Position> m_changed;  // in this round
    std::vector<Position> m_allChanged;
};

}  // namespace

std::vector<Position> CutSpurs(BitPlane& plane, const BitPlane& middle, const DistanceMap& distances) {
    return SpurCutter(plane, middle, distances).Cut();
}

}  // namespace tarvex::skeleton
