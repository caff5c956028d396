// Cubic segments: fitting outlines, flattening, length and nearest point; lib2geom's for comparison.
#include <algorithm>
#include <memory>
#include <numbers>

#include "support.h"
#include "tarvex/bezier.h"

#if defined(TARVEX_BENCH_2GEOM)
#include <2geom/bezier-curve.h>
#include <2geom/bezier-utils.h>
#endif

namespace tarvex::bench {
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
        RequireNear(nearest, 0, std::sqrt(kError) + 1e-9, "a fitted chain's distance from a point");
    }
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
    CountItems(state, "points", points);
}
BENCHMARK(FitBlobs)->Unit(benchmark::kMillisecond);

void FitOutline(benchmark::State& state) {
    const Run run = LongOutline(Size(state));
    CArray<BEZIER, BEZIER> segments;
    FitCurve(run.data(), static_cast<int>(run.size()), &segments, kError);
    RequireClose(run, segments);
    for (auto _ : state) {
        segments.RemoveAll();
        FitCurve(run.data(), static_cast<int>(run.size()), &segments, kError);
        benchmark::DoNotOptimize(segments.GetData());
    }
    state.counters["segments"] = segments.GetSize();
    CountItems(state, "points", run.size());
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
    CountItems(state, "points", run.size());
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
    CountItems(state, "points", static_cast<std::size_t>(points.GetSize()));
}
BENCHMARK(Flatten)->Arg(1)->Arg(10)->Arg(40);

/// Outlines of arches of about 10 units, as a traced drawing's are, in contours of a thousand segments.
std::vector<CArray<BPOINT, BPOINT>> Drawing(int segments) {
    constexpr int kContour = 1000;
    std::mt19937 random(9);
    std::vector<CArray<BPOINT, BPOINT>> contours(static_cast<std::size_t>(segments / kContour));
    for (auto& nodes : contours) {
        nodes.SetSize(kContour + 1);
        DPOINT p{2000 * Uniform(random), 2000 * Uniform(random)};
        double turn = 2 * std::numbers::pi * Uniform(random);
        for (BPOINT& node : nodes) {
            const DPOINT out{4 * std::cos(turn), 4 * std::sin(turn)};
            node = {{p.x - out.x, p.y - out.y}, p, {p.x + out.x, p.y + out.y}};
            const double step = turn + Uniform(random) - 0.5;
            p = {p.x + 10 * std::cos(step), p.y + 10 * std::sin(step)};
            turn += Uniform(random) - 0.5;
        }
    }
    return contours;
}

void FlattenSet(benchmark::State& state) {
    const auto contours = Drawing(Size(state));
    std::size_t count = 0;
    for (auto _ : state) {
        std::vector<CArray<DPOINT, DPOINT>> polylines(contours.size());
        count = 0;
        for (std::size_t i = 0; i < contours.size(); ++i) {
            GetPolyline(contours[i], polylines[i], 1.0);
            count += static_cast<std::size_t>(polylines[i].GetSize());
        }
        benchmark::DoNotOptimize(polylines.data());
    }
    CountItems(state, "points", count);
}
BENCHMARK(FlattenSet)->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond);

/// What is left of flattening when nothing is computed: as many points, written one after the other into as
/// many new arrays.
void FlattenSetPeerWriting(benchmark::State& state) {
    std::vector<std::size_t> counts;
    CArray<DPOINT, DPOINT> points;
    for (const auto& nodes : Drawing(Size(state))) {
        GetPolyline(nodes, points, 1.0);
        counts.push_back(static_cast<std::size_t>(points.GetSize()));
    }
    for (auto _ : state) {
        std::vector<std::unique_ptr<DPOINT[]>> written;
        for (const std::size_t count : counts) {
            written.push_back(std::make_unique_for_overwrite<DPOINT[]>(count));
            double value = 0;
            for (std::size_t i = 0; i < count; ++i, value += 1) written.back()[i] = {value, value};
            benchmark::ClobberMemory();
        }
    }
}
BENCHMARK(FlattenSetPeerWriting)->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond);

/// The resolution that a segment has of itself, and a finer one, which asks for the rule's largest number of
/// chords.
void LengthAt(benchmark::State& state, double resolution) {
    CBezier curve = kArch;
    curve.SetResolution(resolution);
    for (auto _ : state) benchmark::DoNotOptimize(curve.GetLength());
}
void LengthDefault(benchmark::State& state) { LengthAt(state, CBezier(kArch).resolution); }
void Length(benchmark::State& state) { LengthAt(state, 1e-3); }
BENCHMARK(LengthDefault)->Unit(benchmark::kMicrosecond);
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
    CountItems(state, "points", count);
}
BENCHMARK(FitBlobsPeer)->Unit(benchmark::kMillisecond);

void FitOutlinePeer(benchmark::State& state) {
    const std::vector<Geom::Point> points = PointsOf(LongOutline(Size(state)));
    std::vector<Geom::Point> beziers;
    int segments = 0;
    for (auto _ : state) benchmark::DoNotOptimize(segments = PeerFit(points, beziers));
    state.counters["segments"] = segments;
    CountItems(state, "points", points.size());
}
BENCHMARK(FitOutlinePeer)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);

/// lib2geom flattens by its caller's hand: as many even parameters as ours needs points.
void FlattenSetPeer(benchmark::State& state) {
    const auto point = [](const DPOINT& p) { return Geom::Point(p.x, p.y); };
    std::vector<Geom::CubicBezier> curves;
    std::vector<int> counts;
    CArray<DPOINT, DPOINT> polyline;
    for (const auto& nodes : Drawing(Size(state))) {
        for (int i = 0; i + 1 < nodes.GetSize(); ++i) {
            curves.emplace_back(point(nodes[i].pt), point(nodes[i].cp2), point(nodes[i + 1].cp1),
                                point(nodes[i + 1].pt));
            polyline.RemoveAll();
            CBezier(nodes[i], nodes[i + 1]).GetPolyline(polyline);
            counts.push_back(polyline.GetSize() - 1);
        }
    }
    std::vector<Geom::Point> points;
    for (auto _ : state) {
        points = {};
        for (std::size_t i = 0; i < curves.size(); ++i) {
            for (int k = 1; k <= counts[i]; ++k)
                points.push_back(curves[i].pointAt(static_cast<double>(k) / counts[i]));
        }
        benchmark::DoNotOptimize(points.data());
    }
    CountItems(state, "points", points.size());
}
BENCHMARK(FlattenSetPeer)->RangeMultiplier(10)->Range(10000, 1000000)->Unit(benchmark::kMillisecond);

void LengthPeerTo(benchmark::State& state, double tolerance) {
    const Geom::CubicBezier curve = PeerArch();
    RequireNear(kArch.GetLength(), curve.length(1e-5), 1e-2, "the arc's length");
    for (auto _ : state) benchmark::DoNotOptimize(curve.length(tolerance));
}
void LengthPeerDefault(benchmark::State& state) { LengthPeerTo(state, CBezier(kArch).resolution); }
void LengthPeer(benchmark::State& state) { LengthPeerTo(state, 1e-6); }
BENCHMARK(LengthPeerDefault)->Unit(benchmark::kMicrosecond);
BENCHMARK(LengthPeer)->Unit(benchmark::kMicrosecond);

void NearestPointPeer(benchmark::State& state) {
    const Geom::CubicBezier curve = PeerArch();
    const std::vector<DPOINT> queries = QueryPoints();
    for (const DPOINT& p : queries) {
        const Geom::Point found = curve.pointAt(curve.nearestTime(Geom::Point(p.x, p.y)));
        const DPOINT q = kArch.GetNearestCurvePoint(p);
        const double peer = std::hypot(found.x() - p.x, found.y() - p.y);
        Require(std::hypot(q.x - p.x, q.y - p.y) <= peer + 1e-9, "the peer's point of the curve is nearer");
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
}  // namespace tarvex::bench
