// Unions of polygon sets, beside polyclipping's on the same sets rounded to whole numbers.
#include <memory>
#include <numbers>
#include <utility>

#include "support.h"
#include "tarvex/clipper.h"

#if defined(TARVEX_BENCH_POLYCLIPPING)
#include <polyclipping/clipper.hpp>
#endif
#if defined(TARVEX_BENCH_GEOS)
#include <geos_c.h>
#endif

namespace tarvex::bench {
namespace {

using Contours = std::vector<std::vector<DPOINT>>;

struct Operands {
    Contours subject;
    Contours clip;
};

DPOINT Around(double angle, double radius) { return {radius * std::cos(angle), radius * std::sin(angle)}; }

/// Two discs whose radius jumps between 0.97 and 1 from vertex to vertex, each of that many edges.
Operands RoughDiscs(int edges) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> radius(970, 1000);
    const auto disc = [&](double x) {
        std::vector<DPOINT> contour;
        for (int i = 0; i < edges; ++i) {
            const DPOINT p = Around(2 * std::numbers::pi * i / edges, radius(random));
            contour.push_back({p.x + x, p.y});
        }
        return Contours{contour};
    };
    return {disc(0), disc(300)};
}

/// A closed curve of small loops around a circle, each loop crossing itself, and the same turned.
Operands Loops(int edges) {
    const auto ring = [edges](double phase) {
        std::vector<DPOINT> contour;
        const int loops = edges / 20;
        const double step = 2 * std::numbers::pi / loops;
        for (int i = 0; i < edges; ++i) {
            const double angle = 2 * std::numbers::pi * i / edges + phase * step;
            const DPOINT centre = Around(angle, 1000);
            const DPOINT turn = Around(angle * loops, 1000 * step);
            contour.push_back({centre.x + turn.x, centre.y + turn.y});
        }
        return Contours{contour};
    };
    return {ring(0), ring(0.37)};
}

/// Polygons of 20 random corners, one to each cell of a square grid and half as large again.
Operands CrossingPolygons(int edges) {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> offset(0, 15);
    const int count = edges / 20;
    const int columns = static_cast<int>(std::ceil(std::sqrt(count)));
    const auto polygons = [&] {
        Contours contours;
        for (int i = 0; i < count; ++i) {
            std::vector<DPOINT> contour;
            const int row = i / columns;
            for (int k = 0; k < 20; ++k) {
                const double x = 10 * (i % columns) + offset(random);
                contour.push_back({x, 10 * row + offset(random)});
            }
            contours.push_back(contour);
        }
        return contours;
    };
    Operands made;
    made.subject = polygons();
    made.clip = polygons();
    return made;
}

/// One polygon of random corners in a square, and another: every edge crosses a third of all others.
Operands Dense(int edges) {
    std::mt19937 random(6);
    const auto polygon = [&] {
        std::vector<DPOINT> contour;
        for (int i = 0; i < edges; ++i) {
            const double x = 1000 * Uniform(random);
            contour.push_back({x, 1000 * Uniform(random)});
        }
        return Contours{contour};
    };
    Operands made;
    made.subject = polygon();
    made.clip = polygon();
    return made;
}

/// A grid of squares with gaps between them, and the same moved by half a square.
Operands Grids(int squares) {
    const int columns = static_cast<int>(std::sqrt(squares));
    const auto grid = [&](double offset) {
        Contours contours;
        for (int i = 0; i < squares; ++i) {
            const double x = offset + 10 * (i % columns);
            const int row = i / columns;
            const double y = offset + 10 * row;
            contours.push_back({{x, y}, {x + 8, y}, {x + 8, y + 8}, {x, y + 8}});
        }
        return contours;
    };
    return {grid(0), grid(4)};
}

/// The same edges side by side, or nested so that every other one is a hole.
Operands Rings(int count, bool nested) {
    Contours contours;
    for (int i = 0; i < count; ++i) {
        std::vector<DPOINT> contour;
        for (int k = 0; k < 100; ++k) {
            const DPOINT p = Around(2 * std::numbers::pi * k / 100, nested ? 10.0 + i : 10.0);
            contour.push_back({p.x + (nested ? 0 : 25.0 * i), p.y});
        }
        contours.push_back(contour);
    }
    return {contours, {{{-1e6, 0}, {-1e6 + 1, 0}, {-1e6, 1}}}};
}

class Set {
  public:
    explicit Set(const Contours& contours) {
        m_polygon.contourCount = static_cast<std::int32_t>(contours.size());
        m_polygon.contours = new ClipContour[contours.size()];
        for (std::size_t i = 0; i < contours.size(); ++i) {
            auto* vertices = new DPOINT[contours[i].size()];
            std::copy(contours[i].begin(), contours[i].end(), vertices);
            m_polygon.contours[i] = {static_cast<std::int32_t>(contours[i].size()), vertices};
        }
    }
    ~Set() { FreeClipPolygon(m_polygon); }
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;
    ClipPolygon& Polygon() { return m_polygon; }

  private:
    ClipPolygon m_polygon;
};

[[maybe_unused]] double Area(const ClipPolygon& polygon) {
    double twice = 0;
    for (int c = 0; c < polygon.contourCount; ++c) {
        const ClipContour& contour = polygon.contours[c];
        for (int i = 0; i < contour.vertexCount; ++i) {
            const DPOINT& p = contour.vertices[i];
            const DPOINT& q = contour.vertices[(i + 1) % contour.vertexCount];
            twice += p.x * q.y - q.x * p.y;
        }
    }
    return twice / 2;
}

[[maybe_unused]] constexpr double kScale = 1e6;  // whole numbers of the peer to one unit

#if defined(TARVEX_BENCH_POLYCLIPPING)
ClipperLib::Paths PeerPaths(const Contours& contours) {
    ClipperLib::Paths paths;
    for (const auto& contour : contours) {
        ClipperLib::Path path;
        for (const DPOINT& p : contour) {
            path.emplace_back(static_cast<ClipperLib::cInt>(std::llround(p.x * kScale)),
                              static_cast<ClipperLib::cInt>(std::llround(p.y * kScale)));
        }
        paths.push_back(std::move(path));
    }
    return paths;
}

ClipperLib::Paths PeerUnion(const ClipperLib::Paths& subject, const ClipperLib::Paths& clip) {
    ClipperLib::Clipper clipper;
    clipper.AddPaths(subject, ClipperLib::ptSubject, true);
    clipper.AddPaths(clip, ClipperLib::ptClip, true);
    ClipperLib::Paths result;
    clipper.Execute(ClipperLib::ctUnion, result, ClipperLib::pftEvenOdd, ClipperLib::pftEvenOdd);
    return result;
}
#endif

/// Both must find the same area, where the peer is there to ask and quick enough to wait for.
void RequirePeersArea([[maybe_unused]] const Operands& operands, [[maybe_unused]] const ClipPolygon& result) {
#if defined(TARVEX_BENCH_POLYCLIPPING)
    std::size_t edges = 0;
    for (const auto& contour : operands.subject) edges += contour.size();
    if (edges > 20000) return;
    double peer = 0;
    for (const auto& path : PeerUnion(PeerPaths(operands.subject), PeerPaths(operands.clip)))
        peer += ClipperLib::Area(path);
    peer /= kScale * kScale;
    const double area = Area(result);
    RequireNear(area, peer, 1e-4 * std::fabs(area), "the union's area beside polyclipping's");
#endif
}

enum class PeerCheck { yes, no };

void Union(benchmark::State& state, const Operands& operands, PeerCheck check = PeerCheck::yes) {
    Set subject(operands.subject);
    Set clip(operands.clip);
    ClipPolygon result;
    if (check == PeerCheck::yes) {
        ClipPolygons(3, subject.Polygon(), clip.Polygon(), result);
        RequirePeersArea(operands, result);
    }
    for (auto _ : state) ClipPolygons(3, subject.Polygon(), clip.Polygon(), result);
    state.counters["contours"] = result.contourCount;
    FreeClipPolygon(result);
}

#if defined(TARVEX_BENCH_POLYCLIPPING)
void PeersUnion(benchmark::State& state, const Operands& operands) {
    const ClipperLib::Paths subject = PeerPaths(operands.subject);
    const ClipperLib::Paths clip = PeerPaths(operands.clip);
    std::size_t contours = 0;
    for (auto _ : state) contours = PeerUnion(subject, clip).size();
    state.counters["contours"] = static_cast<double>(contours);
}
#endif

#if defined(TARVEX_BENCH_GEOS)
using Geometry = std::unique_ptr<GEOSGeometry, void (*)(GEOSGeometry*)>;

/// GEOS takes simple polygons with their holes sorted out, so each contour is made one by itself. GEOS
/// mends those that cross themselves (by its even-odd "linework" rule) before it can unite them.
Geometry GeosSet(const Contours& contours) {
    std::vector<GEOSGeometry*> polygons;
    for (const auto& contour : contours) {
        GEOSCoordSequence* points = GEOSCoordSeq_create(static_cast<unsigned>(contour.size() + 1), 2);
        for (std::size_t i = 0; i <= contour.size(); ++i) {
            const DPOINT& p = contour[i % contour.size()];
            GEOSCoordSeq_setXY(points, static_cast<unsigned>(i), p.x, p.y);
        }
        polygons.push_back(GEOSGeom_createPolygon(GEOSGeom_createLinearRing(points), nullptr, 0));
    }
    return {
        GEOSGeom_createCollection(GEOS_MULTIPOLYGON, polygons.data(), static_cast<unsigned>(polygons.size())),
        GEOSGeom_destroy};
}

Geometry Mended(const Geometry& set) {
    if (GEOSisValid(set.get()) == 1) return {GEOSGeom_clone(set.get()), GEOSGeom_destroy};
    return {GEOSMakeValid(set.get()), GEOSGeom_destroy};
}

void GeosUnion(benchmark::State& state, const Operands& operands) {
    initGEOS(nullptr, nullptr);
    const Geometry subject = GeosSet(operands.subject);
    const Geometry clip = GeosSet(operands.clip);
    for (auto _ : state) {
        const Geometry a = Mended(subject);
        const Geometry b = Mended(clip);
        const Geometry united{GEOSUnion(a.get(), b.get()), GEOSGeom_destroy};
        Require(united != nullptr, "GEOS found no union");
        state.counters["contours"] = GEOSGetNumGeometries(united.get());
    }
    finishGEOS();
}
#endif

void RoughDisc(benchmark::State& state) { Union(state, RoughDiscs(Size(state))); }
void Loop(benchmark::State& state) { Union(state, Loops(Size(state))); }
void CrossingPolygon(benchmark::State& state) { Union(state, CrossingPolygons(Size(state))); }
void DenseRandom(benchmark::State& state) {
    // The peer would take a minute for the largest.
    Union(state, Dense(Size(state)), Size(state) > 1000 ? PeerCheck::no : PeerCheck::yes);
}
void Grid(benchmark::State& state) { Union(state, Grids(Size(state) / 4)); }
void SeparateRing(benchmark::State& state) { Union(state, Rings(Size(state), false)); }
void NestedRing(benchmark::State& state) { Union(state, Rings(Size(state), true)); }

void Decades(benchmark::internal::Benchmark* bench) {
    bench->RangeMultiplier(10)->Range(1000, 100000)->Unit(benchmark::kMillisecond);
}
/// What crosses as often as it can, where ten times the edges are a hundred times the crossings.
void DenseSizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);
}
BENCHMARK(RoughDisc)->Apply(Decades);
BENCHMARK(Loop)->Apply(Decades);
BENCHMARK(CrossingPolygon)->Apply(Decades);
BENCHMARK(Grid)->Apply(Decades)->Arg(40000);
BENCHMARK(DenseRandom)->Apply(DenseSizes)->Arg(10000);
BENCHMARK(SeparateRing)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(NestedRing)->Arg(1000)->Unit(benchmark::kMillisecond);

#if defined(TARVEX_BENCH_POLYCLIPPING)
void PeerRoughDisc(benchmark::State& state) { PeersUnion(state, RoughDiscs(Size(state))); }
void PeerLoop(benchmark::State& state) { PeersUnion(state, Loops(Size(state))); }
void PeerCrossingPolygon(benchmark::State& state) { PeersUnion(state, CrossingPolygons(Size(state))); }
void PeerDenseRandom(benchmark::State& state) { PeersUnion(state, Dense(Size(state))); }
void PeerGrid(benchmark::State& state) { PeersUnion(state, Grids(Size(state) / 4)); }
BENCHMARK(PeerRoughDisc)->Apply(Decades);
BENCHMARK(PeerLoop)->Apply(Decades);
BENCHMARK(PeerCrossingPolygon)->Apply(Decades);
BENCHMARK(PeerGrid)->Apply(Decades)->Arg(40000);
BENCHMARK(PeerDenseRandom)->Apply(DenseSizes);
#endif

#if defined(TARVEX_BENCH_GEOS)
void GeosPeerRoughDisc(benchmark::State& state) { GeosUnion(state, RoughDiscs(Size(state))); }
void GeosPeerLoop(benchmark::State& state) { GeosUnion(state, Loops(Size(state))); }
void GeosPeerCrossingPolygon(benchmark::State& state) { GeosUnion(state, CrossingPolygons(Size(state))); }
void GeosPeerDenseRandom(benchmark::State& state) { GeosUnion(state, Dense(Size(state))); }
void GeosPeerGrid(benchmark::State& state) { GeosUnion(state, Grids(Size(state) / 4)); }
BENCHMARK(GeosPeerRoughDisc)->Apply(Decades);
BENCHMARK(GeosPeerLoop)->Apply(Decades);
BENCHMARK(GeosPeerCrossingPolygon)->Apply(Decades);
BENCHMARK(GeosPeerGrid)->Apply(Decades);
BENCHMARK(GeosPeerDenseRandom)->Apply(DenseSizes);
#endif

}  // namespace
}  // namespace tarvex::bench
