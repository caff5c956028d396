// Shapes to combine, and plain measures of what comes out.
#pragma once

#include <numbers>

#include "support/precompiled.h"
#include "tarvex/bezier.h"
#include "tarvex/containers.h"

namespace tarvex::testing_support {

using Nodes = std::vector<BPOINT>;

inline CPolyPolyBezier Shape(const std::vector<Nodes>& contours) {
    CPolyPolyBezier shape;
    for (const Nodes& nodes : contours) {
        auto contour = std::make_unique<CArray<BPOINT, BPOINT>>();
        for (const BPOINT& node : nodes) contour->Add(node);
        shape.Add(std::move(contour));
    }
    return shape;
}

/// A closed polygon; the first point is repeated here.
inline Nodes Polygon(std::vector<DPOINT> points) {
    points.push_back(points.front());
    Nodes nodes;
    for (const DPOINT& p : points) nodes.push_back({p, p, p});
    return nodes;
}

inline Nodes Rect(double left, double top, double right, double bottom) {
    return Polygon({{left, top}, {right, top}, {right, bottom}, {left, bottom}});
}

/// Four cubics from angle `turn` on; area `CircleArea(r)`.
inline Nodes Circle(double x, double y, double r, double turn = 0) {
    constexpr double k = 0.5522847498307936;
    Nodes nodes;
    for (int i = 0; i <= 4; ++i) {
        const double angle = turn + (i % 4) * std::numbers::pi / 2;
        const double c = r * std::cos(angle);
        const double s = r * std::sin(angle);
        nodes.push_back({{x + c + k * s, y + s - k * c}, {x + c, y + s}, {x + c - k * s, y + s + k * c}});
    }
    return nodes;
}

inline Nodes Backwards(Nodes nodes) {
    std::reverse(nodes.begin(), nodes.end());
    for (BPOINT& node : nodes) std::swap(node.cp1, node.cp2);
    return nodes;
}

inline Nodes Moved(Nodes nodes, double dx, double dy) {
    for (BPOINT& node : nodes) {
        for (DPOINT* p : {&node.cp1, &node.pt, &node.cp2}) *p = {p->x + dx, p->y + dy};
    }
    return nodes;
}

/// A smooth closed outline around a point.
inline Nodes Blob(double x, double y, const std::vector<double>& radii) {
    const int n = static_cast<int>(radii.size());
    const auto at = [&](int i) {
        const double angle = 2 * std::numbers::pi * (i % n) / n;
        const double r = radii[static_cast<std::size_t>((i + n) % n)];
        return DPOINT{x + r * std::cos(angle), y + r * std::sin(angle)};
    };
    Nodes nodes;
    for (int i = 0; i <= n; ++i) {
        const DPOINT before = at((i + n - 1) % n), p = at(i % n), after = at((i + 1) % n);
        const DPOINT along{(after.x - before.x) / 6, (after.y - before.y) / 6};
        nodes.push_back({{p.x - along.x, p.y - along.y}, p, {p.x + along.x, p.y + along.y}});
    }
    return nodes;
}

/// The area that one closed contour encloses, exactly, negative when it runs the other way.
template <class Contour>
double SignedArea(const Contour& nodes) {
    double sum = 0;
    const DPOINT o = nodes[0].pt;
    const auto cross = [&o](const DPOINT& a, const DPOINT& b) {
        return (a.x - o.x) * (b.y - o.y) - (a.y - o.y) * (b.x - o.x);
    };
    for (auto next = std::begin(nodes) + 1; next != std::end(nodes); ++next) {
        const DPOINT &a = (next - 1)->pt, &b = (next - 1)->cp2, &c = next->cp1, &d = next->pt;
        sum += (6 * cross(a, b) + 3 * cross(a, c) + cross(a, d) + 3 * cross(b, c) + 3 * cross(b, d) +
                6 * cross(c, d)) /
               20;
    }
    return sum;
}

inline double CircleArea(double r) { return std::fabs(SignedArea(Circle(0, 0, r))); }

/// Contours as fine polylines.
inline std::vector<std::vector<DPOINT>> Polylines(const CPolyPolyBezier& shape, int steps = 64) {
    std::vector<std::vector<DPOINT>> lines;
    for (int k = 0; k < shape.GetCount(); ++k) {
        std::vector<DPOINT> line;
        for (int i = 0; i + 1 < shape[k].GetSize(); ++i) {
            const CBezier curve(shape[k][i], shape[k][i + 1]);
            for (int s = 0; s < steps; ++s) line.push_back(curve.GetCurvePoint(double(s) / steps));
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

inline bool IsInside(const std::vector<DPOINT>& line, DPOINT p) {
    bool inside = false;
    for (std::size_t i = 0, j = line.size() - 1; i < line.size(); j = i++) {
        const DPOINT &a = line[i], &b = line[j];
        if ((a.y > p.y) != (b.y > p.y) && p.x < (b.x - a.x) * (p.y - a.y) / (b.y - a.y) + a.x)
            inside = !inside;
    }
    return inside;
}

/// How many other contours surround a contour, none of which it crosses: told by most of some points on it,
/// since others may touch it anywhere.
inline int DepthOf(const CPolyPolyBezier& shape, int k, const std::vector<std::vector<DPOINT>>& lines) {
    std::vector<int> depths;
    const int segments = shape[k].GetSize() - 1;
    for (int i = 0; i < segments; i += 1 + segments / 12) {
        for (const double t : {0.2345, 0.5, 0.7891}) {
            const DPOINT p = CBezier(shape[k][i], shape[k][i + 1]).GetCurvePoint(t);
            int depth = 0;
            for (std::size_t m = 0; m < lines.size(); ++m)
                depth += m != static_cast<std::size_t>(k) && IsInside(lines[m], p);
            depths.push_back(depth);
        }
    }
    std::nth_element(depths.begin(), depths.begin() + std::ptrdiff_t(depths.size()) / 2, depths.end());
    return depths[depths.size() / 2];
}

/// The area of a result, whose contours do not cross: those inside an odd number of others are holes.
inline double ResultArea(const CPolyPolyBezier& shape) {
    const auto lines = Polylines(shape);
    double area = 0;
    for (int k = 0; k < shape.GetCount(); ++k)
        area += (DepthOf(shape, k, lines) % 2 == 0 ? 1 : -1) * std::fabs(SignedArea(shape[k]));
    return area;
}

/// The area of a op b by the plainest of means: how much of each of many horizontal lines is in it.
inline double ScannedArea(int op, const CPolyPolyBezier& a, const CPolyPolyBezier& b, int scans = 4000) {
    std::vector<std::vector<DPOINT>> lines[2] = {Polylines(a), Polylines(b)};
    double top = 1e300, bottom = -1e300;
    for (const auto& shape : lines) {
        for (const auto& line : shape) {
            for (const DPOINT& p : line) top = std::min(top, p.y), bottom = std::max(bottom, p.y);
        }
    }
    const double step = (bottom - top) / scans;
    std::vector<std::vector<std::pair<double, int>>> hits(static_cast<std::size_t>(scans));
    for (int side = 0; side < 2; ++side) {
        for (const auto& line : lines[side]) {
            for (std::size_t i = 0, j = line.size() - 1; i < line.size(); j = i++) {
                const auto [low, high] = std::minmax(line[i].y, line[j].y);
                for (int s = std::max(0, int((low - top) / step) - 1); s < scans; ++s) {
                    const double y = top + (s + 0.5) * step;
                    if (y >= high) break;
                    if (y < low) continue;
                    const double t = (y - line[i].y) / (line[j].y - line[i].y);
                    hits[std::size_t(s)].push_back({line[i].x + (line[j].x - line[i].x) * t, side});
                }
            }
        }
    }
    double area = 0;
    for (auto& row : hits) {
        std::sort(row.begin(), row.end());
        bool in[2] = {false, false};
        for (std::size_t i = 0; i + 1 < row.size(); ++i) {
            in[row[i].second] = !in[row[i].second];
            const bool inside[] = {in[0] && !in[1], in[0] && in[1], in[0] != in[1], in[0] || in[1]};
            if (inside[op]) area += (row[i + 1].first - row[i].first) * step;
        }
    }
    return area;
}

}  // namespace tarvex::testing_support
