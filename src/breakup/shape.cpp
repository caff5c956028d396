// Breaking up shapes of Bezier contours: islands are told apart, rendered at a resolution that suits the
// break-up, and their regions brought back to the shape's own coordinates.
#include <algorithm>
#include <cmath>

#include "breakup/faces.h"
#include "breakup/polyline_place.h"
#include "core/append.h"
#include "core/rounding.h"
#include "platform/handles.h"
#include "tarvex/breakup.h"

namespace tarvex {
namespace {

using PointList = std::vector<DPOINT>;

// Skeleton lines of up to 10 pixels count as noise and regions are found on a grid of 10 pixels, so strokes
// should be well above; and well below 60 or so, where the guard against complicated shapes steps in. Coarse
// renderings have fewer spurs and so fewer needless cuts, fine ones keep what is thin.
constexpr double kStrokePixels[] = {28, 20, 16, 24, 36, 13, 48};
constexpr int kUsualTries = 3;           ///< the others are for what these do not break up
constexpr double kMostUncovered = 0.02;  ///< of the area, in a result that needs no other to be tried
constexpr double kLeastSide = 48;        ///< pixels
constexpr double kMostSide = 4000;
constexpr double kMargin = 8;
constexpr int kMostSteps = 4096;             ///< points of one segment
constexpr double kScaleOfStep = 300.0 / 17;  ///< the break-up's scale for one pixel between inclinations

struct Frame {
    double left = 0, top = 0, right = 0, bottom = 0;
};

DPOINT CurvePoint(const BPOINT& a, const BPOINT& b, double t) {
    const double u = 1 - t;
    const double w0 = u * u * u, w1 = 3 * u * u * t, w2 = 3 * u * t * t, w3 = t * t * t;
    return {w0 * a.pt.x + w1 * a.cp2.x + w2 * b.cp1.x + w3 * b.pt.x,
            w0 * a.pt.y + w1 * a.cp2.y + w2 * b.cp1.y + w3 * b.pt.y};
}

/// A contour with a point at least for every 1 / density units.
PointList Flattened(const CArray<BPOINT, BPOINT>& contour, double density) {
    PointList points;
    const int count = contour.GetSize();
    for (int i = 0; i < count; ++i) {
        const BPOINT& a = contour[i];
        BPOINT b = contour[(i + 1) % count];
        BPOINT from = a;
        if (i + 1 == count) from.cp2 = from.pt, b.cp1 = b.pt;  // closing an open contour
        const double length =
            Length(Minus(from.cp2, from.pt)) + Length(Minus(b.cp1, from.cp2)) + Length(Minus(b.pt, b.cp1));
        const int steps = std::clamp(SaturatingInt(std::ceil(length * density)), 1, kMostSteps);
        for (int k = 0; k < steps; ++k) {
            const DPOINT p = k == 0 ? from.pt : CurvePoint(from, b, static_cast<double>(k) / steps);
            if (std::isfinite(p.x) && std::isfinite(p.y) && (points.empty() || !(points.back() == p)))
                points.push_back(p);
        }
    }
    while (points.size() > 1 && points.back() == points.front()) points.pop_back();
    return points;
}

double LengthOf(const PointList& closed) {
    double length = 0;
    for (std::size_t i = 0; i < closed.size(); ++i)
        length += Length(Minus(closed[(i + 1) % closed.size()], closed[i]));
    return length;
}

Frame FrameOf(const PointList& points) {
    Frame frame{points[0].x, points[0].y, points[0].x, points[0].y};
    for (const DPOINT& p : points) {
        frame.left = std::min(frame.left, p.x);
        frame.right = std::max(frame.right, p.x);
        frame.top = std::min(frame.top, p.y);
        frame.bottom = std::max(frame.bottom, p.y);
    }
    return frame;
}

/// Contours of a shape by index: an outer one and its holes.
using Island = std::vector<int>;

/// Groups contours: those inside an even number of others are outer ones, and a hole belongs to the smallest
/// outer contour around it.
std::vector<Island> FindIslands(const std::vector<PointList>& contours) {
    const std::size_t count = contours.size();
    std::vector<std::vector<std::size_t>> around(count);
    std::vector<Frame> frames(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (!contours[i].empty()) frames[i] = FrameOf(contours[i]);
    }
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t k = 0; k < count; ++k) {
            if (i == k || contours[i].size() < 3 || contours[k].size() < 3) continue;
            const DPOINT& p = contours[i].front();
            const Frame& frame = frames[k];
            if (p.x < frame.left || p.x > frame.right || p.y < frame.top || p.y > frame.bottom) continue;
            if (IsInside(contours[k], p)) around[i].push_back(k);
        }
    }
    std::vector<Island> islands;
    std::vector<std::size_t> place(count, count);
    for (std::size_t i = 0; i < count; ++i) {
        if (contours[i].size() < 3 || around[i].size() % 2 != 0) continue;
        place[i] = islands.size();
        islands.push_back({static_cast<int>(i)});
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (around[i].size() % 2 == 0) continue;
        for (const std::size_t k : around[i]) {
            if (around[k].size() + 1 == around[i].size() && place[k] < count)
                islands[place[k]].push_back(static_cast<int>(i));
        }
    }
    return islands;
}

/// Where the rendering of an island lies in the shape.
struct Rendering {
    double scale = 1;
    DPOINT origin;  ///< of raster position (0, 0)

    DPOINT ToRaster(const DPOINT& p) const { return {(p.x - origin.x) * scale, (p.y - origin.y) * scale}; }
    DPOINT ToShape(const DPOINT& p) const { return {p.x / scale + origin.x, p.y / scale + origin.y}; }
};

/// `wanted` pixels for each unit, or if that is 0 strokes of about `strokePixels`.
Rendering ChooseRendering(const std::vector<PointList>& contours, double wanted, double strokePixels) {
    double area = 0, length = 0;
    for (std::size_t i = 0; i < contours.size(); ++i) {
        area += (i == 0 ? 1 : -1) * std::fabs(SignedArea(contours[i]));
        length += LengthOf(contours[i]);
    }
    const Frame frame = FrameOf(contours[0]);
    const double side = std::max(frame.right - frame.left, frame.bottom - frame.top);
    double scale = wanted;
    if (!(scale > 0)) {
        scale = area > 0 ? strokePixels * length / (2 * area) : 0;
        scale = std::max(scale, kLeastSide / side);
    }
    scale = std::min(scale, kMostSide / side);
    return {scale, {frame.left - kMargin / scale, frame.top - kMargin / scale}};
}

std::unique_ptr<CArray<DPOINT, DPOINT>> ClosedArray(PointList points) {
    points.push_back(points.front());
    auto array = std::make_unique<CArray<DPOINT, DPOINT>>();
    AppendAll(*array, points);
    return array;
}

bool FillOutline(HDC dc, const CPolyPolyDPoint& outline) {
    if (BeginPath(dc) == FALSE) return false;
    for (int i = 0; i < outline.GetCount(); ++i) {
        const auto& polyline = outline[i];
        if (MoveToEx(dc, RoundToInt(polyline[0].x), RoundToInt(polyline[0].y), nullptr) == FALSE)
            return false;
        for (int k = 1; k < polyline.GetSize(); ++k)
            if (LineTo(dc, RoundToInt(polyline[k].x), RoundToInt(polyline[k].y)) == FALSE) return false;
        if (CloseFigure(dc) == FALSE) return false;
    }
    return EndPath(dc) != FALSE && FillPath(dc) != FALSE;
}

/// A monochrome picture of the outline's inside, by the even-odd rule; none when memory is short.
UniqueBitmap Render(const CPolyPolyDPoint& outline, int width, int height) {
    UniqueBitmap bitmap(CImgProc::CreateBitmapBW(width, height));
    const UniqueDC dc(CreateCompatibleDC(nullptr));
    const SelectedObject selectedBitmap(dc.Get(), bitmap.Get());
    const SelectedObject selectedPen(dc.Get(), GetStockObject(NULL_PEN));
    const SelectedObject selectedBrush(dc.Get(), GetStockObject(WHITE_BRUSH));
    if (!selectedBitmap || !selectedPen || !selectedBrush) return {};
    SetPolyFillMode(dc.Get(), ALTERNATE);
    if (!FillOutline(dc.Get(), outline)) return {};
    GdiFlush();
    return bitmap;
}

PointList Restored(const CArray<DPOINT, DPOINT>& rail, const Rendering& rendering) {
    PointList points;
    points.reserve(static_cast<std::size_t>(rail.GetSize()));
    for (const DPOINT& p : rail) points.push_back(rendering.ToShape(p));
    return points;
}

std::vector<StitchRegion> TakeRegions(const CPolyPolyDPoint& rails, const CPolyPolyInclination& positions,
                                      const Rendering& rendering) {
    std::vector<StitchRegion> regions;
    for (int i = 0; i + 1 < rails.GetCount(); i += 2) {
        StitchRegion region{Restored(rails[i], rendering), Restored(rails[i + 1], rendering), {}, false};
        const auto isClosed = [](const CArray<DPOINT, DPOINT>& rail) {
            return rail.GetSize() > 2 && rail[0] == rail[rail.GetUpperBound()];
        };
        region.isRing = isClosed(rails[i]) && isClosed(rails[i + 1]);
        for (int k = 0; k < positions[i].GetSize(); ++k)
            region.inclinations.emplace_back(RoundToInt(positions[i][k] * rails[i].GetSize()),
                                             RoundToInt(positions[i + 1][k] * rails[i + 1].GetSize()));
        regions.push_back(std::move(region));
    }
    return regions;
}

IslandBreakUp BreakUpRendered(const CPolyPolyBezier& shape, const Island& island, const Rendering& rendering,
                              const ShapeBreakUpOptions& options) {
    IslandBreakUp result;
    result.pixelsPerUnit = rendering.scale;
    CPolyPolyDPoint outline;
    int width = 0, height = 0;
    for (const int i : island) {
        PointList points = Flattened(shape[i], rendering.scale);
        if (points.size() < 3) continue;
        result.contours.push_back(points);
        for (DPOINT& p : points) {
            p = rendering.ToRaster(p);
            width = std::max(width, RoundToInt(p.x + kMargin));
            height = std::max(height, RoundToInt(p.y + kMargin));
        }
        outline.Add(ClosedArray(std::move(points)));
    }
    const UniqueBitmap image = Render(outline, width, height);
    const double step = options.spacing > 0 ? std::max(options.spacing * rendering.scale, 1.0) : 5;
    CPolyPolyDPoint rails;
    CPolyPolyInclination positions;
    CAutoBreakUp breakUp;
    // Half a step more, so that rounding down by the break-up gives the step itself.
    breakUp.AutoBreakUp(image.Get(), (std::floor(step) + 0.5) * kScaleOfStep, outline, rails, positions,
                        options.checkComplexity);
    result.end = breakUp.End();
    result.regions = TakeRegions(rails, positions, rendering);
    const CPoint origin = breakUp.Origin();
    for (const CUTLINE& cut : breakUp.CutLines()) {
        const auto placed = [&](int x, int y) {
            return rendering.ToShape({static_cast<double>(x) + origin.x, static_cast<double>(y) + origin.y});
        };
        result.cuts.push_back({placed(cut.x1, cut.y1), placed(cut.x2, cut.y2)});
    }
    return result;
}

/// The part of the island's area that its regions miss or cover twice.
double Uncovered(const IslandBreakUp& island) {
    double area = 0;
    for (std::size_t i = 0; i < island.contours.size(); ++i)
        area += (i == 0 ? 1 : -1) * std::fabs(SignedArea(island.contours[i]));
    double covered = 0;
    for (const StitchRegion& region : island.regions) {
        PointList around = region.first;
        around.insert(around.end(), region.second.rbegin(), region.second.rend());
        covered += std::fabs(SignedArea(around));  // of a ring: the area between, as the seam cancels
    }
    return area > 0 ? std::fabs(covered - area) / area : 1;
}

bool IsBetter(const IslandBreakUp& a, const IslandBreakUp& b) {
    if ((a.end == BreakUpEnd::Done) != (b.end == BreakUpEnd::Done)) return a.end == BreakUpEnd::Done;
    const double missedA = Uncovered(a), missedB = Uncovered(b);
    if ((missedA > kMostUncovered) || (missedB > kMostUncovered)) return missedA < missedB;
    return a.regions.size() < b.regions.size();
}

/// Tries several resolutions, unless one is asked for, and keeps the result that covers the island with the
/// fewest regions.
IslandBreakUp BreakUpIsland(const CPolyPolyBezier& shape, const Island& island,
                            const std::vector<PointList>& coarse, const ShapeBreakUpOptions& options) {
    std::vector<PointList> rough;
    for (const int i : island) rough.push_back(coarse[static_cast<std::size_t>(i)]);
    std::optional<IslandBreakUp> best;
    int tries = 0;
    for (const double strokePixels : kStrokePixels) {
        const bool isGood = best && best->end == BreakUpEnd::Done && Uncovered(*best) <= kMostUncovered;
        if (isGood && (tries >= kUsualTries || best->regions.size() == 1)) break;
        ++tries;
        const Rendering rendering = ChooseRendering(rough, options.pixelsPerUnit, strokePixels);
        if (best && best->pixelsPerUnit == rendering.scale) continue;
        IslandBreakUp tried = BreakUpRendered(shape, island, rendering, options);
        if (tried.end == BreakUpEnd::Aborted) return tried;
        if (!best || IsBetter(tried, *best)) best = std::move(tried);
        if (options.pixelsPerUnit > 0) break;
    }
    return std::move(*best);
}

}  // namespace

std::vector<IslandBreakUp> BreakUpShape(const CPolyPolyBezier& shape, const ShapeBreakUpOptions& options) {
    std::vector<PointList> coarse;
    for (int i = 0; i < shape.GetCount(); ++i) {
        const auto* contour = shape.GetAt(i);
        if (contour == nullptr || contour->GetSize() < 2) {
            coarse.emplace_back();
            continue;
        }
        // First with a few points for each segment, then with some for each hundredth of the whole.
        const double length = LengthOf(Flattened(*contour, 0));
        coarse.push_back(Flattened(*contour, length > 0 ? 500 / length : 0));
    }
    std::vector<IslandBreakUp> results;
    for (const Island& island : FindIslands(coarse)) {
        results.push_back(BreakUpIsland(shape, island, coarse, options));
        if (results.back().end == BreakUpEnd::Aborted) break;
    }
    return results;
}

}  // namespace tarvex
