// The finishing stage: every skeleton line that is left becomes a region of two rails, with inclinations.
//
// A region is found by its pixels (traced from a seed on the line), but made of the outline itself: the
// pieces into which the cuts divide the outline are known exactly (faces.h), and the piece that holds the
// seed is the region. So rails are as smooth as the outline, neighbours share the ends of the cut between
// them, and nothing is lost under the cuts' width. Where the piece and the pixels disagree (the outline is
// not that of the picture) the traced boundary itself is taken.
//
// A piece can be left without a line, where a line was too short to be kept. It joins a neighbour or becomes
// a region along its own axis, which then counts as one more line. Two lines can lie in one region, where the
// tracing broke a line and the gap could not be closed. The region is made from the longer one, and the other
// counts as a failed line.
#include <algorithm>
#include <cmath>
#include <optional>

#include "breakup/columns.h"
#include "breakup/inclinations.h"
#include "breakup/polyline_place.h"
#include "breakup/region_maker.h"
#include "core/append.h"
#include "core/rounding.h"
#include "tarvex/autotrace.h"

namespace tarvex {
namespace {

constexpr double kSampleScale = 17;
constexpr double kSampleDivisor = 300;

PointList Copied(const CArray<DPOINT, DPOINT>& points) { return {points.begin(), points.end()}; }

std::unique_ptr<CArray<DPOINT, DPOINT>> MakeArray(const PointList& points) {
    auto array = std::make_unique<CArray<DPOINT, DPOINT>>();
    AppendAll(*array, points);
    return array;
}

/// A line in whole pixels.
std::unique_ptr<CArray<POINT, POINT>> MakeLine(const PointList& points) {
    std::vector<POINT> pixels;
    for (const DPOINT& p : points) pixels.push_back({RoundToInt(p.x), RoundToInt(p.y)});
    auto line = std::make_unique<CArray<POINT, POINT>>();
    AppendAll(*line, pixels);
    return line;
}

std::unique_ptr<CArray<double, double>> MakePositions(const std::vector<int>& indices, std::size_t count) {
    auto array = std::make_unique<CArray<double, double>>();
    std::vector<double> positions;
    for (const int index : indices)
        positions.push_back(static_cast<double>(index) / static_cast<double>(count));
    AppendAll(*array, positions);
    return array;
}

/// Points a unit apart from one place to another, the last left out.
void AppendSteps(PointList& line, const DPOINT& from, const DPOINT& to) {
    const double length = Length(Minus(to, from));
    const int steps = std::clamp(RoundToInt(length), 1, 1 << 20);
    for (int i = 0; i < steps; ++i) line.push_back(Between(from, to, static_cast<double>(i) / steps));
}

bool IsClosed(const PointList& line) { return line.size() > 2 && line.front() == line.back(); }

/// The line along the middle of a column: the skeleton line, continued to the middles of its end edges.
PointList MiddleLine(const Rails& rails, const PointList& skeleton) {
    PointList line;
    if (IsClosed(rails.first) && IsClosed(rails.second)) return skeleton;
    AppendSteps(line, Between(rails.first.front(), rails.second.front(), 0.5), skeleton.front());
    line.insert(line.end(), skeleton.begin(), skeleton.end());
    const DPOINT end = Between(rails.first.back(), rails.second.back(), 0.5);
    PointList last;
    AppendSteps(last, end, skeleton.back());
    line.insert(line.end(), last.rbegin(), last.rend());
    return line;
}

}  // namespace

bool CAutoBreakUp::CreateOutlines(CPolyPolyDPoint& regions, CPolyPolyInclination& inclinations) {
    m_regionLines.clear();
    regions.RemoveAll();
    if (m_lines.IsEmpty() || !MakeBitmap()) return false;
    RegionMaker maker(m_outline, m_cutLines, {m_extendTrim, static_cast<double>(m_edgeLimit)});
    CAutoTrace tracer(m_hWorkBitmap, m_scale);
    tracer.SetFillFilter(false);
    int failures = 0;
    for (int i = 0; i < m_lines.GetCount(); ++i) {
        if (m_lines[i].IsEmpty()) return false;
        const auto [isInside, seed] = MakeAutoTracePoint(m_lines[i]);
        if (!isInside) {
            ++failures;
            continue;
        }
        tracer.DoTrace(seed.x, seed.y, nullptr, 0, false, false, false);
        const CPolyPolyDPoint& traced = tracer.TracedLines();
        if (traced.GetCount() > 2) return false;
        const PointList line = LinePoints(m_lines[i]);
        const bool added = traced.GetCount() == 1   ? maker.AddOutlines(i, line, seed, traced[0])
                           : traced.GetCount() == 2 ? maker.AddOutlines(i, line, seed, traced[0], traced[1])
                                                    : false;
        if (!added) ++failures;
    }
    if (failures == m_lines.GetCount()) return false;
    maker.TakeInOrphans();
    for (const Region& region : maker.Regions()) {
        m_regionLines.push_back(region.index >= 0 ? region.index : m_lines.Add(MakeLine(region.line)));
        regions.Add(MakeArray(region.rails.first));
        regions.Add(MakeArray(region.rails.second));
    }
    if (regions.GetCount() != 2 * (m_lines.GetCount() - failures)) {
        regions.RemoveAll();
        return false;
    }
    FixCutEdges(regions);
    AddInclinations(regions, inclinations);
    return true;
}

/// Moves the rails' ends that lie beside a cut's end onto it, so that the regions on both sides of a cut meet
/// there. Regions made of the outline's pieces meet already.
void CAutoBreakUp::FixCutEdges(CPolyPolyDPoint& regions) const {
    constexpr double reach = 3;
    const auto fix = [this](DPOINT& p) {
        double nearest = reach;
        DPOINT moved = p;
        for (const CUTLINE& cut : m_cutLines) {
            for (const DPOINT& end : {DPOINT{static_cast<double>(cut.x1), static_cast<double>(cut.y1)},
                                      DPOINT{static_cast<double>(cut.x2), static_cast<double>(cut.y2)}}) {
                // A point that rounds to the cut's end is the outline's own.
                if (RoundToInt(p.x) == RoundToInt(end.x) && RoundToInt(p.y) == RoundToInt(end.y)) return;
                const double distance = Length(Minus(p, end));
                if (distance >= nearest) continue;
                nearest = distance;
                moved = end;
            }
        }
        p = moved;
    };
    for (int i = 0; i < regions.GetCount(); ++i) {
        auto& rail = regions[i];
        if (rail.GetSize() < 2 || rail[0] == rail[rail.GetUpperBound()]) continue;
        fix(rail[0]);
        fix(rail[rail.GetUpperBound()]);
    }
}

/// Lays the inclinations of every region; their ends become points of the rails.
void CAutoBreakUp::AddInclinations(CPolyPolyDPoint& regions, CPolyPolyInclination& inclinations) const {
    const int step = std::max(SaturatingInt(kSampleScale * m_scale / kSampleDivisor), 1);
    for (int r = 0; r < static_cast<int>(m_regionLines.size()); ++r) {
        Rails rails{Copied(regions[2 * r]), Copied(regions[2 * r + 1])};
        const PointList skeleton = LinePoints(m_lines[m_regionLines[static_cast<std::size_t>(r)]]);
        const ColumnKind kind =
            IsClosed(rails.first) && IsClosed(rails.second) ? ColumnKind::Ring : ColumnKind::Open;
        const auto laid = LayInclinations(rails, MiddleLine(rails, skeleton), step, kind);
        std::vector<int> first, second;
        for (const Inclination& inclination : laid) {
            first.push_back(inclination.first);
            second.push_back(inclination.second);
        }
        inclinations.Add(MakePositions(first, rails.first.size()));
        inclinations.Add(MakePositions(second, rails.second.size()));
        regions.SetAt(2 * r, MakeArray(rails.first).release());
        regions.SetAt(2 * r + 1, MakeArray(rails.second).release());
    }
}

}  // namespace tarvex
