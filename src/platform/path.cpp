// Recorded paths: figures of lines and curves in sixteenths of a pixel, and curves cut into chords.
#include "platform/path.h"

#include <algorithm>
#include <cmath>

#include "core/rounding.h"

namespace tarvex::platform {
namespace {

constexpr double kFlat = 1.0 / 16;

/// Halving divides the second differences by four: from the largest that 32-bit coordinates can have
/// this many bring them below kFlat.
constexpr int kMaxHalvings = 20;

using Cubic = std::array<Point, 4>;

Point Middle(const Point& a, const Point& b) { return {(a.x + b.x) * 0.5, (a.y + b.y) * 0.5}; }

bool IsSmall(const Point& a, const Point& b, const Point& c) {
    return std::fabs(a.x - 2 * b.x + c.x) <= kFlat && std::fabs(a.y - 2 * b.y + c.y) <= kFlat;
}

bool IsFlat(const Cubic& c) { return IsSmall(c[0], c[1], c[2]) && IsSmall(c[1], c[2], c[3]); }

bool IsBeside(const Cubic& c, const Window& w) {
    const auto all = [&c](auto outside) { return std::all_of(c.begin(), c.end(), outside); };
    return all([&](const Point& p) { return p.x < w.left; }) ||
           all([&](const Point& p) { return p.x > w.right; }) ||
           all([&](const Point& p) { return p.y < w.top; }) ||
           all([&](const Point& p) { return p.y > w.bottom; });
}

void Flatten(const Cubic& c, const Window& window, int halvings, std::vector<FixedPoint>& points) {
    if (halvings == kMaxHalvings || IsFlat(c) || IsBeside(c, window)) {
        points.push_back(RoundToFixed(c[3]));  // within the range of the control points
        return;
    }
    const Point a = Middle(c[0], c[1]);
    const Point b = Middle(c[1], c[2]);
    const Point d = Middle(c[2], c[3]);
    const Point ab = Middle(a, b);
    const Point bd = Middle(b, d);
    const Point middle = Middle(ab, bd);
    Flatten({c[0], a, ab, middle}, window, halvings + 1, points);
    Flatten({middle, bd, d, c[3]}, window, halvings + 1, points);
}

Point ToPoint(const POINT& p) { return {static_cast<double>(p.x), static_cast<double>(p.y)}; }

}  // namespace

FixedPoint RoundToFixed(const Point& p) {
    constexpr auto one = static_cast<double>(kFixedOne);
    return {RoundToInt64(p.x * one), RoundToInt64(p.y * one)};
}

void FlattenCurve(const Cubic& control, const Window& window, std::vector<FixedPoint>& points) {
    Flatten(control, window, 0, points);
}

/// Makes room for all of a figure before any of it is recorded, so that a path is never cut off.
void Path::Reserve(std::size_t verbs, std::size_t points) {
    const auto grow = [](auto& list, std::size_t more) {
        if (list.capacity() - list.size() < more)
            list.reserve(std::max(list.size() + more, 2 * list.capacity()));
    };
    grow(m_verbs, verbs);
    grow(m_points, points);
}

void Path::AddLine(const POINT& from, const POINT& to) {
    Reserve(2, 2);
    if (m_figure != Current::Open) {
        m_verbs.push_back(Verb::Move);
        m_points.push_back(from);
        m_figure = Current::Open;
    }
    m_verbs.push_back(Verb::Line);
    m_points.push_back(to);
}

void Path::AddPolyline(std::span<const POINT> points) {
    Reserve(points.size(), points.size());
    m_verbs.push_back(Verb::Move);
    m_verbs.insert(m_verbs.end(), points.size() - 1, Verb::Line);
    m_points.insert(m_points.end(), points.begin(), points.end());
    m_figure = Current::Complete;
}

void Path::AddCurves(std::span<const POINT> points) {
    const std::size_t curves = points.size() / 3;
    Reserve(curves + 1, points.size());
    m_verbs.push_back(Verb::Move);
    m_verbs.insert(m_verbs.end(), curves, Verb::Curve);
    m_points.insert(m_points.end(), points.begin(), points.end());
    m_figure = Current::Complete;
}

void Path::CloseFigure() {
    if (m_figure == Current::None) return;
    m_verbs.push_back(Verb::Close);
    m_figure = Current::None;
}

std::vector<Figure> Path::Flatten(const Window& window) const {
    std::vector<Figure> figures;
    const POINT* next = m_points.data();
    for (const Verb verb : m_verbs) {
        switch (verb) {
            case Verb::Move:
                figures.emplace_back();
                [[fallthrough]];
            case Verb::Line:
                figures.back().points.push_back(ToFixed(*next++));
                break;
            case Verb::Curve:
                FlattenCurve({ToPoint(next[-1]), ToPoint(next[0]), ToPoint(next[1]), ToPoint(next[2])},
                             window, figures.back().points);
                next += 3;
                break;
            case Verb::Close:
                figures.back().closed = true;
                break;
        }
    }
    return figures;
}

}  // namespace tarvex::platform
