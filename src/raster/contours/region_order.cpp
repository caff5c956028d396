// Which region is painted before which.
//
// A region's size is what its outer loop surrounds, holes included, so what is in a hole is smaller than
// what surrounds it. Of two regions that touch, the larger one is painted first. A region whose holes are
// painted over must also come before everything in them, whether it touches it or not: so each region
// comes after the one in whose hole it is. That one is found from the border on the left of the region's
// first pixel: the neighbour there either has it in a hole, if the border is part of one, or lies in the same
// hole itself, and was found out about before.
//
// Among regions that may be painted next, those of the label at hand go first, so that one label's regions
// come together in few batches.
#include "raster/contours/region_order.h"

#include <algorithm>
#include <queue>

namespace tarvex::contours {

namespace {

/// Loops, and for each side the one that it is part of.
class LoopFinder {
  public:
    LoopFinder(const RegionMap& map, const Borders& borders)
        : m_map(map), m_borders(borders), m_loopOf(borders.all.size() * 2, none) {}

    Regions Find() {
        FindAll();
        ArrangeByRegion();
        FindParents();
        MarkGround();
        return std::move(m_found);
    }

  private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void FindAll() {
        for (Side first = 0; first < static_cast<Side>(m_borders.all.size() * 2); ++first) {
            const RegionId region = m_borders.RightOf(first);
            if (region == ground || m_loopOf[static_cast<std::size_t>(first)] != none) continue;
            Loop loop{region, 0, m_found.sides.size(), 0};
            Side side = first;
            do {
                const std::int64_t area = m_borders.all[BorderOf(side)].area;
                loop.area += IsBackwards(side) ? -area : area;
                m_loopOf[static_cast<std::size_t>(side)] = m_found.loops.size();
                m_found.sides.push_back(side);
                side = NextSide(m_map, m_borders, side);
            } while (side != first);
            loop.sideCount = m_found.sides.size() - loop.firstSide;
            m_found.loops.push_back(loop);
        }
    }

    void ArrangeByRegion() {
        const auto regions = static_cast<std::size_t>(m_map.Count()) + 1;
        std::vector<std::size_t> place(m_found.loops.size());
        m_found.firstLoop.assign(regions + 1, 0);
        for (const Loop& loop : m_found.loops) ++m_found.firstLoop[static_cast<std::size_t>(loop.region) + 1];
        for (std::size_t i = 1; i <= regions; ++i) m_found.firstLoop[i] += m_found.firstLoop[i - 1];
        std::vector<std::size_t> next(m_found.firstLoop);
        std::vector<Loop> arranged(m_found.loops.size());
        m_found.size.assign(regions, 0);
        for (std::size_t i = 0; i < m_found.loops.size(); ++i) {
            const Loop& loop = m_found.loops[i];
            place[i] = next[static_cast<std::size_t>(loop.region)]++;
            arranged[place[i]] = loop;
            std::int64_t& size = m_found.size[static_cast<std::size_t>(loop.region)];
            size = std::max(size, loop.area);
        }
        m_found.loops = std::move(arranged);
        for (std::size_t& loop : m_loopOf) {
            if (loop != none) loop = place[loop];
        }
    }

    void FindParents() {
        m_parentLoop.assign(static_cast<std::size_t>(m_map.Count()) + 1, none);
        m_found.parent.assign(m_parentLoop.size(), ground);
        for (RegionId region = 1; region <= m_map.Count(); ++region) {
            const Side before = m_borders.beforeFirst[static_cast<std::size_t>(region)];
            const RegionId neighbour = m_borders.RightOf(before);
            if (neighbour == ground) continue;
            const std::size_t loop = m_loopOf[static_cast<std::size_t>(before)];
            const std::size_t around =
                m_found.loops[loop].area < 0 ? loop : m_parentLoop[static_cast<std::size_t>(neighbour)];
            m_parentLoop[static_cast<std::size_t>(region)] = around;
            if (around != none)
                m_found.parent[static_cast<std::size_t>(region)] = m_found.loops[around].region;
        }
    }

    /// Marks the loops that ground is seen from, and all holes around them.
    void MarkGround() {
        for (std::size_t i = 0; i < m_borders.all.size(); ++i) {
            for (const Side side : {static_cast<Side>(2 * i), static_cast<Side>(2 * i + 1)}) {
                if (m_borders.RightOf(side) == ground || m_borders.LeftOf(side) != ground) continue;
                std::size_t loop = m_loopOf[static_cast<std::size_t>(side)];
                while (loop != none && !m_found.loops[loop].showsGround) {
                    m_found.loops[loop].showsGround = true;
                    loop = m_parentLoop[static_cast<std::size_t>(m_found.loops[loop].region)];
                }
            }
        }
    }

    const RegionMap& m_map;
    const Borders& m_borders;
    std::vector<std::size_t> m_loopOf;
    std::vector<std::size_t> m_parentLoop;
    Regions m_found;
};

/// "Must come before" between regions, as lists.
class Precedence {
  public:
    explicit Precedence(RegionId count)
        : m_after(static_cast<std::size_t>(count) + 1), m_waitsFor(m_after.size()) {}

    void Add(RegionId first, RegionId then) {
        m_after[static_cast<std::size_t>(first)].push_back(then);
        ++m_waitsFor[static_cast<std::size_t>(then)];
    }
    bool IsReady(RegionId region) const { return m_waitsFor[static_cast<std::size_t>(region)] == 0; }
    /// Calls `visit` for every region that is ready now that `region` is painted.
    template <class Visit>
    void Painted(RegionId region, Visit visit) {
        for (const RegionId next : m_after[static_cast<std::size_t>(region)]) {
            if (--m_waitsFor[static_cast<std::size_t>(next)] == 0) visit(next);
        }
    }

  private:
    std::vector<std::vector<RegionId>> m_after;
    std::vector<std::int32_t> m_waitsFor;
};

}  // namespace

Regions FindLoops(const RegionMap& map, const Borders& borders) { return LoopFinder(map, borders).Find(); }

std::vector<std::vector<RegionId>> PaintingOrder(const RegionMap& map, const Borders& borders,
                                                 const Regions& regions) {
    Precedence precedence(map.Count());
    for (const Border& border : borders.all) {
        if (border.left == ground || border.right == ground) continue;
        if (regions.IsBefore(border.left, border.right)) {
            precedence.Add(border.left, border.right);
        } else {
            precedence.Add(border.right, border.left);
        }
    }
    for (RegionId region = 1; region <= map.Count(); ++region) {
        const RegionId parent = regions.parent[static_cast<std::size_t>(region)];
        if (parent != ground) precedence.Add(parent, region);
    }
    // Of what is ready, the largest of all and those of each label.
    const auto smaller = [&](RegionId a, RegionId b) { return regions.IsBefore(b, a); };
    std::priority_queue<RegionId, std::vector<RegionId>, decltype(smaller)> ready(smaller);
    std::vector<std::vector<RegionId>> ofLabel(std::size_t{NO_LABEL} + 1);
    std::vector<bool> isPainted(static_cast<std::size_t>(map.Count()) + 1);
    const auto add = [&](RegionId region) {
        ready.push(region);
        ofLabel[map.LabelOf(region)].push_back(region);
    };
    for (RegionId region = 1; region <= map.Count(); ++region) {
        if (precedence.IsReady(region)) add(region);
    }
    std::vector<std::vector<RegionId>> batches;
    while (!ready.empty()) {
        const RegionId largest = ready.top();
        ready.pop();
        if (isPainted[static_cast<std::size_t>(largest)]) continue;
        std::vector<RegionId> batch;
        std::vector<RegionId>& waiting = ofLabel[map.LabelOf(largest)];
        while (!waiting.empty()) {
            const RegionId region = waiting.back();
            waiting.pop_back();
            isPainted[static_cast<std::size_t>(region)] = true;
            batch.push_back(region);
            precedence.Painted(region, add);
        }
        batches.push_back(std::move(batch));
    }
    return batches;
}

}  // namespace tarvex::contours
