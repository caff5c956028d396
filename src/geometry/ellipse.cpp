// The ellipse itself: points, nearest points, measures, lines that meet it and its affine images.
#include "tarvex/ellipse.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "geometry/ellipse_axes.h"
#include "tarvex/view.h"

namespace tarvex {

namespace {

constexpr double PI = std::numbers::pi;
constexpr int MOST_HALVINGS = 200;   // ten on the logarithmic scale and 53 bits suffice
constexpr double THINNEST = 1e-150;  // radii of a smaller ratio than this: a segment

struct Direction {
    double cosine;
    double sine;
};

/// The eccentric angle of the point nearest to (x, y), both >= 0, for radii e0 >= e1 > 0 along x and y.
///
/// The foot of the perpendicular solves F(u) = (z0 / (1 - k + k u))^2 + (z1 / u)^2 - 1 = 0 with z0 = x / e0,
/// z1 = y / e1, k = (e1 / e0)^2, and the two quotients are its cosine and sine. F falls for u > 0, so
/// bisection cannot miss the root. Eberly bisects s = u - 1; u keeps its digits next to the major axis.
Direction NearestInQuadrant(double e0, double e1, double x, double y) {
    const double ratio = e1 / e0;
    const double k = ratio * ratio;
    if (y == 0) {
        const double evolute = e0 * (1 - ratio) * (1 + ratio);  // where the evolute meets the axis
        if (x >= evolute) return {1, 0};
        const double c = x / evolute;
        return {c, std::sqrt((1 - c) * (1 + c))};
    }
    if (x == 0) return {0, 1};
    const double z0 = x / e0;
    const double z1 = y / e1;
    double low = z1;
    double high = std::max(1.0, std::hypot(z0 / k, z1));
    if (!std::isfinite(high)) high = 1e300;
    Direction d{0, 0};
    for (int i = 0; i < MOST_HALVINGS; ++i) {
        const double u = high > 4 * low ? std::sqrt(low) * std::sqrt(high) : low + (high - low) / 2;
        d = {z0 / (1 - k + k * u), z1 / u};
        if (u <= low || u >= high) break;
        const double f = d.cosine * d.cosine + d.sine * d.sine - 1;
        if (f == 0) break;
        (f > 0 ? low : high) = u;
    }
    return d;
}

}  // namespace

double AxisAngle(double angle) {
    double turned = std::remainder(angle, PI);
    if (turned <= -PI / 2) turned = PI / 2;
    return turned;
}

CEllipse::CEllipse(DPOINT centre, double radiusX, double radiusY, double rotation)
    : m_centre(centre), m_radiusX(std::fabs(radiusX)), m_radiusY(std::fabs(radiusY)), m_rotation(rotation) {}

CEllipse::CEllipse(const DRECT& bounds)
    : CEllipse({bounds.left / 2 + bounds.right / 2, bounds.top / 2 + bounds.bottom / 2},
               bounds.right / 2 - bounds.left / 2, bounds.bottom / 2 - bounds.top / 2) {}

bool CEllipse::IsFinite() const {
    return std::isfinite(m_centre.x) && std::isfinite(m_centre.y) && std::isfinite(m_radiusX) &&
           std::isfinite(m_radiusY) && std::isfinite(m_rotation);
}

DPOINT CEllipse::ToLocal(DPOINT p) const {
    const double c = std::cos(m_rotation);
    const double s = std::sin(m_rotation);
    const double dx = p.x - m_centre.x;
    const double dy = p.y - m_centre.y;
    return {dx * c + dy * s, dy * c - dx * s};
}

DPOINT CEllipse::ToWorld(DPOINT local) const {
    const double c = std::cos(m_rotation);
    const double s = std::sin(m_rotation);
    return {m_centre.x + (local.x * c - local.y * s), m_centre.y + (local.x * s + local.y * c)};
}

DPOINT CEllipse::GetPoint(double angle) const {
    return ToWorld({m_radiusX * std::cos(angle), m_radiusY * std::sin(angle)});
}

DPOINT CEllipse::GetTangent(double angle) const {
    const double c = std::cos(m_rotation);
    const double s = std::sin(m_rotation);
    const double x = -m_radiusX * std::sin(angle);
    const double y = m_radiusY * std::cos(angle);
    return {x * c - y * s, x * s + y * c};
}

double CEllipse::NearestAngle(DPOINT p) const {
    const DPOINT local = ToLocal(p);
    if (!IsFinite() || !std::isfinite(local.x) || !std::isfinite(local.y)) return 0;
    const bool tall = m_radiusY > m_radiusX;
    double major = m_radiusX;
    double minor = m_radiusY;
    double along = std::fabs(local.x);
    double across = std::fabs(local.y);
    if (tall) {
        std::swap(major, minor);
        std::swap(along, across);
    }
    if (major == 0) return 0;
    Direction d{1, 0};
    if (minor / major < THINNEST) {
        const double c = std::min(along / major, 1.0);
        d = {c, std::sqrt((1 - c) * (1 + c))};
    } else {
        d = NearestInQuadrant(major, minor, along, across);
    }
    if (tall) std::swap(d.cosine, d.sine);
    const double angle = std::atan2(std::copysign(d.sine, local.y < 0 ? -1.0 : 1.0),
                                    std::copysign(d.cosine, local.x < 0 ? -1.0 : 1.0));
    return std::isfinite(angle) ? angle : 0;
}

double CEllipse::GetDistance(DPOINT p) const {
    const DPOINT foot = GetPoint(NearestAngle(p));
    return std::hypot(p.x - foot.x, p.y - foot.y);
}

bool CEllipse::Contains(DPOINT p) const {
    if (!IsFinite() || m_radiusX == 0 || m_radiusY == 0) return false;
    const DPOINT local = ToLocal(p);
    const double x = local.x / m_radiusX;
    const double y = local.y / m_radiusY;
    return x * x + y * y <= 1;
}

DRECT CEllipse::GetBounds() const {
    const double c = std::cos(m_rotation);
    const double s = std::sin(m_rotation);
    const double w = std::hypot(m_radiusX * c, m_radiusY * s);
    const double h = std::hypot(m_radiusX * s, m_radiusY * c);
    return {m_centre.x - w, m_centre.x + w, m_centre.y - h, m_centre.y + h};
}

double CEllipse::GetArea() const { return PI * m_radiusX * m_radiusY; }

double CEllipse::GetCircumference() const {
    const double major = std::max(m_radiusX, m_radiusY);
    const double minor = std::min(m_radiusX, m_radiusY);
    if (std::isnan(m_radiusX) || std::isnan(m_radiusY) || std::isinf(major)) return m_radiusX + m_radiusY;
    // Below this the circumference is 4 radii to the last digit, and the sum below would cancel.
    if (minor <= major * 1e-9) return 4 * major;
    // Gauss: 2 pi / M(1, b) (1 - sum 2^(n-1) c_n^2) with the means a_n, b_n and c_n^2 = a_n^2 - b_n^2.
    double a = 1;
    double b = minor / major;
    double sum = (1 - b) * (1 + b) / 2;
    double weight = 1;
    while (a - b > 1e-9 * a) {
        const double c = (a - b) / 2;
        const double mean = (a + b) / 2;
        b = std::sqrt(a * b);
        a = mean;
        sum += weight * c * c;
        weight *= 2;
    }
    return 2 * PI * major * (1 - sum) / ((a + b) / 2);
}

CEllipse::Hits CEllipse::Intersect(const DLINE& line) const {
    const double dx = line.p2.x - line.p1.x;
    const double dy = line.p2.y - line.p1.y;
    const double length = std::hypot(dx, dy);
    if (!IsFinite() || m_radiusX == 0 || m_radiusY == 0) return {};
    if (!(length >= GEOMETRY_EPSILON) || !std::isfinite(length)) return {};

    // The line's unit normal along the two radii; `reach` is how far the ellipse extends along it.
    const double c = std::cos(m_rotation);
    const double s = std::sin(m_rotation);
    const DPOINT along{(dx * c + dy * s) / length, (dy * c - dx * s) / length};
    DPOINT normal{-along.y * m_radiusX, along.x * m_radiusY};
    const double reach = std::hypot(normal.x, normal.y);
    const DPOINT start = ToLocal(line.p1);
    const double offset = start.y * along.x - start.x * along.y;
    const double inside = reach - std::fabs(offset);
    if (!(inside >= -GEOMETRY_EPSILON) || !(reach > 0)) return {};
    normal = {normal.x / reach, normal.y / reach};

    // In the frame in which the ellipse is the unit circle, the chord lies across `normal`.
    Hits hits;
    if (inside <= GEOMETRY_EPSILON) {
        const double side = offset < 0 ? -1 : 1;
        hits.count = 1;
        hits.points[0] = ToWorld({side * normal.x * m_radiusX, side * normal.y * m_radiusY});
        return hits;
    }
    const double depth = offset / reach;
    const double half = std::sqrt((inside / reach) * (1 + std::fabs(depth)));
    const auto at = [&](double t) {
        return ToWorld(
            {(depth * normal.x + t * normal.y) * m_radiusX, (depth * normal.y - t * normal.x) * m_radiusY});
    };
    hits.count = 2;
    hits.points[0] = at(-half);
    hits.points[1] = at(half);
    return hits;
}

CEllipse::Hits CEllipse::IntersectSegment(const DLINE& segment) const {
    const Hits all = Intersect(segment);
    const double dx = segment.p2.x - segment.p1.x;
    const double dy = segment.p2.y - segment.p1.y;
    const double length = std::hypot(dx, dy);
    Hits hits;
    for (int i = 0; i < all.count; ++i) {
        const DPOINT p = all.points[i];
        const double t = ((p.x - segment.p1.x) * dx + (p.y - segment.p1.y) * dy) / length;
        if (t >= -GEOMETRY_EPSILON && t <= length + GEOMETRY_EPSILON) hits.points[hits.count++] = p;
    }
    return hits;
}

CEllipse CEllipse::Transformed(const CView3D& view) const {
    const CView3D::Matrix& m = view.mat();
    const auto turned = [&](double x, double y) {
        return DPOINT{x * m[0][0] + y * m[1][0], x * m[0][1] + y * m[1][1]};
    };
    const double cosine = std::cos(m_rotation);
    const double sine = std::sin(m_rotation);
    const DPOINT a = turned(m_radiusX * cosine, m_radiusX * sine);
    const DPOINT b = turned(-m_radiusY * sine, m_radiusY * cosine);
    DPOINT centre = turned(m_centre.x, m_centre.y);
    centre.x += m[3][0];
    centre.y += m[3][1];

    // The singular values of the matrix with columns a and b, from its parts that keep and turn over the
    // orientation. The smaller one would cancel as their difference; the determinant gives it instead.
    const double e = (a.x + b.y) / 2;
    const double f = (a.x - b.y) / 2;
    const double g = (a.y + b.x) / 2;
    const double h = (a.y - b.x) / 2;
    const double major = std::hypot(e, h) + std::hypot(f, g);
    const double determinant = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    const double product = std::fabs(determinant) * m_radiusX;
    const double minor = major == 0 ? 0 : std::min(major, product / major * m_radiusY);
    return CEllipse(centre, major, std::isnan(product) ? product : minor,
                    AxisAngle((std::atan2(h, e) + std::atan2(g, f)) / 2));
}

}  // namespace tarvex
