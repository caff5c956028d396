// The underlay: one shape, painted before everything else, that no background can be seen through.
//
// Layers run on beneath those that come later, but not where that would show: beyond a thin region, or at
// the ground, where a junction leaves them a wedge. There a pixel is covered by two layers in part and by
// none as a whole, and a renderer that smooths edges lets some of the background through both. The underlay
// covers whole pixels, those that have nothing but regions around them, so that what comes through
// is paint; and since it keeps a pixel away from the ground it does not show beside the curves there.
//
// Its outline runs along pixels. That would take a corner for each step, so edges reach from corner to corner
// of the stairs as far as they can without cutting a pixel off or running farther than `slack` from the
// stairs: the greedy choice of the next corner, the longest edge first that will do.
#include "raster/contours/underlay.h"

#include <algorithm>
#include <optional>

#include "bezier/vector.h"

namespace tarvex::contours {

namespace {

constexpr double slack = 0.5;
constexpr std::size_t mostSpanned = 200;  // corners of stairs that an edge may pass; bounds the search

constexpr RegionId several = -1;

/// The part of the picture that hangs together around each region, and which region of it reaches the ground.
class Parts {
  public:
    Parts(const RegionMap& map, const Borders& borders)
        : m_outermost(SizeFor(map), ground), m_next(SizeFor(map)) {
        for (std::size_t i = 0; i < m_next.size(); ++i) m_next[i] = static_cast<RegionId>(i);
        for (const Border& border : borders.all) {
            if (border.left != ground && border.right != ground) Join(border.left, border.right);
        }
        for (const Border& border : borders.all) {
            if (border.left == ground) Note(border.right);
            if (border.right == ground) Note(border.left);
        }
    }

    /// Whether more than one region of the part that this one belongs to reaches the ground.
    bool HasSeveralOutermost(RegionId region) { return Outermost(region) == several; }

  private:
    static std::size_t SizeFor(const RegionMap& map) { return static_cast<std::size_t>(map.Count()) + 1; }

    RegionId Find(RegionId region) {
        while (Next(region) != region) region = Next(region) = Next(Next(region));
        return region;
    }
    void Join(RegionId a, RegionId b) { Next(Find(a)) = Find(b); }
    void Note(RegionId region) {
        RegionId& outermost = Outermost(region);
        outermost = outermost == ground || outermost == region ? region : several;
    }
    RegionId& Next(RegionId region) { return m_next[static_cast<std::size_t>(region)]; }
    RegionId& Outermost(RegionId region) { return m_outermost[static_cast<std::size_t>(Find(region))]; }

    std::vector<RegionId> m_outermost;
    std::vector<RegionId> m_next;
};

/// Marks the pixels to be covered with label 0.
std::vector<std::uint16_t> CoveredPixels(const RegionMap& map, const Borders& borders) {
    Parts parts(map, borders);
    const int width = map.Width();
    const int height = map.Height();
    std::vector<bool> isNeeded(static_cast<std::size_t>(map.Count()) + 1);
    for (RegionId region = 1; region <= map.Count(); ++region)
        isNeeded[static_cast<std::size_t>(region)] = parts.HasSeveralOutermost(region);
    if (std::find(isNeeded.begin(), isNeeded.end(), true) == isNeeded.end()) return {};
    std::vector<std::uint16_t> covered;
    covered.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        const int above = std::max(y - 1, 0);
        const int below = std::min(y + 1, height - 1);
        const auto isFull = [&](int x) {
            return map.At(x, above) != ground && map.At(x, y) != ground && map.At(x, below) != ground;
        };
        bool before = isFull(0);
        bool here = before;
        for (int x = 0; x < width; ++x) {
            const bool behind = x + 1 < width ? isFull(x + 1) : here;
            const bool isCovered =
                before && here && behind && isNeeded[static_cast<std::size_t>(map.At(x, y))];
            covered.push_back(isCovered ? 0 : NO_LABEL);
            before = here;
            here = behind;
        }
    }
    return covered;
}

/// The corners of the stairs around a loop.
std::vector<Crossing> CornersOf(const Borders& borders, const Regions& regions, const Loop& loop) {
    std::vector<Crossing> corners;
    std::optional<int> last;
    int first = 0;
    for (std::size_t i = 0; i < loop.sideCount; ++i) {
        const Side side = regions.sides[loop.firstSide + i];
        const Border& border = borders.all[BorderOf(side)];
        const auto steps = borders.StepsOf(BorderOf(side));
        int x = IsBackwards(side) ? border.endX : border.startX;
        int y = IsBackwards(side) ? border.endY : border.startY;
        for (std::size_t k = 0; k < steps.size(); ++k) {
            const int heading = IsBackwards(side) ? (steps[steps.size() - 1 - k] + 2) & 3 : steps[k];
            if (!last) first = heading;
            if (last && *last != heading) corners.push_back({static_cast<double>(x), static_cast<double>(y)});
            last = heading;
            x += StepX(heading);
            y += StepY(heading);
        }
        if (i + 1 == loop.sideCount && *last != first)
            corners.push_back({static_cast<double>(x), static_cast<double>(y)});
    }
    return corners;
}

/// Positive on the right, as seen along the edge.
double SideOf(Crossing from, Crossing to, Crossing p) {
    return (to.x - from.x) * (p.y - from.y) - (to.y - from.y) * (p.x - from.x);
}

/// Fewer corners, around all that was inside and hardly more.
std::vector<Crossing> Simplified(const std::vector<Crossing>& corners) {
    const std::size_t count = corners.size();
    const auto at = [&](std::size_t i) { return corners[i % count]; };
    const auto reaches = [&](std::size_t from, std::size_t to) {
        const double most = slack * Distance(at(from), at(to));
        if (most == 0) return false;  // once around
        for (std::size_t k = from + 1; k < to; ++k) {
            const double side = SideOf(at(from), at(to), at(k));
            if (side < 0 || side > most || Dot(Minus(at(k), at(from)), Minus(at(to), at(from))) < 0 ||
                Dot(Minus(at(k), at(to)), Minus(at(from), at(to))) < 0)
                return false;
        }
        return true;
    };
    // From a corner that must stay: one that juts out, if there is one.
    std::size_t start = 0;
    while (start + 1 < count && SideOf(at(start + count - 1), at(start), at(start + 1)) <= 0) ++start;
    std::vector<Crossing> kept;
    for (std::size_t from = start; from < start + count;) {
        kept.push_back(at(from));
        const std::size_t farthest = std::min(start + count, from + mostSpanned);
        std::size_t to = from + 1;
        // What is out of reach may be in reach again one stair later.
        for (std::size_t next = to + 1, missed = 0; next <= farthest && missed < 3; ++next) {
            if (reaches(from, next)) {
                to = next;
                missed = 0;
            } else {
                ++missed;
            }
        }
        from = to;
    }
    return kept;
}

}  // namespace

std::vector<std::vector<Crossing>> FindUnderlay(const RegionMap& map, const Borders& borders) {
    const std::vector<std::uint16_t> pixels = CoveredPixels(map, borders);
    if (pixels.empty()) return {};
    const RegionMap covered({pixels.data(), map.Width(), map.Height(), map.Width()});
    const Borders around = FindBorders(covered);
    const Regions regions = FindLoops(covered, around);
    std::vector<std::vector<Crossing>> polygons;
    for (const Loop& loop : regions.loops) polygons.push_back(Simplified(CornersOf(around, regions, loop)));
    return polygons;
}

}  // namespace tarvex::contours
