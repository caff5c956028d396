// Writes a page of spirals, satin inclinations and nested contours to standard output, as SVG:
//
//     curves > curves.svg && tarvex render curves.svg -o curves.png --width 900
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <utility>

#include "tarvex/stitch.h"

using tarvex::BPOINT;
using tarvex::DPOINT;
using Nodes = tarvex::CArray<BPOINT, BPOINT>;

namespace {

Nodes Contour(std::initializer_list<BPOINT> list) {
    Nodes nodes;
    for (const BPOINT& node : list) nodes.Add(node);
    return nodes;
}

BPOINT Corner(double x, double y) { return {{x, y}, {x, y}, {x, y}}; }

Nodes Ellipse(double x, double y, double a, double b) {
    const double h = 0.5522847498307936 * a, v = 0.5522847498307936 * b;
    return Contour({{{x + a, y - v}, {x + a, y}, {x + a, y + v}},
                    {{x + h, y + b}, {x, y + b}, {x - h, y + b}},
                    {{x - a, y + v}, {x - a, y}, {x - a, y - v}},
                    {{x - h, y - b}, {x, y - b}, {x + h, y - b}},
                    {{x + a, y - v}, {x + a, y}, {x + a, y + v}}});
}

Nodes Box(double left, double top, double right, double bottom) {
    return Contour({Corner(left, top), Corner(right, top), Corner(right, bottom), Corner(left, bottom),
                    Corner(left, top)});
}

void PrintCurve(const Nodes& nodes, const char* paint) {
    std::printf("<path %s d='M%.2f %.2f", paint, nodes[0].pt.x, nodes[0].pt.y);
    for (int i = 1; i < nodes.GetSize(); ++i) {
        const DPOINT &a = nodes[i - 1].cp2, &b = nodes[i].cp1, &c = nodes[i].pt;
        std::printf("C%.2f %.2f %.2f %.2f %.2f %.2f", a.x, a.y, b.x, b.y, c.x, c.y);
    }
    std::puts("'/>");
}

void PrintDot(const DPOINT& p, const char* colour) {
    std::printf("<circle cx='%.2f' cy='%.2f' r='1.6' fill='%s'/>\n", p.x, p.y, colour);
}

bool PrintSpirals(const tarvex::SPIRAL& shape) {
    Nodes spiral, twin;
    if (!tarvex::GetSymmetricalSpiralBPoints(shape, 0.01, spiral, twin)) return false;
    PrintCurve(spiral, "fill='none' stroke='#1c5d7a' stroke-width='2'");
    PrintCurve(twin, "fill='none' stroke='#c9722b' stroke-width='2'");
    for (const BPOINT& node : spiral) PrintDot(node.pt, "#1c5d7a");
    return true;
}

bool PrintSatin(const Nodes& rail1, const Nodes& rail2, double spacing) {
    tarvex::CArray<tarvex::DLINE, tarvex::DLINE> lines;
    if (!tarvex::GetDefaultSatinInclinations(rail1, rail2, spacing, lines)) return false;
    for (const tarvex::DLINE& line : lines) {
        std::printf("<path stroke='#c9722b' stroke-width='0.8' d='M%.2f %.2fL%.2f %.2f'/>\n", line.p1.x,
                    line.p1.y, line.p2.x, line.p2.y);
    }
    PrintCurve(rail1, "fill='none' stroke='#1c5d7a' stroke-width='2'");
    PrintCurve(rail2, "fill='none' stroke='#1c5d7a' stroke-width='2'");
    return true;
}

/// Colours contours by how deep they are nested, the outer ones first. Holes are pale.
void PrintNesting(const tarvex::CPolyPolyBezier& shape) {
    static const char* const paints[] = {"fill='#1c5d7a'", "fill='#dce8ee'", "fill='#c9722b'",
                                         "fill='#f7e6d6'", "fill='#444'"};
    tarvex::CArray<tarvex::BEZIERHOLEINFO, tarvex::BEZIERHOLEINFO> info;
    tarvex::GetBezierHoleInfo(shape, info);
    for (int depth = 0; depth < 5; ++depth) {
        for (int i = 0; i < info.GetSize(); ++i) {
            if (info[i].depth == depth) PrintCurve(shape[i], paints[depth]);
        }
    }
}

}  // namespace

int main() {
    std::puts("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 900 310'>");

    // An inner and an outer radius, and one that winds into its centre.
    bool isDone = PrintSpirals({{150, 90}, 20, 75, 1.5, -1.5707963, true});
    isDone = PrintSpirals({{85, 235}, 0, 60, 3, 0, true}) &&
             PrintSpirals({{220, 235}, 60, 30, 1, 3.1415927, false}) && isDone;

    // A smooth band of changing width, and one with a sharp turn that only its inner rail has as a corner.
    isDone = PrintSatin(Contour({{{320, 60}, {320, 60}, {380, -20}},
                                 {{400, 110}, {460, 70}, {510, 37}},
                                 {{540, 20}, {580, 50}, {580, 50}}}),
                        Contour({{{330, 90}, {330, 90}, {380, 50}},
                                 {{400, 180}, {470, 120}, {520, 84}},
                                 {{550, 70}, {575, 75}, {575, 75}}}),
                        7) &&
             isDone;
    isDone =
        PrintSatin(Contour({Corner(320, 290),
                            {{320, 180}, {350, 160}, {400, 127}},
                            {{580, 160}, {580, 290}, {580, 290}}}),
                   Contour({Corner(370, 290), Corner(390, 215), {{520, 205}, {530, 290}, {530, 290}}}), 7) &&
        isDone;

    tarvex::CPolyPolyBezier shape;
    const auto add = [&shape](Nodes nodes) { shape.Add(std::make_unique<Nodes>(std::move(nodes))); };
    add(Ellipse(745, 90, 30, 25));  // in the middle of everything
    add(Box(630, 20, 870, 165));
    add(Ellipse(745, 90, 90, 60));
    add(Box(690, 60, 800, 120));
    add(Ellipse(855, 92.5, 15, 72.5));  // touches three sides of the box that holds it
    add(Box(630, 180, 870, 290));
    add(Box(630, 180, 750, 290));  // half of it, sharing its corners
    add(Ellipse(690, 235, 60, 55));
    add(Ellipse(690, 235, 25, 55));
    add(Ellipse(810, 235, 45, 40));
    PrintNesting(shape);

    std::puts("</svg>");
    return isDone ? 0 : 1;
}
