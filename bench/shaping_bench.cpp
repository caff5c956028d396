// Unions of curved outlines, beside lib2geom's on the same curves, and how both take pairs that touch, share
// edges or are the same. Areas are compared before anything is timed; the peer may throw, which is noted.
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <utility>

#include "support.h"
#include "tarvex/clipper.h"
#include "tarvex/shaping.h"

#if defined(TARVEX_BENCH_2GEOM)
#include <2geom/bezier-curve.h>
#include <2geom/intersection-graph.h>
#include <2geom/path.h>
#include <2geom/pathvector.h>
#endif

namespace tarvex::bench {
namespace {

using Nodes = std::vector<BPOINT>;
using Outlines = std::vector<Nodes>;
using Polylines = std::vector<std::vector<DPOINT>>;

struct Operands {
    Outlines a;
    Outlines b;
};

/// A closed smooth outline through a point for each of the angles.
Nodes Smooth(int curves, const std::function<double(double)>& radius, DPOINT centre = {0, 0}) {
    const auto at = [&](int i) {
        const double angle = 2 * std::numbers::pi * (i % curves) / curves;
        return DPOINT{centre.x + radius(angle) * std::cos(angle), centre.y + radius(angle) * std::sin(angle)};
    };
    Nodes nodes;
    for (int i = 0; i <= curves; ++i) {
        const DPOINT p = at(i), before = at(i + curves - 1), after = at(i + 1);
        const DPOINT along{(after.x - before.x) / 6, (after.y - before.y) / 6};
        nodes.push_back({{p.x - along.x, p.y - along.y}, p, {p.x + along.x, p.y + along.y}});
    }
    return nodes;
}

/// Two wavy outlines 16,000 units across, which cross in about a tenth as many points as they have curves.
Operands WavyOutlines(int curves) {
    const int waves = curves / 10;
    const auto wavy = [&](double phase) {
        return Smooth(curves, [=](double angle) { return 8000 + 300 * std::sin(waves * angle / 2 + phase); });
    };
    return {{wavy(0)}, {wavy(1)}};
}

/// An outline and the same a thousandth of a unit away.
Operands NearlyTheSame(int curves) {
    const auto wavy = [&](DPOINT centre) {
        return Smooth(
            curves, [](double angle) { return 8000 + 1000 * std::sin(5 * angle); }, centre);
    };
    return {{wavy({0, 0})}, {wavy({1e-3, 5e-4})}};
}

Nodes Disc(double x, double y, double radius) {
    return Smooth(4, [radius](double) { return radius; }, {x, y});
}

/// A grid of discs, and the same moved by half a step.
Operands DiscGrids(int curves) {
    const int discs = curves / 4;
    const int columns = static_cast<int>(std::ceil(std::sqrt(discs)));
    const auto grid = [&](double offset) {
        Outlines outlines;
        for (int i = 0; i < discs; ++i) {
            const int row = i / columns;
            outlines.push_back(Disc(100.0 * (i % columns) + offset, 100.0 * row + offset, 45));
        }
        return outlines;
    };
    return {grid(0), grid(50)};
}

CPolyPolyBezier Shape(const Outlines& outlines) {
    CPolyPolyBezier shape;
    shape.SetSize(static_cast<int>(outlines.size()));
    for (std::size_t k = 0; k < outlines.size(); ++k) {
        auto nodes = std::make_unique<CArray<BPOINT, BPOINT>>();
        nodes->SetSize(static_cast<int>(outlines[k].size()));
        std::copy(outlines[k].begin(), outlines[k].end(), nodes->begin());
        shape.SetAt(static_cast<int>(k), nodes.release());
    }
    return shape;
}

/// What an odd number of the polylines surrounds, whichever way they run.
double EvenOddArea(const Polylines& lines) {
    ClipPolygon set, none, result;
    set.contourCount = static_cast<std::int32_t>(lines.size());
    set.contours = new ClipContour[lines.size()]();
    for (std::size_t k = 0; k < lines.size(); ++k) {
        auto* vertices = new DPOINT[lines[k].size()];
        std::copy(lines[k].begin(), lines[k].end(), vertices);
        set.contours[k] = {static_cast<std::int32_t>(lines[k].size()), vertices};
    }
    ClipPolygons(SHAPING_UNION, set, none, result);
    double twice = 0;
    for (int c = 0; c < result.contourCount; ++c) {
        const ClipContour& contour = result.contours[c];
        for (int i = 0; i < contour.vertexCount; ++i) {
            const DPOINT& p = contour.vertices[i];
            const DPOINT& q = contour.vertices[(i + 1) % contour.vertexCount];
            twice += p.x * q.y - q.x * p.y;
        }
    }
    FreeClipPolygon(set);
    FreeClipPolygon(result);
    return twice / 2;
}

constexpr int kSteps = 16;  // of a curve in the areas that are compared

DPOINT PointOf(const BPOINT& from, const BPOINT& to, double t) {
    const double u = 1 - t;
    const double weights[] = {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
    const DPOINT points[] = {from.pt, from.cp2, to.cp1, to.pt};
    DPOINT p{0, 0};
    for (int i = 0; i < 4; ++i) p = {p.x + weights[i] * points[i].x, p.y + weights[i] * points[i].y};
    return p;
}

double AreaOf(const CPolyPolyBezier& shape) {
    Polylines lines;
    for (int k = 0; k < shape.GetCount(); ++k) {
        lines.emplace_back();
        for (int i = 0; i + 1 < shape[k].GetSize(); ++i) {
            for (int s = 0; s < kSteps; ++s)
                lines.back().push_back(PointOf(shape[k][i], shape[k][i + 1], double{1} * s / kSteps));
        }
    }
    return EvenOddArea(lines);
}

/// 0 when there is no result.
double CombinedArea(int op, const Operands& operands) {
    CPolyPolyBezier a = Shape(operands.a), b = Shape(operands.b);
    return PolyPolyBezierShaping(op, a, b) ? AreaOf(a) : 0;
}

/// Union and intersection together are both operands, which do not cross themselves. Polylines of 16 edges a
/// curve leave out up to 1.6 thousandths of a disc of four.
void RequireAreas(const Operands& operands) {
    const double both = AreaOf(Shape(operands.a)) + AreaOf(Shape(operands.b));
    const double sum = CombinedArea(SHAPING_UNION, operands) + CombinedArea(SHAPING_INTERSECTION, operands);
    RequireNear(sum, both, 2e-3 * both, "the area of union and intersection beside that of the operands");
}

void Union(benchmark::State& state, const Operands& operands) {
    if (Size(state) <= 10000) RequireAreas(operands);
    const CPolyPolyBezier a = Shape(operands.a), b = Shape(operands.b);
    int nodes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        CPolyPolyBezier first, second;
        first.Copy(a);
        second.Copy(b);
        state.ResumeTiming();
        if (!PolyPolyBezierShaping(SHAPING_UNION, first, second)) state.SkipWithError("no result");
        nodes = 0;
        for (int k = 0; k < first.GetCount(); ++k) nodes += first[k].GetSize();
    }
    state.counters["nodes"] = nodes;
}

void WavyUnion(benchmark::State& state) { Union(state, WavyOutlines(Size(state))); }
void NearlySameUnion(benchmark::State& state) { Union(state, NearlyTheSame(Size(state))); }
void DiscGridUnion(benchmark::State& state) { Union(state, DiscGrids(Size(state))); }

// Pairs that break programs; the areas of their unions are told by those of polylines.
struct Pair {
    const char* name;
    Operands operands;
};

Nodes Rect(double left, double top, double right, double bottom) {
    Nodes nodes;
    for (const DPOINT p : {DPOINT{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}})
        nodes.push_back({p, p, p});
    return nodes;
}

Nodes Moved(Nodes nodes, double dx, double dy) {
    for (BPOINT& node : nodes) {
        for (DPOINT* p : {&node.cp1, &node.pt, &node.cp2}) *p = {p->x + dx, p->y + dy};
    }
    return nodes;
}

std::vector<Pair> Battery() {
    const Nodes square = Rect(0, 0, 100, 100), disc = Disc(0, 0, 500);
    const Nodes cusp = {{{0, 300}, {0, 300}, {0, 100}},
                        {{100, 0}, {300, 0}, {0, -200}},
                        {{0, -200}, {-300, 0}, {-100, 0}},
                        {{0, 100}, {0, 300}, {0, 300}}};
    return {
        {"overlap", {{square}, {Rect(50, 50, 150, 150)}}},
        {"disc itself", {{disc}, {disc}}},
        {"disc 1e-12 apart", {{disc}, {Moved(disc, 1e-12, -1e-12)}}},
        {"disc 1e-5 apart", {{disc}, {Moved(disc, 1e-5, 2e-5)}}},
        {"shared edge", {{square}, {Rect(100, 0, 200, 100)}}},
        {"partly shared edge", {{square}, {Rect(100, 20, 200, 70)}}},
        {"shared corner", {{square}, {Rect(100, 100, 200, 200)}}},
        {"discs that touch", {{disc}, {Disc(1000, 0, 500)}}},
        {"disc touching inside", {{disc}, {Disc(250, 0, 250)}}},
        {"hole and what fills it",
         {{Rect(0, 0, 300, 300), Rect(100, 100, 200, 200)}, {Rect(100, 100, 200, 200)}}},
        {"two shared edges", {{square}, {Rect(0, 0, 50, 50)}}},
        {"cusp on an edge", {{cusp}, {Rect(-100, 300, 100, 400)}}},
        {"edge along a node's tangent", {{disc}, {Rect(500, -200, 700, 200)}}},
    };
}

Polylines Lines(const Outlines& outlines, int steps) {
    Polylines lines;
    for (const Nodes& nodes : outlines) {
        lines.emplace_back();
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i)
            for (int s = 0; s < steps; ++s)
                lines.back().push_back(PointOf(nodes[i], nodes[i + 1], double{1} * s / steps));
    }
    return lines;
}

/// Union and intersection of even-odd sets have the area of both together, so the union's area is half
/// of the sum of all areas that clipping polylines finds: of a, of b, and of what is in one only.
double WantedUnion(const Operands& operands) {
    Polylines both = Lines(operands.a, 500);
    const double a = EvenOddArea(both);
    const Polylines other = Lines(operands.b, 500);
    const double b = EvenOddArea(other);
    both.insert(both.end(), other.begin(), other.end());
    return (a + b + EvenOddArea(both)) / 2;
}

const char* Verdict(double area, double wanted) {
    return std::fabs(area - wanted) <= 2e-3 * wanted ? "right" : "wrong area";
}

void BatteryUnion(benchmark::State& state) {
    const Pair pair = Battery()[static_cast<std::size_t>(state.range(0))];
    double area = 0;
    for (auto _ : state) area = CombinedArea(SHAPING_UNION, pair.operands);
    state.SetLabel(std::string(pair.name) + ": " + Verdict(area, WantedUnion(pair.operands)));
}

#if defined(TARVEX_BENCH_2GEOM)

Geom::PathVector PeerPaths(const Outlines& outlines) {
    const auto point = [](DPOINT p) { return Geom::Point(p.x, p.y); };
    Geom::PathVector paths;
    for (const Nodes& nodes : outlines) {
        Geom::Path path(point(nodes.front().pt));
        for (std::size_t i = 0; i + 1 < nodes.size(); ++i) {
            const BPOINT &from = nodes[i], &to = nodes[i + 1];
            if (from.cp2 == from.pt && to.cp1 == to.pt) {
                path.appendNew<Geom::LineSegment>(point(to.pt));
            } else {
                path.appendNew<Geom::CubicBezier>(point(from.cp2), point(to.cp1), point(to.pt));
            }
        }
        path.close();
        paths.push_back(path);
    }
    return paths;
}

double PeerArea(const Geom::PathVector& paths) {
    Polylines lines;
    for (const Geom::Path& path : paths) {
        lines.emplace_back();
        for (const Geom::Curve& curve : path) {
            for (int s = 0; s < kSteps; ++s) {
                const Geom::Point p = curve.pointAt(double{1} * s / kSteps);
                lines.back().push_back({p.x(), p.y()});
            }
        }
    }
    return EvenOddArea(lines);
}

/// Times the peer; whatever it throws ends this benchmark only.
void PeersUnion(benchmark::State& state, const Operands& operands) {
    const Geom::PathVector a = PeerPaths(operands.a), b = PeerPaths(operands.b);
    Geom::PathVector result;
    try {
        for (auto _ : state) result = Geom::PathIntersectionGraph(a, b).getUnion();
    } catch (...) {  // also enumerators, which are no exceptions
        state.SkipWithError("throws");
        return;
    }
    state.SetLabel(Verdict(PeerArea(result), CombinedArea(SHAPING_UNION, operands)));
}

void PeerWavyUnion(benchmark::State& state) { PeersUnion(state, WavyOutlines(Size(state))); }
void PeerNearlySameUnion(benchmark::State& state) { PeersUnion(state, NearlyTheSame(Size(state))); }
void PeerDiscGridUnion(benchmark::State& state) { PeersUnion(state, DiscGrids(Size(state))); }

void PeerBatteryUnion(benchmark::State& state) {
    const Pair pair = Battery()[static_cast<std::size_t>(state.range(0))];
    const Geom::PathVector a = PeerPaths(pair.operands.a), b = PeerPaths(pair.operands.b);
    std::string verdict;
    for (auto _ : state) {
        try {
            Geom::PathIntersectionGraph graph(a, b);
            const double area = PeerArea(graph.getUnion());
            verdict = Verdict(area, WantedUnion(pair.operands));
            if (!graph.valid()) verdict += " (says that it is not valid)";
        } catch (...) {
            verdict = "throws";
        }
    }
    state.SetLabel(std::string(pair.name) + ": " + verdict);
}
#endif

void Sizes(benchmark::internal::Benchmark* b) { b->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond); }
void LargeSizes(benchmark::internal::Benchmark* b) {
    b->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
}
void Pairs(benchmark::internal::Benchmark* b) {
    b->DenseRange(0, static_cast<int>(Battery().size()) - 1)->Iterations(1)->Unit(benchmark::kMillisecond);
}

BENCHMARK(WavyUnion)->Apply(Sizes);
BENCHMARK(NearlySameUnion)->Apply(Sizes);
BENCHMARK(DiscGridUnion)->Apply(Sizes);
BENCHMARK(WavyUnion)->Apply(LargeSizes);
BENCHMARK(NearlySameUnion)->Apply(LargeSizes);
BENCHMARK(DiscGridUnion)->Apply(LargeSizes);
BENCHMARK(BatteryUnion)->Apply(Pairs);
#if defined(TARVEX_BENCH_2GEOM)
BENCHMARK(PeerWavyUnion)->Apply(Sizes);
BENCHMARK(PeerNearlySameUnion)->Apply(Sizes);
BENCHMARK(PeerDiscGridUnion)->Apply(Sizes);
BENCHMARK(PeerBatteryUnion)->Apply(Pairs);
#endif

}  // namespace
}  // namespace tarvex::bench
