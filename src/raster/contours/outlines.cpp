// The whole way from grey levels to Bezier contours: enlarge, follow, find corners, fit.
#include <algorithm>
#include <cmath>
#include <memory>

#include "raster/contours/corners.h"
#include "raster/contours/curve_run.h"
#include "raster/contours/enlarge.h"
#include "raster/contours/level_set.h"
#include "tarvex/contours.h"

namespace tarvex {

namespace {

using namespace contours;

constexpr int largestDetail = 16;
constexpr std::size_t mostPoints = INT32_MAX / 2;  // of an outline, so that its chain can be indexed
constexpr int longestSide = INT32_MAX - 2 * ShapeMask::margin;  // so that columns can be counted with it

/// Stairs of a two-level picture lie up to half a pixel off the edge they stand for; anti-aliased edges
/// lie where they are, give or take the grey's noise.
Tuning TuningFor(bool soft, double tolerance) {
    constexpr ArmTest clean{0.15, 0.33};
    Tuning tuning = soft ? Tuning{clean, clean, 0.25, 0.28, 0.34, 4, 1}
                         : Tuning{clean, {0.75, 1.3}, 0.55, 0.53, 0.6, 8, 1};
    if (tolerance > 0) {
        constexpr double unlimited = 1e9;  // farther than any picture is wide, and yet a number to count with
        tuning.shortCurve = tuning.longCurve = std::min(tolerance, unlimited);
        tuning.straight = std::min(tolerance, 2 * tuning.straight);
    }
    return tuning;
}

/// Turns the points of one outline into one closed contour.
class OutlineFitter {
  public:
    explicit OutlineFitter(const Tuning& tuning) : m_tuning(tuning), m_fitter(tuning) {}

    const std::vector<Cubic>& Fit(std::span<const Crossing> points) {
        m_cubics.clear();
        m_chain.Assign(points, CornerFinder::MarginFor(static_cast<int>(points.size()), m_tuning.unit));
        m_corners = m_finder.Find(m_chain, m_tuning);
        if (m_corners.empty()) {
            FitLoop();
        } else {
            FindEdges();
            for (std::size_t k = 0; k < m_corners.size(); ++k) {
                FitEnd(m_corners[k]);
                FitBetween(k);
            }
        }
        return m_cubics;
    }

  private:
    void FitLoop() {
        const int n = m_chain.Size();
        m_run.clear();
        for (int i = 0; i <= n; ++i) m_run.push_back(m_chain[i]);
        m_fitter.Fit({m_run, true}, m_cubics);
    }

    const Corner& CornerAfter(std::size_t k) const { return m_corners[(k + 1) % m_corners.size()]; }

    /// Fills m_run with the points from corner k to the next.
    void TakeRun(std::size_t k) {
        const Corner& from = m_corners[k];
        const Corner& to = CornerAfter(k);
        const int n = m_chain.Size();
        const int last = to.index > from.index ? to.index : to.index + n;
        m_run.assign(1, from.begin);
        for (int i = from.index + from.capAfter + 1; i < last - to.capBefore; ++i) {
            const Crossing p = m_chain[i < n ? i : i - n];
            if (!IsCutOff(p, from.begin) && !IsCutOff(p, to.end)) m_run.push_back(p);
        }
        m_run.push_back(to.end);
    }

    /// Finds which runs are straight edges, and lets corners between edges stand where the whole
    /// edges meet, which is surer than where their ends do.
    void FindEdges() {
        m_straight.assign(m_corners.size(), false);
        if (m_corners.size() == 1) return;  // the only run comes back to where it began
        for (std::size_t k = 0; k < m_corners.size(); ++k) {
            TakeRun(k);
            const Crossing along{m_run.back().x - m_run.front().x, m_run.back().y - m_run.front().y};
            if (m_run.size() < 4) continue;
            LineSums sums;
            for (std::size_t i = 1; i + 1 < m_run.size(); ++i) sums.Add(m_run[i]);
            const Line line = sums.Best(along);
            if (!FollowsLine(line)) continue;
            m_straight[k] = true;
            m_corners[k].forward = line;
            Corner& next = m_corners[(k + 1) % m_corners.size()];
            next.back = {line.centre, {-line.direction.x, -line.direction.y}};
        }
        for (Corner& corner : m_corners) PlaceTips(m_chain, m_tuning.unit, corner);
    }

    bool FollowsLine(const Line& line) const {
        return std::all_of(m_run.begin() + 1, m_run.end() - 1,
                           [&](Crossing p) { return DistanceFrom(line, p) <= m_tuning.straight; });
    }

    /// The straight line across the end of a bar.
    void FitEnd(const Corner& corner) {
        const Crossing from = corner.end;
        const Crossing to = corner.begin;
        if (from.x != to.x || from.y != to.y) m_cubics.push_back({from, from, to, to});
    }

    void FitBetween(std::size_t k) {
        const Crossing from = m_corners[k].begin;
        const Crossing to = CornerAfter(k).end;
        if (m_straight[k] && IsOnEdge(from, m_corners[k].forward) && IsOnEdge(to, m_corners[k].forward)) {
            m_cubics.push_back({from, from, to, to});
            return;
        }
        TakeRun(k);
        m_fitter.Fit({m_run, false}, m_cubics);
    }

    /// Corners of acute ends are cut short, and may lie on neither of their edges.
    bool IsOnEdge(Crossing tip, const Line& edge) const {
        return DistanceFrom(edge, tip) <= m_tuning.straight + 0.25 * m_tuning.unit;
    }

    static double DistanceFrom(const Line& line, Crossing p) {
        const double dx = p.x - line.centre.x;
        const double dy = p.y - line.centre.y;
        return std::fabs(line.direction.x * dy - line.direction.y * dx);
    }

    bool IsCutOff(Crossing p, Crossing tip) const {
        const double dx = p.x - tip.x;
        const double dy = p.y - tip.y;
        const double reach = bevel * m_tuning.unit;
        return dx * dx + dy * dy < reach * reach;
    }

    Tuning m_tuning;
    CyclicChain m_chain;
    CornerFinder m_finder;
    RunFitter m_fitter;
    std::vector<Corner> m_corners;
    std::vector<bool> m_straight;
    std::vector<Crossing> m_run;
    std::vector<Cubic> m_cubics;
};

DPOINT Scaled(Crossing p, double scale) { return {p.x * scale, p.y * scale}; }

std::unique_ptr<CArray<BPOINT, BPOINT>> ToContour(const std::vector<Cubic>& cubics, double scale) {
    auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
    const int n = static_cast<int>(cubics.size());
    contour->SetSize(n + 1);
    BPOINT* nodes = contour->GetData();
    for (int i = 0; i < n; ++i) {
        const Cubic& c = cubics[static_cast<std::size_t>(i)];
        nodes[i].pt = Scaled(c.p0, scale);
        nodes[i].cp2 = Scaled(c.p1, scale);
        nodes[i + 1].cp1 = Scaled(c.p2, scale);
    }
    nodes[n].pt = nodes[0].pt;
    nodes[0].cp1 = nodes[0].pt;
    nodes[n].cp2 = nodes[n].pt;
    return contour;
}

/// Traces a picture that has been enlarged `detail` times; `out` is in the caller's own pixels.
bool Trace(const GreyView& picture, const OutlineOptions& options, bool soft, CPolyPolyBezier& out) {
    const double scale = 1.0 / options.detail;
    OutlineFollower follower(picture, options.threshold, options.side);
    OutlineFitter fitter(TuningFor(soft, options.tolerance).Enlarged(options.detail));
    std::vector<Crossing> points;
    std::vector<std::unique_ptr<CArray<BPOINT, BPOINT>>> contours;
    const auto least = static_cast<std::size_t>(std::max(0, options.minPoints));
    std::size_t sinceReport = 0;
    while (follower.Next(points)) {
        sinceReport += points.size();
        if (options.progress && sinceReport > 100'000) {
            sinceReport = 0;
            if (!options.progress(follower.Progress())) return false;
        }
        if (static_cast<double>(points.size()) * scale <= static_cast<double>(least)) continue;
        if (points.size() > mostPoints) AfxThrowMemoryException();
        contours.push_back(ToContour(fitter.Fit(points), scale));
    }
    out.SetSize(static_cast<int>(contours.size()));
    for (std::size_t i = 0; i < contours.size(); ++i) out.SetAt(static_cast<int>(i), contours[i].release());
    return true;
}

}  // namespace

bool TraceOutlines(const GreyView& picture, const OutlineOptions& options, CPolyPolyBezier& out) {
    out.RemoveAll();
    if (picture.levels == nullptr || picture.width <= 0 || picture.height <= 0) return false;
    if (options.detail < 1 || options.detail > largestDetail) return false;
    if (picture.width > longestSide / options.detail || picture.height > longestSide / options.detail)
        return false;
    const bool soft = HasMoreThanTwoLevels(picture);
    if (options.detail == 1) return Trace(picture, options, soft, out);
    const EnlargedPicture enlarged(picture, options.detail);
    return Trace(enlarged.View(), options, soft, out);
}

}  // namespace tarvex
