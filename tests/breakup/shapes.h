// Fixed shapes made from geometry, for the break-up: strokes, rings, letters and ornaments whose regions are
// known, as Bezier outlines.
#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <numbers>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/contours.h"
#include "support/grey_picture.h"
#include "tarvex/containers.h"
#include "tarvex/contours.h"

namespace tarvex::test {

/// Whether a point belongs to a shape.
using Inside = std::function<bool(double, double)>;

enum class Caps { Round, Square };

/// A stroke along a polyline. Square caps end it at its ends; its bends are round.
inline Inside Stroke(Points line, double width, Caps caps) {
    return [=](double x, double y) {
        const auto isBehind = [&](DPOINT end, DPOINT other) {
            return std::hypot(x - end.x, y - end.y) < width &&
                   (x - end.x) * (other.x - end.x) + (y - end.y) * (other.y - end.y) < 0;
        };
        if (caps == Caps::Square &&
            (isBehind(line[0], line[1]) || isBehind(line.back(), line[line.size() - 2])))
            return false;
        for (std::size_t i = 1; i < line.size(); ++i) {
            if (DistanceFromSegment({x, y}, line[i - 1], line[i]) <= width / 2) return true;
        }
        return false;
    };
}

inline Inside Polygon(Points points) {
    return [=](double x, double y) {
        bool inside = false;
        for (std::size_t i = 0, k = points.size() - 1; i < points.size(); k = i++) {
            if ((points[i].y > y) != (points[k].y > y) &&
                x < (points[k].x - points[i].x) * (y - points[i].y) / (points[k].y - points[i].y) +
                        points[i].x)
                inside = !inside;
        }
        return inside;
    };
}

inline Inside Disc(DPOINT centre, double radius) {
    return [=](double x, double y) { return std::hypot(x - centre.x, y - centre.y) < radius; };
}

inline Inside operator|(const Inside& a, const Inside& b) {
    return [=](double x, double y) { return a(x, y) || b(x, y); };
}
inline Inside operator-(const Inside& a, const Inside& b) {
    return [=](double x, double y) { return a(x, y) && !b(x, y); };
}

/// Points on an arc, angles in degrees, clockwise on a screen.
inline Points Arc(DPOINT centre, double rx, double ry, double from, double to) {
    Points points;
    const int steps = 32;
    for (int i = 0; i <= steps; ++i) {
        const double angle = (from + (to - from) * i / steps) * std::numbers::pi / 180;
        points.push_back({centre.x + rx * std::cos(angle), centre.y + ry * std::sin(angle)});
    }
    return points;
}

inline Points Joined(Points a, const Points& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct NamedShape {
    std::string name;
    int size;  ///< of the square it lies in, in pixels
    Inside inside;
    int regions;
    /// Bounds of degrees between neighbouring inclinations, and in the median from square.
    double worstTurn = 15.5;
    double medianTilt = 5;
};

inline void PrintTo(const NamedShape& shape, std::ostream* os) { *os << shape.name; }

/// The shape's outlines, in its own coordinates.
inline void TraceShape(const NamedShape& shape, CPolyPolyBezier& outlines) {
    TraceOutlines(Render(shape.size, shape.size, shape.inside, 4).View(), {}, outlines);
}

inline std::vector<NamedShape> FixedShapes() {
    const auto bar = [](DPOINT a, DPOINT b, double width = 24) {
        return Stroke({a, b}, width, Caps::Square);
    };
    const auto bow = [](DPOINT centre, double rx, double ry, double from, double to, double width = 24) {
        return Stroke(Arc(centre, rx, ry, from, to), width, Caps::Square);
    };
    std::vector<NamedShape> shapes;
    const auto add = [&shapes](const std::string& name, int regions, Inside inside, int size = 200) {
        shapes.push_back({name, size, std::move(inside), regions});
    };
    add("bar", 1, bar({20, 100}, {180, 100}));
    add("slanted bar", 1, bar({30, 150}, {170, 50}));
    add("round bar", 1, Stroke({{30, 60}, {170, 140}}, 24, Caps::Round));
    add("bend", 1, Stroke({{30, 40}, {150, 40}, {150, 180}}, 24, Caps::Square));
    add("plus", 3, bar({20, 100}, {180, 100}) | bar({100, 20}, {100, 180}));
    add("T", 2, bar({20, 40}, {180, 40}) | bar({100, 40}, {100, 180}));
    add("Y", 2, bar({30, 20}, {100, 100}) | bar({170, 20}, {100, 100}) | bar({100, 95}, {100, 180}));
    add("H", 3, bar({40, 20}, {40, 180}) | bar({160, 20}, {160, 180}) | bar({40, 100}, {160, 100}));
    add("E", 2,
        bar({50, 20}, {50, 180}) | bar({38, 32}, {160, 32}) | bar({38, 100}, {150, 100}) |
            bar({38, 168}, {160, 168}));
    add("S", 1,
        Stroke(Joined(Arc({100, 62}, 46, 40, -30, -270), Arc({100, 142}, 46, 40, -90, 150)), 24,
               Caps::Square));
    add("ring", 1, Disc({100, 100}, 80) - Disc({100, 100}, 54));
    add("figure eight", 1,
        (Disc({100, 58}, 48) - Disc({100, 58}, 24)) | (Disc({100, 138}, 52) - Disc({100, 138}, 28)));
    add("A", 2, bar({35, 180}, {100, 20}) | bar({165, 180}, {100, 20}) | bar({55, 125}, {145, 125}, 20));
    add("B", 1,
        bar({50, 20}, {50, 180}) | bar({50, 31}, {100, 31}, 22) | bar({50, 98}, {105, 98}, 22) |
            bar({50, 169}, {105, 169}, 22) | bow({100, 64}, 34, 33, -90, 90, 22) |
            bow({105, 134}, 38, 35, -90, 90, 22));
    add("K", 3, bar({50, 20}, {50, 180}) | bar({160, 20}, {50, 120}) | bar({90, 84}, {165, 180}));
    add("R", 2,
        bar({50, 20}, {50, 180}) | bar({50, 31}, {105, 31}, 22) | bar({50, 101}, {105, 101}, 22) |
            bow({105, 66}, 38, 35, -90, 90, 22) | bar({95, 101}, {155, 180}));
    add("P", 2,
        bar({60, 20}, {60, 180}) | bar({60, 31}, {105, 31}, 22) | bar({60, 101}, {105, 101}, 22) |
            bow({105, 66}, 38, 35, -90, 90, 22));
    add("C", 1, bow({105, 100}, 70, 75, 45, 315));
    add("M", 1,
        bar({35, 20}, {35, 180}) | bar({165, 20}, {165, 180}) | bar({37, 24}, {100, 130}, 22) |
            bar({163, 24}, {100, 130}, 22));
    shapes.back().worstTurn = 30;  // at its pointed corners the shape turns faster
    // Serif letters: stems with slabs joined by brackets, and a hairline against a bow.
    const auto slab = [](double x, double y, double up) {
        return Polygon(Joined(Joined({{x - 40, y}, {x - 40, y - 8 * up}},
                                     {{x - 22, y - 12 * up}, {x - 12, y - 26 * up}, {x + 12, y - 26 * up}}),
                              {{x + 22, y - 12 * up}, {x + 40, y - 8 * up}, {x + 40, y}}));
    };
    add("serif I", 3, bar({100, 25}, {100, 175}) | slab(100, 180, 1) | slab(100, 20, -1));
    add("serif T", 3,
        bar({100, 25}, {100, 175}) | slab(100, 180, 1) | bar({25, 29}, {175, 29}, 18) |
            Polygon({{25, 20}, {43, 20}, {38, 62}, {25, 62}}) |
            Polygon({{157, 20}, {175, 20}, {175, 62}, {162, 62}}));
    add("serif D", 2,
        (Polygon(Joined({{40, 20}, {90, 20}}, Joined(Arc({90, 100}, 85, 80, -90, 90), {{40, 180}}))) -
         Polygon(Joined({{66, 30}, {88, 30}}, Joined(Arc({88, 100}, 55, 70, -90, 90), {{66, 170}})))) |
            Polygon({{25, 20}, {60, 20}, {60, 28}, {25, 28}}) |
            Polygon({{25, 172}, {60, 172}, {60, 180}, {25, 180}}));
    Points star;
    for (int i = 0; i < 10; ++i) {
        const double angle = i * std::numbers::pi / 5 - std::numbers::pi / 2;
        const double radius = i % 2 == 0 ? 92 : 36;
        star.push_back({100 + radius * std::cos(angle), 105 + radius * std::sin(angle)});
    }
    add("star", 4, Polygon(star));
    shapes.back().medianTilt = 8;  // its arms are triangles cut off at a slant
    // The veins of a leaf: a rib with two pairs of branches.
    add("leaf", 5,
        Stroke({{140, 260}, {140, 40}}, 18, Caps::Round) | Stroke({{140, 200}, {60, 130}}, 16, Caps::Round) |
            Stroke({{140, 200}, {220, 130}}, 16, Caps::Round) |
            Stroke({{140, 140}, {75, 75}}, 16, Caps::Round) |
            Stroke({{140, 140}, {205, 75}}, 16, Caps::Round),
        280);
    add("three holes", 3,
        Stroke({{40, 100}, {200, 100}}, 100, Caps::Round) - Disc({45, 100}, 27) - Disc({120, 100}, 27) -
            Disc({195, 100}, 27),
        260);
    add("touching blobs", 1, Disc({60, 100}, 42) | Disc({140, 100}, 42));
    add("disc", 1, Disc({100, 100}, 60));
    add("square", 1, Polygon({{50, 50}, {150, 50}, {150, 150}, {50, 150}}));
    add("crescent", 1, Disc({100, 100}, 80) - Disc({130, 90}, 72));
    return shapes;
}

}  // namespace tarvex::test
