// Corner detection by straight arms; corners.h tells the idea.
#include "raster/contours/corners.h"

#include <algorithm>
#include <cmath>

#include "bezier/vector.h"

namespace tarvex::contours {

namespace {

constexpr double armLimit = 16.0;   // longest arm looked at, in pixels
constexpr int armPointLimit = 94;   // the most points of an arm, if one of the picture's pixels is one unit
constexpr double leastTurn = 0.17;  // sine of the least turn worth a look, about 10 degrees

constexpr double leastBarCosine = 0.985;  // of the angle between two edges of a bar: at most about 10 degrees

/// A point with the most turn of all points up to this many on either side may be a corner.
int CornerReach(int size, int unit) { return std::min(3 * unit, size / 6); }

/// The most points of an arm.
int ArmPoints(int size, int unit) { return std::min(armPointLimit * unit, size / 2); }

double Cross(Crossing a, Crossing b) { return a.x * b.y - a.y * b.x; }

/// A straight piece of a chain that begins beside a point: `count` points from `start` on in `step`
/// direction (1 or -1).
struct Arm {
    int start;
    int step;
    int count;
    double length;
};

/// The longest straight piece from `start` on. Directions that pass within `looseness` of every point
/// so far form a cone with its tip in the first point; the piece ends where the cone closes.
Arm LongestArm(const Chain& chain, int start, int step, double looseness, int unit) {
    const Crossing origin = chain[start];
    const double longest = armLimit * unit;
    const int limit = ArmPoints(chain.Size(), unit);
    Crossing low{};
    Crossing high{};
    bool open = true;
    double square = 0;
    int count = 1;
    for (; count < limit; ++count) {
        const Crossing v = Minus(chain[start + count * step], origin);
        const double farther = Dot(v, v);
        if (farther > longest * longest) break;
        if (farther > looseness * looseness) {
            // The two tangents from the origin to the circle of the looseness about the point.
            const double cosine = std::sqrt(farther - looseness * looseness);
            const Crossing left{v.x * cosine - v.y * looseness, v.y * cosine + v.x * looseness};
            const Crossing right{v.x * cosine + v.y * looseness, v.y * cosine - v.x * looseness};
            if (open) {
                low = right;
                high = left;
                open = false;
            } else {
                if (Cross(low, right) > 0) low = right;
                if (Cross(high, left) < 0) high = left;
                if (Cross(low, high) < 0 || Dot(low, v) < 0) break;
            }
        }
        square = farther;
    }
    return {start, step, count, std::sqrt(square)};
}

/// The line that fits an arm best, directed away from where it begins.
Line LineOf(const Chain& chain, const Arm& arm) {
    LineSums sums;
    for (int k = 0; k < arm.count; ++k) sums.Add(chain[arm.start + k * arm.step]);
    return sums.Best(Minus(chain[arm.start + (arm.count - 1) * arm.step], chain[arm.start]));
}

/// 0 where the chain goes straight on, growing with the turn to 1 at a right angle and 2 at a reversal.
double Turn(Crossing a, Crossing b) {
    const double lengths = std::sqrt(Dot(a, a) * Dot(b, b));
    if (lengths == 0) return 0;
    const double sine = std::fabs(Cross(a, b)) / lengths;
    return Dot(a, b) >= 0 ? sine : 2 - sine;
}

}  // namespace

Line LineSums::Best(Crossing along) const {
    const double mx = m_x / m_count;
    const double my = m_y / m_count;
    // The direction is the eigenvector of the larger eigenvalue of the points' scatter; of its two
    // forms the one that does not subtract nearly equal numbers.
    const double xy = m_xy - m_x * my;
    const double half = ((m_xx - m_x * mx) - (m_yy - m_y * my)) / 2;
    const double root = std::sqrt(half * half + xy * xy);
    Crossing direction = half >= 0 ? Crossing{half + root, xy} : Crossing{xy, root - half};
    const double length = std::sqrt(Dot(direction, direction));
    direction = length > 0 ? Crossing{direction.x / length, direction.y / length} : Crossing{1, 0};
    const double sign = Dot(direction, along) < 0 ? -1 : 1;
    return {{m_origin.x + mx, m_origin.y + my}, {sign * direction.x, sign * direction.y}};
}

namespace {

/// Where two arms meet, if that is within `reach` of `point` of the chain; up to twice as far, the
/// place at that distance on the way there; otherwise `point` itself.
Crossing MeetingPoint(const Line& a, const Line& b, Crossing point, double reach) {
    const double across = Cross(a.direction, b.direction);
    if (std::fabs(across) < 0.05) return point;
    const double t = Cross(Minus(b.centre, a.centre), b.direction) / across;
    const Crossing meeting{a.centre.x + t * a.direction.x, a.centre.y + t * a.direction.y};
    const Crossing away = Minus(meeting, point);
    const double distance = std::sqrt(Dot(away, away));
    if (distance <= reach) return meeting;
    if (distance > 2 * reach) return point;
    return {point.x + away.x * reach / distance, point.y + away.y * reach / distance};
}

/// The point of a line at `extent` in a direction that is nearly the line's own, forwards or backwards.
Crossing PointAt(const Line& line, Crossing direction, double extent) {
    const double t = (extent - Dot(line.centre, direction)) / Dot(line.direction, direction);
    return {line.centre.x + t * line.direction.x, line.centre.y + t * line.direction.y};
}

/// Places both corners of a bar's end, if the arms run side by side like a bar's edges.
bool PlaceBluntEnd(const Chain& chain, int unit, Corner& corner) {
    const Line& a = corner.back;
    const Line& b = corner.forward;
    if (Dot(a.direction, b.direction) < leastBarCosine) return false;
    const Crossing sum{-a.direction.x - b.direction.x, -a.direction.y - b.direction.y};
    const double length = std::sqrt(Dot(sum, sum));
    const Crossing outwards{sum.x / length, sum.y / length};
    const int reach = CornerReach(chain.Size(), unit);
    const auto extentOf = [&](int k) { return Dot(chain[corner.index + k], outwards); };
    double extent = extentOf(0);
    for (int k = -reach; k <= reach; ++k) extent = std::max(extent, extentOf(k));
    const double across = extent - bevel * unit;
    corner.end = PointAt(a, outwards, extent);
    corner.begin = PointAt(b, outwards, extent);
    while (corner.capBefore < reach && extentOf(-corner.capBefore - 1) > across) ++corner.capBefore;
    while (corner.capAfter < reach && extentOf(corner.capAfter + 1) > across) ++corner.capAfter;
    return true;
}

}  // namespace

void PlaceTips(const Chain& chain, int unit, Corner& corner) {
    corner.capBefore = corner.capAfter = 0;
    if (PlaceBluntEnd(chain, unit, corner)) return;
    corner.end = corner.begin = MeetingPoint(corner.back, corner.forward, chain[corner.index], unit);
}

void Chain::AssignLoop(std::span<const Crossing> points, int margin) {
    m_loop = true;
    m_size = static_cast<int>(points.size());
    m_margin = margin;
    m_points.resize(points.size() + std::size_t{2} * static_cast<std::size_t>(margin));
    std::copy(points.begin(), points.end(), m_points.begin() + margin);
    for (int k = 0; k < margin; ++k) {
        m_points[static_cast<std::size_t>(margin + m_size + k)] =
            points[static_cast<std::size_t>(k % m_size)];
        m_points[static_cast<std::size_t>(margin - 1 - k)] =
            points[static_cast<std::size_t>(m_size - 1 - k % m_size)];
    }
}

void Chain::AssignOpen(std::span<const Crossing> points, int margin) {
    m_loop = false;
    m_size = static_cast<int>(points.size());
    m_margin = margin;
    m_points.resize(points.size() + std::size_t{2} * static_cast<std::size_t>(margin));
    std::copy(points.begin(), points.end(), m_points.begin() + margin);
    const auto at = [this](int i) -> Crossing& { return m_points[static_cast<std::size_t>(i + m_margin)]; };
    const int last = m_size - 1;
    for (int k = 1; k <= margin; ++k) {
        const int inside = std::min(k, last);
        at(-k) = Minus(Times(at(0), 2), at(inside));
        at(last + k) = Minus(Times(at(last), 2), at(last - inside));
    }
}

int CornerFinder::MarginFor(int size, int unit) { return unit + ArmPoints(size, unit); }

bool CornerFinder::TryArms(const Chain& chain, int i, const ArmTest& test, int unit) {
    const Arm backArm = LongestArm(chain, i - unit, -1, test.looseness, unit);
    if (backArm.length / 4 <= test.bulge) return false;
    const Arm forwardArm = LongestArm(chain, i + unit, 1, test.looseness, unit);
    const double quarter = std::min(backArm.length, forwardArm.length) / 4;
    if (quarter <= test.bulge) return false;
    const Line back = LineOf(chain, backArm);
    const Line forward = LineOf(chain, forwardArm);
    // Both directions point away from the corner: straight on is a cosine of -1.
    const double halfTurn = std::sqrt(std::max(0.0, (1 + Dot(back.direction, forward.direction)) / 2));
    if (quarter * halfTurn <= test.bulge) return false;
    Corner corner{i, {}, {}, 0, 0, back, forward};
    PlaceTips(chain, unit, corner);
    m_corners.push_back(corner);
    return true;
}

const std::vector<Corner>& CornerFinder::Find(const Chain& chain, const Tuning& tuning) {
    const int n = chain.Size();
    m_corners.clear();
    const int reach = CornerReach(n, tuning.unit);
    if (reach < 2) return m_corners;
    m_turn.resize(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        m_turn[static_cast<std::size_t>(i)] =
            Turn(Minus(chain[i], chain[i - reach]), Minus(chain[i + reach], chain[i]));
    const auto turn = [&](int i) {
        if (!chain.IsLoop() && (i < 0 || i >= n)) return 0.0;
        return m_turn[static_cast<std::size_t>(i < 0 ? i + n : i >= n ? i - n : i)];
    };
    for (int i = 0; i < n; ++i) {
        const double here = turn(i);
        if (here < leastTurn) continue;
        bool most = true;
        for (int k = 1; k <= reach && most; ++k) most = turn(i - k) < here && turn(i + k) <= here;
        if (!most) continue;
        if (!TryArms(chain, i, tuning.clean, tuning.unit)) TryArms(chain, i, tuning.rough, tuning.unit);
    }
    return m_corners;
}

}  // namespace tarvex::contours
