// Corners, straight pieces, curves.
//
// The finder of corners and the fitter of curves are those of outlines (raster/contours). An open stroke is
// shown to the finder as a closed chain that goes there and back again: its ends turn round, and what else is
// a corner is one of the stroke's. The middle of a stroke cuts its corners by about a quarter of the half
// width, so the corner is where the straight pieces on both sides meet, if that is not farther away.
#include "raster/centerline/stroke_fitter.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <optional>

#include "bezier/vector.h"

namespace tarvex::centerline {
namespace {

using contours::ArmTest;
using contours::Cubic;
using contours::Line;
using contours::LineSums;
using contours::Tuning;

constexpr double kFarthest = 2;  // times the tolerance: a single point of a straight line
constexpr double kBulge = 0.6;   // times the tolerance: the middle of a straight line

constexpr double kLeastWidthReach = 8;  // points on either side that tell a width
constexpr double kWidthReach = 4;       // the same, in half widths
constexpr double kPixelMore = 0.6;      // half a pixel and a bit

double MedianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The mean of the half widths that differ from the middle one by no more than a run of pixels that is one
/// longer.
double CommonHalfWidth(std::vector<double> radii) {
    const double middle = MedianOf(radii);
    std::erase_if(radii, [middle](double radius) { return std::fabs(radius - middle) > kPixelMore; });
    return std::accumulate(radii.begin(), radii.end(), 0.0) / static_cast<double>(radii.size());
}

/// To the line's one side positive, to the other negative.
double OffsetFrom(const Line& line, DPOINT p) {
    const DPOINT d = Minus(p, line.centre);
    return line.direction.x * d.y - line.direction.y * d.x;
}

DPOINT Projected(const Line& line, DPOINT p) {
    return Plus(line.centre, Times(line.direction, Dot(Minus(p, line.centre), line.direction)));
}

/// The line through all points but those near the ends, which corners bend, if they follow it: none is
/// far from it, and those of the middle third lie on no other side of it than those of the outer thirds.
/// Single points of a slanted line are off by most of a pixel, their means are not.
std::optional<Line> StraightThrough(std::span<const DPOINT> points, double tolerance) {
    if (points.size() < 4) return std::nullopt;
    const std::size_t margin = points.size() / 6;
    const auto inner = points.subspan(margin, points.size() - 2 * margin);
    LineSums sums;
    for (const DPOINT p : inner) sums.Add(p);
    const Line line = sums.Best(Minus(points.back(), points.front()));
    double means[3] = {};
    for (std::size_t i = 0; i < inner.size(); ++i) {
        const double off = OffsetFrom(line, inner[i]);
        if (std::fabs(off) > kFarthest * tolerance) return std::nullopt;
        means[3 * i / inner.size()] += 3 * off / static_cast<double>(inner.size());
    }
    const double bulge = means[1] - (means[0] + means[2]) / 2;
    if (std::fabs(bulge) > kBulge * tolerance) return std::nullopt;
    return line;
}

std::optional<DPOINT> Meeting(const Line& a, const Line& b) {
    const double across = a.direction.x * b.direction.y - a.direction.y * b.direction.x;
    if (std::fabs(across) < 0.1) return std::nullopt;
    const DPOINT d = Minus(b.centre, a.centre);
    const double t = (d.x * b.direction.y - d.y * b.direction.x) / across;
    return Plus(a.centre, Times(a.direction, t));
}

FittedStroke FitDot(const Stroke& stroke) {
    BPOINT node;
    node.cp1 = node.pt = node.cp2 = stroke.points.front();
    const double width = 2 * stroke.radii.front();
    return {{node, node}, {width, width}};
}

}  // namespace

/// Bends and noise of a stroke's middle grow with its width.
Tuning StrokeFitter::TuningFor(double radius) const {
    const int unit = std::clamp(static_cast<int>(1.3 * radius), 1, 16);
    const double loose = Tolerance();
    const double bend = std::max(1.0, radius / 4);
    const ArmTest clean{0.75 * loose, 2 * loose * bend};
    const ArmTest rough{1.2 * loose, 3 * loose * bend};
    return {clean, rough, 1.1 * loose, loose, 1.2 * loose, 6, unit};
}

FittedStroke StrokeFitter::Fit(const Stroke& stroke) {
    if (stroke.points.size() < 2) return FitDot(stroke);
    m_cubics.clear();
    m_points = stroke.points;
    m_radii = stroke.radii;
    const double radius = MedianOf(stroke.radii);
    const Tuning tuning = TuningFor(radius);
    FindCorners(stroke, tuning);
    if (m_breaks.empty()) {
        contours::RunFitter(tuning).Fit({m_points, true}, m_cubics);
    } else {
        PlaceCorners(stroke.isClosed, radius);
        FitPieces(tuning);
    }
    return Finish(stroke.isClosed);
}

/// Fills `m_breaks`; a closed stroke is turned so that it begins with a corner, and stays without breaks when
/// it has none.
void StrokeFitter::FindCorners(const Stroke& stroke, const Tuning& tuning) {
    const std::size_t n = m_points.size();
    std::vector<DPOINT> cycle(m_points.begin(), m_points.end() - 1);
    if (!stroke.isClosed) cycle.insert(cycle.end(), m_points.rbegin(), m_points.rend() - 1);
    m_breaks.clear();
    std::vector<std::size_t> corners;
    if (cycle.size() >= 4) {
        m_chain.AssignLoop(cycle,
                           contours::CornerFinder::MarginFor(static_cast<int>(cycle.size()), tuning.unit));
        for (const contours::Corner& corner : m_finder.Find(m_chain, tuning))
            corners.push_back(static_cast<std::size_t>(corner.index));
    }
    std::sort(corners.begin(), corners.end());
    if (stroke.isClosed) {
        if (corners.empty()) {
            if (n < 8) m_breaks = {0, n - 1};
            return;
        }
        const std::size_t first = corners.front();
        const auto turn = [first](auto& values) {
            std::rotate(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(first),
                        values.end() - 1);
            values.back() = values.front();
        };
        turn(m_points);
        turn(m_radii);
        for (const std::size_t corner : corners) m_breaks.push_back(corner - first);
    } else {
        const auto nearEnd = static_cast<std::size_t>(2 * tuning.unit);
        m_breaks.push_back(0);
        for (const std::size_t corner : corners) {
            if (corner > nearEnd && corner + nearEnd + 1 < n) m_breaks.push_back(corner);
        }
    }
    m_breaks.push_back(n - 1);
}

/// Finds which pieces between breaks are straight, and moves corners to where those beside them meet, free
/// ends onto theirs.
void StrokeFitter::PlaceCorners(bool isClosed, double radius) {
    const std::size_t pieces = m_breaks.size() - 1;
    const std::span<const DPOINT> points = m_points;
    m_straight.clear();
    for (std::size_t k = 0; k < pieces; ++k) {
        const std::size_t from = m_breaks[k];
        m_straight.push_back(StraightThrough(points.subspan(from, m_breaks[k + 1] - from + 1), Tolerance()));
    }
    m_places.clear();
    for (const std::size_t i : m_breaks) m_places.push_back(points[i]);
    const double reach = std::max(1.5, 1.5 * radius);
    for (std::size_t k = 0; k < m_places.size(); ++k) {
        const bool isFree = !isClosed && (k == 0 || k == pieces);
        const auto& back = m_straight[isFree && k == 0 ? 0 : (k + pieces - 1) % pieces];
        const auto& forward = m_straight[isFree && k > 0 ? pieces - 1 : k % pieces];
        if (!back || !forward || (isFree && m_ends == StrokeEnds::kept)) continue;
        const auto place = isFree ? std::optional(Projected(*back, m_places[k])) : Meeting(*back, *forward);
        if (place && Distance(*place, m_places[k]) <= reach) m_places[k] = *place;
    }
}

void StrokeFitter::FitPieces(const Tuning& tuning) {
    const std::span<const DPOINT> points = m_points;
    contours::RunFitter fitter(tuning);
    std::vector<DPOINT> run;
    for (std::size_t k = 0; k + 1 < m_breaks.size(); ++k) {
        const DPOINT from = m_places[k];
        const DPOINT to = m_places[k + 1];
        const auto piece = points.subspan(m_breaks[k], m_breaks[k + 1] - m_breaks[k] + 1);
        const auto isOn = [&](const Line& line, DPOINT end) {
            return std::fabs(OffsetFrom(line, end)) <= kFarthest * Tolerance();
        };
        const std::optional<Line>& line = m_straight[k];
        if (piece.size() < 3 || (line && isOn(*line, from) && isOn(*line, to))) {
            m_cubics.push_back({from, from, to, to});
            continue;
        }
        run.assign(1, from);
        for (const DPOINT p : piece.subspan(1, piece.size() - 2)) {
            if (Distance(p, from) > 0.6 && Distance(p, to) > 0.6) run.push_back(p);
        }
        run.push_back(to);
        fitter.Fit({run, false}, m_cubics);
    }
}

/// The widths at the ends of the segments, each where it lies along the stroke, as the common one a few half
/// widths to either side: single runs of pixels are off by a pixel, and beside a junction they are longer
/// than the stroke is wide.
std::vector<double> StrokeFitter::WidthsAtJoints() const {
    const std::size_t n = m_points.size();
    std::vector<double> along(n);
    for (std::size_t i = 1; i < n; ++i) along[i] = along[i - 1] + Distance(m_points[i], m_points[i - 1]);
    std::vector<double> joints{0};
    for (const Cubic& c : m_cubics) {
        const double hull = Distance(c.p0, c.p1) + Distance(c.p1, c.p2) + Distance(c.p2, c.p3);
        joints.push_back(joints.back() + (hull + Distance(c.p0, c.p3)) / 2);
    }
    const double scale = joints.back() > 0 ? along.back() / joints.back() : 0;
    std::vector<double> widths;
    for (const double joint : joints) {
        const auto found = std::lower_bound(along.begin(), along.end(), joint * scale);
        const auto i = std::min(static_cast<std::size_t>(found - along.begin()), n - 1);
        const auto reach = static_cast<std::size_t>(std::max(kLeastWidthReach, kWidthReach * m_radii[i]));
        const auto at = [&](std::size_t k) { return m_radii.begin() + static_cast<std::ptrdiff_t>(k); };
        widths.push_back(2 *
                         CommonHalfWidth({at(i > reach ? i - reach : 0), at(std::min(i + reach + 1, n))}));
    }
    return widths;
}

/// Turns the segments into nodes.
FittedStroke StrokeFitter::Finish(bool isClosed) const {
    FittedStroke fitted;
    fitted.nodes.resize(m_cubics.size() + 1);
    for (std::size_t i = 0; i < m_cubics.size(); ++i) {
        fitted.nodes[i].pt = m_cubics[i].p0;
        fitted.nodes[i].cp2 = m_cubics[i].p1;
        fitted.nodes[i + 1].cp1 = m_cubics[i].p2;
        fitted.nodes[i + 1].pt = m_cubics[i].p3;
    }
    fitted.nodes.front().cp1 = fitted.nodes.front().pt;
    fitted.nodes.back().cp2 = fitted.nodes.back().pt;
    if (isClosed) fitted.nodes.back().pt = fitted.nodes.front().pt;
    fitted.widths = WidthsAtJoints();
    return fitted;
}

}  // namespace tarvex::centerline
