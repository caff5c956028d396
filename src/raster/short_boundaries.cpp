// A walk that starts somewhere on a boundary sees the stretch of it up to the next time it comes to the
// same pixel (see follower.h: the boundary is a cycle of states, of which at most four share a pixel). So
// going once around the cycle and noting when each possible start is met tells the length of all the walks
// that could start on it. That is done for a boundary at most once: afterwards a walk that starts on
// it is either known to be too short or long enough to be traced. Walks of a few pixels are not worth it;
// walking them again costs no more than looking at their seeds.
#include "raster/short_boundaries.h"

#include <algorithm>
#include <vector>

namespace tarvex {
namespace {

constexpr std::size_t kWorthLearning = 64;

/// The walk coming to a pixel on which a walk may start.
struct Visit {
    std::uint64_t pixel;
    std::uint64_t when;  ///< steps since going around began
    bool asStart;        ///< seen as a walk starting there sees it: the west side passed over
};

/// Whether a walk that came by `lastDir` and leaves by `dir` passes the west side on the way around.
bool PassesWest(int lastDir, int dir) {
    const int from = FirstDirection(lastDir) + 1;
    return ((from - kWest) & 7) < ((from - dir) & 7);
}

}  // namespace

void ShortBoundaries::Learn(PixelPosition start, const WalkSteps& steps) {
    if (steps.size() <= kWorthLearning) return;
    std::vector<Visit> visits;
    std::uint64_t length = 0;
    const PixelPosition first = Stepped(start, steps.front());
    const int firstDir = steps.front();
    PixelPosition at = first;
    int lastDir = firstDir;
    do {
        const NeighbourMask neighbours = m_raster.Neighbours(at.x, at.y);
        const int dir = NextDirection(lastDir, neighbours);
        if (at.y % m_seedStep == 0 && (neighbours >> kWest & 1) == 0)
            visits.push_back({Key(at), length, PassesWest(lastDir, dir)});
        at = Stepped(at, dir);
        lastDir = dir;
        ++length;
    } while (at != first || lastDir != firstDir);

    std::sort(visits.begin(), visits.end(), [](const Visit& a, const Visit& b) {
        return a.pixel != b.pixel ? a.pixel < b.pixel : a.when < b.when;
    });
    for (std::size_t i = 0, end = 0; i < visits.size(); i = end) {
        while (end < visits.size() && visits[end].pixel == visits[i].pixel) ++end;
        for (std::size_t k = i; k < end; ++k) {
            if (!visits[k].asStart) continue;
            const std::uint64_t next = k + 1 < end ? visits[k + 1].when : visits[i].when + length;
            if (static_cast<std::int64_t>(next - visits[k].when) <= m_minPoints)
                m_known.insert(visits[k].pixel);
        }
    }
}

}  // namespace tarvex
