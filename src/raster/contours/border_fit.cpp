// Where borders run between their pixels, and the curves along them.
//
// A border has one point on each side that it follows. Without a source that is the side's middle. With one,
// the source's colours on either side are compared with the two labels' own: a pixel's share of the other
// label is where its colour falls on the way from one label's colour to the other's, and the point lies where
// the share, interpolated between the two pixels' centres, is one half. A junction moves by as much as the
// borders that meet there move beside it, so that they arrive without a kink; on the picture's edge it
// stays on the edge.
//
// A region hardly wider than what a curve may be off can be left without area: both its sides become one
// line. Then its longest border is given back its points.
#include "raster/contours/border_fit.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "raster/contours/outline_fitter.h"

namespace tarvex::contours {

namespace {

constexpr double nearestCentre = 0.05;  // how near to a pixel's centre a point may lie
constexpr double softShift = 0.06;      // points farther than this from the middle speak of a soft edge

class Placer {
  public:
    Placer(const RegionMap& map, const RegionOptions& options) : m_map(map), m_options(options) {}

    /// How far the point on the side that leaves corner (x, y) lies from the middle, across the side: to the
    /// right or downwards.
    double Shift(int x, int y, int heading) const {
        const bool upright = heading == south || heading == north;
        if (heading == west) --x;
        if (heading == north) --y;
        // The pixels before and behind the side.
        const int beforeX = upright ? x - 1 : x;
        const int beforeY = upright ? y : y - 1;
        const RegionId before = m_map.At(beforeX, beforeY);
        const RegionId behind = m_map.At(x, y);
        if (before == ground || behind == ground)
            return ShiftAtGround(beforeX, beforeY, before == ground, x, y);
        if (m_options.source.empty()) return 0;
        const RGBQUAD& from = m_options.colors[m_map.LabelOf(before)];
        const RGBQUAD& to = m_options.colors[m_map.LabelOf(behind)];
        const double a = ShareOf(SourceAt(beforeX, beforeY), from, to);
        const double b = ShareOf(SourceAt(x, y), from, to);
        return HalfWay(a, b);
    }

  private:
    /// Where, between two pixels' centres, a share that goes from a to b is one half; from the middle.
    static double HalfWay(double a, double b) {
        if (!(b - a > 0.1)) return 0;
        return std::clamp((0.5 - a) / (b - a), nearestCentre, 1 - nearestCentre) - 0.5;
    }

    /// The same between a region and the ground, by how opaque the two pixels are.
    double ShiftAtGround(int beforeX, int beforeY, bool groundIsBefore, int x, int y) const {
        if (m_options.opacity.empty() || beforeX < 0 || beforeY < 0 || x == m_map.Width() ||
            y == m_map.Height())
            return 0;
        const double before = m_options.opacity[Index(beforeX, beforeY)] / 255.0;
        const double behind = m_options.opacity[Index(x, y)] / 255.0;
        return groundIsBefore ? HalfWay(before, behind) : HalfWay(1 - before, 1 - behind);
    }

    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_map.Width()) +
               static_cast<std::size_t>(x);
    }
    const RGBQUAD& SourceAt(int x, int y) const { return m_options.source[Index(x, y)]; }

    /// 0 at `from` and 1 at `to`.
    static double ShareOf(const RGBQUAD& c, const RGBQUAD& from, const RGBQUAD& to) {
        const int red = to.rgbRed - from.rgbRed;
        const int green = to.rgbGreen - from.rgbGreen;
        const int blue = to.rgbBlue - from.rgbBlue;
        const int all = red * red + green * green + blue * blue;
        if (all == 0) return 0;
        const int part = red * (c.rgbRed - from.rgbRed) + green * (c.rgbGreen - from.rgbGreen) +
                         blue * (c.rgbBlue - from.rgbBlue);
        return static_cast<double>(part) / all;
    }

    const RegionMap& m_map;
    const RegionOptions& m_options;
};

class BorderPoints {
  public:
    BorderPoints(const RegionMap& map, const Placer& placer) : m_map(map), m_placer(placer) {}

    /// The points of a border: of a loop one for each side, of others its ends too.
    const std::vector<Crossing>& Of(const Borders& borders, std::size_t index) {
        const Border& border = borders.all[index];
        m_points.clear();
        int x = border.startX;
        int y = border.startY;
        if (!border.isLoop) m_points.push_back(Junction(x, y));
        for (const std::uint8_t heading : borders.StepsOf(index)) {
            const double shift = border.isFrame ? 0 : m_placer.Shift(x, y, heading);
            const bool upright = heading == south || heading == north;
            m_points.push_back({x + 0.5 * StepX(heading) + (upright ? shift : 0),
                                y + 0.5 * StepY(heading) + (upright ? 0 : shift)});
            x += StepX(heading);
            y += StepY(heading);
        }
        if (!border.isLoop) m_points.push_back(Junction(x, y));
        return m_points;
    }

    Crossing Junction(int x, int y) const {
        const auto across = [&](Heading a, Heading b) {
            double sum = 0;
            int count = 0;
            for (const Heading heading : {a, b}) {
                if (!HasSide(x, y, heading)) continue;
                sum += m_placer.Shift(x, y, heading);
                ++count;
            }
            return count > 0 ? sum / count : 0;
        };
        const double right = x == 0 || x == m_map.Width() ? 0 : across(south, north);
        const double down = y == 0 || y == m_map.Height() ? 0 : across(east, west);
        return {x + right, y + down};
    }

  private:
    bool HasSide(int x, int y, Heading heading) const {
        switch (heading) {
            case east:
                return m_map.At(x, y - 1) != m_map.At(x, y);
            case south:
                return m_map.At(x - 1, y) != m_map.At(x, y);
            case west:
                return m_map.At(x - 1, y - 1) != m_map.At(x - 1, y);
            default:
                return m_map.At(x - 1, y - 1) != m_map.At(x, y - 1);
        }
    }

    const RegionMap& m_map;
    const Placer& m_placer;
    std::vector<Crossing> m_points;
};

/// Whether many points lie off the middle of their sides, so that edges are smoothed.
bool IsSoft(const Placer& placer, const Borders& borders) {
    std::int64_t soft = 0;
    std::int64_t all = 0;
    for (std::size_t i = 0; i < borders.all.size(); ++i) {
        int x = borders.all[i].startX;
        int y = borders.all[i].startY;
        for (const std::uint8_t heading : borders.StepsOf(i)) {
            if (!borders.all[i].isFrame) {
                ++all;
                soft += std::fabs(placer.Shift(x, y, heading)) > softShift ? 1 : 0;
            }
            x += StepX(heading);
            y += StepY(heading);
        }
    }
    return soft * 4 > all;
}

/// Whether the borders around a region, or a hole of it, run into one.
bool IsCollapsed(const Borders& borders, std::span<const Side> sides) {
    std::vector<Cubic> path;
    for (const Side side : sides) borders.AppendCubics(side, path);
    return !EnclosesArea(*ToContour(path, 1));
}

/// The lines from each point to the next one.
std::vector<Cubic> PolylineOf(const std::vector<Crossing>& points) {
    std::vector<Cubic> lines = PolygonOf(points);
    lines.erase(lines.begin());
    return lines;
}

}  // namespace

bool FitBorders(const RegionMap& map, const RegionOptions& options, Borders& borders) {
    const Placer placer(map, options);
    BorderPoints points(map, placer);
    OutlineFitter fitter(TuningFor(IsSoft(placer, borders), options.tolerance));
    std::size_t sinceReport = 0;
    for (std::size_t i = 0; i < borders.all.size(); ++i) {
        Border& border = borders.all[i];
        sinceReport += border.stepCount;
        if (options.progress && sinceReport > 100'000) {
            sinceReport = 0;
            if (!options.progress(static_cast<double>(i) / static_cast<double>(borders.all.size())))
                return false;
        }
        border.firstCubic = borders.cubics.size();
        if (border.isFrame) {
            const Crossing from = points.Junction(border.startX, border.startY);
            const Crossing to = points.Junction(border.endX, border.endY);
            borders.cubics.push_back({from, from, to, to});
        } else {
            const auto& chain = points.Of(borders, i);
            const auto& cubics = border.isLoop ? fitter.FitLoop(chain) : fitter.FitOpen(chain);
            borders.cubics.insert(borders.cubics.end(), cubics.begin(), cubics.end());
        }
        border.cubicCount = borders.cubics.size() - border.firstCubic;
    }
    return true;
}

void KeepAreas(const RegionMap& map, const RegionOptions& options, const Regions& regions, Borders& borders) {
    const Placer placer(map, options);
    BorderPoints points(map, placer);
    for (const Loop& loop : regions.loops) {
        const std::span sides = std::span(regions.sides).subspan(loop.firstSide, loop.sideCount);
        std::size_t steps = 0;
        for (const Side side : sides) steps += borders.all[BorderOf(side)].stepCount;
        const double wide = static_cast<double>(steps) * (2 + std::max(0.0, options.tolerance));
        if (std::fabs(static_cast<double>(loop.area)) > wide || !IsCollapsed(borders, sides)) continue;
        const auto freedom = [&borders](Side side) {
            const Border& border = borders.all[BorderOf(side)];
            return border.isFrame ? 0 : border.stepCount;
        };
        const std::size_t longest = BorderOf(*std::ranges::max_element(sides, {}, freedom));
        Border& border = borders.all[longest];
        const auto& chain = points.Of(borders, longest);
        const std::vector<Cubic> lines = border.isLoop ? PolygonOf(chain) : PolylineOf(chain);
        border.firstCubic = borders.cubics.size();
        border.cubicCount = lines.size();
        borders.cubics.insert(borders.cubics.end(), lines.begin(), lines.end());
    }
}

}  // namespace tarvex::contours
