// Hulls, point in polygon and the nearest point of a polyline, beside Boost.Geometry on the same points.
//
// The polygon is a coastline: a circle whose radius wanders, so that no vertex is like its neighbour and the
// answer needs a look at each of them.
#include <numbers>

#include "support.h"
#include "tarvex/geometry.h"

#if defined(TARVEX_BENCH_BOOST_GEOMETRY)
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/linestring.hpp>
#include <boost/geometry/geometries/multi_point.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>
#endif

namespace tarvex::bench {
namespace {

constexpr double kRadius = 1e8;

std::vector<tagPOINT> Cloud(int count) {
    std::mt19937 random(3);
    std::vector<tagPOINT> points;
    while (static_cast<int>(points.size()) < count) {
        const double x = 2 * Uniform(random) - 1;
        const double y = 2 * Uniform(random) - 1;
        if (x * x + y * y < 1)
            points.push_back({static_cast<LONG>(kRadius * x), static_cast<LONG>(kRadius * y)});
    }
    return points;
}

std::vector<DPOINT> Coast(int count) {
    std::mt19937 random(4);
    std::vector<DPOINT> points;
    double wander = 0;
    for (int i = 0; i < count; ++i) {
        wander = 0.999 * wander + 0.01 * (Uniform(random) - 0.5);
        const double angle = 2 * std::numbers::pi * i / count;
        const double radius = kRadius * (0.7 + 0.3 * std::sin(7 * angle) * 0.5 + wander);
        points.push_back({std::floor(radius * std::cos(angle)), std::floor(radius * std::sin(angle))});
    }
    points.push_back(points.front());
    return points;
}

std::vector<DPOINT> Queries() {
    std::mt19937 random(5);
    std::vector<DPOINT> points(64);
    for (DPOINT& p : points)
        p = {std::floor(kRadius * (2 * Uniform(random) - 1)),
             std::floor(kRadius * (2 * Uniform(random) - 1))};
    return points;
}

template <class To, class From>
CArray<To, To> ArrayOf(const std::vector<From>& points) {
    CArray<To, To> array;
    array.SetSize(static_cast<int>(points.size()));
    for (int i = 0; i < array.GetSize(); ++i) {
        const From& p = points[static_cast<std::size_t>(i)];
        array[i].x = static_cast<decltype(To::x)>(p.x);
        array[i].y = static_cast<decltype(To::y)>(p.y);
    }
    return array;
}

void Hull(benchmark::State& state) {
    const CArray<tagPOINT, tagPOINT> cloud = ArrayOf<tagPOINT>(Cloud(Size(state)));
    int corners = 0;
    for ([[maybe_unused]] auto _ : state) {
        CArray<tagPOINT, tagPOINT> points;
        points.Copy(cloud);
        GetConvexHull(points);
        corners = points.GetSize();
    }
    state.counters["corners"] = corners;
}

void Contains(benchmark::State& state) {
    const CArray<tagPOINT, tagPOINT> coast = ArrayOf<tagPOINT>(Coast(Size(state)));
    const std::vector<DPOINT> queries = Queries();
    const CRect frame = GetPolygonRect(coast.GetData(), coast.GetSize());
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        const DPOINT& p = queries[i++ % queries.size()];
        benchmark::DoNotOptimize(
            IsPointInPolygon(coast, {static_cast<LONG>(p.x), static_cast<LONG>(p.y)}, &frame));
    }
}

void Closest(benchmark::State& state) {
    const CArray<DPOINT, DPOINT> coast = ArrayOf<DPOINT>(Coast(Size(state)));
    const std::vector<DPOINT> queries = Queries();
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        int segment = 0;
        DPOINT found{};
        GetPolylineClosestPoint(coast, queries[i++ % queries.size()], &segment, &found);
        benchmark::DoNotOptimize(found);
    }
}

void Sizes(benchmark::internal::Benchmark* bench) {
    bench->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);
}
BENCHMARK(Hull)->Apply(Sizes);
BENCHMARK(Contains)->Apply(Sizes);
BENCHMARK(Closest)->Apply(Sizes);

#if defined(TARVEX_BENCH_BOOST_GEOMETRY)

namespace bg = boost::geometry;
using WholePoint = bg::model::d2::point_xy<std::int32_t>;
using Point = bg::model::d2::point_xy<double>;

/// Twice the area that a closed ring surrounds, whichever way it runs.
template <class At>
std::int64_t TwiceArea(std::size_t points, At at) {
    std::int64_t twice = 0;
    for (std::size_t i = 1; i < points; ++i)
        twice += std::int64_t{at(i - 1).x} * at(i).y - std::int64_t{at(i).x} * at(i - 1).y;
    return std::abs(twice);
}

/// Both leave out points along the edges and repeat the first point, so they have as many.
void RequireSameHull(const bg::model::polygon<WholePoint>& hull, const std::vector<tagPOINT>& cloud) {
    CArray<tagPOINT, tagPOINT> ours = ArrayOf<tagPOINT>(cloud);
    GetConvexHull(ours);
    const auto& ring = hull.outer();
    const auto count = static_cast<std::size_t>(ours.GetSize());
    Require(ring.size() == count, "the hulls have different numbers of corners");
    Require(TwiceArea(count, [&](std::size_t i) { return ours[static_cast<int>(i)]; }) ==
                TwiceArea(count,
                          [&](std::size_t i) {
                              return tagPOINT{ring[i].x(), ring[i].y()};
                          }),
            "the hulls have different areas");
}

void PeerHull(benchmark::State& state) {
    const std::vector<tagPOINT> points = Cloud(Size(state));
    bg::model::multi_point<WholePoint> cloud;
    for (const tagPOINT& p : points) cloud.emplace_back(p.x, p.y);
    bg::model::polygon<WholePoint> hull;
    for ([[maybe_unused]] auto _ : state) {
        hull.clear();
        bg::convex_hull(cloud, hull);
        benchmark::DoNotOptimize(hull.outer().data());
    }
    RequireSameHull(hull, points);
    state.counters["corners"] = static_cast<double>(hull.outer().size());
}

void PeerContains(benchmark::State& state) {
    const std::vector<DPOINT> coast = Coast(Size(state));
    const CArray<tagPOINT, tagPOINT> ours = ArrayOf<tagPOINT>(coast);
    const CRect frame = GetPolygonRect(ours.GetData(), ours.GetSize());
    bg::model::ring<WholePoint, false> ring;
    for (const DPOINT& p : coast) ring.emplace_back(static_cast<LONG>(p.x), static_cast<LONG>(p.y));
    const std::vector<DPOINT> queries = Queries();
    const auto at = [&queries](std::size_t i) {
        const DPOINT& p = queries[i % queries.size()];
        return WholePoint(static_cast<LONG>(p.x), static_cast<LONG>(p.y));
    };
    for (std::size_t i = 0; i < queries.size(); ++i) {
        const WholePoint p = at(i);
        Require(bg::within(p, ring) == (IsPointInPolygon(ours, {p.x(), p.y()}, &frame) != 0),
                "the point is inside for one only");
    }
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(bg::within(at(i++), ring));
}

void PeerClosest(benchmark::State& state) {
    const std::vector<DPOINT> coast = Coast(Size(state));
    const CArray<DPOINT, DPOINT> ours = ArrayOf<DPOINT>(coast);
    bg::model::linestring<Point> line;
    for (const DPOINT& p : coast) line.emplace_back(p.x, p.y);
    const std::vector<DPOINT> queries = Queries();
    for (const DPOINT& p : queries) {
        DPOINT found{};
        GetPolylineClosestPoint(ours, p, nullptr, &found);
        const double distance = std::hypot(found.x - p.x, found.y - p.y);
        RequireNear(distance, bg::distance(Point(p.x, p.y), line), 1e-6 * kRadius,
                    "the distance of the closest point");
    }
    std::size_t i = 0;
    for ([[maybe_unused]] auto _ : state) {
        const DPOINT& p = queries[i++ % queries.size()];
        benchmark::DoNotOptimize(bg::distance(Point(p.x, p.y), line));  // the distance only: no point is told
    }
}

BENCHMARK(PeerHull)->Apply(Sizes);
BENCHMARK(PeerContains)->Apply(Sizes);
BENCHMARK(PeerClosest)->Apply(Sizes);

#endif

}  // namespace
}  // namespace tarvex::bench
