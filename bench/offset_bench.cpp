// Offsets of a long ragged contour, at distances from a tenth of its sides to a thousand of them.
#include <numbers>

#include "support.h"
#include "tarvex/bezier.h"
#include "tarvex/geometry.h"

namespace tarvex::bench {
namespace {

/// A closed coastline of at least `count` points that does not cross itself: the sides of an octagon, halved
/// again and again with the middles moved at random.
CArray<DPOINT, DPOINT> Coastline(int count) {
    std::mt19937 random(5);
    std::normal_distribution<double> wobble(0, 0.1);
    std::vector<DPOINT> points;
    for (int i = 0; i < 8; ++i) {
        const double angle = std::numbers::pi * i / 4;
        points.push_back({1000 * std::cos(angle), 1000 * std::sin(angle)});
    }
    while (static_cast<int>(points.size()) < count) {
        std::vector<DPOINT> finer;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const DPOINT a = points[i];
            const DPOINT b = points[(i + 1) % points.size()];
            const double out = wobble(random);
            finer.push_back(a);
            finer.push_back({(a.x + b.x) / 2 - out * (b.y - a.y), (a.y + b.y) / 2 + out * (b.x - a.x)});
        }
        points = std::move(finer);
    }
    CArray<DPOINT, DPOINT> contour;
    contour.SetSize(static_cast<int>(points.size()) + 1);
    std::copy(points.begin(), points.end(), contour.begin());
    contour[contour.GetUpperBound()] = points.front();
    return contour;
}

/// Some corners of the offset must lie at its distance.
void RequireDistance(const CArray<DPOINT, DPOINT>& contour, const CPolyPolyDPoint& parts, double distance) {
    for (int i = 0; i < parts.GetSize(); ++i) {
        for (int k = 0; k < parts[i].GetSize(); k += parts[i].GetSize() / 5 + 1) {
            DPOINT nearest{};
            GetPolylineClosestPoint(contour, parts[i][k], nullptr, &nearest);
            const double d = std::hypot(nearest.x - parts[i][k].x, nearest.y - parts[i][k].y);
            RequireNear(d, std::fabs(distance), 0.0101, "the distance of a point of the offset");
        }
    }
}

/// The distance is given in thousandths of the mean length of a side.
void OffsetCoastline(benchmark::State& state) {
    const CArray<DPOINT, DPOINT> contour = Coastline(Size(state));
    const double side = GetPolylineLength(contour) / (contour.GetSize() - 1);
    const double distance = side * static_cast<double>(state.range(1)) / 1000;
    const OffsetOptions round{.mitreLimit = 2, .corner = OffsetCorner::round};
    RequireDistance(contour,
                    ShrinkPolyline(contour, distance, {.mitreLimit = 1, .corner = OffsetCorner::round}),
                    distance);
    for (auto _ : state) {
        const CPolyPolyDPoint parts = ShrinkPolyline(contour, distance, round);
        benchmark::DoNotOptimize(parts.GetData());
    }
    state.counters["points"] = contour.GetSize();
}
BENCHMARK(OffsetCoastline)
    ->ArgsProduct({{1500, 15000, 120000}, {100, 1000, 10000, 100000, 1000000}})
    ->Unit(benchmark::kMillisecond);

void RemoveLoops(benchmark::State& state) {
    const CArray<DPOINT, DPOINT> contour = Coastline(Size(state));
    for (auto _ : state) {
        const CPolyPolyDPoint parts = RemovePolylineLoops(contour, 1);
        benchmark::DoNotOptimize(parts.GetData());
    }
    state.counters["points"] = contour.GetSize();
}
BENCHMARK(RemoveLoops)->Arg(15000)->Arg(120000)->Unit(benchmark::kMillisecond);

void OffsetBezierOutline(benchmark::State& state) {
    CArray<BPOINT, BPOINT> nodes;
    const int count = Size(state);
    for (int i = 0; i <= count; ++i) {
        const double angle = 2 * std::numbers::pi * (i % count) / count;
        const double radius = 1000 + 100 * std::cos(angle * 20);
        const DPOINT p{radius * std::cos(angle), radius * std::sin(angle)};
        const double handle = 2000.0 / count;
        nodes.Add({{p.x + handle * std::sin(angle), p.y - handle * std::cos(angle)},
                   p,
                   {p.x - handle * std::sin(angle), p.y + handle * std::cos(angle)}});
    }
    for (auto _ : state) {
        const CPolyPolyBezier parts = ShrinkBezier(nodes, 5);
        benchmark::DoNotOptimize(parts.GetData());
    }
    state.counters["nodes"] = count;
}
BENCHMARK(OffsetBezierOutline)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarvex::bench
