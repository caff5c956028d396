// The skeleton of a corner cuts it short, and one of a corner in which a third line ends has its junction
// well inside the corner, between the third line and the side nearer to it. So near the junction its lines
// bend for several widths and do not point to where the strokes meet. Beyond the bend they do: the meeting
// point is the one nearest to all of them, by least squares.
#include "raster/centerline/meeting.h"

#include <algorithm>
#include <cmath>

namespace tarvex::centerline {
namespace {

constexpr double kStraight = 0.02;   // radians between the first half of a piece of line and all of it
constexpr double kLeastHalf = 8;     // pixels that the half is long, or
constexpr double kHalf = 4;          // half widths
constexpr double kMostBend = 16;     // half widths over which a line may bend
constexpr double kMostPart = 0.45;   // of the line's length
constexpr double kMostMissed = 0.5;  // of the half width, by which a line misses the meeting point

/// An arm cut where its line begins to be straight; none when it does nowhere or too late.
std::optional<Arm> PastBend(const ArmGraph& graph, Arm arm) {
    const double length = graph.LengthOf(arm.line);
    const double half = std::max(kLeastHalf, kHalf * arm.radius);
    const double most = std::min({arm.cut + kMostBend * arm.radius, kMostPart * length, length - 2 * half});
    for (; arm.cut <= most; arm.cut += 1) {
        arm.at = graph.PointAt(arm, arm.cut);
        const DPOINT middle = graph.PointAt(arm, arm.cut + half);
        const DPOINT whole = Minus(graph.PointAt(arm, arm.cut + 2 * half), arm.at);
        if (!(Length(whole) > half) || AngleBetween(Minus(middle, arm.at), whole) > kStraight) continue;
        arm.towards = Times(whole, 1 / Length(whole));
        return arm;
    }
    return std::nullopt;
}

/// The point with the least sum of squared distances from the arms' lines; none when they are parallel.
std::optional<DPOINT> NearestToAll(const std::vector<Arm>& arms) {
    double xx = 0, xy = 0, yy = 0, x = 0, y = 0;
    for (const Arm& arm : arms) {
        const DPOINT normal{-arm.towards.y, arm.towards.x};
        const double offset = Dot(normal, arm.at);
        xx += normal.x * normal.x;
        xy += normal.x * normal.y;
        yy += normal.y * normal.y;
        x += normal.x * offset;
        y += normal.y * offset;
    }
    const double determinant = xx * yy - xy * xy;
    constexpr double leastDeterminant = 0.02;
    if (!(determinant > leastDeterminant)) return std::nullopt;
    return DPOINT{(x * yy - y * xy) / determinant, (y * xx - x * xy) / determinant};
}

bool RunsInto(const Arm& arm, DPOINT p) {
    const DPOINT to = Minus(p, arm.at);
    const double missed = std::fabs(to.x * arm.towards.y - to.y * arm.towards.x);
    return Dot(to, arm.towards) < 0 && missed <= std::max(1.0, kMostMissed * arm.radius);
}

}  // namespace

std::optional<Meeting> FindMeeting(const ArmGraph& graph, const std::vector<Arm>& ends) {
    std::vector<Arm> arms;
    for (const Arm& end : ends) {
        const auto arm = PastBend(graph, end);
        if (!arm) return std::nullopt;
        arms.push_back(*arm);
    }
    const auto at = NearestToAll(arms);
    if (!at) return std::nullopt;
    if (!std::all_of(arms.begin(), arms.end(), [&](const Arm& arm) { return RunsInto(arm, *at); }))
        return std::nullopt;
    Meeting meeting{arms, *at, {}, 4};
    for (std::size_t i = 0; i < arms.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            const double turn = AngleBetween(Times(arms[i].towards, -1), arms[j].towards);
            if (turn >= meeting.turn) continue;
            meeting.turn = turn;
            meeting.sides = {arms[i], arms[j]};
        }
    }
    return meeting;
}

}  // namespace tarvex::centerline
