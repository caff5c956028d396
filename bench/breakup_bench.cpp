// How long does breaking up a shape take, and which stage is it?
//
//   breakup_bench --benchmark_filter='Letter/1000'
//
// Letter is a B of strokes a tenth of the side wide, Ornament a lattice of crossing strokes with rings, both
// N by N pixels with a point of outline for every pixel. Counters: the part of the time that each stage
// takes, measured by running the pass' steps one after the other in the same way, and the regions that come
// of it.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <vector>

#include "tarvex/autotrace.h"
#include "tarvex/breakup.h"
#include "tarvex/skeleton.h"

namespace {

using namespace tarvex;
using Clock = std::chrono::steady_clock;

double SegmentDistance(double x, double y, double ax, double ay, double bx, double by) {
    const double dx = bx - ax, dy = by - ay;
    const double t = std::clamp(((x - ax) * dx + (y - ay) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    return std::hypot(x - ax - t * dx, y - ay - t * dy);
}

/// In units of the side.
bool InLetter(double x, double y) {
    const double half = 0.04;
    const auto bow = [&](double cy, double r) {
        return x >= 0.45 && std::fabs(std::hypot(x - 0.45, y - cy) - r) < half;
    };
    return SegmentDistance(x, y, 0.25, 0.1, 0.25, 0.9) < half ||
           SegmentDistance(x, y, 0.25, 0.1, 0.45, 0.1) < half ||
           SegmentDistance(x, y, 0.25, 0.48, 0.45, 0.48) < half ||
           SegmentDistance(x, y, 0.25, 0.9, 0.45, 0.9) < half || bow(0.29, 0.19) || bow(0.69, 0.21);
}

bool InOrnament(double x, double y) {
    const double half = 0.011;
    for (int i = 1; i < 6; ++i) {
        if (std::fabs(x - i / 6.0 - 0.02 * std::sin(9 * y)) < half && y > 0.08 && y < 0.92) return true;
        if (std::fabs(y - i / 6.0) < half && x > 0.08 && x < 0.92) return true;
    }
    return std::fabs(std::hypot(x - 0.5, y - 0.5) - 0.42) < half;
}

struct Subject {
    template <class Inside>
    Subject(int size, Inside inside) : image(CImgProc::CreateBitmap32(size, size)) {
        BITMAP bitmap{};
        GetObject(image, static_cast<int>(sizeof bitmap), &bitmap);
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                if (inside((x + 0.5) / size, (y + 0.5) / size))
                    CImgProc::SetPixel32(bitmap, x, y, RGB(255, 255, 255));
            }
        }
        // The whole boundary, also that of holes: the tracer's seeds lie 10 pixels apart.
        CAutoTrace tracer(image, 96);
        tracer.SetFillFilter(false);
        for (int i = 0; i < size && outline.IsEmpty(); ++i) {
            if (!inside(0.25, (i + 0.5) / size)) continue;
            tracer.DoTrace(size / 4, i, nullptr, 0, false, false, false);
            outline.Copy(tracer.TracedLines());
        }
    }
    ~Subject() { DeleteObject(image); }
    HBITMAP image;
    CPolyPolyDPoint outline;
};

/// A run taken apart.
class TimedBreakUp : public CAutoBreakUp {
  public:
    struct Shares {
        double bitmap = 0, skeleton = 0, lines = 0, junctions = 0, regions = 0;
        double Sum() const { return bitmap + skeleton + lines + junctions + regions; }
    };

    /// Does a run's steps again on what a run left.
    Shares Repeat(const Subject& subject) {
        Shares shares;
        CPolyPolyDPoint regions;
        CPolyPolyInclination inclinations;
        AutoBreakUp(subject.image, 96, subject.outline, regions, inclinations, false);
        const std::vector<CUTLINE> cuts = m_cutLines;
        const auto timed = [](double& share, auto&& step) {
            const auto start = Clock::now();
            step();
            share += std::chrono::duration<double>(Clock::now() - start).count();
        };
        const int passes = m_lookAhead >= 25 ? 1 : m_lookAhead >= 15 ? 2 : 3;
        m_hWorkBitmap = CreateBitmap32(m_width, m_height);
        for (int pass = 0; pass < passes; ++pass) {
            timed(shares.bitmap, [&] { MakeBitmap(); });
            timed(shares.skeleton, [&] {
                CSkeleton skeleton;
                skeleton.MakeBitmapMono(subject.image);
                skeleton.DoSkeleton();
                InitMat(skeleton.Bitmap());
            });
            timed(shares.lines, [&] {
                TraceAnchorPointsAndLines(m_lines, 500);
                FilterSmallLines();
                MakeLinesMat(m_lines);
            });
            timed(shares.junctions, [&] { ReduceCrossLines(); });
        }
        const auto start = Clock::now();
        AutoBreakUp(subject.image, 96, subject.outline, regions, inclinations, false);
        const double whole = std::chrono::duration<double>(Clock::now() - start).count();
        shares.regions = std::max(0.0, whole - shares.Sum());
        return shares;
    }
};

template <class Inside>
void Measure(benchmark::State& state, Inside inside) {
    const Subject subject(static_cast<int>(state.range(0)), inside);
    CPolyPolyDPoint regions;
    for (auto _ : state) {
        CPolyPolyInclination inclinations;
        CAutoBreakUp breakUp;
        if (!breakUp.AutoBreakUp(subject.image, 96, subject.outline, regions, inclinations, false)) {
            state.SkipWithError(
                ("not broken up: " + std::to_string(static_cast<int>(breakUp.End()))).c_str());
            return;
        }
    }
    state.counters["regions"] = regions.GetCount() / 2.0;
    TimedBreakUp timed;
    const auto shares = timed.Repeat(subject);
    state.counters["skeleton"] = shares.skeleton / shares.Sum();
    state.counters["bitmap"] = shares.bitmap / shares.Sum();
    state.counters["lines"] = shares.lines / shares.Sum();
    state.counters["junctions"] = shares.junctions / shares.Sum();
    state.counters["rest"] = shares.regions / shares.Sum();
}

void Letter(benchmark::State& state) { Measure(state, InLetter); }
BENCHMARK(Letter)->Arg(316)->Arg(1000)->Arg(3162)->Unit(benchmark::kMillisecond);
void Ornament(benchmark::State& state) { Measure(state, InOrnament); }
BENCHMARK(Ornament)->Arg(632)->Arg(2000)->Unit(benchmark::kMillisecond);

}  // namespace
