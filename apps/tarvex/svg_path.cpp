#include "tarvex/svg_path.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <numbers>
#include <utility>

#include "tarvex/svg_text.h"

namespace tarvex::app {

namespace {

BPOINT Corner(const DPOINT& p) { return {p, p, p}; }

/// Grows one contour after the other, segment by segment.
class ContourPen {
  public:
    void MoveTo(const DPOINT& p) {
        Finish();
        m_start = m_current = p;
    }

    void LineTo(const DPOINT& p) {
        Begin();
        m_nodes.push_back(Corner(p));
        m_current = p;
    }

    void CurveTo(const DPOINT& c1, const DPOINT& c2, const DPOINT& p) {
        Begin();
        m_nodes.back().cp2 = c1;
        m_nodes.push_back({c2, p, p});
        m_current = p;
    }

    /// Draws the closing line if there is one; the next contour starts where this one did.
    void Close() {
        if (m_nodes.size() > 1) {
            if (!(m_nodes.back().pt == m_start)) {
                LineTo(m_start);
            } else {
                m_nodes.back().pt = m_start;
            }
        }
        MoveTo(m_start);
    }

    const DPOINT& Current() const { return m_current; }

    std::vector<Contour> Take() {
        Finish();
        return std::move(m_contours);
    }

  private:
    void Begin() {
        if (m_nodes.empty()) m_nodes.push_back(Corner(m_current));
    }

    void Finish() {
        if (m_nodes.size() > 1) m_contours.push_back(std::move(m_nodes));
        m_nodes.clear();
    }

    std::vector<Contour> m_contours;
    Contour m_nodes;
    DPOINT m_start;
    DPOINT m_current;
};

/// An elliptical arc by its centre: the image of the unit circle's points from `from` to `from + sweep`.
struct CentredArc {
    Affine unitCircle;
    double from = 0;
    double sweep = 0;
};

/// Draws the arc up to `end`, which its last point is exactly.
void DrawArc(ContourPen& pen, const CentredArc& arc, const DPOINT& end) {
    constexpr double widest = std::numbers::pi / 4;
    constexpr double slack = 1e-9;
    const int count = std::clamp(static_cast<int>(std::ceil(std::fabs(arc.sweep) / widest - slack)), 1, 8);
    const double step = arc.sweep / count;
    const double handle = 4.0 / 3 * std::tan(step / 4);
    for (int i = 0; i < count; ++i) {
        const double a = arc.from + step * i;
        const double b = arc.from + step * (i + 1);
        const DPOINT c1 =
            arc.unitCircle({std::cos(a) - handle * std::sin(a), std::sin(a) + handle * std::cos(a)});
        const DPOINT c2 =
            arc.unitCircle({std::cos(b) + handle * std::sin(b), std::sin(b) - handle * std::cos(b)});
        pen.CurveTo(c1, c2, i + 1 == count ? end : arc.unitCircle({std::cos(b), std::sin(b)}));
    }
}

/// An arc as path data gives it.
struct EndpointArc {
    double rx = 0;
    double ry = 0;
    double turn = 0;  ///< of the x axis, in degrees
    bool isLarge = false;
    bool isPositive = false;  ///< angles grow along it
};

/// Draws an arc from the pen's position, by SVG 1.1, appendix F.6: radii that are too small grow, and
/// an arc without a radius is a line.
void DrawArc(ContourPen& pen, const EndpointArc& arc, const DPOINT& end) {
    const DPOINT start = pen.Current();
    if (start.x == end.x && start.y == end.y) return;
    double rx = std::fabs(arc.rx);
    double ry = std::fabs(arc.ry);
    const double turn = std::fmod(arc.turn, 360) * (std::numbers::pi / 180);
    const double c = std::cos(turn);
    const double s = std::sin(turn);
    const double dx = (start.x - end.x) / 2;
    const double dy = (start.y - end.y) / 2;
    // Half the chord in the ellipse's axes, in units of its radii.
    const double u = (c * dx + s * dy) / rx;
    const double v = (c * dy - s * dx) / ry;
    const double square = u * u + v * v;
    if (rx == 0 || ry == 0 || !std::isfinite(square) || square == 0) return pen.LineTo(end);
    const double growth = std::max(1.0, std::sqrt(square));
    rx *= growth;
    ry *= growth;
    double offset = std::sqrt(std::max(0.0, 1 / square - 1));
    if (arc.isLarge == arc.isPositive) offset = -offset;
    // The centre, and both ends as points of the unit circle around it.
    const DPOINT start1{u / growth, v / growth};
    const DPOINT centre1{offset * start1.y, -offset * start1.x};
    const double from = std::atan2(start1.y - centre1.y, start1.x - centre1.x);
    double sweep = std::atan2(-start1.y - centre1.y, -start1.x - centre1.x) - from;
    if (arc.isPositive && sweep < 0) sweep += 2 * std::numbers::pi;
    if (!arc.isPositive && sweep > 0) sweep -= 2 * std::numbers::pi;
    Affine circle{c * rx, s * rx, -s * ry, c * ry, 0, 0};
    const DPOINT centre = circle(centre1);
    circle.e = (start.x + end.x) / 2 + centre.x;
    circle.f = (start.y + end.y) / 2 + centre.y;
    if (!std::isfinite(circle.e + circle.f)) return pen.LineTo(end);
    DrawArc(pen, {circle, from, sweep}, end);
}

class PathDataParser {
  public:
    explicit PathDataParser(std::string_view data) : m_scanner(data) {}

    PathContours Parse() {
        m_scanner.SkipSpaces();
        bool isSound = m_scanner.IsAtEnd() || m_scanner.Peek() == 'm' || m_scanner.Peek() == 'M';
        while (isSound && !m_scanner.IsAtEnd()) isSound = Command();
        return {m_pen.Take(), isSound};
    }

  private:
    /// One letter and all that belongs to it. False: damaged.
    bool Command() {
        char letter = m_scanner.Take();
        if (letter == 'z' || letter == 'Z') {
            m_pen.Close();
            m_lastKind = 'z';
            m_scanner.SkipSpaces();
            return true;
        }
        m_scanner.SkipSpaces();
        for (;;) {
            if (!Segment(letter)) return false;
            if (letter == 'm') letter = 'l';
            if (letter == 'M') letter = 'L';
            const auto separator = m_scanner.SkipSeparator();
            const char next = m_scanner.Peek();
            if (m_scanner.IsAtEnd() || std::isalpha(static_cast<unsigned char>(next)) != 0)
                return separator != SvgScanner::Separator::Comma;
        }
    }

    bool Segment(char letter) {
        m_isRelative = std::islower(static_cast<unsigned char>(letter)) != 0;
        const char kind = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
        const bool isDrawn = Draw(kind);
        m_lastKind = kind;
        return isDrawn;
    }

    bool Draw(char kind) {
        const DPOINT from = m_pen.Current();
        DPOINT c1 = from;
        DPOINT c2;
        DPOINT end = from;
        switch (kind) {
            case 'm':
                if (!Point(end)) return false;
                m_pen.MoveTo(end);
                return true;
            case 'l':
                if (!Point(end)) return false;
                m_pen.LineTo(end);
                return true;
            case 'h':
                if (!Coordinate(end.x, from.x)) return false;
                m_pen.LineTo(end);
                return true;
            case 'v':
                if (!Coordinate(end.y, from.y)) return false;
                m_pen.LineTo(end);
                return true;
            case 'c':
                if (!Point(c1) || !Next() || !Point(c2) || !Next() || !Point(end)) return false;
                return Cubic(c1, c2, end);
            case 's':
                if (m_lastKind == 'c' || m_lastKind == 's') c1 = Mirrored(from);
                if (!Point(c2) || !Next() || !Point(end)) return false;
                return Cubic(c1, c2, end);
            case 'q':
                if (!Point(c1) || !Next() || !Point(end)) return false;
                return Quadratic(c1, end);
            case 't':
                if (m_lastKind == 'q' || m_lastKind == 't') c1 = Mirrored(from);
                if (!Point(end)) return false;
                return Quadratic(c1, end);
            case 'a':
                return Arc();
            default:
                return false;
        }
    }

    bool Cubic(const DPOINT& c1, const DPOINT& c2, const DPOINT& end) {
        m_pen.CurveTo(c1, c2, end);
        m_control = c2;
        return true;
    }

    bool Quadratic(const DPOINT& control, const DPOINT& end) {
        const DPOINT from = m_pen.Current();
        const auto between = [&control](const DPOINT& p) {
            return DPOINT{p.x + (control.x - p.x) * (2.0 / 3), p.y + (control.y - p.y) * (2.0 / 3)};
        };
        m_pen.CurveTo(between(from), between(end), end);
        m_control = control;
        return true;
    }

    bool Arc() {
        const auto rx = m_scanner.Number();
        if (!rx || !Next()) return false;
        const auto ry = m_scanner.Number();
        if (!ry || !Next()) return false;
        const auto turn = m_scanner.Number();
        if (!turn || !Next()) return false;
        const auto isLarge = m_scanner.Flag();
        if (!isLarge || !Next()) return false;
        const auto isPositive = m_scanner.Flag();
        DPOINT end = m_pen.Current();
        if (!isPositive || !Next() || !Point(end)) return false;
        DrawArc(m_pen, EndpointArc{*rx, *ry, *turn, *isLarge, *isPositive}, end);
        return true;
    }

    /// To the next number of a segment. What follows tells whether there is one.
    bool Next() {
        m_scanner.SkipSeparator();
        return true;
    }

    bool Coordinate(double& value, double origin) {
        const auto number = m_scanner.Number();
        if (number) value = *number + (m_isRelative ? origin : 0);
        return number.has_value();
    }

    bool Point(DPOINT& p) {
        const DPOINT origin = m_pen.Current();
        return Coordinate(p.x, origin.x) && Next() && Coordinate(p.y, origin.y);
    }

    DPOINT Mirrored(const DPOINT& p) const { return {2 * p.x - m_control.x, 2 * p.y - m_control.y}; }

    SvgScanner m_scanner;
    ContourPen m_pen;
    DPOINT m_control;  ///< the last one of the curve before
    char m_lastKind = 0;
    bool m_isRelative = false;
};

}  // namespace

PathContours ParsePathData(std::string_view data) { return PathDataParser(data).Parse(); }

std::vector<Contour> RectContours(const RectShape& rect) {
    if (!(rect.width > 0) || !(rect.height > 0)) return {};
    const double rx = std::clamp(rect.rx, 0.0, rect.width / 2);
    const double ry = std::clamp(rect.ry, 0.0, rect.height / 2);
    const bool isRound = rx > 0 && ry > 0;
    const double left = rect.x;
    const double right = rect.x + rect.width;
    const double top = rect.y;
    const double bottom = rect.y + rect.height;
    ContourPen pen;
    if (!isRound) {
        pen.MoveTo({left, top});
        pen.LineTo({right, top});
        pen.LineTo({right, bottom});
        pen.LineTo({left, bottom});
        pen.Close();
        return pen.Take();
    }
    // A side that the corners leave no length is left out.
    const auto side = [&pen](const DPOINT& end) {
        if (!(pen.Current() == end)) pen.LineTo(end);
    };
    const auto corner = [&](double cx, double cy, double from, const DPOINT& end) {
        DrawArc(pen, CentredArc{{rx, 0, 0, ry, cx, cy}, from, std::numbers::pi / 2}, end);
    };
    constexpr double quarter = std::numbers::pi / 2;
    pen.MoveTo({left + rx, top});
    side({right - rx, top});
    corner(right - rx, top + ry, -quarter, {right, top + ry});
    side({right, bottom - ry});
    corner(right - rx, bottom - ry, 0, {right - rx, bottom});
    side({left + rx, bottom});
    corner(left + rx, bottom - ry, quarter, {left, bottom - ry});
    side({left, top + ry});
    corner(left + rx, top + ry, 2 * quarter, {left + rx, top});
    pen.Close();
    return pen.Take();
}

std::vector<Contour> EllipseContours(const DPOINT& centre, double rx, double ry) {
    if (!(rx > 0) || !(ry > 0)) return {};
    const DPOINT start{centre.x + rx, centre.y};
    ContourPen pen;
    pen.MoveTo(start);
    DrawArc(pen, CentredArc{{rx, 0, 0, ry, centre.x, centre.y}, 0, 2 * std::numbers::pi}, start);
    pen.Close();
    return pen.Take();
}

std::vector<Contour> PolylineContours(const std::vector<DPOINT>& points, bool isClosed) {
    ContourPen pen;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i == 0) {
            pen.MoveTo(points[i]);
        } else {
            pen.LineTo(points[i]);
        }
    }
    if (isClosed) pen.Close();
    return pen.Take();
}

}  // namespace tarvex::app
