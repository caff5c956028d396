// Cubic segments: fitting outlines, flattening, length and nearest point; lib2geom's for comparison.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <random>
#include <vector>

#include "tarvex/bezier.h"

#if defined(TARVEX_BENCH_2GEOM)
#include <2geom/bezier-curve.h>
#include <2geom/bezier-utils.h>
#endif

namespace tarvex {
namespace {

constexpr double kError = 5;  // what outline tracing asks for

using Run = std::vector<DPOINT>;

/// The pixel boundary of a wavy blob about (x, y): whole coordinates, each point a neighbour of the
/// one before, back to the start.
Run Blob(double x, double y, double radius, int waves, double waviness) {
    Run run;
    const int steps = static_cast<int>(radius * 40) + 100;
    for (int i = 0; i <= steps; ++i) {
        const double angle = 2 * std::numbers::pi * i / steps;
        const double r = radius * (1 + waviness * std::sin(waves * angle) +
                                   waviness / 3 * std::cos((2 * waves + 1) * angle));
        const DPOINT point{std::floor(x + r * std::cos(angle)), std::floor(y + r * std::sin(angle))};
        if (run.empty() || run.back().x != point.x || run.back().y != point.y) run.push_back(point);
    }
    return run;
}

/// The boundaries in a picture of 4000 x 4000 pixels that is full of small blobs.
std::vector<Run> PictureOfBlobs(int count) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> place(30, 3970);
    std::uniform_real_distribution<double> radius(8, 24);
    std::uniform_int_distribution<int> waves(2, 5);
    std::vector<Run> runs;
    for (int i = 0; i < count; ++i) {
        const double x = place(random);
        const double y = place(random);
        const double r = radius(random);
        runs.push_back(Blob(x, y, r, waves(random), 0.15));
    }
    return runs;
}

/// A run of exactly `count` points along one long wavy outline.
Run LongOutline(int count) {
    Run run = Blob(0, 0, count / 5.0, 40, 0.1);
    while (static_cast<int>(run.size()) < count) run.insert(run.end(), run.begin(), run.end());
    run.resize(static_cast<std::size_t>(count));
    return run;
}

double DistanceToSegment(const BEZIER& segment, const DPOINT& p) {
    const DPOINT q = CBezier(segment.p0, segment.p1, segment.p2, segment.p3).GetNearestCurvePoint(p);
    return std::hypot(q.x - p.x, q.y - p.y);
}

/// Every hundredth point must be within the tolerance of some segment of the chain.
void RequireClose(const Run& run, const CArray<BEZIER, BEZIER>& segments) {
    for (std::size_t i = 0; i < run.size(); i += run.size() / 100 + 1) {
        double nearest = 1e100;
        for (int s = 0; s < segments.GetSize(); ++s)
            nearest = std::min(nearest, DistanceToSegment(segments[s], run[i]));
        if (!(nearest <= std::sqrt(kError) + 1e-9)) {
            std::fprintf(stderr, "a fitted chain is %g away from a point\n", nearest);
            std::abort();
        }
    }
}

void CountPoints(benchmark::State& state, std::size_t points) {
    state.counters["points"] = static_cast<double>(points);
    state.counters["per_point"] =
        benchmark::Counter(static_cast<double>(points),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void FitBlobs(benchmark::State& state) {
    const std::vector<Run> runs = PictureOfBlobs(8000);
    std::size_t points = 0;
    CArray<BEZIER, BEZIER> segments;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        points += runs[i].size();
        if (i % 100 != 0) continue;
        segments.RemoveAll();
        FitCurve(runs[i].data(), static_cast<int>(runs[i].size()), &segments, kError);
        RequireClose(runs[i], segments);
    }
    CArray<BPOINT, BPOINT> nodes;
    for (auto _ : state) {
        for (const Run& run : runs) {
            FitCurve(run.data(), static_cast<int>(run.size()), &nodes, kError);
            benchmark::DoNotOptimize(nodes.GetData());
        }
    }
    CountPoints(state, points);
}
BENCHMARK(FitBlobs)->Unit(benchmark::kMillisecond);

void FitOutline(benchmark::State& state) {
    const Run run = LongOutline(static_cast<int>(state.range(0)));
    CArray<BEZIER, BEZIER> segments;
    FitCurve(run.data(), static_cast<int>(run.size()), &segments, kError);
    RequireClose(run, segments);
    for (auto _ : state) {
        segments.RemoveAll();
        FitCurve(run.data(), static_cast<int>(run.size()), &segments, kError);
        benchmark::DoNotOptimize(segments.GetData());
    }
    state.counters["segments"] = segments.GetSize();
    CountPoints(state, run.size());
}
BENCHMARK(FitOutline)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);

void FitNoise(benchmark::State& state) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> coordinate(0, 1000);
    Run run(static_cast<std::size_t>(state.range(0)));
    for (DPOINT& point : run) point = {coordinate(random), coordinate(random)};
    CArray<BEZIER, BEZIER> segments;
    for (auto _ : state) {
        segments.RemoveAll();
        FitCurve(run.data(), static_cast<int>(run.size()), &segments, kError);
        benchmark::DoNotOptimize(segments.GetData());
    }
    CountPoints(state, run.size());
}
BENCHMARK(FitNoise)->Arg(1000000)->Unit(benchmark::kMillisecond);

const CBezier kArch({0, 0}, {30, 400}, {700, 350}, {900, -20});

void Flatten(benchmark::State& state) {
    CBezier curve = kArch;
    curve.SetResolution(1.0 / static_cast<double>(state.range(0)));
    CArray<DPOINT, DPOINT> points;
    for (auto _ : state) {
        points.RemoveAll();
        curve.GetPolyline(points);
        benchmark::DoNotOptimize(points.GetData());
    }
    CountPoints(state, static_cast<std::size_t>(points.GetSize()));
}
BENCHMARK(Flatten)->Arg(1)->Arg(10)->Arg(40);

void FlattenContour(benchmark::State& state) {
    const Run run = LongOutline(100000);
    CArray<BPOINT, BPOINT> nodes;
    FitCurve(run.data(), static_cast<int>(run.size()), &nodes, kError);
    CArray<DPOINT, DPOINT> points;
    for (auto _ : state) {
        GetPolyline(nodes, points, 1.0);
        benchmark::DoNotOptimize(points.GetData());
    }
    CountPoints(state, static_cast<std::size_t>(points.GetSize()));
}
BENCHMARK(FlattenContour)->Unit(benchmark::kMicrosecond);

void Length(benchmark::State& state) {
    CBezier curve = kArch;
    curve.SetResolution(1e-3);
    for (auto _ : state) benchmark::DoNotOptimize(curve.GetLength());
}
BENCHMARK(Length)->Unit(benchmark::kMicrosecond);

std::vector<DPOINT> QueryPoints() {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> x(-200, 1100);
    std::uniform_real_distribution<double> y(-200, 600);
    std::vector<DPOINT> points(64);
    for (DPOINT& point : points) point = {x(random), y(random)};
    return points;
}

void NearestPoint(benchmark::State& state) {
    const std::vector<DPOINT> queries = QueryPoints();
    std::size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(kArch.GetNearestCurvePointT(queries[i++ % queries.size()]));
}
BENCHMARK(NearestPoint);

void NearestPointByScan(benchmark::State& state) {
    const std::vector<DPOINT> queries = QueryPoints();
    std::size_t i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(kArch._GetCurveT(queries[i++ % queries.size()]));
}
BENCHMARK(NearestPointByScan);

#if defined(TARVEX_BENCH_2GEOM)

std::vector<Geom::Point> PointsOf(const Run& run) {
    std::vector<Geom::Point> points;
    for (const DPOINT& point : run) points.emplace_back(point.x, point.y);
    return points;
}

Geom::CubicBezier PeerArch() {
    const auto point = [](const DPOINT& p) { return Geom::Point(p.x, p.y); };
    return {point(kArch.p0), point(kArch.p1), point(kArch.p2), point(kArch.p3)};
}

/// Fits into `beziers` (four points each) and returns their number.
int PeerFit(const std::vector<Geom::Point>& points, std::vector<Geom::Point>& beziers) {
    beziers.resize(points.size() * 4);
    return Geom::bezier_fit_cubic_r(beziers.data(), points.data(), static_cast<int>(points.size()), kError,
                                    static_cast<unsigned>(points.size()));
}

void FitBlobsPeer(benchmark::State& state) {
    std::vector<std::vector<Geom::Point>> runs;
    std::size_t count = 0;
    for (const Run& run : PictureOfBlobs(8000)) {
        runs.push_back(PointsOf(run));
        count += run.size();
    }
    std::vector<Geom::Point> beziers;
    for (auto _ : state) {
        for (const auto& run : runs) benchmark::DoNotOptimize(PeerFit(run, beziers));
    }
    CountPoints(state, count);
}
BENCHMARK(FitBlobsPeer)->Unit(benchmark::kMillisecond);

void FitOutlinePeer(benchmark::State& state) {
    const std::vector<Geom::Point> points = PointsOf(LongOutline(static_cast<int>(state.range(0))));
    std::vector<Geom::Point> beziers;
    int segments = 0;
    for (auto _ : state) benchmark::DoNotOptimize(segments = PeerFit(points, beziers));
    state.counters["segments"] = segments;
    CountPoints(state, points.size());
}
BENCHMARK(FitOutlinePeer)->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMicrosecond);

void LengthPeer(benchmark::State& state) {
    const Geom::CubicBezier curve = PeerArch();
    if (std::fabs(curve.length(1e-5) - kArch.GetLength()) > 1e-2) std::abort();
    for (auto _ : state) benchmark::DoNotOptimize(curve.length(1e-6));
}
BENCHMARK(LengthPeer)->Unit(benchmark::kMicrosecond);

void NearestPointPeer(benchmark::State& state) {
    const Geom::CubicBezier curve = PeerArch();
    const std::vector<DPOINT> queries = QueryPoints();
    for (const DPOINT& p : queries) {
        const Geom::Point found = curve.pointAt(curve.nearestTime(Geom::Point(p.x, p.y)));
        const DPOINT q = kArch.GetNearestCurvePoint(p);
        const double peer = std::hypot(found.x() - p.x, found.y() - p.y);
        if (std::hypot(q.x - p.x, q.y - p.y) > peer + 1e-9) std::abort();
    }
    std::size_t i = 0;
    for (auto _ : state) {
        const DPOINT& p = queries[i++ % queries.size()];
        benchmark::DoNotOptimize(curve.nearestTime(Geom::Point(p.x, p.y)));
    }
}
BENCHMARK(NearestPointPeer);

#endif

}  // namespace
}  // namespace tarvex
