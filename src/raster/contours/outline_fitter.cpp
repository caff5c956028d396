// Corners first, then straight edges between them, then curves: an outline from its points.
#include "raster/contours/outline_fitter.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "tarvex/nodes.h"

namespace tarvex::contours {

namespace {

constexpr std::size_t shortRun = 12;
constexpr double shortStraight = 0.2;

DPOINT Scaled(Crossing p, double scale) { return {p.x * scale, p.y * scale}; }

}  // namespace

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

bool EnclosesArea(const CArray<BPOINT, BPOINT>& contour) {
    const std::span nodes(contour.GetData(), static_cast<std::size_t>(contour.GetSize()));
    DRECT frame;
    if (!GetBezierFrame(nodes, frame)) return false;
    const double side = std::max(frame.right - frame.left, frame.bottom - frame.top);
    constexpr double leastPart = 1e-9;
    return std::fabs(GetBezierArea(nodes)) > leastPart * side * side;
}

std::vector<Cubic> PolygonOf(std::span<const Crossing> corners) {
    std::vector<Cubic> edges;
    edges.reserve(corners.size());
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const Crossing from = i == 0 ? corners.back() : corners[i - 1];
        edges.push_back({from, from, corners[i], corners[i]});
    }
    return edges;
}

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

const std::vector<Cubic>& OutlineFitter::FitLoop(std::span<const Crossing> points) {
    m_cubics.clear();
    m_chain.AssignLoop(points, CornerFinder::MarginFor(static_cast<int>(points.size()), m_tuning.unit));
    m_corners = m_finder.Find(m_chain, m_tuning);
    m_runs = m_corners.size();
    if (m_corners.empty()) {
        FitCornerless();
    } else {
        FitRuns();
    }
    return m_cubics;
}

const std::vector<Cubic>& OutlineFitter::FitOpen(std::span<const Crossing> points) {
    m_cubics.clear();
    const int size = static_cast<int>(points.size());
    m_chain.AssignOpen(points, CornerFinder::MarginFor(size, m_tuning.unit));
    m_corners = m_finder.Find(m_chain, m_tuning);
    std::erase_if(m_corners, [size](const Corner& c) { return c.index <= 1 || c.index >= size - 2; });
    m_corners.insert(m_corners.begin(), Corner{0, points.front(), points.front(), 0, 0, {}, {}});
    m_corners.push_back({size - 1, points.back(), points.back(), 0, 0, {}, {}});
    m_runs = m_corners.size() - 1;
    FitRuns();
    return m_cubics;
}

void OutlineFitter::FitRuns() {
    FindEdges();
    for (std::size_t k = 0; k < m_runs; ++k) {
        FitEnd(m_corners[k]);
        FitBetween(k);
    }
}

void OutlineFitter::FitCornerless() {
    const int n = m_chain.Size();
    m_run.clear();
    for (int i = 0; i <= n; ++i) m_run.push_back(m_chain[i]);
    m_fitter.Fit({m_run, true}, m_cubics);
}

/// Fills m_run with the points from corner k to the next.
void OutlineFitter::TakeRun(std::size_t k) {
    const Corner& from = m_corners[k];
    const Corner& to = CornerAfter(k);
    const int n = m_chain.Size();
    const int last = to.index > from.index ? to.index : to.index + n;
    m_run.assign(1, from.begin);
    for (int i = from.index + from.capAfter + 1; i < last - to.capBefore; ++i) {
        const Crossing p = m_chain[i < n ? i : i - n];
        if (!IsCutOff(p, k, from.begin) && !IsCutOff(p, k + 1, to.end)) m_run.push_back(p);
    }
    m_run.push_back(to.end);
}

/// Finds which runs are straight edges, and lets corners between edges stand where the whole
/// edges meet, which is surer than where their ends do.
void OutlineFitter::FindEdges() {
    m_straight.assign(m_corners.size(), false);
    if (m_corners.size() == 1) return;  // the only run comes back to where it began
    for (std::size_t k = 0; k < m_runs; ++k) {
        TakeRun(k);
        const Crossing along{m_run.back().x - m_run.front().x, m_run.back().y - m_run.front().y};
        if (m_run.size() < 4 || (along.x == 0 && along.y == 0)) continue;
        LineSums sums;
        for (std::size_t i = 1; i + 1 < m_run.size(); ++i) sums.Add(m_run[i]);
        const Line line = sums.Best(along);
        // A short stretch between junctions may be all there is of a pixel; only what is straight is.
        const bool isShort = !IsLoop() && m_run.size() < shortRun;
        const double near = isShort ? shortStraight * m_tuning.unit : m_tuning.straight;
        if (!FollowsLine(line, near)) continue;
        // The ends of an open chain stay where they are, so they must lie on the line already.
        if (!IsLoop() && std::max(DistanceFrom(line, m_run.front()), DistanceFrom(line, m_run.back())) > near)
            continue;
        m_straight[k] = true;
        m_corners[k].forward = line;
        Corner& next = m_corners[(k + 1) % m_corners.size()];
        next.back = {line.centre, {-line.direction.x, -line.direction.y}};
    }
    const std::size_t ends = IsLoop() ? 0 : 1;
    for (std::size_t k = ends; k + ends < m_corners.size(); ++k)
        PlaceTips(m_chain, m_tuning.unit, m_corners[k]);
}

bool OutlineFitter::FollowsLine(const Line& line, double near) const {
    return std::all_of(m_run.begin() + 1, m_run.end() - 1,
                       [&](Crossing p) { return DistanceFrom(line, p) <= near; });
}

/// The straight line across the end of a bar.
void OutlineFitter::FitEnd(const Corner& corner) {
    const Crossing from = corner.end;
    const Crossing to = corner.begin;
    if (from.x != to.x || from.y != to.y) m_cubics.push_back({from, from, to, to});
}

void OutlineFitter::FitBetween(std::size_t k) {
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
bool OutlineFitter::IsOnEdge(Crossing tip, const Line& edge) const {
    return DistanceFrom(edge, tip) <= m_tuning.straight + 0.25 * m_tuning.unit;
}

double OutlineFitter::DistanceFrom(const Line& line, Crossing p) {
    const double dx = p.x - line.centre.x;
    const double dy = p.y - line.centre.y;
    return std::fabs(line.direction.x * dy - line.direction.y * dx);
}

/// Whether a point lies on the bevel at corner k. The ends of an open chain have none.
bool OutlineFitter::IsCutOff(Crossing p, std::size_t k, Crossing tip) const {
    if (!IsLoop() && (k == 0 || k + 1 == m_corners.size())) return false;
    const double dx = p.x - tip.x;
    const double dy = p.y - tip.y;
    const double reach = bevel * m_tuning.unit;
    return dx * dx + dy * dy < reach * reach;
}

}  // namespace tarvex::contours
