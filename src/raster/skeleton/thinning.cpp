// Thinning in the order of the distance to the ground.
//
// A pixel is simple when taking it away changes neither the pieces nor the holes around it. Taking simple
// pixels away one by one, those nearest to the ground first, wears a shape down evenly from all sides until
// only what connects is left (C. Pudney, "Distance-ordered homotopic thinning", 1998). What must stay for the
// sake of the form, not of the topology, are the pixels of the medial axis (distance_map.h): they are held
// back, so a line ends where the axis ends and not where some order of removal happened to stop.
//
// Between the axis' pieces the thinning itself finds the way, along the ridge of the distances, since
// everything lower is gone by then. What results is a pixel or two wide; a second, short thinning takes the
// axis' own pixels too, except at ends. Then spurs are cut (spurs.h), the lines' pixels are moved to the
// middle where they are not (centring.h), and ends to where the shape says (ends.h). Where two pixels are in
// the middle, the line's course decides (ties.h).
//
// A pixel not simple at its turn may become so when a neighbour goes. It is marked as waiting then, and asked
// again whenever a neighbour of it has gone. So every pixel is asked once and then once for each neighbour
// that goes at most.
//
// The order is that of removal_order.h, and the cost is proportional to the pixels of the shape.
#include "raster/skeleton/thinning.h"

#include <vector>

#include "raster/skeleton/centring.h"
#include "raster/skeleton/ends.h"
#include "raster/skeleton/removal_order.h"
#include "raster/skeleton/spurs.h"
#include "raster/skeleton/ties.h"

namespace tarvex::skeleton {
namespace {

/// Takes pixels away in the order given, and those that waited for them.
template <class MayGo>
class Peeler {
  public:
    Peeler(BitPlane& plane, MayGo mayGo)
        : m_plane(plane), m_waiting(plane.Width(), plane.Height()), m_mayGo(mayGo) {}

    void Peel(const std::vector<Position>& order) {
        for (const Position p : order) {
            if (!m_mayGo(m_plane.Around(p))) {
                m_waiting.Set(p);
                continue;
            }
            m_plane.Clear(p);
            Wake(p);
        }
    }

  private:
    void Wake(Position gone) {
        WakeAround(gone);
        while (!m_awake.empty()) {
            const Position p = m_awake.back();
            m_awake.pop_back();
            if (!m_waiting.Get(p) || !m_mayGo(m_plane.Around(p))) continue;
            m_waiting.Clear(p);
            m_plane.Clear(p);
            WakeAround(p);
        }
    }
    void WakeAround(Position gone) {
        if (const Window waiting = m_waiting.Around(gone) & ~kCentre; waiting != 0)
            ForEachNeighbour(m_plane, gone, waiting, [this](Position p) { m_awake.push_back(p); });
    }

    BitPlane& m_plane;
    BitPlane m_waiting;
    MayGo m_mayGo;
    std::vector<Position> m_awake;
};

/// Whether a pixel is the end of a line one or two pixels wide: it has one neighbour, or two side by side.
bool IsEnd(Window window) {
    const Window neighbours = window & ~kCentre;
    const int count = std::popcount(neighbours);
    if (count < 2) return true;
    if (count > 2) return false;
    for (const Window pair : {0x3U, 0x6U, 0x24U, 0x120U, 0x180U, 0xC0U, 0x48U, 0x9U}) {
        if (neighbours == pair) return true;
    }
    return false;
}

}  // namespace

void Thin(BitPlane& plane, DistanceMap& distances) {
    const BitPlane shape = plane;
    BitPlane middle(plane.Width(), plane.Height());
    MeasureShape(plane, distances, middle);
    Peeler(plane, IsSimple).Peel(RemovalOrder(plane, distances, &middle));
    std::vector<Position> lines = RemovalOrder(plane, distances, nullptr);
    Peeler(plane, [](Window window) { return IsSimple(window) && !IsEnd(window); }).Peel(lines);
    std::erase_if(lines, [&plane](Position p) { return !plane.Get(p); });
    Peeler(plane, IsNeedless).Peel(lines);
    CentreLines(plane, shape, distances, CutSpurs(plane, middle, distances));
    SettleEnds(plane, shape, distances);
    SettleTies(plane, shape, distances);
}

}  // namespace tarvex::skeleton
